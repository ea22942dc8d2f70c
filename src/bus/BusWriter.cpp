// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusWriter.h"

#include "bus/BusError.h"
#include <core/base/trstring.h>
#include <core/model/cmerror.h>
#include <core/records/cmpath.h>

#include <cstring>
#include <string>

namespace {
/// The most that a string adds to a message besides its bytes: length, end and padding.
constexpr int bytesPerString = 12;

void check(int result)
{
    if (result < 0) {
        throw BusError::unsupportedValue("The value can't be sent: " +
                                         std::string(std::strerror(-result)));
    }
}
} // namespace

void BusWriter::writeVariant(const QVariant &value)
{
    if (m_depth >= maxDepth) {
        throw BusError::unsupportedValue("The value nests too deeply for a message");
    }
    count(bytesPerValue);
    switch (value.userType()) {
    case QMetaType::UnknownType:
        open(SD_BUS_TYPE_VARIANT, "g");
        check(sd_bus_message_append_basic(m_message.get(), SD_BUS_TYPE_SIGNATURE, ""));
        return close();
    case QMetaType::Bool:
        return writeNumberVariant<int>(SD_BUS_TYPE_BOOLEAN, value.toBool() ? 1 : 0);
    case QMetaType::Int:
        return writeNumberVariant<std::int32_t>(SD_BUS_TYPE_INT32, value.toInt());
    case QMetaType::UInt:
        return writeNumberVariant<std::uint32_t>(SD_BUS_TYPE_UINT32, value.toUInt());
    case QMetaType::LongLong:
    case QMetaType::Long:
        return writeNumberVariant<std::int64_t>(SD_BUS_TYPE_INT64, value.toLongLong());
    case QMetaType::ULongLong:
    case QMetaType::ULong:
        return writeNumberVariant<std::uint64_t>(SD_BUS_TYPE_UINT64, value.toULongLong());
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
        return writeNumberVariant(SD_BUS_TYPE_INT16, value.value<std::int16_t>());
    case QMetaType::UShort:
        return writeNumberVariant(SD_BUS_TYPE_UINT16, value.value<std::uint16_t>());
    case QMetaType::UChar:
        return writeNumberVariant(SD_BUS_TYPE_BYTE, value.value<std::uint8_t>());
    case QMetaType::Double:
    case QMetaType::Float:
        return writeNumberVariant<double>(SD_BUS_TYPE_DOUBLE, value.toDouble());
    case QMetaType::QString:
    case QMetaType::QChar:
        open(SD_BUS_TYPE_VARIANT, "s");
        writeString(cutText(value.toString()));
        return close();
    case QMetaType::QByteArray:
        return writeBytes(value.toByteArray());
    case QMetaType::QStringList:
        open(SD_BUS_TYPE_VARIANT, "as");
        writeStringList(value.toStringList());
        return close();
    case QMetaType::QVariantList:
        return writeList(*static_cast<const QVariantList *>(value.constData()));
    case QMetaType::QVariantHash:
        return writeRecord(*static_cast<const QVariantHash *>(value.constData()));
    case QMetaType::QVariantMap:
        return writeRecord(*static_cast<const QVariantMap *>(value.constData()));
    default:
        return writeOwnType(value);
    }
}

void BusWriter::writeOwnType(const QVariant &value)
{
    const int type = value.userType();
    if (type == qMetaTypeId<CMPath>()) {
        writeVariant(value.value<CMPath>().toQVariant());
    } else if (type == qMetaTypeId<TrString>()) {
        writeVariant(value.value<TrString>());
    } else if (type == qMetaTypeId<CMError>()) {
        writeRecord(value.value<CMError>());
    } else {
        throw BusError::unsupportedValue("A value of the type " + std::string(value.typeName()) +
                                         " can't be sent");
    }
}

template <typename Wire>
void BusWriter::writeNumberVariant(char type, Wire number)
{
    const char contents[] = {type, 0};
    open(SD_BUS_TYPE_VARIANT, contents);
    check(sd_bus_message_append_basic(m_message.get(), type, &number));
    close();
}

template <typename Wire>
void BusWriter::writeNumber(char type, Wire number)
{
    count(sizeof number);
    check(sd_bus_message_append_basic(m_message.get(), type, &number));
}

void BusWriter::writeBoolean(bool value)
{
    writeNumber<int>(SD_BUS_TYPE_BOOLEAN, value ? 1 : 0);
}

void BusWriter::writeInt32(std::int32_t value)
{
    writeNumber(SD_BUS_TYPE_INT32, value);
}

void BusWriter::writeUInt32(std::uint32_t value)
{
    writeNumber(SD_BUS_TYPE_UINT32, value);
}

void BusWriter::writeString(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    count(std::size_t(utf8.size()) + bytesPerString);
    const bool isWhole = text.isValidUtf16() &&
                         std::memchr(utf8.constData(), 0, std::size_t(utf8.size())) == nullptr;
    // sd-bus refuses noncharacters.
    if (!isWhole ||
        sd_bus_message_append_basic(m_message.get(), SD_BUS_TYPE_STRING, utf8.constData()) < 0) {
        throw BusError::unsupportedValue("A string holds a character that can't be sent");
    }
}

QString BusWriter::cutText(const QString &text) const
{
    if (text.size() <= m_maxLength) {
        return text;
    }
    const bool isSplit = m_maxLength > 0 && text[m_maxLength - 1].isHighSurrogate();
    return text.left(isSplit ? m_maxLength - 1 : m_maxLength);
}

void BusWriter::writeStringList(const QStringList &texts)
{
    openArray("s");
    for (const QString &text : texts) {
        writeString(text);
    }
    close();
}

void BusWriter::writeBytes(const QByteArray &bytes)
{
    count(std::size_t(bytes.size()));
    open(SD_BUS_TYPE_VARIANT, "ay");
    check(sd_bus_message_append_array(m_message.get(), SD_BUS_TYPE_BYTE, bytes.constData(),
                                      std::size_t(bytes.size())));
    close();
}

void BusWriter::writeList(const QVariantList &values)
{
    open(SD_BUS_TYPE_VARIANT, "av");
    openArray("v");
    for (const QVariant &value : values) {
        writeVariant(value);
    }
    close();
    close();
}

template <typename Fields>
void BusWriter::writeRecord(const Fields &fields)
{
    open(SD_BUS_TYPE_VARIANT, "a{sv}");
    openArray("{sv}");
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        openDictEntry("sv");
        writeString(field.key());
        writeVariant(field.value());
        close();
    }
    close();
    close();
}

void BusWriter::open(char container, const char *contents)
{
    check(sd_bus_message_open_container(m_message.get(), container, contents));
    ++m_depth;
}

void BusWriter::close()
{
    check(sd_bus_message_close_container(m_message.get()));
    --m_depth;
}

void BusWriter::count(std::size_t bytes)
{
    if (bytes > m_bytesLeft) {
        throw BusError::unsupportedValue("The value is too large for a message");
    }
    m_bytesLeft -= bytes;
}
