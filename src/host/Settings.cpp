// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/Settings.h"

#include "host/ModuleLoader.h"

#include <QCoreApplication>
#include <QDir>

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
            return Failure{ExitCode::Usage, QStringLiteral("tavo-host: TAVO_LOG_LEVEL: %1 is not "
                                                           "LEVEL or LOGGER=LEVEL with one of the "
                                                           "levels %2")
                                                .arg(text, logLevelNames())};
        }
        levels.append(*level);
    }
    return levels;
}

Result<HostConfiguration> configurationOf(const CommandLine &line)
{
    if (line.configurationFile.isEmpty()) {
        return HostConfiguration::builtIn();
    }
    auto read = HostConfiguration::fromFile(line.configurationFile);
    if (const auto *error = std::get_if<ConfigurationError>(&read)) {
        return Failure{ExitCode::Configuration, error->text()};
    }
    return std::get<HostConfiguration>(read);
}
} // namespace

Result<Settings> Settings::read(const CommandLine &line)
{
    auto configuration = configurationOf(line);
    if (const auto *failure = std::get_if<Failure>(&configuration)) {
        return *failure;
    }
    auto levels = environmentLogLevels();
    if (const auto *failure = std::get_if<Failure>(&levels)) {
        return *failure;
    }
    Settings settings;
    settings.m_configuration = std::get<HostConfiguration>(configuration);
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
            return Failure{failure->code,
                           QStringLiteral("%1: modules[%2]: %3")
                               .arg(source(), QString::number(located.size()), failure->text)};
        }
        located.push_back({entry, std::get<QString>(file)});
    }
    return located;
}
