// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/Json.h"

#include "base/Printable.h"
#include <core/records/cmpath.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <cmath>
#include <limits>

namespace {
const QString &base64Key()
{
    static const QString s_key = QStringLiteral("base64");
    return s_key;
}

QVariant readNumber(const QJsonValue &value)
{
    QVariant number = value.toVariant();
    if (number.userType() != QMetaType::LongLong) {
        return number;
    }
    const qlonglong integer = number.toLongLong();
    const bool fits =
        integer >= std::numeric_limits<int>::min() && integer <= std::numeric_limits<int>::max();
    return fits ? QVariant(static_cast<int>(integer)) : number;
}

QVariant readValue(const QJsonValue &value);

QVariant readObject(const QJsonObject &object)
{
    if (object.size() == 1 && object.value(base64Key()).isString()) {
        return QByteArray::fromBase64(object.value(base64Key()).toString().toLatin1());
    }
    QVariantHash fields;
    for (auto field = object.begin(); field != object.end(); ++field) {
        fields.insert(field.key(), readValue(field.value()));
    }
    return fields;
}

QVariant readValue(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Object:
        return readObject(value.toObject());
    case QJsonValue::Array: {
        QVariantList elements;
        for (const auto &element : value.toArray()) {
            elements.append(readValue(element));
        }
        return elements;
    }
    case QJsonValue::Double:
        return readNumber(value);
    case QJsonValue::Null:
        return {};
    default:
        return value.toVariant();
    }
}

/// Writes a value. Each element of a list or a record begins with a line feed and indentation.
class JsonWriter
{
public:
    explicit JsonWriter(JsonForm form)
        : m_form(form)
    {
    }

    QByteArray text() const { return m_text; }

    void write(const QVariant &value)
    {
        switch (int(value.userType())) {
        case QMetaType::QVariantList:
        case QMetaType::QStringList:
            writeList(value.toList());
            break;
        case QMetaType::QVariantHash:
            writeFields(sorted(value.toHash()));
            break;
        case QMetaType::QVariantMap:
            writeFields(value.toMap());
            break;
        case QMetaType::QByteArray:
            writeFields({{base64Key(), QString::fromLatin1(value.toByteArray().toBase64())}});
            break;
        default:
            writeScalar(value);
        }
    }

private:
    static QVariantMap sorted(const QVariantHash &fields)
    {
        QVariantMap result;
        for (auto field = fields.begin(); field != fields.end(); ++field) {
            result.insert(field.key(), field.value());
        }
        return result;
    }

    void writeList(const QVariantList &elements)
    {
        open('[');
        for (const QVariant &element : elements) {
            nextElement();
            write(element);
        }
        close(']');
    }

    void writeFields(const QVariantMap &fields)
    {
        open('{');
        for (auto field = fields.begin(); field != fields.end(); ++field) {
            nextElement();
            writeText(field.key());
            m_text += m_form == JsonForm::Indented ? ": " : ":";
            write(field.value());
        }
        close('}');
    }

    void writeScalar(const QVariant &value)
    {
        switch (int(value.userType())) {
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
            m_text += value.toByteArray();
            break;
        // toByteArray() would write an 8 bit integer as a character.
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::UChar:
        case QMetaType::SChar:
            m_text += QByteArray::number(value.toInt());
            break;
        case QMetaType::Float:
        case QMetaType::Double:
            m_text +=
                std::isfinite(value.toDouble())
                    ? QByteArray::number(value.toDouble(), 'g', QLocale::FloatingPointShortest)
                    : QByteArray("null");
            break;
        default:
            writeOther(value);
        }
    }

    void writeOther(const QVariant &value)
    {
        if (value.userType() == qMetaTypeId<CMPath>()) {
            writeText(value.value<CMPath>().toString());
        } else if (value.canConvert<QString>()) {
            writeText(value.toString());
        } else {
            m_text += "null";
        }
    }

    void writeText(const QString &text)
    {
        // Qt quotes it as an array, whose brackets are removed.
        const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
        m_text += withEscapes(array.mid(1, array.size() - 2));
    }

    /// Escapes what Qt leaves as it is, although it is unsafe to print.
    static QByteArray withEscapes(const QByteArray &quoted)
    {
        const QString text = QString::fromUtf8(quoted);
        if (isPrintable(text)) {
            return quoted;
        }
        QString result;
        for (const QChar character : text) {
            if (isUnsafeToPrint(character.unicode())) {
                result += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
            } else {
                result += character;
            }
        }
        return result.toUtf8();
    }

    void open(char bracket)
    {
        m_text += bracket;
        ++m_depth;
        m_isFirst = true;
    }

    void nextElement()
    {
        if (!m_isFirst) {
            m_text += ',';
        }
        m_isFirst = false;
        breakLine();
    }

    void close(char bracket)
    {
        --m_depth;
        if (!m_isFirst) {
            breakLine();
        }
        m_text += bracket;
        m_isFirst = false;
    }

    void breakLine()
    {
        if (m_form == JsonForm::Indented) {
            constexpr int step = 2;
            m_text += '\n' + QByteArray(m_depth * step, ' ');
        }
    }

    JsonForm m_form;
    QByteArray m_text;
    int m_depth = 0;
    bool m_isFirst = true; ///< no element has been written since the last bracket
};
} // namespace

Result<QVariant> fromJson(const QByteArray &text)
{
    // The parser accepts arrays and objects only, so the value is wrapped in an array.
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson('[' + text + "\n]", &error);
    if (error.error != QJsonParseError::NoError) {
        return Failure{error.errorString()};
    }
    const QJsonArray elements = document.array();
    if (elements.size() != 1) {
        return Failure{QStringLiteral("must be one value")};
    }
    return readValue(elements.first());
}

QByteArray toJson(const QVariant &value, JsonForm form)
{
    JsonWriter writer(form);
    writer.write(value);
    return writer.text();
}
