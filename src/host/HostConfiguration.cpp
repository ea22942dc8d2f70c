// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/HostConfiguration.h"

#include "core/base/configuration.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <stdexcept>

namespace {
constexpr int maxTimeoutMs = 600'000;
constexpr qint64 bytesPerMiB = qint64(1) << 20;
constexpr int maxSoundMiB = 65536;
constexpr int maxHttpMiB = 1024; // Qt's arrays of bytes hold less than twice as much.

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

QString originOf(const QString &source, int index)
{
    return QStringLiteral("%1: modules[%2]").arg(source, QString::number(index));
}

/// The library is empty if the module does not name one.
ModuleEntry readModule(TavoConfiguration &module, const QString &file)
{
    const auto libraryKey = QStringLiteral("library");
    ModuleEntry entry;
    entry.name = moduleName(module, QStringLiteral("name"), {});
    if (module.keys().contains(libraryKey)) {
        const QString library = module.string(libraryKey, {});
        entry.libraryName = library.contains(QLatin1Char('/'))
                                ? absolutePath(module, libraryKey, library, file)
                                : moduleName(module, libraryKey, {});
    }
    entry.config = module.object(QStringLiteral("config"));
    module.finish();
    return entry;
}

/// Objects are merged key by key; any other value replaces the one before it.
QVariantHash merged(QVariantHash values, const QVariantHash &added)
{
    for (auto it = added.begin(); it != added.end(); ++it) {
        QVariant &value = values[it.key()];
        value = value.canConvert<QVariantHash>() && it->canConvert<QVariantHash>()
                    ? merged(value.toHash(), it->toHash())
                    : *it;
    }
    return values;
}

/// Adds a module, or what it says to the module of the same name.
void addModule(QVector<ModuleEntry> &modules, const ModuleEntry &added)
{
    auto module = std::find_if(modules.begin(), modules.end(),
                               [&](const auto &other) { return other.name == added.name; });
    if (module == modules.end()) {
        module = modules.insert(module, {added.name, added.name, {}, {}});
    }
    if (!added.libraryName.isEmpty()) {
        module->libraryName = added.libraryName;
    }
    module->config = merged(module->config, added.config);
    module->origin = added.origin;
}

void readModules(QVector<ModuleEntry> &modules, TavoConfiguration &configuration,
                 const QString &file)
{
    QStringList names;
    for (TavoConfiguration &section :
         configuration.sections(QStringLiteral("modules"), QStringLiteral("name"))) {
        ModuleEntry module = readModule(section, file);
        const int same = names.indexOf(module.name);
        if (same >= 0) {
            section.fail(QStringLiteral("name"),
                         QStringLiteral("\"%1\" is the name of modules[%2] already")
                             .arg(module.name, QString::number(same)));
        }
        module.origin = originOf(file, names.size());
        names.append(module.name);
        addModule(modules, module);
    }
    if (modules.isEmpty()) {
        configuration.fail(QStringLiteral("modules"),
                           QStringLiteral("must name at least one module"));
    }
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

void readLog(LogConfiguration &configuration, TavoConfiguration log, const QString &file)
{
    const auto fileKey = QStringLiteral("file");
    const auto levelKey = QStringLiteral("level");
    const QStringList keys = log.keys();
    if (keys.contains(fileKey)) {
        configuration.file = absolutePath(log, fileKey, log.string(fileKey, {}), file);
        configuration.origin = file;
    }
    if (keys.contains(levelKey)) {
        configuration.levels.append({{}, readLevel(log, levelKey)});
    }
    TavoConfiguration levels = log.section(QStringLiteral("levels"));
    for (const QString &logger : levels.keys()) {
        configuration.levels.append({logger, readLevel(levels, logger)});
    }
    log.finish();
}

/// A size that is configured in MiB.
qint64 readSize(TavoConfiguration &configuration, const QString &key, qint64 defaultValue,
                int maxMiB)
{
    return configuration.integer(key, int(defaultValue / bytesPerMiB), 1, maxMiB) * bytesPerMiB;
}

void readSounds(SimplePlayerLimits &limits, TavoConfiguration sounds)
{
    limits.maxSoundBytes =
        readSize(sounds, QStringLiteral("soundLimit"), limits.maxSoundBytes, maxSoundMiB);
    limits.httpMaxBytes =
        readSize(sounds, QStringLiteral("httpLimit"), limits.httpMaxBytes, maxHttpMiB);
    limits.httpTimeoutMs =
        sounds.integer(QStringLiteral("httpTimeout"), limits.httpTimeoutMs, 1, maxTimeoutMs);
    limits.fifoTimeoutMs =
        sounds.integer(QStringLiteral("fifoTimeout"), limits.fifoTimeoutMs, 1, maxTimeoutMs);
    sounds.finish();
}

/// Adds what the file says to @p read.
void readConfiguration(HostConfiguration &read, TavoConfiguration configuration,
                       const QString &file)
{
    readModules(read.modules, configuration, file);
    read.modulePath += readModulePath(configuration, file);
    readLog(read.log, configuration.section(QStringLiteral("log")), file);
    readSounds(read.sounds, configuration.section(QStringLiteral("sounds")));
    configuration.finish();
}

/// The fragments of the file, sorted by name.
QStringList fragmentsOf(const QString &file)
{
    const QDir folder(file + QLatin1String(".d"));
    if (folder.exists() && !folder.isReadable()) {
        throw std::runtime_error(folder.path().toStdString() + ": can't be read");
    }
    QStringList fragments;
    for (const QString &name :
         folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        fragments.append(folder.filePath(name));
    }
    return fragments;
}
} // namespace

HostConfiguration HostConfiguration::builtIn()
{
    HostConfiguration configuration;
    configuration.source = QStringLiteral("built-in configuration");
    for (const char *name : {"powermanager", "player", "notifications", "attention", "dbus"}) {
        configuration.modules.append(
            {QLatin1String(name),
             QLatin1String(name),
             {},
             originOf(configuration.source, configuration.modules.size())});
    }
    return configuration;
}

HostConfiguration HostConfiguration::fromFile(const QString &file)
{
    HostConfiguration configuration;
    configuration.source = file;
    readConfiguration(configuration, TavoConfiguration::fromFile(file), file);
    for (const QString &fragment : fragmentsOf(file)) {
        readConfiguration(configuration, TavoConfiguration::fromFile(fragment), fragment);
    }
    return configuration;
}

HostConfiguration HostConfiguration::fromJson(const QByteArray &json, const QString &file)
{
    HostConfiguration configuration;
    configuration.source = file;
    readConfiguration(configuration, TavoConfiguration::fromJson(json, file), file);
    return configuration;
}
