// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/SilentBus.h"

#include <bus/BusHandles.h>
#include <bus/BusLoop.h>

#include <cstring>
#include <stdexcept>

namespace {
void check(int result)
{
    if (result < 0) {
        throw std::runtime_error(std::strerror(-result));
    }
}
} // namespace

/// Passes on the descriptors instead of making sockets of them.
class SilentBus::Server : public QLocalServer
{
public:
    explicit Server(SilentBus &bus)
        : m_bus(bus)
    {
    }

protected:
    void incomingConnection(quintptr descriptor) override { m_bus.take(qintptr(descriptor)); }

private:
    SilentBus &m_bus;
};

/// A client's connection. Sends nothing before serve().
class SilentBus::Connection
{
public:
    explicit Connection(int descriptor)
    {
        sd_bus *bus = nullptr;
        check(sd_bus_new(&bus));
        m_handle.reset(bus);
        check(sd_bus_set_fd(bus, descriptor, descriptor));
    }

    void serve(SilentBus &silent)
    {
        sd_bus *bus = m_handle.get();
        sd_id128_t id = {};
        check(sd_id128_randomize(&id));
        check(sd_bus_set_server(bus, 1, id));
        check(sd_bus_add_filter(bus, nullptr, handle, &silent));
        check(sd_bus_start(bus));
        QObject::connect(&m_loop, &BusLoop::failed, [this] { m_loop.stop(); });
        m_loop.start(bus);
    }

private:
    BusHandle m_handle;
    BusLoop m_loop;
};

SilentBus::SilentBus(After after)
    : m_after(after)
    , m_server(std::make_unique<Server>(*this))
{
    if (!m_server->listen(m_folder.filePath(QStringLiteral("bus")))) {
        throw std::runtime_error("a silent bus can't listen");
    }
}

SilentBus::~SilentBus() = default;

QString SilentBus::address() const
{
    return QStringLiteral("unix:path=") + path();
}

QString SilentBus::path() const
{
    return m_server->fullServerName();
}

void SilentBus::take(qintptr descriptor)
{
    ++m_connections;
    m_open.push_back(std::make_unique<Connection>(int(descriptor)));
    if (m_after != After::Connecting) {
        m_open.back()->serve(*this);
    }
}

int SilentBus::handle(sd_bus_message *message, void *bus, sd_bus_error * /*error*/)
{
    auto &self = *static_cast<SilentBus *>(bus);
    const bool isHello = sd_bus_message_is_method_call(message, nullptr, "Hello") > 0;
    self.m_greetings += isHello ? 1 : 0;
    if (isHello && self.m_after == After::Greeting) {
        return sd_bus_reply_method_return(message, "s", ":1.1");
    }
    return 1; // handled, without a reply
}
