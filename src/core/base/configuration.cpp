// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/configuration.h"

#include "base/Printable.h"
#include "core/base/numbers.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <sstream>
#include <stdexcept>

namespace {
template <typename Part>
const Part &shown(const Part &part)
{
    return part;
}

/// Escaped: a null within a key would cut off the rest.
std::string shown(const QString &text)
{
    return printable(text).toStdString();
}

template <typename... Parts>
[[noreturn]] void throwError(const Parts &...parts)
{
    std::ostringstream text;
    (text << ... << shown(parts));
    throw std::runtime_error(text.str());
}

/// Where the JSON is wrong. For most errors, the parser's offset is after the wrong character and
/// the blanks that follow it.
int errorOffset(const QByteArray &json, const QJsonParseError &error)
{
    int offset = qBound(0, error.offset, json.size());
    if (error.error == QJsonParseError::IllegalNumber ||
        error.error == QJsonParseError::GarbageAtEnd ||
        error.error == QJsonParseError::IllegalUTF8String) {
        return offset;
    }
    do {
        offset = qMax(0, offset - 1);
    } while (offset > 0 && std::isspace(static_cast<unsigned char>(json.at(offset))) != 0);
    return offset;
}

/// Returns "LINE:COLUMN". Both start at 1; columns are characters.
QString positionText(const QByteArray &text, int offset)
{
    const QByteArray before = text.left(offset);
    const int lineStart = before.lastIndexOf('\n') + 1;
    const int column = QString::fromUtf8(before.mid(lineStart)).size() + 1;
    return QStringLiteral("%1:%2").arg(before.count('\n') + 1).arg(column);
}

bool isString(const QVariant &value)
{
    return value.userType() == QMetaType::QString;
}

bool isObject(const QVariant &value)
{
    return value.userType() == QMetaType::QVariantHash ||
           value.userType() == QMetaType::QVariantMap;
}
} // namespace

TavoConfiguration::TavoConfiguration(const QVariantHash &config)
    : m_config(config)
{
}

TavoConfiguration::TavoConfiguration(const QVariantHash &config, const QString &source,
                                     const QString &prefix)
    : m_config(config)
    , m_source(source)
    , m_prefix(prefix)
{
}

TavoConfiguration TavoConfiguration::fromFile(const QString &file)
{
    QFile device(file);
    if (!device.open(QIODevice::ReadOnly)) {
        throwError(file, ": ", device.errorString());
    }
    const QByteArray json = device.readAll();
    if (device.error() != QFileDevice::NoError) {
        throwError(file, ": ", device.errorString());
    }
    return fromJson(json, file);
}

TavoConfiguration TavoConfiguration::fromJson(const QByteArray &json, const QString &file)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        throwError(file, ":", positionText(json, errorOffset(json, error)), ": ",
                   error.errorString());
    }
    if (!document.isObject()) {
        throwError(file, ": must be a JSON object");
    }
    return {document.object().toVariantHash(), file + QLatin1String(": "), {}};
}

QString TavoConfiguration::string(const QString &key, const QString &defaultValue)
{
    const QVariant value = take(key);
    if (!value.isValid()) {
        return defaultValue;
    }
    if (!isString(value)) {
        fail(key, QStringLiteral("must be a string"));
    }
    return value.toString();
}

int TavoConfiguration::integer(const QString &key, int defaultValue, int min, int max)
{
    const QVariant value = take(key);
    if (!value.isValid()) {
        return defaultValue;
    }
    const double number = tavoReadDouble(value);
    if (!tavoIsNumber(value) || !(number >= min && number <= max) || std::trunc(number) != number) {
        fail(key, QStringLiteral("must be an integer from %1 to %2").arg(min).arg(max));
    }
    return static_cast<int>(number);
}

double TavoConfiguration::number(const QString &key, double defaultValue, double min, double max)
{
    const QVariant value = take(key);
    if (!value.isValid()) {
        return defaultValue;
    }
    const double number = tavoReadDouble(value);
    // Written so that not-a-number is refused as well.
    if (!tavoIsNumber(value) || !(number >= min && number <= max)) {
        fail(key, QStringLiteral("must be a number from %1 to %2").arg(min).arg(max));
    }
    return number;
}

bool TavoConfiguration::boolean(const QString &key, bool defaultValue)
{
    const QVariant value = take(key);
    if (!value.isValid()) {
        return defaultValue;
    }
    if (value.userType() != QMetaType::Bool) {
        fail(key, QStringLiteral("must be a boolean"));
    }
    return value.toBool();
}

QStringList TavoConfiguration::stringList(const QString &key, const QStringList &defaultValue)
{
    const QVariant value = take(key);
    if (!value.isValid()) {
        return defaultValue;
    }
    if (value.userType() == QMetaType::QStringList) {
        return value.toStringList();
    }
    const QVariantList elements = value.toList();
    if (value.userType() != QMetaType::QVariantList ||
        !std::all_of(elements.begin(), elements.end(), isString)) {
        fail(key, QStringLiteral("must be a list of strings"));
    }
    return value.toStringList();
}

QVariantHash TavoConfiguration::object(const QString &key)
{
    const QVariant value = take(key);
    if (value.isValid() && !isObject(value)) {
        fail(key, QStringLiteral("must be an object"));
    }
    return value.toHash();
}

TavoConfiguration TavoConfiguration::section(const QString &key)
{
    return {object(key), m_source, m_prefix + key + QLatin1Char('.')};
}

std::vector<TavoConfiguration> TavoConfiguration::sections(const QString &key,
                                                           const QString &stringKey)
{
    const QVariant value = take(key);
    if (value.isValid() && value.userType() != QMetaType::QVariantList) {
        fail(key, QStringLiteral("must be a list"));
    }
    std::vector<TavoConfiguration> sections;
    for (const QVariant &element : value.toList()) {
        const QString name = QStringLiteral("%1[%2]").arg(key).arg(sections.size());
        const bool isShort = isString(element) && !stringKey.isEmpty();
        if (!isShort && !isObject(element)) {
            fail(name, stringKey.isEmpty() ? QStringLiteral("must be an object")
                                           : QStringLiteral("must be a string or an object"));
        }
        sections.push_back({isShort ? QVariantHash{{stringKey, element}} : element.toHash(),
                            m_source, m_prefix + name + QLatin1Char('.')});
    }
    return sections;
}

QStringList TavoConfiguration::keys() const
{
    QStringList keys = m_config.keys();
    std::sort(keys.begin(), keys.end());
    return keys;
}

void TavoConfiguration::finish() const
{
    for (const QString &key : keys()) {
        if (!m_read.contains(key)) {
            fail(key, QStringLiteral("unknown key"));
        }
    }
}

void TavoConfiguration::fail(const QString &key, const QString &reason) const
{
    throwError(m_source, m_prefix, key, ": ", reason);
}

QVariant TavoConfiguration::take(const QString &key)
{
    m_read.insert(key);
    return m_config.value(key);
}
