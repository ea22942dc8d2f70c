// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CallTurns.h"

#include "base/ThreadTime.h"
#include "Refusals.h"
#include <bus/BusConnection.h>
#include <bus/BusReader.h>
#include <core/tavo.h>

#include <algorithm>
#include <utility>

namespace {
constexpr std::chrono::milliseconds maxTurn(5);

/// While more calls arrive, they are read first: one of a client that has taken little time may be among
/// them. The bus holds a flood back in a queue, and fills the socket again as soon as it is read.
constexpr std::chrono::milliseconds maxBusyTurn(1);

/// When more than this waits, calls come faster than they can be handled, and the bus holds further ones back:
/// it writes no more than one or a few at a time, so a queue there stays for as long as the flood lasts. Then
/// most of the time is for reading, unless nothing has come for a moment; and so it is after calls that took long.
constexpr std::size_t floodBytes = 1 << 20;
constexpr int readingPart = 4; ///< of the time that handling took
constexpr std::chrono::milliseconds maxReading(50);
constexpr std::chrono::milliseconds moment(1);

/// Of one user, while their calls wait: clients that come and go would wait without limit.
constexpr int maxLeft = 100;

/// About what a call takes in memory besides its arguments.
constexpr std::size_t callBytes = 2048;

/// Of the difference to the last call, this part is added to what a call is expected to take.
constexpr double learning = 0.25;

/// The bus library checks each character of a text that is read, which takes some 5 ms for a MiB, and other clients'
/// calls stand behind. So to measure large calls may take only so long of late.
constexpr std::size_t largeBytes = 1 << 16;
constexpr std::chrono::milliseconds maxMeasuring(100);
constexpr std::chrono::microseconds noTime(100);

/// Calls with small values usually take less.
constexpr std::chrono::milliseconds usualTime(1);

/// Calls have other arguments besides a value.
constexpr int moreBytes = 1 << 16;

std::size_t bytesOf(const BusMessage &call, int maxValueBytes)
{
    BusReader reader(call, maxValueBytes + moreBytes);
    reader.restart();
    reader.skipAll();
    reader.restart();
    return reader.bytesRead() + reader.bytesSkipped();
}
} // namespace

CallTurns::CallTurns(BusConnection &bus, Quotas &quotas, const ClientLimits &limits,
                     IsReady isReady)
    : m_bus(bus)
    , m_quotas(quotas)
    , m_limits(limits)
    , m_isReady(std::move(isReady))
{
    m_timer.setSingleShot(true);
    tavoConnect(&bus, &BusConnection::turned, this, &CallTurns::on_bus_turned);
    tavoConnect(&m_timer, &QTimer::timeout, this, &CallTurns::on_timer_timeout);
}

void CallTurns::add(const std::string &client, const BusMessage &call, Method &method)
{
    m_hasCome = true;
    Call added{call, &method, {}, false};
    // A call before which nothing waits is handled at once, so it does not count. It is not read twice either, unless
    // large ones have come of late.
    added.isMeasured = !m_waiting.empty() || m_quotas.measuringTimeOf(client) > noTime;
    if (added.isMeasured) {
        added.charge = chargeFor(client, call);
    }
    waitingOf(client).calls.push_back(std::move(added));
}

Quotas::Charge CallTurns::chargeFor(const std::string &client, const BusMessage &call)
{
    const auto waiting = m_waiting.find(client);
    if (waiting != m_waiting.end() && waiting->second.refusal) {
        throw BusError(*waiting->second.refusal);
    }
    try {
        const Quotas::Cost cost = costOf(client, call);
        return m_waiting.empty() ? Quotas::Charge() : m_quotas.charge(client, cost);
    } catch (const BusError &error) {
        if (waiting != m_waiting.end()) {
            waiting->second.refusal = error;
        }
        throw;
    }
}

void CallTurns::putBack(const std::string &client, const BusMessage &call, Method &method)
{
    Call first{call, &method, m_quotas.charge(client, costOf(client, call)), true};
    waitingOf(client).calls.push_front(std::move(first));
}

Quotas::Cost CallTurns::costOf(const std::string &client, const BusMessage &call)
{
    return {Quotas::RequestBytes, callBytes + call.pathLength() + measure(client, call)};
}

std::size_t CallTurns::measure(const std::string &client, const BusMessage &call)
{
    if (!m_bus.isOfOneUser() && !m_quotas.hasTimeToMeasure(client, maxMeasuring)) {
        throw Refusals::tooManyLargeCalls();
    }
    const std::chrono::nanoseconds start = threadTime();
    const auto count = [&] { m_quotas.addTime(client, threadTime() - start, Quotas::Measuring); };
    try {
        const std::size_t bytes = bytesOf(call, m_limits.valueBytes);
        if (bytes > largeBytes) {
            count();
        }
        return bytes;
    } catch (const BusError &) {
        count(); // it is too large
        throw;
    }
}

CallTurns::Client &CallTurns::waitingOf(const std::string &client)
{
    if (m_spare.empty() || m_waiting.count(client) > 0) {
        return m_waiting[client];
    }
    m_spare.key() = client;
    return m_waiting.insert(std::move(m_spare)).position->second;
}

bool CallTurns::leave(const std::string &client)
{
    const auto waiting = m_waiting.find(client);
    if (waiting == m_waiting.end()) {
        return true;
    }
    if (waiting->second.hasLeft) {
        return false; // told for the second time
    }
    auto &calls = waiting->second.calls;
    const auto isDropped = [](const Call &call) { return call.method->effect != Effect::Lasting; };
    calls.erase(std::remove_if(calls.begin(), calls.end(), isDropped), calls.end());
    const Quotas::UserId user = m_quotas.userOf(client);
    if (calls.empty() || m_left[user] >= maxLeft) {
        m_waiting.erase(waiting);
        return true;
    }
    ++m_left[user];
    waiting->second.hasLeft = true;
    waiting->second.user = user;
    return false;
}

void CallTurns::resume()
{
    if (!m_waiting.empty() && !m_timer.isActive()) {
        m_timer.start(0);
    }
}

void CallTurns::clear()
{
    m_waiting.clear();
    m_left.clear();
}

bool CallTurns::isFlooded() const
{
    return m_quotas.total(Quotas::RequestBytes) > floodBytes;
}

void CallTurns::on_bus_turned()
{
    const bool hasCome = std::exchange(m_hasCome, false);
    if (Clock::now() >= m_nextTurn || (!isFlooded() && !m_bus.isReadable())) {
        handleSome();
    } else if (hasCome || !m_timer.isActive()) {
        startTimer();
    }
}

void CallTurns::on_timer_timeout()
{
    if (m_bus.isReadable()) {
        m_timer.start(0); // turned() follows before
    } else {
        handleSome();
    }
}

void CallTurns::handleSome()
{
    const Clock::time_point start = Clock::now();
    const auto isOver = [&] {
        const Clock::duration taken = Clock::now() - start;
        return taken >= maxTurn || (taken >= maxBusyTurn && m_bus.isReadable());
    };
    Waiting::iterator client = next();
    while (client != m_waiting.end() && !isOver()) {
        handle(client);
        client = next();
    }
    const Clock::time_point now = Clock::now();
    const Clock::duration taken = now - start;
    if (isFlooded() || taken >= maxBusyTurn) {
        m_nextTurn = now + std::min<Clock::duration>(readingPart * taken, maxReading);
    }
    if (client != m_waiting.end()) {
        startTimer();
    }
}

void CallTurns::startTimer()
{
    m_timer.start(isFlooded() ? moment : std::chrono::milliseconds::zero());
}

CallTurns::Waiting::iterator CallTurns::next()
{
    auto best = m_waiting.end();
    Quotas::Turn least{};
    for (auto client = m_waiting.begin(); client != m_waiting.end(); ++client) {
        const Quotas::Turn turn =
            m_quotas.turnOf(client->first, client->second.calls.front().method->takes);
        // There may be many clients, and few are better than all before them.
        if ((best == m_waiting.end() || turn < least) && m_isReady(client->first)) {
            best = client;
            least = turn;
        }
    }
    return best;
}

void CallTurns::handle(Waiting::iterator client)
{
    const std::string name = client->first;
    Call call = std::move(client->second.calls.front());
    client->second.calls.pop_front();
    call.charge = {}; // It no longer waits, unless it is put back.
    const bool isLast = client->second.calls.empty();
    const bool hasLeft = client->second.hasLeft;
    const Quotas::UserId user = client->second.user;
    if (isLast) {
        m_spare = m_waiting.extract(client);
        m_spare.mapped().hasLeft = false;
        m_spare.mapped().refusal.reset();
    }
    const Clock::time_point start = Clock::now();
    call.method->handler(call.message);
    const Seconds taken = Clock::now() - start;
    call.method->takes += learning * (taken - call.method->takes);
    if (!call.isMeasured && taken > usualTime) {
        try {
            measure(name, call.message); // It may have been a large one.
        } catch (const BusError &) {
            // It was, and has its reply.
        }
    }
    if (!isLast || !hasLeft) {
        return;
    }
    const auto again = m_waiting.find(name);
    if (again != m_waiting.end()) {
        again->second.hasLeft = true;
        again->second.user = user;
    } else {
        --m_left[user];
        Q_EMIT left(name);
    }
}
