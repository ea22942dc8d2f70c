// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/stream.h"

#include <algorithm>
#include <ostream>

namespace {
/// Deep enough for every record. Limits the use of the stack, whatever a client sends.
constexpr int maxDepth = 16;

/// Returns whether a character ends a line or controls a terminal, in ASCII and beyond.
bool isControl(QChar c)
{
    const ushort code = c.unicode();
    return code < 0x20 || (code >= 0x7f && code < 0xa0) || code == QChar::LineSeparator ||
           code == QChar::ParagraphSeparator;
}

bool isPlain(const QString &text)
{
    return std::none_of(text.begin(), text.end(), isControl);
}

QString escaped(const QString &text)
{
    QString result;
    result.reserve(text.size() + 16);
    for (const QChar c : text) {
        if (c == QLatin1Char('\n')) {
            result += QLatin1String("\\n");
        } else if (c == QLatin1Char('\r')) {
            result += QLatin1String("\\r");
        } else if (c == QLatin1Char('\t')) {
            result += QLatin1String("\\t");
        } else if (isControl(c)) {
            result += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        } else {
            result += c;
        }
    }
    return result;
}

void write(std::ostream &stream, const QVariant &value, int depth);

void writeFields(std::ostream &stream, const QVariantHash &fields, int depth)
{
    QStringList keys = fields.keys();
    keys.sort();
    stream << '{';
    for (const QString &key : qAsConst(keys)) {
        stream << (key == keys.constFirst() ? "" : ", ") << key << ": ";
        write(stream, fields.value(key), depth + 1);
    }
    stream << '}';
}

void writeElements(std::ostream &stream, const QVariantList &elements, int depth)
{
    stream << '[';
    for (int i = 0; i < elements.size(); ++i) {
        stream << (i == 0 ? "" : ", ");
        write(stream, elements.at(i), depth + 1);
    }
    stream << ']';
}

void write(std::ostream &stream, const QVariant &value, int depth)
{
    if (depth > maxDepth) {
        stream << "...";
        return;
    }
    switch (value.userType()) {
    case QMetaType::UnknownType:
        stream << "(none)";
        break;
    case QMetaType::QVariantHash:
    case QMetaType::QVariantMap:
        writeFields(stream, value.toHash(), depth);
        break;
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        writeElements(stream, value.toList(), depth);
        break;
    case QMetaType::QString:
        stream << '"' << value.toString() << '"';
        break;
    case QMetaType::QByteArray:
        stream << "(" << value.toByteArray().size() << " bytes)";
        break;
    default:
        if (value.canConvert(QMetaType::QString)) {
            stream << value.toString();
        } else {
            stream << '(' << value.typeName() << ')';
        }
    }
}
} // namespace

std::ostream &operator<<(std::ostream &stream, const QString &text)
{
    const QByteArray utf8 = isPlain(text) ? text.toUtf8() : escaped(text).toUtf8();
    return stream.write(utf8.constData(), utf8.size());
}

std::ostream &operator<<(std::ostream &stream, const QVariant &value)
{
    write(stream, value, 0);
    return stream;
}
