// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/Reload.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <utility>

namespace {
log4cplus::Logger &logger()
{
    static log4cplus::Logger s_logger = log4cplus::Logger::getInstance("Host");
    return s_logger;
}

bool areSameModules(const QVector<ModuleEntry> &modules, const QVector<ModuleEntry> &others)
{
    return std::equal(modules.begin(), modules.end(), others.begin(), others.end(),
                      [](const ModuleEntry &module, const ModuleEntry &other) {
                          return module.name == other.name &&
                                 module.libraryName == other.libraryName;
                      });
}

/// The host's own keys that need a restart. Those of modules are not among them.
QStringList restartKeys(const Settings &started, const Settings &next)
{
    QStringList keys;
    if (!areSameModules(started.modules(), next.modules())) {
        keys << QStringLiteral("modules");
    }
    if (started.searchPath() != next.searchPath()) {
        keys << QStringLiteral("modulePath");
    }
    if (started.log().file != next.log().file) {
        keys << QStringLiteral("log.file");
    }
    return keys;
}
} // namespace

Reload::Reload(CommandLine line, const Settings &started, HostLog &log, Host &host)
    : m_line(std::move(line))
    , m_started(started)
    , m_current(started)
    , m_log(log)
    , m_host(host)
{
}

QString Reload::run()
{
    const auto applied = apply();
    if (const auto *failure = std::get_if<Failure>(&applied)) {
        const QString text =
            QStringLiteral("The configuration stays as it was: %1").arg(failure->reason);
        LOG4CPLUS_ERROR(logger(), text.toStdString());
        return text;
    }
    const auto &keys = std::get<QStringList>(applied);
    if (!keys.isEmpty()) {
        const QString text = QStringLiteral("Reloaded the configuration, needs a restart: %1")
                                 .arg(keys.join(QStringLiteral(", ")));
        LOG4CPLUS_WARN(logger(), text.toStdString());
        return text;
    }
    LOG4CPLUS_INFO(logger(), "Reloaded the configuration");
    return QStringLiteral("Reloaded the configuration");
}

Result<QStringList> Reload::apply()
{
    auto read = Settings::read(m_line);
    if (const auto *failure = std::get_if<ExitFailure>(&read)) {
        return Failure{failure->reason};
    }
    const auto &next = std::get<Settings>(read);
    const auto located = next.locateModules();
    if (const auto *failure = std::get_if<Failure>(&located)) {
        return *failure;
    }
    // First those that may refuse.
    auto moduleKeys = m_host.reconfigure(next.modules(), m_current.modules());
    if (std::holds_alternative<Failure>(moduleKeys)) {
        return moduleKeys;
    }
    m_log.setLevels(next.log().levels);
    SimplePlayerLimits::setDefaults(next.sounds());
    m_current = next;
    return restartKeys(m_started, next) + std::get<QStringList>(moduleKeys);
}
