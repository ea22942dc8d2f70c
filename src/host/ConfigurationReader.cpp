// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/ConfigurationReader.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {
bool isAsciiLetterOrDigit(QChar character)
{
    return character.unicode() < 128 && character.isLetterOrNumber();
}

/// A module's name becomes part of a file name and of log records.
// By hand: a regular expression's compiler is half a megabyte that every host would hold.
bool isModuleName(const QString &text)
{
    return !text.isEmpty() && isAsciiLetterOrDigit(text[0]) &&
           std::all_of(text.begin(), text.end(), [](QChar character) {
               return isAsciiLetterOrDigit(character) || QLatin1String("._-").contains(character);
           });
}

QString typeName(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return QStringLiteral("a boolean");
    case QJsonValue::Double:
        return QStringLiteral("a number");
    case QJsonValue::String:
        return QStringLiteral("a string");
    case QJsonValue::Array:
        return QStringLiteral("an array");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("missing");
}

QString mustBe(const char *expected, const QJsonValue &value)
{
    return QStringLiteral("must be %1, is %2").arg(QLatin1String(expected), typeName(value));
}

QString member(const QString &key, const QString &name)
{
    return key + QLatin1Char('.') + name;
}

QString element(const QString &key, int index)
{
    return QStringLiteral("%1[%2]").arg(key).arg(index);
}
} // namespace

ConfigurationReader::ConfigurationReader(const QString &file)
    : m_file(file)
{
    m_configuration.source = file;
}

HostConfiguration::Result ConfigurationReader::read(const QJsonObject &object)
{
    refuseUnknownKeys(object, {}, {"modules", "modulePath", "log"});
    readModules(readArray(object.value(QLatin1String("modules")), QStringLiteral("modules")));
    if (object.contains(QLatin1String("modulePath"))) {
        const QString key = QStringLiteral("modulePath");
        readModulePath(readArray(object.value(key), key));
    }
    if (object.contains(QLatin1String("log"))) {
        readLog(readObject(object.value(QLatin1String("log")), QStringLiteral("log")));
    }
    if (m_error) {
        return *m_error;
    }
    return m_configuration;
}

void ConfigurationReader::readModules(const QJsonArray &modules)
{
    const QString key = QStringLiteral("modules");
    if (modules.isEmpty()) {
        fail(key, QStringLiteral("names no module"));
    }
    for (int i = 0; i < modules.size(); ++i) {
        const ModuleEntry entry = readModule(modules.at(i), element(key, i));
        refuseDuplicateName(entry.name, element(key, i));
        m_configuration.modules.append(entry);
    }
}

ModuleEntry ConfigurationReader::readModule(const QJsonValue &value, const QString &key)
{
    if (value.isString()) {
        const QString name = readModuleName(value, key);
        return {name, name, {}};
    }
    if (!value.isObject()) {
        fail(key, mustBe("a module's name or an object", value));
        return {};
    }
    const QJsonObject object = value.toObject();
    refuseUnknownKeys(object, key + QLatin1Char('.'), {"name", "library", "config"});

    const auto nameKey = QStringLiteral("name");
    const auto libraryKey = QStringLiteral("library");
    const auto configKey = QStringLiteral("config");
    ModuleEntry entry;
    entry.name = readModuleName(object.value(nameKey), member(key, nameKey));
    entry.libraryName = entry.name;
    if (object.contains(libraryKey)) {
        entry.libraryName = readLibrary(object.value(libraryKey), member(key, libraryKey));
    }
    if (object.contains(configKey)) {
        entry.config = readObject(object.value(configKey), member(key, configKey)).toVariantHash();
    }
    return entry;
}

void ConfigurationReader::refuseDuplicateName(const QString &name, const QString &key)
{
    const auto &modules = m_configuration.modules;
    const auto found = std::find_if(modules.begin(), modules.end(),
                                    [&name](const auto &module) { return module.name == name; });
    if (found != modules.end()) {
        const auto first = static_cast<int>(std::distance(modules.begin(), found));
        fail(key, QStringLiteral("the name \"%1\" is already that of %2")
                      .arg(name, element(QStringLiteral("modules"), first)));
    }
}

void ConfigurationReader::readModulePath(const QJsonArray &folders)
{
    for (int i = 0; i < folders.size(); ++i) {
        const QString key = element(QStringLiteral("modulePath"), i);
        m_configuration.modulePath.append(readPath(folders.at(i), key));
    }
}

void ConfigurationReader::readLog(const QJsonObject &log)
{
    refuseUnknownKeys(log, QStringLiteral("log."), {"file", "level", "levels"});
    if (log.contains(QLatin1String("file"))) {
        m_configuration.log.file =
            readPath(log.value(QLatin1String("file")), QStringLiteral("log.file"));
    }
    if (log.contains(QLatin1String("level"))) {
        readLevel({}, log.value(QLatin1String("level")), QStringLiteral("log.level"));
    }
    if (log.contains(QLatin1String("levels"))) {
        const QString key = QStringLiteral("log.levels");
        const QJsonObject levels = readObject(log.value(QLatin1String("levels")), key);
        for (auto it = levels.begin(); it != levels.end(); ++it) {
            readLevel(it.key(), it.value(), member(key, it.key()));
        }
    }
}

void ConfigurationReader::readLevel(const QString &logger, const QJsonValue &value,
                                    const QString &key)
{
    const QString name = readText(value, key);
    if (const auto level = logLevelFromName(name)) {
        m_configuration.log.levels.append({logger, *level});
        return;
    }
    fail(key,
         QStringLiteral("\"%1\" is no log level; the levels are %2").arg(name, logLevelNames()));
}

QString ConfigurationReader::readModuleName(const QJsonValue &value, const QString &key)
{
    QString name = readText(value, key);
    if (!isModuleName(name)) {
        fail(key, QStringLiteral("\"%1\" is no module name: letters, digits, '.', '_' and '-', "
                                 "with a letter or a digit first")
                      .arg(name));
    }
    return name;
}

QString ConfigurationReader::readLibrary(const QJsonValue &value, const QString &key)
{
    const QString library = readText(value, key);
    if (library.contains(QLatin1Char('/'))) {
        return absolutePath(library);
    }
    return readModuleName(value, key);
}

QString ConfigurationReader::readPath(const QJsonValue &value, const QString &key)
{
    const QString path = readText(value, key);
    if (path.isEmpty()) {
        fail(key, QStringLiteral("must not be empty"));
    }
    return absolutePath(path);
}

QString ConfigurationReader::readText(const QJsonValue &value, const QString &key)
{
    if (!value.isString()) {
        fail(key, mustBe("a string", value));
    }
    return value.toString();
}

QJsonObject ConfigurationReader::readObject(const QJsonValue &value, const QString &key)
{
    if (!value.isObject()) {
        fail(key, mustBe("an object", value));
    }
    return value.toObject();
}

QJsonArray ConfigurationReader::readArray(const QJsonValue &value, const QString &key)
{
    if (!value.isArray()) {
        fail(key, mustBe("an array", value));
    }
    return value.toArray();
}

void ConfigurationReader::refuseUnknownKeys(const QJsonObject &object, const QString &prefix,
                                            std::initializer_list<const char *> known)
{
    for (const QString &key : object.keys()) {
        const auto isKey = [&key](const char *name) { return key == QLatin1String(name); };
        if (std::none_of(known.begin(), known.end(), isKey)) {
            fail(prefix + key, QStringLiteral("unknown key"));
        }
    }
}

QString ConfigurationReader::absolutePath(const QString &path) const
{
    // Put together by hand: Qt takes a name that begins with a colon for one of its resources.
    const QString folder = QFileInfo(m_file).absolutePath();
    return QDir::cleanPath(path.startsWith(QLatin1Char('/')) ? path
                                                             : folder + QLatin1Char('/') + path);
}

void ConfigurationReader::fail(const QString &key, const QString &reason)
{
    if (!m_error) {
        m_error = ConfigurationError{m_file, key, reason};
    }
}
