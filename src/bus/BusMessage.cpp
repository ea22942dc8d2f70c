// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusMessage.h"

#include "bus/BusError.h"

#include <cstdint>
#include <cstring>

namespace {
std::string stringOrEmpty(const char *text)
{
    return text != nullptr ? text : "";
}
} // namespace

BusMessage BusMessage::adopt(sd_bus_message *message)
{
    BusMessage result(message);
    sd_bus_message_unref(message);
    return result;
}

std::string BusMessage::sender() const
{
    return stringOrEmpty(sd_bus_message_get_sender(m_message));
}

bool BusMessage::isFromBus() const
{
    const char *sender = sd_bus_message_get_sender(m_message);
    return sender != nullptr && std::strcmp(sender, "org.freedesktop.DBus") == 0;
}

std::string BusMessage::member() const
{
    return stringOrEmpty(sd_bus_message_get_member(m_message));
}

std::size_t BusMessage::pathLength() const
{
    const char *path = sd_bus_message_get_path(m_message);
    return path != nullptr ? std::strlen(path) : 0;
}

bool BusMessage::isSignal() const
{
    std::uint8_t type = 0;
    return sd_bus_message_get_type(m_message, &type) >= 0 && type == SD_BUS_MESSAGE_SIGNAL;
}

bool BusMessage::hasSignature(const char *signature) const
{
    return sd_bus_message_has_signature(m_message, signature) > 0;
}

std::optional<BusError> BusMessage::error() const
{
    const sd_bus_error *error = sd_bus_message_get_error(m_message);
    if (error == nullptr) {
        return std::nullopt;
    }
    return BusError(error->name, stringOrEmpty(error->message));
}

BusMessage BusMessage::createReply() const
{
    sd_bus_message *reply = nullptr;
    BusError::check(sd_bus_message_new_method_return(m_message, &reply), "A reply can't be made");
    return adopt(reply);
}

BusMessage BusMessage::createErrorReply(const BusError &error) const
{
    const sd_bus_error content = {error.name().c_str(), error.message().c_str(), 0};
    sd_bus_message *reply = nullptr;
    BusError::check(sd_bus_message_new_method_error(m_message, &reply, &content),
                    "An error reply can't be made");
    return adopt(reply);
}

void BusMessage::send() const
{
    BusError::check(sd_bus_send(nullptr, m_message, nullptr), "The message can't be sent");
}

void BusMessage::seal() const
{
    constexpr std::uint64_t anyNumber = 1;
    BusError::check(sd_bus_message_seal(m_message, anyNumber, 0), "The message can't be sealed");
}

bool BusMessage::isSealed() const
{
    std::uint64_t number = 0;
    return sd_bus_message_get_cookie(m_message, &number) >= 0;
}

BusMessage BusMessage::copyFor(const std::string &receiver) const
{
    constexpr const char *failure = "The message can't be copied";
    sd_bus_message *signal = nullptr;
    BusError::check(sd_bus_message_new_signal(sd_bus_message_get_bus(m_message), &signal,
                                              sd_bus_message_get_path(m_message),
                                              sd_bus_message_get_interface(m_message),
                                              sd_bus_message_get_member(m_message)),
                    failure);
    BusMessage copy = adopt(signal);
    constexpr int all = 1;
    BusError::check(sd_bus_message_rewind(m_message, all), failure);
    BusError::check(sd_bus_message_copy(copy.get(), m_message, all), failure);
    copy.setReceiver(receiver);
    return copy;
}

void BusMessage::setReceiver(const std::string &receiver) const
{
    BusError::check(sd_bus_message_set_destination(m_message, receiver.c_str()),
                    "The message can't be addressed");
}
