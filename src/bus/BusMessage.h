// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <systemd/sd-bus.h>

#include <optional>
#include <string>
#include <utility>

class BusError;

/// A message on a bus: a call, a reply or a signal. Copies share one message.
///
/// A BusReader reads it, a BusWriter writes it. A received message keeps its connection in memory: drop
/// it when the connection is lost. Functions that make or send a message throw a BusError on error.
class BusMessage
{
public:
    /// Shares a message of sd-bus.
    explicit BusMessage(sd_bus_message *message)
        : m_message(sd_bus_message_ref(message))
    {
    }
    /// Takes over a reference to a new message of sd-bus.
    static BusMessage adopt(sd_bus_message *message);

    BusMessage(const BusMessage &other)
        : BusMessage(other.m_message)
    {
    }
    BusMessage(BusMessage &&other) noexcept
        : m_message(std::exchange(other.m_message, nullptr))
    {
    }
    BusMessage &operator=(BusMessage other) noexcept
    {
        std::swap(m_message, other.m_message);
        return *this;
    }
    ~BusMessage() { sd_bus_message_unref(m_message); }

    sd_bus_message *get() const { return m_message; }

    /// The unique name of the sender; empty when the message has none.
    std::string sender() const;

    /// Whether the bus itself sent the message. A match rule for the bus's name is no proof: messages
    /// that a program sends directly to this connection pass it too.
    bool isFromBus() const;

    /// The name of the method or signal.
    std::string member() const;

    /// How long the object's path is; 0 without one.
    std::size_t pathLength() const;

    bool isSignal() const;
    bool hasSignature(const char *signature) const;

    /// Whether the caller waits for a reply. If not, none is sent.
    bool expectsReply() const { return sd_bus_message_get_expect_reply(m_message) > 0; }

    /// The error that an error reply holds; nothing for any other message.
    std::optional<BusError> error() const;

    /// Replies to a call, to be sent once they are written.
    BusMessage createReply() const;
    BusMessage createErrorReply(const BusError &error) const;

    /// Addresses a signal to one receiver.
    void setReceiver(const std::string &receiver) const;

    /// Ends the writing of a signal of which only copies are sent.
    void seal() const;
    bool isSealed() const;

    /// A copy of a sealed signal, addressed to one receiver.
    BusMessage copyFor(const std::string &receiver) const;

    /// Sends a message on the connection that it was made for.
    void send() const;

private:
    sd_bus_message *m_message;
};
