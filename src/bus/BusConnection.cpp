// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusConnection.h"

#include <core/base/connect.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {
constexpr int firstPauseMs = 100;
constexpr int longestPauseMs = 5000;

/// What a bus may take to answer what it does by itself. A thread that itself stood still for so long
/// takes a good bus for a silent one, and connects anew.
constexpr std::chrono::milliseconds busPatience(5000);

constexpr const char *busName = "org.freedesktop.DBus";
constexpr const char *busPath = "/org/freedesktop/DBus";

/// What the bus answers to a request for a name.
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
    return result < 0 ? result : sd_bus_start(bus);
}

/// Gives the system's error; what else can go wrong shows while the bus is served.
int startConnecting(BusHandle &handle, const QString &bus)
{
    const bool isSession = bus == QLatin1String("session");
    if (!isSession && bus != QLatin1String("system")) {
        return startConnecting(handle, bus.toUtf8());
    }
    sd_bus *raw = nullptr;
    const int result = isSession ? sd_bus_open_user(&raw) : sd_bus_open_system(&raw);
    handle.reset(raw);
    return result;
}
} // namespace

BusConnection::BusConnection(QString bus, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
    , m_loop(this)
    , m_silenceTimer(this)
    , m_retryTimer(this)
    , m_pauseMs(firstPauseMs)
{
    m_silenceTimer.setSingleShot(true);
    m_retryTimer.setSingleShot(true);
    tavoConnect(&m_loop, &BusLoop::turned, this, &BusConnection::on_loop_turned);
    tavoConnect(&m_loop, &BusLoop::failed, this, &BusConnection::on_loop_failed);
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
    const int result = startConnecting(m_handle, m_bus);
    if (result < 0) {
        // What a bus that hangs has not taken yet fills its queue in the end.
        const bool isFull = result == -EAGAIN;
        lose(isFull ? silenceText() : textOf(-result), isFull);
        return;
    }
    m_silenceTimer.start(busPatience);
    m_loop.start(m_handle.get());
    try {
        greet();
    } catch (const sdbus::Error &error) {
        lose(QString::fromStdString(error.getMessage()));
    }
}

void BusConnection::greet()
{
    // Right behind what sd-bus greets with: the last answer says that all is well.
    m_nameAcquired = addMatch("type='signal',sender='org.freedesktop.DBus',member='NameAcquired'",
                              [this](sdbus::Message &message) { on_name_acquired(message); });
    send(createCall(busName, busPath, busName, "GetId"), busPatience,
         [this](sdbus::MethodReply &, const sdbus::Error *error) {
             m_isAnswering = error == nullptr || error->getName() != SD_BUS_ERROR_NO_REPLY;
         });
}

void BusConnection::on_loop_turned()
{
    if (m_isSilent) {
        lose(silenceText(), true);
    } else if (m_isAnswering && !m_isConnected) {
        becomeConnected();
    }
}

void BusConnection::on_loop_failed(int error)
{
    lose(textOf(error));
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
    m_pauseMs = firstPauseMs;
    m_reportedLoss = false;
    m_reportedSilence = false;
    m_isConnected = true;
    try {
        Q_EMIT connected();
        for (const QString &name : qAsConst(m_names)) {
            takeName(name);
        }
    } catch (const sdbus::Error &error) {
        lose(QString::fromStdString(error.getMessage()));
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
    m_nameAcquired.reset();
    m_handle.reset();
    m_retryTimer.start(m_pauseMs);
    m_pauseMs = std::min(2 * m_pauseMs, longestPauseMs);
}

void BusConnection::takeName(const QString &name)
{
    sdbus::MethodCall call = createCall(busName, busPath, busName, "RequestName");
    constexpr std::uint32_t standInLine = 0;
    call << name.toStdString() << standInLine;
    send(call, busPatience, [this, name](sdbus::MethodReply &answer, const sdbus::Error *error) {
        takeOutcome(name, answer, error);
    });
}

void BusConnection::takeOutcome(const QString &name, sdbus::MethodReply &answer,
                                const sdbus::Error *error)
{
    if (error != nullptr) {
        if (error->getName() != SD_BUS_ERROR_NO_REPLY) {
            Q_EMIT nameRefused(name, QString::fromStdString(error->getMessage()));
        } else {
            m_isSilent = true;
        }
        return;
    }
    std::uint32_t outcome = 0;
    answer >> outcome;
    // Acquired is reported by the bus's signal, whether at once or later.
    if (outcome != nameIsOurs && outcome != nameWasOurs) {
        Q_EMIT nameTaken(name);
    }
}

bool BusConnection::isFromBus(const sdbus::Message &message)
{
    return message.getSender() == busName;
}

void BusConnection::on_name_acquired(sdbus::Message &message)
{
    if (!isFromBus(message)) {
        return;
    }
    std::string name;
    message >> name;
    const QString acquired = QString::fromStdString(name);
    if (m_names.contains(acquired)) {
        Q_EMIT nameAcquired(acquired);
    }
}

std::unique_ptr<BusObject> BusConnection::createObject(const char *path, const char *interface)
{
    return std::make_unique<BusObject>(m_handle.get(), path, interface);
}

std::unique_ptr<CallFilter> BusConnection::createCallFilter(const CallFilter::Pass &pass)
{
    return std::make_unique<CallFilter>(m_handle.get(), pass);
}

BusSlot BusConnection::addMatch(const std::string &rule, const BusCalls::SignalHandler &handler)
{
    return BusCalls::addMatch(m_handle.get(), rule, handler);
}

sdbus::MethodCall BusConnection::createCall(const char *service, const char *path,
                                            const char *interface, const char *method) const
{
    return BusCalls::create(m_handle.get(), service, path, interface, method);
}

void BusConnection::send(const sdbus::MethodCall &call, std::chrono::microseconds patience,
                         const BusCalls::AnswerHandler &handler)
{
    BusCalls::send(m_handle.get(), call, patience, handler);
}
