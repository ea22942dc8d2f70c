// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusVariantWriter.h"

#include "bus/BusError.h"
#include "bus/BusVariant.h"

#include <core/base/trstring.h>
#include <core/model/cmerror.h>
#include <core/records/cmpath.h>

#include <QStringList>

#include <cstring>
#include <string>

namespace {
constexpr const char *textContents = "s";
constexpr const char *listContents = "v";
constexpr const char *fieldContents = "sv";

/// What a text takes in a message at most, beside its bytes: its length, its end and what aligns it.
constexpr int bytesPerText = 12;

void check(int result)
{
    if (result < 0) {
        throw BusErrors::unsupportedValue("The value can't be sent: " +
                                          std::string(std::strerror(-result)));
    }
}
} // namespace

void BusVariantWriter::append(const QVariant &value, int depth)
{
    if (depth >= BusVariant::deepest) {
        throw BusErrors::unsupportedValue("The value nests too deeply for a message");
    }
    spend(BusVariant::bytesPerValue);
    switch (value.userType()) {
    case QMetaType::UnknownType:
        return appendNothing();
    case QMetaType::Bool:
        return appendNumber<int>(SD_BUS_TYPE_BOOLEAN, value.toBool() ? 1 : 0);
    case QMetaType::Int:
        return appendNumber<std::int32_t>(SD_BUS_TYPE_INT32, value.toInt());
    case QMetaType::UInt:
        return appendNumber<std::uint32_t>(SD_BUS_TYPE_UINT32, value.toUInt());
    case QMetaType::LongLong:
    case QMetaType::Long:
        return appendNumber<std::int64_t>(SD_BUS_TYPE_INT64, value.toLongLong());
    case QMetaType::ULongLong:
    case QMetaType::ULong:
        return appendNumber<std::uint64_t>(SD_BUS_TYPE_UINT64, value.toULongLong());
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
        return appendNumber(SD_BUS_TYPE_INT16, value.value<std::int16_t>());
    case QMetaType::UShort:
        return appendNumber(SD_BUS_TYPE_UINT16, value.value<std::uint16_t>());
    case QMetaType::UChar:
        return appendNumber(SD_BUS_TYPE_BYTE, value.value<std::uint8_t>());
    case QMetaType::Double:
    case QMetaType::Float:
        return appendNumber<double>(SD_BUS_TYPE_DOUBLE, value.toDouble());
    case QMetaType::QString:
    case QMetaType::QChar:
        return appendTextVariant(value.toString());
    case QMetaType::QByteArray:
        return appendBytes(value.toByteArray());
    case QMetaType::QStringList:
        return appendTexts(value.toStringList());
    case QMetaType::QVariantList:
        return appendList(*static_cast<const QVariantList *>(value.constData()), depth);
    case QMetaType::QVariantHash:
        return appendFields(*static_cast<const QVariantHash *>(value.constData()), depth);
    case QMetaType::QVariantMap:
        return appendFields(*static_cast<const QVariantMap *>(value.constData()), depth);
    default:
        return appendOwnType(value, depth);
    }
}

void BusVariantWriter::appendOwnType(const QVariant &value, int depth)
{
    const int type = value.userType();
    if (type == qMetaTypeId<CMPath>()) {
        append(value.value<CMPath>().toQVariant(), depth);
    } else if (type == qMetaTypeId<TrString>()) {
        append(value.value<TrString>(), depth);
    } else if (type == qMetaTypeId<CMError>()) {
        appendFields(value.value<CMError>(), depth);
    } else {
        throw BusErrors::unsupportedValue("A value of the type " + std::string(value.typeName()) +
                                          " can't be sent");
    }
}

void BusVariantWriter::appendNothing()
{
    open(SD_BUS_TYPE_VARIANT, "g");
    check(sd_bus_message_append_basic(m_message, SD_BUS_TYPE_SIGNATURE, ""));
    close();
}

template <typename Wire>
void BusVariantWriter::appendNumber(char type, Wire number)
{
    const char contents[] = {type, 0};
    open(SD_BUS_TYPE_VARIANT, contents);
    check(sd_bus_message_append_basic(m_message, type, &number));
    close();
}

void BusVariantWriter::appendText(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    spend(std::size_t(utf8.size()) + bytesPerText);
    const bool isWhole = text.isValidUtf16() &&
                         std::memchr(utf8.constData(), 0, std::size_t(utf8.size())) == nullptr;
    // The message refuses what is no character.
    if (!isWhole ||
        sd_bus_message_append_basic(m_message, SD_BUS_TYPE_STRING, utf8.constData()) < 0) {
        throw BusErrors::unsupportedValue("A text holds a character that can't be sent");
    }
}

void BusVariantWriter::appendTextVariant(const QString &text)
{
    open(SD_BUS_TYPE_VARIANT, textContents);
    appendText(text);
    close();
}

void BusVariantWriter::appendBytes(const QByteArray &bytes)
{
    spend(std::size_t(bytes.size()));
    open(SD_BUS_TYPE_VARIANT, "ay");
    check(sd_bus_message_append_array(m_message, SD_BUS_TYPE_BYTE, bytes.constData(),
                                      std::size_t(bytes.size())));
    close();
}

void BusVariantWriter::appendTexts(const QStringList &texts)
{
    open(SD_BUS_TYPE_VARIANT, "as");
    open(SD_BUS_TYPE_ARRAY, textContents);
    for (const QString &text : texts) {
        appendText(text);
    }
    close();
    close();
}

void BusVariantWriter::appendList(const QVariantList &values, int depth)
{
    open(SD_BUS_TYPE_VARIANT, "av");
    open(SD_BUS_TYPE_ARRAY, listContents);
    for (const QVariant &value : values) {
        append(value, depth + 2);
    }
    close();
    close();
}

template <typename Fields>
void BusVariantWriter::appendFields(const Fields &fields, int depth)
{
    open(SD_BUS_TYPE_VARIANT, "a{sv}");
    open(SD_BUS_TYPE_ARRAY, "{sv}");
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        open(SD_BUS_TYPE_DICT_ENTRY, fieldContents);
        appendText(field.key());
        append(field.value(), depth + 3);
        close();
    }
    close();
    close();
}

void BusVariantWriter::open(char container, const char *contents)
{
    check(sd_bus_message_open_container(m_message, container, contents));
}

void BusVariantWriter::close()
{
    check(sd_bus_message_close_container(m_message));
}

void BusVariantWriter::spend(std::size_t bytes)
{
    if (bytes > m_bytesLeft) {
        throw BusErrors::unsupportedValue("The value is too large for a message");
    }
    m_bytesLeft -= bytes;
}
