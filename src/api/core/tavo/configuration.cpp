// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/tavo/configuration.h"

#include "core/tavo/codec.h"
#include "core/tavo/stream.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include <QStringList>

namespace {
[[noreturn]] void fail(const QString &key, const QString &reason)
{
    // Through the stream, which escapes: a null within the key would end the text.
    std::ostringstream text;
    text << key << ": " << reason;
    throw std::runtime_error(text.str());
}
} // namespace

TavoConfiguration::TavoConfiguration(const QVariantHash &config)
    : m_config(config)
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
