// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusReader.h"

#include "bus/BusError.h"
#include "bus/BusWriter.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace {
int check(int result)
{
    if (result < 0) {
        throw BusError::invalidArguments("The message can't be read: " +
                                         std::string(std::strerror(-result)));
    }
    return result;
}

/// The result is zero where the container ends.
void checkFound(int result)
{
    if (check(result) == 0) {
        throw BusError::invalidArguments("The message ends too early");
    }
}

bool isString(char type)
{
    return type == SD_BUS_TYPE_STRING || type == SD_BUS_TYPE_OBJECT_PATH ||
           type == SD_BUS_TYPE_SIGNATURE;
}

bool isNumber(char type)
{
    return type != 0 && std::strchr("ybnqiuxtd", type) != nullptr;
}

/// Where the first type of a signature ends.
const char *endOfType(const char *type)
{
    int open = 0;
    do {
        while (*type == SD_BUS_TYPE_ARRAY) {
            ++type;
        }
        open += *type == SD_BUS_TYPE_STRUCT_BEGIN || *type == SD_BUS_TYPE_DICT_ENTRY_BEGIN;
        open -= *type == SD_BUS_TYPE_STRUCT_END || *type == SD_BUS_TYPE_DICT_ENTRY_END;
        ++type;
    } while (open > 0);
    return type;
}
} // namespace

bool BusReader::readBoolean()
{
    return readNumber<int>(SD_BUS_TYPE_BOOLEAN) != 0;
}

std::int32_t BusReader::readInt32()
{
    return readNumber<std::int32_t>(SD_BUS_TYPE_INT32);
}

std::uint32_t BusReader::readUInt32()
{
    return readNumber<std::uint32_t>(SD_BUS_TYPE_UINT32);
}

template <typename Number>
Number BusReader::readNumber(char type)
{
    Number number{};
    checkFound(sd_bus_message_read_basic(m_message.get(), type, &number));
    return number;
}

QString BusReader::readStringOf(char type)
{
    const char *text = nullptr;
    checkFound(sd_bus_message_read_basic(m_message.get(), type, &text));
    const std::size_t size = std::strlen(text);
    count(size);
    return QString::fromUtf8(text, int(size));
}

QStringList BusReader::readStringList()
{
    return readStringListOf(SD_BUS_TYPE_STRING);
}

QStringList BusReader::readStringListOf(char type)
{
    const char contents[] = {type, 0};
    enterArray(contents);
    QStringList result;
    while (!isAtEnd()) {
        count(BusWriter::bytesPerValue);
        result.append(readStringOf(type));
    }
    leave();
    return result;
}

QVariant BusReader::readVariant()
{
    return readVariant(peek());
}

QVariant BusReader::readVariant(const Type &next)
{
    count(BusWriter::bytesPerValue);
    if (next.type != SD_BUS_TYPE_VARIANT) {
        throw BusError::invalidArguments("The message has no variant where one belongs");
    }
    // Most values are basic ones. To have sd-bus tell the type again takes longer.
    const char type = next.contents[0];
    const bool isBasic = next.contents[1] == 0 && (isString(type) || isNumber(type));
    enter(next.type, next.contents);
    QVariant value = isBasic ? readBasic(type) : readValue();
    leave();
    return value;
}

QVariant BusReader::readValue()
{
    const Type next = peek();
    switch (next.type) {
    case SD_BUS_TYPE_ARRAY:
        return readArray(next.contents);
    case SD_BUS_TYPE_STRUCT:
        return readList(next.type, next.contents);
    case SD_BUS_TYPE_VARIANT:
        return readVariant(next);
    default:
        return readBasic(next.type);
    }
}

QVariant BusReader::readBasic(char type)
{
    switch (type) {
    case SD_BUS_TYPE_BOOLEAN:
        return readBoolean();
    case SD_BUS_TYPE_BYTE:
        return QVariant::fromValue(readNumber<uchar>(type));
    case SD_BUS_TYPE_INT16:
        return QVariant::fromValue(readNumber<qint16>(type));
    case SD_BUS_TYPE_UINT16:
        return QVariant::fromValue(readNumber<quint16>(type));
    case SD_BUS_TYPE_INT32:
        return readInt32();
    case SD_BUS_TYPE_UINT32:
        return readUInt32();
    case SD_BUS_TYPE_INT64:
        return readNumber<qlonglong>(type);
    case SD_BUS_TYPE_UINT64:
        return readNumber<qulonglong>(type);
    case SD_BUS_TYPE_DOUBLE:
        return readNumber<double>(type);
    case SD_BUS_TYPE_STRING:
    case SD_BUS_TYPE_OBJECT_PATH:
        return readStringOf(type);
    case SD_BUS_TYPE_SIGNATURE:
        return readSignature();
    case SD_BUS_TYPE_UNIX_FD:
        throw BusError::invalidArguments("A value can't hold a file descriptor");
    default:
        throw BusError::invalidArguments("The message ends where a value belongs");
    }
}

QVariant BusReader::readSignature()
{
    // The empty signature stands for an empty value.
    const QString signature = readStringOf(SD_BUS_TYPE_SIGNATURE);
    return signature.isEmpty() ? QVariant() : QVariant(signature);
}

QVariant BusReader::readArray(const char *element)
{
    if (element[0] == SD_BUS_TYPE_DICT_ENTRY_BEGIN) {
        return readRecord(element);
    }
    if (element[0] == SD_BUS_TYPE_BYTE) {
        return readBytes();
    }
    if (isString(element[0])) {
        return readStringListOf(element[0]);
    }
    return readList(SD_BUS_TYPE_ARRAY, element);
}

QVariant BusReader::readBytes()
{
    const void *bytes = nullptr;
    std::size_t size = 0;
    check(sd_bus_message_read_array(m_message.get(), SD_BUS_TYPE_BYTE, &bytes, &size));
    count(size);
    return QByteArray(static_cast<const char *>(bytes), int(size));
}

QVariant BusReader::readList(char container, const char *contents)
{
    enter(container, contents);
    QVariantList values;
    while (!isAtEnd()) {
        count(BusWriter::bytesPerValue);
        values.append(readValue());
    }
    leave();
    return values;
}

QVariant BusReader::readRecord(const char *entry)
{
    if (!isString(entry[1])) {
        throw BusError::invalidArguments("The keys of a value's dictionary must be strings");
    }
    // sd-bus wants the entry's signature without the braces.
    const std::string members(entry + 1, std::strlen(entry) - 2);
    enterArray(entry);
    QVariantHash fields;
    while (!isAtEnd()) {
        enterDictEntry(members.c_str());
        const QString key = readStringOf(members.front());
        count(BusWriter::bytesPerValue);
        fields.insert(key, readValue());
        if (fields.size() > maxFields) {
            throw BusError::invalidArguments("A record may have no more than " +
                                             std::to_string(maxFields) + " fields");
        }
        leave();
    }
    leave();
    return fields;
}

std::optional<QString> BusReader::readStringVariant()
{
    const Type next = peek();
    if (next.contents == nullptr || std::strcmp(next.contents, "s") != 0) {
        skip();
        return std::nullopt;
    }
    enter(SD_BUS_TYPE_VARIANT, next.contents);
    QString text = readString();
    leave();
    return text;
}

std::optional<std::int64_t> BusReader::readIntegerVariant()
{
    const Type next = peek();
    if (next.contents == nullptr || std::strlen(next.contents) != 1 ||
        std::strchr("ybnqiuxt", next.contents[0]) == nullptr) {
        skip();
        return std::nullopt;
    }
    const char type = next.contents[0];
    enter(SD_BUS_TYPE_VARIANT, next.contents);
    const std::int64_t number = readInteger(type);
    leave();
    return number;
}

bool BusReader::enterStructVariant(const char *members)
{
    const Type next = peek();
    const std::string contents = '(' + std::string(members) + ')';
    if (next.contents == nullptr || next.contents != contents) {
        skip();
        return false;
    }
    enter(SD_BUS_TYPE_VARIANT, next.contents);
    enterStruct(members);
    return true;
}

QByteArray BusReader::viewBytes()
{
    const void *bytes = nullptr;
    std::size_t size = 0;
    checkFound(sd_bus_message_read_array(m_message.get(), SD_BUS_TYPE_BYTE, &bytes, &size));
    m_bytesSkipped += size;
    return QByteArray::fromRawData(static_cast<const char *>(bytes), int(size));
}

std::int64_t BusReader::readInteger(char type)
{
    switch (type) {
    case SD_BUS_TYPE_BYTE:
        return readNumber<std::uint8_t>(type);
    case SD_BUS_TYPE_BOOLEAN:
        return readNumber<int>(type);
    case SD_BUS_TYPE_INT16:
        return readNumber<std::int16_t>(type);
    case SD_BUS_TYPE_UINT16:
        return readNumber<std::uint16_t>(type);
    case SD_BUS_TYPE_INT32:
        return readNumber<std::int32_t>(type);
    case SD_BUS_TYPE_UINT32:
        return readNumber<std::uint32_t>(type);
    case SD_BUS_TYPE_INT64:
        return readNumber<std::int64_t>(type);
    default:
        constexpr std::uint64_t max = std::numeric_limits<std::int64_t>::max();
        return std::int64_t(std::min(readNumber<std::uint64_t>(type), max));
    }
}

BusReader::Type BusReader::peek() const
{
    Type result{0, nullptr};
    check(sd_bus_message_peek_type(m_message.get(), &result.type, &result.contents));
    return result;
}

void BusReader::enter(char container, const char *contents)
{
    checkFound(sd_bus_message_enter_container(m_message.get(), container, contents));
}

bool BusReader::isAtEnd() const
{
    return check(sd_bus_message_at_end(m_message.get(), 0)) > 0;
}

void BusReader::leave()
{
    check(sd_bus_message_exit_container(m_message.get()));
}

void BusReader::skip()
{
    const Type next = peek();
    count(BusWriter::bytesPerValue);
    if (next.type == SD_BUS_TYPE_ARRAY) {
        skipArray(next.contents);
    } else if (isString(next.type)) {
        skipString(next.type);
    } else if (next.contents == nullptr) {
        check(sd_bus_message_skip(m_message.get(), nullptr));
    } else {
        // The format of messages limits how deep this goes.
        enter(next.type, next.contents);
        while (!isAtEnd()) {
            skip();
        }
        leave();
    }
}

void BusReader::skipAll()
{
    // To have sd-bus tell the type of each argument takes longer.
    const char *type = sd_bus_message_get_signature(m_message.get(), 1);
    while (*type != 0) {
        if (isString(*type)) {
            count(BusWriter::bytesPerValue);
            skipString(*type);
        } else if (isNumber(*type)) {
            count(BusWriter::bytesPerValue);
            readNumber<std::uint64_t>(*type);
        } else {
            skip();
        }
        type = endOfType(type);
    }
}

void BusReader::skipString(char type)
{
    const char *text = nullptr;
    checkFound(sd_bus_message_read_basic(m_message.get(), type, &text));
    m_bytesSkipped += std::strlen(text);
}

void BusReader::skipArray(const char *contents)
{
    const bool isOfNumbers =
        std::strlen(contents) == 1 && isNumber(*contents) && *contents != SD_BUS_TYPE_BOOLEAN;
    if (isOfNumbers) {
        const void *numbers = nullptr;
        std::size_t size = 0;
        check(sd_bus_message_read_array(m_message.get(), contents[0], &numbers, &size));
        m_bytesSkipped += size;
        return;
    }
    enterArray(contents);
    while (!isAtEnd()) {
        skip();
    }
    leave();
}

void BusReader::restart()
{
    constexpr int completely = 1;
    check(sd_bus_message_rewind(m_message.get(), completely));
}

void BusReader::count(std::size_t bytes)
{
    if (bytes > m_bytesLeft) {
        throw BusError::limitExceeded("The value is too large");
    }
    m_bytesLeft -= bytes;
}
