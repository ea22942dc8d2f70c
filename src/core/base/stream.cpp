// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/stream.h"

#include "base/Printable.h"

#include <ostream>
#include <string>
#include <utility>

namespace {
/// Deep enough for every record. Limits the stack that a value of a client can use.
constexpr int maxDepth = 16;

/// Long enough for every record, in bytes.
constexpr int maxValueSize = 2000;

/// Writes a value until it is too long. What follows is written as "...".
class ValueWriter
{
public:
    std::string take() { return std::move(m_text); }

    void write(const QVariant &value, int depth)
    {
        if (depth > maxDepth) {
            put("...");
            return;
        }
        switch (value.userType()) {
        case QMetaType::UnknownType:
            put("(none)");
            break;
        case QMetaType::QVariantHash:
        case QMetaType::QVariantMap:
            writeFields(value.toHash(), depth);
            break;
        case QMetaType::QVariantList:
        case QMetaType::QStringList:
            writeElements(value.toList(), depth);
            break;
        case QMetaType::QString:
            put('"' + logText(value.toString()) + '"');
            break;
        case QMetaType::QByteArray:
            put("(" + std::to_string(value.toByteArray().size()) + " bytes)");
            break;
        default:
            put(value.canConvert(QMetaType::QString) ? logText(value.toString())
                                                     : std::string("(") + value.typeName() + ')');
        }
    }

private:
    void writeFields(const QVariantHash &fields, int depth)
    {
        QStringList keys = fields.keys();
        keys.sort();
        put("{");
        for (int i = 0; i < keys.size() && !m_isFull; ++i) {
            put((i == 0 ? "" : ", ") + logText(keys.at(i)) + ": ");
            write(fields.value(keys.at(i)), depth + 1);
        }
        put("}");
    }

    void writeElements(const QVariantList &elements, int depth)
    {
        put("[");
        for (int i = 0; i < elements.size() && !m_isFull; ++i) {
            put(i == 0 ? "" : ", ");
            write(elements.at(i), depth + 1);
        }
        put("]");
    }

    void put(const std::string &text)
    {
        if (m_isFull) {
            return;
        }
        m_isFull = m_text.size() + text.size() > maxValueSize;
        m_text += m_isFull ? "..." : text;
    }

    std::string m_text;
    bool m_isFull = false;
};
} // namespace

std::ostream &operator<<(std::ostream &stream, const QString &text)
{
    return stream << logText(text);
}

std::ostream &operator<<(std::ostream &stream, const QVariant &value)
{
    ValueWriter writer;
    writer.write(value, 0);
    return stream << writer.take();
}
