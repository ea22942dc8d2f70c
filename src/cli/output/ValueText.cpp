// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/output/ValueText.h"

#include "base/Printable.h"
#include <core/records/cmpath.h>

#include <QLocale>
#include <QStringList>

#include <algorithm>

namespace {
constexpr int s_step = 2;

QString scalarText(const QVariant &value)
{
    switch (int(value.userType())) {
    case QMetaType::UnknownType:
        return QStringLiteral("(empty)");
    case QMetaType::QByteArray:
        return QStringLiteral("(%1 bytes)").arg(value.toByteArray().size());
    case QMetaType::Float:
    case QMetaType::Double:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::UChar:
    case QMetaType::SChar:
        return QString::number(value.toInt());
    default:
        break;
    }
    if (value.userType() == qMetaTypeId<CMPath>()) {
        return printable(value.value<CMPath>().toString());
    }
    return printable(value.toString());
}

bool isList(const QVariant &value)
{
    return value.userType() == QMetaType::QVariantList ||
           value.userType() == QMetaType::QStringList;
}

bool isRecord(const QVariant &value)
{
    return value.userType() == QMetaType::QVariantHash ||
           value.userType() == QMetaType::QVariantMap;
}

QStringList linesOf(const QVariant &value);

/// The lines of a value after its key or dash; on the same line if there is only one.
QStringList linesBehind(const QString &head, const QVariant &value)
{
    const QStringList lines = linesOf(value);
    const bool isNested = isList(value) || isRecord(value);
    if (!isNested || lines.isEmpty()) {
        const QString none = isList(value) ? QStringLiteral("(none)") : QStringLiteral("(empty)");
        const QString text = lines.isEmpty() ? none : lines.first();
        return {text.isEmpty() ? head : head + QLatin1Char(' ') + text};
    }
    QStringList result{head};
    for (const QString &line : lines) {
        result.append(QString(s_step, QLatin1Char(' ')) + line);
    }
    return result;
}

QStringList linesOf(const QVariant &value)
{
    QStringList lines;
    if (isList(value)) {
        for (const QVariant &element : value.toList()) {
            lines += linesBehind(QStringLiteral("-"), element);
        }
        return lines;
    }
    if (isRecord(value)) {
        const QVariantHash fields = value.toHash();
        QStringList keys = fields.keys();
        std::sort(keys.begin(), keys.end());
        for (const QString &key : qAsConst(keys)) {
            lines += linesBehind(printable(key) + QLatin1Char(':'), fields.value(key));
        }
        return lines;
    }
    return {scalarText(value)};
}
} // namespace

QString valueText(const QVariant &value)
{
    const QStringList lines = linesOf(value);
    if (lines.isEmpty()) {
        return isList(value) ? QStringLiteral("(none)") : QStringLiteral("(empty)");
    }
    return lines.join(QLatin1Char('\n'));
}
