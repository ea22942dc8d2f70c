// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusConnection.h"

#include "bus/BusError.h"
#include "bus/BusReader.h"
#include "bus/BusWriter.h"
#include <core/base/connect.h>

#include <QDeadlineTimer>
#include <QUrl>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace {
constexpr int minPauseMs = 100;
constexpr int maxPauseMs = 5000;

/// How long to wait for replies of the bus itself. A thread that is blocked for longer mistakes a good
/// bus for a silent one and reconnects.
constexpr std::chrono::milliseconds busTimeout(5000);

/// A bus that is only slow has read something by then.
constexpr int maxSecondsStuck = 3;

constexpr const char *busName = "org.freedesktop.DBus";
constexpr const char *busPath = "/org/freedesktop/DBus";

// Replies of the bus to a request for a name.
constexpr std::uint32_t nameIsOurs = 1;
constexpr std::uint32_t nameWasOurs = 4;

QString textOf(int systemError)
{
    return QString::fromLocal8Bit(std::strerror(systemError));
}

QString silenceText()
{
    return QStringLiteral("The bus takes connections but does not answer");
}

QByteArray addressOf(const QString &bus)
{
    if (bus == QLatin1String("session")) {
        const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        const QString socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus");
        return !address.isEmpty() ? address : "unix:path=" + QUrl::toPercentEncoding(socket, "/");
    }
    if (bus == QLatin1String("system")) {
        const QByteArray address = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
        return !address.isEmpty() ? address : "unix:path=/run/dbus/system_bus_socket";
    }
    return bus.toUtf8();
}

/// Returns a negative errno on error. Other errors are found while the bus is served.
int startConnecting(BusHandle &handle, const QByteArray &address)
{
    sd_bus *bus = nullptr;
    int result = sd_bus_new(&bus);
    handle.reset(bus);
    if (result >= 0) {
        result = sd_bus_set_address(bus, address.constData());
    }
    if (result >= 0) {
        result = sd_bus_set_bus_client(bus, 1);
    }
    if (result >= 0) {
        // A message may carry file descriptors even if its arguments have none. The process has
        // few descriptors and never wants any from a message, so the bus must refuse such messages.
        result = sd_bus_negotiate_fds(bus, 0);
    }
    return result < 0 ? result : sd_bus_start(bus);
}
} // namespace

BusConnection::BusConnection(QString bus, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
    , m_loop(this)
    , m_silenceTimer(this)
    , m_retryTimer(this)
    , m_pauseMs(minPauseMs)
{
    m_silenceTimer.setSingleShot(true);
    m_retryTimer.setSingleShot(true);
    tavoConnect(&m_loop, &BusLoop::turned, this, &BusConnection::on_loop_turned);
    tavoConnect(&m_loop, &BusLoop::failed, this, &BusConnection::on_loop_failed);
    tavoConnect(&m_loop, &BusLoop::lagging, this, &BusConnection::on_loop_lagging);
    tavoConnect(&m_silenceTimer, &QTimer::timeout, this, &BusConnection::on_silenceTimer_timeout);
    tavoConnect(&m_retryTimer, &QTimer::timeout, this, &BusConnection::on_retryTimer_timeout);
}

BusConnection::~BusConnection()
{
    m_loop.stop();
}

void BusConnection::open()
{
    tryToConnect();
}

void BusConnection::ownName(const QString &name)
{
    m_names.append(name);
}

void BusConnection::tryToConnect()
{
    const int result = startConnecting(m_handle, addressOf(m_bus));
    if (result < 0) {
        // The bus hangs: its queue is full of connections that it has not accepted.
        const bool isFull = result == -EAGAIN;
        lose(isFull ? silenceText() : textOf(-result), isFull);
        return;
    }
    m_silenceTimer.start(busTimeout);
    m_loop.start(m_handle.get());
    try {
        greet();
    } catch (const BusError &error) {
        lose(QString::fromStdString(error.message()));
    }
}

void BusConnection::greet()
{
    // Sent right after sd-bus's own greeting. The reply to the last call shows that the bus works.
    m_nameAcquired = addMatch("type='signal',sender='org.freedesktop.DBus',member='NameAcquired'",
                              [this](const BusMessage &signal) { on_name_acquired(signal); });
    send(createCall(busName, busPath, busName, "GetId"), busTimeout,
         [this](const BusMessage &reply) {
             const auto error = reply.error();
             m_isAnswering = !error || error->name() != SD_BUS_ERROR_NO_REPLY;
         });
}

void BusConnection::on_loop_turned()
{
    if (m_isSilent) {
        lose(silenceText(), true);
    } else if (m_isAnswering && !m_isConnected) {
        becomeConnected();
    } else if (m_isConnected) {
        Q_EMIT turned();
    }
}

void BusConnection::on_loop_failed(int error)
{
    lose(textOf(error));
}

void BusConnection::on_loop_lagging(int seconds)
{
    if (!m_isConnected || seconds < maxSecondsStuck - 1) {
        m_probe.reset();
    } else if (!m_probe) {
        m_probe = std::make_unique<BusConnection>(m_bus);
        m_probe->open();
    } else if (seconds >= maxSecondsStuck && m_probe->isConnected()) {
        const std::string name = uniqueName();
        const auto probe = std::move(m_probe);
        lose(QStringLiteral("The bus takes no more messages, because too many are unread"));
        // The bus does not notice the end of a connection that it is not reading from, and would
        // keep its names. It notices when it fails to deliver a message to it.
        probe->ping(name);
    }
}

void BusConnection::ping(const std::string &name)
{
    try {
        const BusMessage call = createCall(name.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping");
        BusError::check(sd_bus_message_set_expect_reply(call.get(), 0), "A call can't be made");
        call.send();
    } catch (const BusError &) {
        // This connection has ended, too.
    }
}

void BusConnection::on_silenceTimer_timeout()
{
    lose(silenceText(), true);
}

void BusConnection::on_retryTimer_timeout()
{
    tryToConnect();
}

void BusConnection::becomeConnected()
{
    m_silenceTimer.stop();
    m_pauseMs = minPauseMs;
    m_reportedLoss = false;
    m_reportedSilence = false;
    m_isConnected = true;
    // sd-bus makes it 8 MiB when it connects.
    constexpr int bytes = BusLoop::socketBytes;
    ::setsockopt(sd_bus_get_fd(m_handle.get()), SOL_SOCKET, SO_SNDBUF, &bytes, sizeof(bytes));
    try {
        Q_EMIT connected();
        for (const QString &name : qAsConst(m_names)) {
            takeName(name);
        }
    } catch (const BusError &error) {
        lose(QString::fromStdString(error.message()));
    }
}

void BusConnection::lose(const QString &reason, bool isSilent)
{
    m_loop.stop();
    m_silenceTimer.stop();
    if (!m_reportedLoss || (isSilent && !m_reportedSilence)) {
        m_reportedLoss = true;
        m_reportedSilence = isSilent;
        Q_EMIT lost(reason, isSilent);
    }
    m_isConnected = false;
    m_isAnswering = false;
    m_isSilent = false;
    m_probe.reset();
    m_nameAcquired.reset();
    m_handle.reset();
    m_retryTimer.start(m_pauseMs);
    m_pauseMs = std::min(2 * m_pauseMs, maxPauseMs);
}

void BusConnection::takeName(const QString &name)
{
    const BusMessage call = createCall(busName, busPath, busName, "RequestName");
    constexpr std::uint32_t standInLine = 0;
    BusWriter writer(call);
    writer.writeString(name);
    writer.writeUInt32(standInLine);
    send(call, busTimeout, [this, name](const BusMessage &reply) { takeOutcome(name, reply); });
}

void BusConnection::takeOutcome(const QString &name, const BusMessage &reply)
{
    if (const auto error = reply.error()) {
        if (error->name() != SD_BUS_ERROR_NO_REPLY) {
            Q_EMIT nameRefused(name, QString::fromStdString(error->message()));
        } else {
            m_isSilent = true;
        }
        return;
    }
    const std::uint32_t outcome = BusReader(reply).readUInt32();
    // Once the name is ours, now or later, the bus sends a signal.
    if (outcome != nameIsOurs && outcome != nameWasOurs) {
        Q_EMIT nameTaken(name);
    }
}

void BusConnection::on_name_acquired(const BusMessage &signal)
{
    if (!signal.isFromBus()) {
        return;
    }
    const QString name = BusReader(signal).readString();
    if (m_names.contains(name)) {
        Q_EMIT nameAcquired(name);
    }
}

void BusConnection::flush(std::chrono::milliseconds timeout)
{
    const QDeadlineTimer deadline(timeout);
    const auto isUnsent = [this] {
        const int events = m_handle ? sd_bus_get_events(m_handle.get()) : 0;
        return events > 0 && (events & POLLOUT) != 0;
    };
    while (isUnsent() && !deadline.hasExpired()) {
        pollfd descriptor{sd_bus_get_fd(m_handle.get()), POLLOUT, 0};
        const int result = ::poll(&descriptor, 1, int(deadline.remainingTime()));
        if ((result < 0 && errno != EINTR) ||
            (result > 0 && sd_bus_process(m_handle.get(), nullptr) < 0)) {
            return;
        }
    }
}

std::string BusConnection::uniqueName() const
{
    const char *name = nullptr;
    BusError::check(sd_bus_get_unique_name(m_handle.get(), &name), "The connection has no name");
    return name;
}

std::unique_ptr<BusObject> BusConnection::createObject(const BusInterface &interface)
{
    return std::make_unique<BusObject>(m_handle.get(), interface);
}

BusSlot BusConnection::handleCalls(const BusCalls::Handler &handler)
{
    return BusCalls::handleCalls(m_handle.get(), handler);
}

BusSlot BusConnection::addMatch(const std::string &rule, const BusCalls::Handler &handler)
{
    return BusCalls::addMatch(m_handle.get(), rule, handler);
}

BusMessage BusConnection::createCall(const char *service, const char *path, const char *interface,
                                     const char *method) const
{
    return BusCalls::create(m_handle.get(), service, path, interface, method);
}

void BusConnection::send(const BusMessage &call, std::chrono::microseconds timeout,
                         const BusCalls::Handler &handler)
{
    BusCalls::send(m_handle.get(), call, timeout, handler);
}
