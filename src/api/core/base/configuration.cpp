// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/configuration.h"

#include "core/base/stream.h"
#include "core/records/codec.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

TavoConfiguration::TavoConfiguration(const QVariantHash &config)
    : m_config(config)
{
}

TavoConfiguration::TavoConfiguration(const QVariantHash &config, const QString &prefix)
    : m_config(config)
    , m_prefix(prefix)
{
}

QString TavoConfiguration::text(const QString &key, const QString &fallback)
{
    const QVariant value = take(key);
    if (!value.isValid()) {
        return fallback;
    }
    if (value.userType() != QMetaType::QString) {
        fail(key, QStringLiteral("must be a text"));
    }
    return value.toString();
}

int TavoConfiguration::integer(const QString &key, int fallback, int least, int most)
{
    const double value = number(key, fallback, least, most);
    if (std::trunc(value) != value) {
        fail(key, QStringLiteral("must be a whole number"));
    }
    return static_cast<int>(value);
}

double TavoConfiguration::number(const QString &key, double fallback, double least, double most)
{
    const QVariant value = take(key);
    if (!value.isValid()) {
        return fallback;
    }
    const double number = tavoReadDouble(value);
    // Written so that not-a-number is refused as well.
    if (!tavoIsNumber(value) || !(number >= least && number <= most)) {
        fail(key, QStringLiteral("must be a number from %1 to %2").arg(least).arg(most));
    }
    return number;
}

bool TavoConfiguration::truth(const QString &key, bool fallback)
{
    const QVariant value = take(key);
    if (!value.isValid()) {
        return fallback;
    }
    if (value.userType() != QMetaType::Bool) {
        fail(key, QStringLiteral("must be true or false"));
    }
    return value.toBool();
}

QStringList TavoConfiguration::texts(const QString &key, const QStringList &fallback)
{
    const QVariant value = take(key);
    if (!value.isValid()) {
        return fallback;
    }
    if (value.userType() == QMetaType::QStringList) {
        return value.toStringList();
    }
    const QVariantList elements = value.toList();
    const bool allTexts =
        std::all_of(elements.begin(), elements.end(), [](const QVariant &element) {
            return element.userType() == QMetaType::QString;
        });
    if (value.userType() != QMetaType::QVariantList || !allTexts) {
        fail(key, QStringLiteral("must be a list of texts"));
    }
    return value.toStringList();
}

TavoConfiguration TavoConfiguration::section(const QString &key)
{
    const QVariant value = take(key);
    const bool isObject =
        value.userType() == QMetaType::QVariantHash || value.userType() == QMetaType::QVariantMap;
    if (value.isValid() && !isObject) {
        fail(key, QStringLiteral("must be an object"));
    }
    return {value.toHash(), m_prefix + key + QLatin1Char('.')};
}

void TavoConfiguration::finish() const
{
    QStringList keys = m_config.keys();
    std::sort(keys.begin(), keys.end());
    for (const QString &key : std::as_const(keys)) {
        if (!m_read.contains(key)) {
            fail(key, QStringLiteral("there is no such key"));
        }
    }
}

QVariant TavoConfiguration::take(const QString &key)
{
    m_read.insert(key);
    return m_config.value(key);
}

void TavoConfiguration::fail(const QString &key, const QString &reason) const
{
    // Through the stream, which escapes: a null within the key would end the text.
    std::ostringstream text;
    text << m_prefix << key << ": " << reason;
    throw std::runtime_error(text.str());
}
