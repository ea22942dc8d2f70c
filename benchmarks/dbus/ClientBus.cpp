// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientBus.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
constexpr const char *name = "org.freedesktop.Notifications";
constexpr const char *path = "/org/freedesktop/Notifications";

/// Calls in flight: enough that neither bus nor server waits for the client.
constexpr std::size_t window = 256;
constexpr std::uint64_t timeoutUs = 60'000'000;

[[noreturn]] void fail(const char *reason)
{
    std::fprintf(stderr, "%s\n", reason);
    std::exit(1);
}
} // namespace

int checked(int result)
{
    if (result < 0) {
        fail(std::strerror(-result));
    }
    return result;
}

ClientBus::ClientBus()
{
    checked(sd_bus_open_user(&m_bus));
}

ClientBus::~ClientBus()
{
    sd_bus_flush_close_unref(m_bus);
}

sd_bus_message *ClientBus::newCall(const char *member) const
{
    sd_bus_message *message = nullptr;
    checked(sd_bus_message_new_method_call(m_bus, &message, name, path, name, member));
    checked(sd_bus_message_set_auto_start(message, 0));
    return message;
}

sd_bus_message *ClientBus::notifyCall(const std::string &body) const
{
    constexpr int neverExpires = 0;
    sd_bus_message *message = newCall("Notify");
    checked(sd_bus_message_append(message, "susssasa{sv}i", "benchmark", 0U, "", "A summary",
                                  body.c_str(), 0, 0, neverExpires));
    return message;
}

sd_bus_message *ClientBus::closeCall(std::uint32_t id) const
{
    sd_bus_message *message = newCall("CloseNotification");
    checked(sd_bus_message_append(message, "u", id));
    return message;
}

sd_bus_message *ClientBus::call(sd_bus_message *message) const
{
    sd_bus_error error = {};
    sd_bus_message *reply = nullptr;
    if (sd_bus_call(m_bus, message, timeoutUs, &error, &reply) < 0) {
        fail(error.message != nullptr ? error.message : "the call failed");
    }
    sd_bus_message_unref(message);
    return reply;
}

std::uint32_t ClientBus::notify(const std::string &body)
{
    std::uint32_t id = 0;
    sd_bus_message *reply = call(notifyCall(body));
    checked(sd_bus_message_read(reply, "u", &id));
    sd_bus_message_unref(reply);
    return id;
}

void ClientBus::close(std::uint32_t id)
{
    sd_bus_message_unref(call(closeCall(id)));
}

void ClientBus::ping()
{
    sd_bus_message *message = nullptr;
    checked(sd_bus_message_new_method_call(m_bus, &message, name, path, "org.freedesktop.DBus.Peer",
                                           "Ping"));
    sd_bus_message_unref(call(message));
}

void ClientBus::notifyMany(std::size_t count, Milliseconds timeout, std::vector<std::uint32_t> &ids)
{
    const auto end = std::chrono::steady_clock::now() + timeout;
    m_answered = [&ids](sd_bus_message *reply) {
        std::uint32_t id = 0;
        checked(sd_bus_message_read(reply, "u", &id));
        ids.push_back(id);
    };
    for (std::size_t i = 0; i < count && std::chrono::steady_clock::now() < end; ++i) {
        send(notifyCall("A body of one line, as most are"));
    }
    turnUntilFewerThan(1);
}

void ClientBus::closeMany(const std::vector<std::uint32_t> &ids)
{
    m_answered = [](sd_bus_message * /*reply*/) {};
    for (const std::uint32_t id : ids) {
        send(closeCall(id));
    }
    turnUntilFewerThan(1);
}

void ClientBus::send(sd_bus_message *message)
{
    turnUntilFewerThan(window);
    checked(sd_bus_call_async(m_bus, nullptr, message, &ClientBus::on_answered, this, timeoutUs));
    sd_bus_message_unref(message);
    ++m_awaited;
}

void ClientBus::turnUntilFewerThan(std::size_t awaited)
{
    while (m_awaited >= awaited) {
        if (checked(sd_bus_process(m_bus, nullptr)) == 0) {
            checked(sd_bus_wait(m_bus, timeoutUs));
        }
    }
}

int ClientBus::on_answered(sd_bus_message *reply, void *data, sd_bus_error * /*error*/)
{
    auto *self = static_cast<ClientBus *>(data);
    const sd_bus_error *error = sd_bus_message_get_error(reply);
    if (error != nullptr) {
        fail(error->message);
    }
    --self->m_awaited;
    self->m_answered(reply);
    return 0;
}
