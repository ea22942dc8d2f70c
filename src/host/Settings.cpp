// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/Settings.h"

#include "host/ModuleLoader.h"

#include <QCoreApplication>
#include <QDir>

#include <stdexcept>

namespace {
/// The folder that modules are installed into, as seen from the program file.
QString installedModules()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() +
                           QLatin1String("/" TAVO_HOST_MODULE_DIR));
}

QStringList environmentList(const char *variable, char separator)
{
    return qEnvironmentVariable(variable).split(QLatin1Char(separator), Qt::SkipEmptyParts);
}

Result<QVector<LogLevel>> environmentLogLevels()
{
    QVector<LogLevel> levels;
    for (const QString &text : environmentList("TAVO_LOG_LEVEL", ',')) {
        const auto level = logLevelFromText(text.trimmed());
        if (!level) {
            return Failure{QStringLiteral("tavo-host: TAVO_LOG_LEVEL: %1 is not LEVEL or "
                                          "LOGGER=LEVEL with one of the levels %2")
                               .arg(text, logLevelNames())};
        }
        levels.append(*level);
    }
    return levels;
}

} // namespace

Result<Settings, ExitFailure> Settings::read(const CommandLine &line)
{
    Settings settings;
    try {
        settings.m_configuration = line.configurationFile.isEmpty()
                                       ? HostConfiguration::builtIn()
                                       : HostConfiguration::fromFile(line.configurationFile);
    } catch (const std::runtime_error &error) {
        return ExitFailure{ExitCode::Configuration, QString::fromStdString(error.what())};
    }
    auto levels = environmentLogLevels();
    if (const auto *failure = std::get_if<Failure>(&levels)) {
        return ExitFailure{ExitCode::Usage, failure->reason};
    }
    settings.m_configuration.log.levels += std::get<QVector<LogLevel>>(levels) + line.logLevels;
    settings.m_configuration.modulePath = line.modulePath + settings.m_configuration.modulePath +
                                          environmentList("TAVO_MODULE_PATH", ':') +
                                          QStringList{installedModules()};
    return settings;
}

Result<std::vector<LocatedModule>> Settings::locateModules() const
{
    const ModuleLoader loader(searchPath());
    std::vector<LocatedModule> located;
    for (const ModuleEntry &entry : m_configuration.modules) {
        auto file = loader.find(entry.libraryName);
        if (const auto *failure = std::get_if<Failure>(&file)) {
            return Failure{QStringLiteral("%1: %2").arg(entry.origin, failure->reason)};
        }
        located.push_back({entry, std::get<QString>(file)});
    }
    return located;
}
