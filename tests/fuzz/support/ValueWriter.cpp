// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/support/ValueWriter.h"

#include "fuzz/support/Dictionary.h"

#include <algorithm>
#include <stdexcept>

void ValueWriter::text(const QString &text)
{
    const auto &words = fuzzWords();
    const auto word = std::find(words.begin(), words.end(), text);
    if (word != words.end()) {
        byte(int(FuzzText::Word));
        byte(int(word - words.begin()));
        return;
    }
    const QByteArray utf8 = text.toUtf8();
    if (utf8.size() > 255) {
        throw std::length_error("too long for a seed: " + utf8.toStdString());
    }
    byte(int(FuzzText::Short));
    byte(utf8.size());
    raw(utf8);
}

void ValueWriter::value(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::UnknownType:
        tag(FuzzTag::None);
        break;
    case QMetaType::Bool:
        tag(FuzzTag::Bool);
        byte(int(value.toBool()));
        break;
    case QMetaType::Int:
        tag(FuzzTag::Int);
        number(value.toInt());
        break;
    case QMetaType::Double:
        tag(FuzzTag::Double);
        number(value.toDouble());
        break;
    case QMetaType::QString:
        tag(FuzzTag::Text);
        text(value.toString());
        break;
    case QMetaType::QVariantList: {
        const QVariantList elements = value.toList();
        tag(FuzzTag::List);
        byte(elements.size());
        for (const QVariant &element : elements) {
            this->value(element);
        }
        break;
    }
    case QMetaType::QVariantHash:
        fields(FuzzTag::Hash, value.toHash());
        break;
    case QMetaType::QVariantMap:
        fields(FuzzTag::Map, value.toMap());
        break;
    default:
        throw std::invalid_argument(std::string("no seed for ") + value.typeName());
    }
}

template <typename Fields>
void ValueWriter::fields(FuzzTag kind, const Fields &fields)
{
    tag(kind);
    byte(fields.size());
    QStringList keys = fields.keys();
    keys.sort();
    for (const QString &key : qAsConst(keys)) {
        text(key);
        value(fields.value(key));
    }
}

void ValueWriter::nested(int kind, int exponent, const QString &key)
{
    tag(FuzzTag::Nested);
    byte(kind);
    byte(exponent);
    if (kind != 0) {
        text(key);
    }
}
