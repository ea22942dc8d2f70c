// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/support/ValueReader.h"

#include "fuzz/support/ValueFormat.h"
#include <core/tavo.h>

#include <QDateTime>
#include <QRect>
#include <QUrl>
#include <QUuid>

#include <limits>

namespace {
constexpr int maxDepth = 12;
constexpr int maxExponent = 17;
constexpr int maxLevelsExponent = 14;
constexpr int maxCopiesExponent = 12;
constexpr int maxCopiedText = 64;
} // namespace

int ValueReader::count()
{
    const int wanted = m_input.byte();
    const int granted = std::min(wanted, std::max(0, m_valuesLeft));
    m_valuesLeft -= granted;
    return granted;
}

QString ValueReader::text()
{
    QString result;
    switch (FuzzText(m_input.below(int(FuzzText::Count)))) {
    case FuzzText::Word: {
        const auto &words = fuzzWords();
        result = words[std::size_t(m_input.byte()) % words.size()];
        break;
    }
    case FuzzText::Short:
        result = QString::fromUtf8(m_input.bytes(m_input.byte()));
        break;
    case FuzzText::Wide: {
        const QByteArray units = m_input.bytes(2 * m_input.byte());
        result = QString(units.size() / 2, Qt::Uninitialized);
        std::memcpy(result.data(), units.constData(), std::size_t(result.size()) * 2);
        break;
    }
    case FuzzText::Huge: {
        const auto unit = QChar(m_input.number<ushort>());
        result = QString(1 << m_input.below(maxExponent + 1), unit);
        break;
    }
    case FuzzText::Count:
        break;
    }
    result.truncate(std::max(0, m_charactersLeft));
    m_charactersLeft -= result.size();
    return result;
}

QVariant ValueReader::value(int depth)
{
    if (depth > maxDepth || --m_valuesLeft < 0) {
        return {};
    }
    const int tag = m_input.below(int(FuzzTag::Count));
    return tag < int(FuzzTag::List) ? scalar(tag) : container(tag, depth);
}

QVariant ValueReader::scalar(int tag)
{
    switch (FuzzTag(tag)) {
    case FuzzTag::Bool:
        return m_input.byte() % 2 != 0;
    case FuzzTag::Small:
        return int(qint8(m_input.byte()));
    case FuzzTag::Int:
        return m_input.number<int>();
    case FuzzTag::UInt:
        return m_input.number<uint>();
    case FuzzTag::Long:
        return m_input.number<qlonglong>();
    case FuzzTag::ULong:
        return m_input.number<qulonglong>();
    case FuzzTag::Double:
        return m_input.number<double>();
    case FuzzTag::OddDouble:
        return oddDouble();
    case FuzzTag::Text:
        return text();
    case FuzzTag::Bytes:
        return m_input.bytes(m_input.byte());
    default:
        return {};
    }
}

QVariant ValueReader::oddDouble()
{
    using Limits = std::numeric_limits<double>;
    const double odd[] = {Limits::quiet_NaN(),
                          Limits::infinity(),
                          -Limits::infinity(),
                          Limits::max(),
                          Limits::denorm_min(),
                          -0.0,
                          9007199254740993.0,
                          2147483648.0,
                          -2147483649.0,
                          9.3e18,
                          0.5,
                          1.25,
                          -12.5,
                          2.0,
                          -96.5};
    return odd[m_input.below(int(std::size(odd)))];
}

QVariant ValueReader::container(int tag, int depth)
{
    switch (FuzzTag(tag)) {
    case FuzzTag::List:
        return list(count(), depth);
    case FuzzTag::StringList: {
        QStringList texts;
        for (int i = count(); i > 0; --i) {
            texts.append(text());
        }
        return texts;
    }
    case FuzzTag::Hash:
        return hash(depth);
    case FuzzTag::Map: {
        const QVariantHash fields = hash(depth);
        QVariantMap map;
        for (auto field = fields.begin(); field != fields.end(); ++field) {
            map.insert(field.key(), field.value());
        }
        return map;
    }
    case FuzzTag::Record:
        return record(FuzzRecord(m_input.below(int(FuzzRecord::Count))), depth);
    case FuzzTag::Nested:
        return nested(depth);
    case FuzzTag::Path:
        return QVariant::fromValue(CMPath(text()));
    case FuzzTag::Translated:
        return translated();
    case FuzzTag::Foreign:
        return foreign();
    case FuzzTag::Copies:
        return copies();
    case FuzzTag::Known:
        return m_known ? m_known(m_input.byte()) : QVariant();
    default:
        return {};
    }
}

// Copies small values only: copies share memory, so lists of copies of lists would be small in
// memory only.
QVariantList ValueReader::copies()
{
    const int exponent = m_input.below(maxCopiesExponent + 1);
    const QVariant copied = scalar(m_input.below(int(FuzzTag::List)));
    const int count = copied.toString().size() <= maxCopiedText ? 1 << exponent : 1;
    QVariantList result;
    result.reserve(count);
    for (int i = 0; i < count; ++i) {
        result.append(copied);
    }
    return result;
}

QVariantList ValueReader::list(int count, int depth)
{
    QVariantList elements;
    for (int i = 0; i < count; ++i) {
        elements.append(value(depth + 1));
    }
    return elements;
}

QVariantHash ValueReader::hash(int depth)
{
    QVariantHash fields;
    for (int i = count(); i > 0; --i) {
        const QString key = text();
        fields.insert(key, value(depth + 1));
    }
    return fields;
}

QVariantHash ValueReader::record(FuzzRecord kind, int depth)
{
    QVariantHash fields;
    if (depth > maxDepth) {
        return fields;
    }
    for (const FuzzFieldOf &field : fuzzFields(kind)) {
        const QString key = QString::fromLatin1(field.key);
        switch (FuzzFill(m_input.below(int(FuzzFill::Count)))) {
        case FuzzFill::Suitable:
            fields.insert(key, suitable(field, depth));
            break;
        case FuzzFill::Any:
            fields.insert(key, value(depth + 1));
            break;
        default:
            break;
        }
    }
    return fields;
}

QVariant ValueReader::suitable(const FuzzFieldOf &field, int depth)
{
    switch (field.type) {
    case FuzzField::Bool:
        return m_input.byte() % 2 != 0;
    case FuzzField::Int:
        return int(qint8(m_input.byte()));
    case FuzzField::Double:
        return double(qint8(m_input.byte())) / 16;
    case FuzzField::Text:
        return text();
    case FuzzField::Path: {
        // Half of them are paths published by the system.
        const int which = m_input.byte();
        return m_known && which % 2 == 0 ? m_known(which / 2) : QVariant(QLatin1Char('/') + text());
    }
    case FuzzField::Translatable:
        return translatable();
    case FuzzField::Ints: {
        QVariantList numbers;
        for (int i = m_input.below(4); i > 0; --i) {
            numbers.append(int(qint8(m_input.byte())));
        }
        return numbers;
    }
    case FuzzField::Strings: {
        QVariantList texts;
        for (int i = m_input.below(4); i > 0; --i) {
            texts.append(text());
        }
        return texts;
    }
    case FuzzField::Record:
        return record(field.record, depth + 1);
    case FuzzField::Records: {
        QVariantList records;
        for (int i = m_input.below(4); i > 0; --i) {
            records.append(record(field.record, depth + 1));
        }
        return records;
    }
    }
    return {};
}

QVariant ValueReader::translatable()
{
    return m_input.byte() % 2 == 0 ? QVariant(text()) : record(FuzzRecord::Translation, maxDepth);
}

QVariant ValueReader::nested(int depth)
{
    const int kind = m_input.below(3);
    const int wanted = 1 << m_input.below(maxLevelsExponent + 1);
    const int levels = std::min(wanted, m_levelsLeft);
    m_levelsLeft -= levels;
    const QString key = kind == 0 ? QString() : text();
    QVariant inner = value(depth + 1);
    for (int i = 0; i < levels; ++i) {
        if (kind == 0) {
            inner = QVariant(QVariantList{inner});
        } else if (kind == 1) {
            inner = QVariantHash{{key, inner}};
        } else {
            inner = QVariantMap{{key, inner}};
        }
    }
    return inner;
}

QVariant ValueReader::translated()
{
    const QByteArray source = text().toUtf8();
    QList<TrArg> arguments;
    for (int i = m_input.below(12); i > 0; --i) {
        arguments.append(TrArg(text()));
    }
    return QVariant::fromValue(TrString(
        TrCharData{"Context", source.constData(), nullptr, int(qint8(m_input.byte()))}, arguments));
}

QVariant ValueReader::foreign()
{
    switch (m_input.below(8)) {
    case 0:
        return QUrl(text());
    case 1:
        return QDateTime::fromMSecsSinceEpoch(m_input.number<qint32>());
    case 2:
        return QUuid(text());
    case 3:
        return QRect(1, 2, 3, 4);
    case 4:
        return QChar(m_input.number<ushort>());
    case 5:
        return QVariant::fromValue(m_input.number<short>());
    case 6:
        return QVariant::fromValue(m_input.number<float>());
    default:
        return QVariant::fromValue(static_cast<void *>(nullptr));
    }
}
