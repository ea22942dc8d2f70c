// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "MessageCursor.h"

#include <bus/BusError.h>
#include <bus/BusVariant.h>

#include <cstring>
#include <limits>

namespace {
/// Every call that reads passes its outcome through this.
int checked(int result)
{
    if (result < 0) {
        throw BusErrors::invalidArguments("The message can't be read");
    }
    return result;
}
} // namespace

template <typename Number>
Number MessageCursor::readNumber(char type)
{
    Number number = 0;
    if (checked(sd_bus_message_read_basic(m_message, type, &number)) == 0) {
        throw BusErrors::invalidArguments("The message ends too early");
    }
    return number;
}

quint32 MessageCursor::readUnsigned()
{
    return readNumber<quint32>(SD_BUS_TYPE_UINT32);
}

qint32 MessageCursor::readSigned()
{
    return readNumber<qint32>(SD_BUS_TYPE_INT32);
}

QString MessageCursor::readText()
{
    const char *text = nullptr;
    checked(sd_bus_message_read_basic(m_message, SD_BUS_TYPE_STRING, &text));
    if (text == nullptr) {
        throw BusErrors::invalidArguments("The message ends too early");
    }
    const std::size_t size = std::strlen(text);
    spend(size);
    return QString::fromUtf8(text, int(size));
}

std::optional<QString> MessageCursor::readTextVariant()
{
    const char *contents = nullptr;
    checked(sd_bus_message_peek_type(m_message, nullptr, &contents));
    if (contents == nullptr || std::strcmp(contents, "s") != 0) {
        skip();
        return std::nullopt;
    }
    enter(SD_BUS_TYPE_VARIANT, "s");
    QString text = readText();
    leave();
    return text;
}

std::optional<qint64> MessageCursor::readNumberVariant()
{
    const char *contents = nullptr;
    checked(sd_bus_message_peek_type(m_message, nullptr, &contents));
    if (contents == nullptr || std::strlen(contents) != 1 ||
        std::strchr("ybnqiuxt", contents[0]) == nullptr) {
        skip();
        return std::nullopt;
    }
    const char type = contents[0];
    enter(SD_BUS_TYPE_VARIANT, contents);
    const std::optional<qint64> number = readWholeNumber(type);
    leave();
    return number;
}

std::optional<qint64> MessageCursor::readWholeNumber(char type)
{
    switch (type) {
    case SD_BUS_TYPE_BYTE:
        return readNumber<quint8>(type);
    case SD_BUS_TYPE_BOOLEAN:
        return readNumber<int>(type);
    case SD_BUS_TYPE_INT16:
        return readNumber<qint16>(type);
    case SD_BUS_TYPE_UINT16:
        return readNumber<quint16>(type);
    case SD_BUS_TYPE_INT32:
        return readNumber<qint32>(type);
    case SD_BUS_TYPE_UINT32:
        return readNumber<quint32>(type);
    case SD_BUS_TYPE_INT64:
        return readNumber<qint64>(type);
    default:
        return qint64(
            qMin<quint64>(readNumber<quint64>(type), quint64(std::numeric_limits<qint64>::max())));
    }
}

void MessageCursor::enter(char container, const char *contents)
{
    if (checked(sd_bus_message_enter_container(m_message, container, contents)) == 0) {
        throw BusErrors::invalidArguments("The message ends too early");
    }
}

bool MessageCursor::isAtEnd() const
{
    return checked(sd_bus_message_at_end(m_message, 0)) > 0;
}

void MessageCursor::leave()
{
    checked(sd_bus_message_exit_container(m_message));
}

void MessageCursor::skip()
{
    char type = 0;
    const char *contents = nullptr;
    checked(sd_bus_message_peek_type(m_message, &type, &contents));
    spend(BusVariant::bytesPerValue);
    if (type == SD_BUS_TYPE_ARRAY) {
        skipArray(contents);
    } else if (contents == nullptr) {
        checked(sd_bus_message_skip(m_message, nullptr));
    } else {
        // As deep as a message nests, which its format limits.
        enter(type, contents);
        while (!isAtEnd()) {
            skip();
        }
        leave();
    }
}

void MessageCursor::skipArray(const char *contents)
{
    const bool isOfNumbers = std::strlen(contents) == 1 && std::strchr("ynqiuxtd", contents[0]);
    if (isOfNumbers) {
        const void *bytes = nullptr;
        std::size_t size = 0;
        checked(sd_bus_message_read_array(m_message, contents[0], &bytes, &size));
        return;
    }
    enter(SD_BUS_TYPE_ARRAY, contents);
    while (!isAtEnd()) {
        skip();
    }
    leave();
}

void MessageCursor::spend(std::size_t bytes)
{
    if (bytes > m_bytesLeft) {
        throw BusErrors::limitExceeded("The message holds more than is allowed");
    }
    m_bytesLeft -= bytes;
}
