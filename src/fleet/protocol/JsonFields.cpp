// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/protocol/JsonFields.h"

#include "fleet/protocol/FleetTopics.h"

#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

namespace {
/// The end of the string that begins at this index: that of its closing quote, or of the text.
int endOfString(const QByteArray &json, int begin)
{
    int index = begin + 1;
    while (index < json.size() && json[index] != '"') {
        index += json[index] == '\\' ? 2 : 1;
    }
    return qMin(index, json.size());
}

bool isKey(const QByteArray &json, int afterString)
{
    int index = afterString;
    while (index < json.size() && (json[index] == ' ' || json[index] == '\t' ||
                                   json[index] == '\n' || json[index] == '\r')) {
        ++index;
    }
    return index < json.size() && json[index] == ':';
}

bool isPlain(std::string_view key)
{
    return std::all_of(key.begin(), key.end(),
                       [](char character) { return uchar(character) >= ' ' && character != '\\'; });
}

bool areDifferent(std::vector<std::string_view> &keys)
{
    std::sort(keys.begin(), keys.end());
    return std::adjacent_find(keys.begin(), keys.end()) == keys.end();
}

/// Whether all brackets are closed and no object has a key twice. A key with an escape counts as one, because it
/// could be written in several ways. In other texts Qt's parser leaks memory, which a sender could use; and readers
/// differ in which of two equal keys counts.
bool isSafeToParse(const QByteArray &json)
{
    std::vector<std::vector<std::string_view>> keys; // of the open brackets
    for (int index = 0; index < json.size(); ++index) {
        const char character = json[index];
        if (character == '{' || character == '[') {
            keys.emplace_back();
        } else if ((character == '}' || character == ']') && !keys.empty()) {
            if (!areDifferent(keys.back())) {
                return false;
            }
            keys.pop_back();
        } else if (character == '"') {
            const int end = endOfString(json, index);
            if (!keys.empty() && isKey(json, end + 1)) {
                keys.back().emplace_back(json.constData() + index + 1,
                                         std::size_t(end - index - 1));
                if (!isPlain(keys.back().back())) {
                    return false;
                }
            }
            index = end;
        }
    }
    return keys.empty();
}
} // namespace

QJsonValue JsonFields::take(const QString &key)
{
    m_taken.append(key);
    return m_object.value(key);
}

QString JsonFields::string(const QString &key)
{
    const QJsonValue value = take(key);
    if (!value.isUndefined() && !value.isString()) {
        fail(key, QStringLiteral("must be a string"));
    }
    return value.toString();
}

QString JsonFields::name(const QString &key)
{
    QString name = string(key);
    if (!isFleetName(name)) {
        fail(key, QStringLiteral("must be 1 to 64 letters, digits, dots, underscores and hyphens"));
    }
    return name;
}

bool JsonFields::boolean(const QString &key)
{
    const QJsonValue value = take(key);
    if (!value.isUndefined() && !value.isBool()) {
        fail(key, QStringLiteral("must be true or false"));
    }
    return value.toBool();
}

qint64 JsonFields::integer(const QString &key, const QJsonValue &value, qint64 defaultValue,
                           qint64 min, qint64 max) const
{
    if (value.isUndefined()) {
        return defaultValue;
    }
    const double number = value.toDouble();
    if (!value.isDouble() || number != std::floor(number) || number < double(min) ||
        number > double(max)) {
        fail(key, QStringLiteral("must be an integer from %1 to %2").arg(min).arg(max));
    }
    return qint64(number);
}

void JsonFields::finish() const
{
    for (auto field = m_object.begin(); field != m_object.end(); ++field) {
        if (!m_taken.contains(field.key())) {
            fail(field.key(), QStringLiteral("is not known"));
        }
    }
}

void JsonFields::fail(const QString &key, const QString &reason) const
{
    throw Error{{key.left(64) + QStringLiteral(": ") + reason}};
}

Result<QJsonObject> jsonObject(const QByteArray &json)
{
    if (!isSafeToParse(json)) {
        return Failure{QStringLiteral("not JSON, or a key comes twice or has an escape")};
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        return Failure{QStringLiteral("not JSON: %1").arg(error.errorString())};
    }
    if (!document.isObject()) {
        return Failure{QStringLiteral("not a JSON object")};
    }
    return document.object();
}
