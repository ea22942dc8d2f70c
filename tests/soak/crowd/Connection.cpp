// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Connection.h"

#include <sys/socket.h>
#include <unistd.h>

namespace {
using std::chrono::milliseconds;

void check(int result)
{
    if (result < 0) {
        throw ConnectionLost();
    }
}
} // namespace

const Connection::Target Connection::model{"org.tavo.Model1", "/org/tavo/Model1",
                                           "org.tavo.Model1"};
const Connection::Target Connection::desktop{"org.freedesktop.Notifications",
                                             "/org/freedesktop/Notifications",
                                             "org.freedesktop.Notifications"};
const Connection::Target Connection::bus{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus"};

Connection::Connection(const QString &address, const std::optional<BusUser> &user)
{
    std::optional<ActAs> acting;
    if (user) {
        acting.emplace(*user);
    }
    sd_bus *bus = nullptr;
    check(sd_bus_new(&bus));
    m_bus.reset(bus);
    check(sd_bus_set_address(bus, address.toLatin1().constData()));
    check(sd_bus_set_bus_client(bus, 1));
    check(sd_bus_negotiate_fds(bus, 1));
    check(sd_bus_start(bus));
    const char *name = nullptr;
    check(sd_bus_get_unique_name(bus, &name));
    m_descriptor = sd_bus_get_fd(bus);
}

BusMessage Connection::createCall(const Target &target, const char *method) const
{
    sd_bus_message *message = nullptr;
    check(sd_bus_message_new_method_call(m_bus.get(), &message, target.service, target.path,
                                         target.interface, method));
    return BusMessage::adopt(message);
}

void Connection::send(const BusMessage &message, bool wantsReply)
{
    std::uint64_t cookie = 0;
    check(sd_bus_send(m_bus.get(), message.get(), wantsReply ? &cookie : nullptr));
    check(sd_bus_flush(m_bus.get()));
}

std::optional<BusMessage> Connection::call(const BusMessage &message, milliseconds timeout,
                                           const Handler &others)
{
    const Clock::time_point end = Clock::now() + timeout;
    std::uint64_t cookie = 0;
    check(sd_bus_send(m_bus.get(), message.get(), &cookie));
    std::optional<BusMessage> reply;
    while (!reply && Clock::now() < end) {
        const bool hasRead = readOne([&](const BusMessage &read) {
            std::uint64_t answered = 0;
            if (sd_bus_message_get_reply_cookie(read.get(), &answered) >= 0 && answered == cookie) {
                reply = read;
            } else {
                others(read);
            }
        });
        if (!hasRead) {
            waitUntil(end);
        }
    }
    return reply;
}

void Connection::read(milliseconds duration, const Handler &handler)
{
    const Clock::time_point end = Clock::now() + duration;
    do {
        if (!readOne(handler)) {
            waitUntil(end);
        }
    } while (Clock::now() < end);
}

void Connection::waitUntil(Clock::time_point end)
{
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now());
    if (left.count() > 0) {
        check(sd_bus_wait(m_bus.get(), std::uint64_t(left.count())));
    }
}

bool Connection::readOne(const Handler &handler)
{
    sd_bus_message *message = nullptr;
    const int result = sd_bus_process(m_bus.get(), &message);
    check(result);
    if (message != nullptr) {
        handler(BusMessage::adopt(message));
    }
    return result > 0;
}

void Connection::cut()
{
    ::shutdown(m_descriptor, SHUT_RDWR);
}
