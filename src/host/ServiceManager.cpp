// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/ServiceManager.h"

#include "base/Printable.h"
#include "core/base/connect.h"
#include "host/Host.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>
#include <systemd/sd-daemon.h>

#include <ctime>

ServiceManager::ServiceManager()
{
    uint64_t microseconds = 0;
    if (sd_watchdog_enabled(0, &microseconds) > 0) {
        m_watchInterval = std::chrono::milliseconds(microseconds / 1000);
    }
}

void ServiceManager::reportReady(Host &host)
{
    sd_notify(0, "READY=1");
    if (m_watchInterval.count() > 0) {
        tavoConnect(&m_checkTimer, &QTimer::timeout, &m_checkTimer, [&] { check(host); });
        m_checkTimer.start(m_watchInterval / 4);
    }
}

void ServiceManager::reportReloading()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    sd_notifyf(0, "RELOADING=1\nMONOTONIC_USEC=%lld",
               static_cast<long long>(now.tv_sec) * 1'000'000 + now.tv_nsec / 1000);
}

void ServiceManager::reportReloaded(const QString &status)
{
    sd_notifyf(0, "READY=1\nSTATUS=%s", printable(status).toUtf8().constData());
}

void ServiceManager::reportStopping()
{
    m_checkTimer.stop();
    sd_notify(0, "STOPPING=1");
}

void ServiceManager::check(Host &host)
{
    const auto hanging = host.hangingModule();
    if (!hanging) {
        sd_notify(0, "WATCHDOG=1");
        return;
    }
    m_checkTimer.stop();
    const std::string name = hanging->toStdString();
    LOG4CPLUS_FATAL(log4cplus::Logger::getInstance("Host"), "A module hangs: " << name);
    sd_notifyf(0, "STATUS=A module hangs: %s\nWATCHDOG=trigger", name.c_str());
}
