// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/PrivateBus.h"

#include "support/program/BoundProcess.h"

#include <QFile>

#include <csignal>
#include <stdexcept>

namespace {
constexpr int timeoutMs = 20000;

/// Like a session bus, with higher limits for large tests.
constexpr const char *configurationText = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <limit name="max_message_size">134217728</limit>
  <limit name="max_completed_connections">100000</limit>
  <limit name="max_connections_per_user">100000</limit>
  <limit name="max_match_rules_per_connection">100000</limit>
  <limit name="max_replies_per_connection">100000</limit>
  %2
</busconfig>
)";
} // namespace

PrivateBus::PrivateBus(const QString &settings)
{
    QFile file(configuration());
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(QString::fromLatin1(configurationText).arg(socket(), settings).toUtf8()) < 0) {
        throw std::runtime_error("the bus's configuration can't be written");
    }
    file.close();
    start();
}

PrivateBus::~PrivateBus()
{
    stop();
}

QString PrivateBus::systemLimits()
{
    return QStringLiteral("<limit name=\"max_incoming_bytes\">133169152</limit>"
                          "<limit name=\"max_outgoing_bytes\">133169152</limit>");
}

QString PrivateBus::address() const
{
    return QStringLiteral("unix:path=") + socket();
}

void PrivateBus::stop()
{
    if (m_daemon == nullptr) {
        return;
    }
    resume();
    m_daemon->terminate();
    if (!m_daemon->waitForFinished(timeoutMs)) {
        m_daemon->kill();
        m_daemon->waitForFinished(timeoutMs);
    }
    m_daemon.reset();
}

void PrivateBus::pause()
{
    ::kill(pid_t(m_daemon->processId()), SIGSTOP);
}

void PrivateBus::resume()
{
    ::kill(pid_t(m_daemon->processId()), SIGCONT);
}

void PrivateBus::start()
{
    m_daemon = std::make_unique<BoundProcess>();
    // In a flood, the daemon logs thousands of refused calls a second. With a file, it would wait
    // for the disk.
    m_daemon->setStandardErrorFile(QProcess::nullDevice());
    m_daemon->start(QStringLiteral("dbus-daemon"),
                    {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                     QStringLiteral("--print-address"),
                     QStringLiteral("--config-file=") + configuration()});
    // The daemon prints its address once it listens.
    if (!m_daemon->waitForReadyRead(timeoutMs)) {
        throw std::runtime_error("the bus doesn't start");
    }
}
