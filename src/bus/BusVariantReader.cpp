// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusVariantReader.h"

#include "bus/BusError.h"
#include "bus/BusVariant.h"

#include <QStringList>

#include <cstring>
#include <string>

namespace {
/// Turns a failed step into an error that says so.
void check(int result)
{
    if (result < 0) {
        throw BusErrors::invalidArguments("The message can't be read: " +
                                          std::string(std::strerror(-result)));
    }
}

bool isText(char type)
{
    return type == SD_BUS_TYPE_STRING || type == SD_BUS_TYPE_OBJECT_PATH ||
           type == SD_BUS_TYPE_SIGNATURE;
}
} // namespace

QVariant BusVariantReader::read()
{
    spend(BusVariant::bytesPerValue);
    char type = 0;
    const char *contents = nullptr;
    check(sd_bus_message_peek_type(m_message, &type, &contents));
    if (type != SD_BUS_TYPE_VARIANT) {
        throw BusErrors::invalidArguments("The message has no variant where one belongs");
    }
    enter(type, contents);
    QVariant value = readNext();
    leave();
    return value;
}

QVariant BusVariantReader::readNext()
{
    char type = 0;
    const char *contents = nullptr;
    check(sd_bus_message_peek_type(m_message, &type, &contents));
    switch (type) {
    case SD_BUS_TYPE_ARRAY:
        return readArray(contents);
    case SD_BUS_TYPE_STRUCT:
        return readList(type, contents);
    case SD_BUS_TYPE_VARIANT:
        return read();
    default:
        return readBasic(type);
    }
}

template <typename Wire, typename Value>
QVariant BusVariantReader::readAs(char type)
{
    Wire value{};
    check(sd_bus_message_read_basic(m_message, type, &value));
    return QVariant::fromValue(static_cast<Value>(value));
}

QVariant BusVariantReader::readBasic(char type)
{
    switch (type) {
    case SD_BUS_TYPE_BOOLEAN:
        return readAs<int, bool>(type);
    case SD_BUS_TYPE_BYTE:
        return readAs<uchar>(type);
    case SD_BUS_TYPE_INT16:
        return readAs<qint16>(type);
    case SD_BUS_TYPE_UINT16:
        return readAs<quint16>(type);
    case SD_BUS_TYPE_INT32:
        return readAs<qint32>(type);
    case SD_BUS_TYPE_UINT32:
        return readAs<quint32>(type);
    case SD_BUS_TYPE_INT64:
        return readAs<std::int64_t, qlonglong>(type);
    case SD_BUS_TYPE_UINT64:
        return readAs<std::uint64_t, qulonglong>(type);
    case SD_BUS_TYPE_DOUBLE:
        return readAs<double>(type);
    case SD_BUS_TYPE_STRING:
    case SD_BUS_TYPE_OBJECT_PATH:
        return readText(type);
    case SD_BUS_TYPE_SIGNATURE:
        return readSignature();
    case SD_BUS_TYPE_UNIX_FD:
        throw BusErrors::invalidArguments("A value can't hold a file descriptor");
    default:
        throw BusErrors::invalidArguments("The message ends where a value belongs");
    }
}

QString BusVariantReader::readText(char type)
{
    const char *text = nullptr;
    check(sd_bus_message_read_basic(m_message, type, &text));
    const std::size_t size = std::strlen(text);
    spend(size);
    return QString::fromUtf8(text, int(size));
}

QVariant BusVariantReader::readSignature()
{
    // The empty one stands for a value that isn't there.
    const QString signature = readText(SD_BUS_TYPE_SIGNATURE);
    return signature.isEmpty() ? QVariant() : QVariant(signature);
}

QVariant BusVariantReader::readArray(const char *element)
{
    if (element[0] == SD_BUS_TYPE_DICT_ENTRY_BEGIN) {
        return readHash(element);
    }
    if (element[0] == SD_BUS_TYPE_BYTE) {
        return readBytes();
    }
    if (isText(element[0])) {
        return readTexts(element[0]);
    }
    return readList(SD_BUS_TYPE_ARRAY, element);
}

QVariant BusVariantReader::readBytes()
{
    const void *bytes = nullptr;
    std::size_t size = 0;
    check(sd_bus_message_read_array(m_message, SD_BUS_TYPE_BYTE, &bytes, &size));
    spend(size);
    return QByteArray(static_cast<const char *>(bytes), int(size));
}

QVariant BusVariantReader::readTexts(char type)
{
    const char contents[] = {type, 0};
    enter(SD_BUS_TYPE_ARRAY, contents);
    QStringList texts;
    while (!isAtEnd()) {
        spend(BusVariant::bytesPerValue);
        texts.append(readText(type));
    }
    leave();
    return texts;
}

QVariant BusVariantReader::readList(char container, const char *contents)
{
    enter(container, contents);
    QVariantList values;
    while (!isAtEnd()) {
        spend(BusVariant::bytesPerValue);
        values.append(readNext());
    }
    leave();
    return values;
}

QVariant BusVariantReader::readHash(const char *entry)
{
    if (!isText(entry[1])) {
        throw BusErrors::invalidArguments("The keys of a value's dictionary must be texts");
    }
    // Without its braces, as that is what is inside of an entry.
    const std::string contents(entry + 1, std::strlen(entry) - 2);
    enter(SD_BUS_TYPE_ARRAY, entry);
    QVariantHash fields;
    while (!isAtEnd()) {
        enter(SD_BUS_TYPE_DICT_ENTRY, contents.c_str());
        const QString key = readText(contents.front());
        spend(BusVariant::bytesPerValue);
        fields.insert(key, readNext());
        leave();
    }
    leave();
    return fields;
}

void BusVariantReader::enter(char container, const char *contents)
{
    check(sd_bus_message_enter_container(m_message, container, contents));
}

void BusVariantReader::leave()
{
    check(sd_bus_message_exit_container(m_message));
}

bool BusVariantReader::isAtEnd() const
{
    const int result = sd_bus_message_at_end(m_message, 0);
    check(result);
    return result > 0;
}

void BusVariantReader::spend(std::size_t bytes)
{
    if (bytes > m_bytesLeft) {
        throw BusErrors::limitExceeded("The value is too large");
    }
    m_bytesLeft -= bytes;
}
