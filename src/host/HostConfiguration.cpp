// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/HostConfiguration.h"

#include "core/base/configuration.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {
constexpr int maxTimeoutMs = 600'000;
constexpr qint64 bytesPerMiB = qint64(1) << 20;
constexpr int maxMiB = 65536;

bool isAsciiLetterOrDigit(QChar character)
{
    return character.unicode() < 128 && character.isLetterOrNumber();
}

/// A module's name becomes part of a file name and of log records.
// Checked by hand: compiling a regular expression would cost every host half a megabyte.
bool isModuleName(const QString &text)
{
    return !text.isEmpty() && isAsciiLetterOrDigit(text[0]) &&
           std::all_of(text.begin(), text.end(), [](QChar character) {
               return isAsciiLetterOrDigit(character) || QLatin1String("._-").contains(character);
           });
}

QString moduleName(TavoConfiguration &module, const QString &key, const QString &defaultValue)
{
    QString name = module.string(key, defaultValue);
    if (!isModuleName(name)) {
        module.fail(key, QStringLiteral("must be a name of letters, digits, '.', '_' and '-' that "
                                        "begins with a letter or a digit"));
    }
    return name;
}

/// Resolves a path, which must not be empty, against the folder of @p file.
QString absolutePath(const TavoConfiguration &configuration, const QString &key,
                     const QString &path, const QString &file)
{
    if (path.isEmpty()) {
        configuration.fail(key, QStringLiteral("must not be empty"));
    }
    // Joined by hand: Qt mistakes a name that begins with a colon for one of its resources.
    const QString folder = QFileInfo(file).absolutePath();
    return QDir::cleanPath(path.startsWith(QLatin1Char('/')) ? path
                                                             : folder + QLatin1Char('/') + path);
}

ModuleEntry readModule(TavoConfiguration &module, const QString &file)
{
    const auto libraryKey = QStringLiteral("library");
    ModuleEntry entry;
    entry.name = moduleName(module, QStringLiteral("name"), {});
    const QString library = module.string(libraryKey, entry.name);
    entry.libraryName = library.contains(QLatin1Char('/'))
                            ? absolutePath(module, libraryKey, library, file)
                            : moduleName(module, libraryKey, entry.name);
    entry.config = module.object(QStringLiteral("config"));
    module.finish();
    return entry;
}

QVector<ModuleEntry> readModules(TavoConfiguration &configuration, const QString &file)
{
    QVector<ModuleEntry> modules;
    for (TavoConfiguration &section :
         configuration.sections(QStringLiteral("modules"), QStringLiteral("name"))) {
        const ModuleEntry module = readModule(section, file);
        const auto same = std::find_if(modules.begin(), modules.end(), [&](const auto &other) {
            return other.name == module.name;
        });
        if (same != modules.end()) {
            section.fail(QStringLiteral("name"),
                         QStringLiteral("\"%1\" is the name of modules[%2] already")
                             .arg(module.name, QString::number(same - modules.begin())));
        }
        modules.append(module);
    }
    if (modules.isEmpty()) {
        configuration.fail(QStringLiteral("modules"),
                           QStringLiteral("must name at least one module"));
    }
    return modules;
}

QStringList readModulePath(TavoConfiguration &configuration, const QString &file)
{
    QStringList folders;
    for (const QString &folder : configuration.stringList(QStringLiteral("modulePath"), {})) {
        const QString key = QStringLiteral("modulePath[%1]").arg(folders.size());
        folders.append(absolutePath(configuration, key, folder, file));
    }
    return folders;
}

log4cplus::LogLevel readLevel(TavoConfiguration &configuration, const QString &key)
{
    const auto level = logLevelFromName(configuration.string(key, {}));
    if (!level) {
        configuration.fail(key, QStringLiteral("must be one of %1").arg(logLevelNames()));
    }
    return *level;
}

LogConfiguration readLog(TavoConfiguration log, const QString &file)
{
    const auto fileKey = QStringLiteral("file");
    const auto levelKey = QStringLiteral("level");
    const QStringList keys = log.keys();
    LogConfiguration configuration;
    if (keys.contains(fileKey)) {
        configuration.file = absolutePath(log, fileKey, log.string(fileKey, {}), file);
    }
    if (keys.contains(levelKey)) {
        configuration.levels.append({{}, readLevel(log, levelKey)});
    }
    TavoConfiguration levels = log.section(QStringLiteral("levels"));
    for (const QString &logger : levels.keys()) {
        configuration.levels.append({logger, readLevel(levels, logger)});
    }
    log.finish();
    return configuration;
}

/// A size that is configured in MiB.
qint64 readSize(TavoConfiguration &configuration, const QString &key, qint64 defaultValue)
{
    return configuration.integer(key, int(defaultValue / bytesPerMiB), 1, maxMiB) * bytesPerMiB;
}

SimplePlayerLimits readSounds(TavoConfiguration sounds)
{
    SimplePlayerLimits limits;
    limits.maxSoundBytes = readSize(sounds, QStringLiteral("soundLimit"), limits.maxSoundBytes);
    limits.httpMaxBytes = readSize(sounds, QStringLiteral("httpLimit"), limits.httpMaxBytes);
    limits.httpTimeoutMs =
        sounds.integer(QStringLiteral("httpTimeout"), limits.httpTimeoutMs, 1, maxTimeoutMs);
    limits.fifoTimeoutMs =
        sounds.integer(QStringLiteral("fifoTimeout"), limits.fifoTimeoutMs, 1, maxTimeoutMs);
    sounds.finish();
    return limits;
}

HostConfiguration readConfiguration(TavoConfiguration configuration, const QString &file)
{
    HostConfiguration read;
    read.source = file;
    read.modules = readModules(configuration, file);
    read.modulePath = readModulePath(configuration, file);
    read.log = readLog(configuration.section(QStringLiteral("log")), file);
    read.sounds = readSounds(configuration.section(QStringLiteral("sounds")));
    configuration.finish();
    return read;
}
} // namespace

HostConfiguration HostConfiguration::builtIn()
{
    HostConfiguration configuration;
    configuration.source = QStringLiteral("built-in configuration");
    for (const char *name : {"powermanager", "player", "notifications", "dbus"}) {
        configuration.modules.append({QLatin1String(name), QLatin1String(name), {}});
    }
    return configuration;
}

HostConfiguration HostConfiguration::fromFile(const QString &file)
{
    return readConfiguration(TavoConfiguration::fromFile(file), file);
}

HostConfiguration HostConfiguration::fromJson(const QByteArray &json, const QString &file)
{
    return readConfiguration(TavoConfiguration::fromJson(json, file), file);
}
