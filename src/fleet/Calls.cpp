// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/Calls.h"

#include "base/sqlite/SqliteError.h"
#include "fleet/ClockTime.h"
#include "fleet/FleetLog.h"
#include "fleet/protocol/FleetTopics.h"
#include <core/base/connect.h>

#include <QAbstractEventDispatcher>
#include <QDateTime>
#include <QScopedValueRollback>

#include <algorithm>
#include <limits>
#include <utility>

namespace {
constexpr qint64 dayMs = 86400000;
constexpr qint64 never = std::numeric_limits<qint64>::max();
constexpr qint64 defaultWaitMs = 60000;
constexpr int maxRunning = 6; // with all else less than the 16 that a bus may allow
constexpr int maxPending = 10000;
constexpr int maxCallBytes = 1 << 18;
constexpr int maxAnswerBytes = 1 << 19;

qint64 now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

/// Never, if the clock has not been set yet: it will be by then.
qint64 dayAfter(qint64 moment)
{
    return isClockSet() ? moment + dayMs : never;
}

/// A call that the store has, as it was when it came.
FleetCall callOf(const StoredCall &stored)
{
    const auto read = FleetCall::fromJson(stored.call);
    return std::holds_alternative<FleetCall>(read) ? std::get<FleetCall>(read) : FleetCall();
}

QString cannotRemember()
{
    return QStringLiteral("the device can't remember calls");
}

HostCalls::Outcome failed(const char *reason)
{
    HostCalls::Outcome outcome;
    outcome.error = QLatin1String(reason);
    return outcome;
}
} // namespace

Calls::Calls(const FleetConfiguration &configuration, FleetStore &store, Outbox &outbox,
             TavoClient &client)
    : m_configuration(configuration)
    , m_store(store)
    , m_outbox(outbox)
    , m_client(client)
    , m_host(client, configuration.permissions, configuration.timeoutMs)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    tavoConnect(&m_timer, &QTimer::timeout, this, &Calls::on_timer_timeout);
    m_tidyTimer.setTimerType(Qt::VeryCoarseTimer);
    tavoConnect(&m_tidyTimer, &QTimer::timeout, this, &Calls::on_tidyTimer_timeout);
    m_tidyTimer.start(int(dayMs));
    tavoConnect(&client, &TavoClient::availableChanged, this, &Calls::on_client_availableChanged);
    tavoConnect(&m_host, &HostCalls::ended, this, &Calls::on_host_ended);
    tavoConnect(&m_host, &HostCalls::soundsPossible, this, &Calls::startWaiting);
    // After all that has arrived, because writing several changes takes little more time than writing one.
    tavoConnect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
                &Calls::commit);
    resume();
}

/// What was there when the program ended.
void Calls::resume()
{
    m_store.tidy(now());
    for (const StoredCall &stored : m_store.open()) {
        m_host.follow(stored.id, stored.path);
    }
    for (const StoredCall &stored : m_store.begun()) {
        Pending &pending = m_pending[stored.id];
        pending.call = callOf(stored);
        pending.group = stored.group;
        const bool isTimeKnown = isClockSet() && stored.forgetAfter != never;
        pending.deadline.setRemainingTime(
            isTimeKnown ? qBound<qint64>(0, stored.forgetAfter - dayMs - now(), dayMs)
                        : defaultWaitMs);
        pending.isAgain = true;
    }
    startTimer();
}

void Calls::take(const FleetCall &call, const QByteArray &json, const QString &group,
                 qint64 deadline)
{
    if (m_pending.contains(call.id)) {
        return; // Its answer follows.
    }
    const QString refusal = refusalOf(call, json, deadline);
    if (!refusal.isEmpty()) {
        if (!answerAgain(call)) {
            answer(call, refusal);
        }
        return;
    }
    StoredCall stored;
    stored.id = call.id;
    stored.call = json;
    stored.group = group;
    stored.forgetAfter = dayAfter(qMax(deadline, call.at));
    m_changes.begun.push_back(stored);
    Pending pending;
    pending.call = call;
    pending.group = group;
    pending.deadline.setRemainingTime(qMax(deadline, call.at) - now());
    m_pending.insert(call.id, pending);
}

/// Why the call can't be carried out, unless it has been; empty if it can.
QString Calls::refusalOf(const FleetCall &call, const QByteArray &json, qint64 deadline) const
{
    if (deadline < now()) {
        return QStringLiteral("too late");
    }
    if (const auto refusal = m_configuration.permissions.refusal(call)) {
        return refusal->reason;
    }
    if (json.size() > maxCallBytes) {
        return QStringLiteral("the call is too large");
    }
    if (m_pending.size() >= maxPending) {
        return QStringLiteral("too many calls wait");
    }
    return call.at > now() + dayMs ? QStringLiteral("at: is too far away") : QString();
}

/// Answers a call that the store has, and does nothing else.
bool Calls::answerAgain(const FleetCall &call)
{
    try {
        const auto stored = find(call.id);
        if (!stored) {
            return false;
        }
        if (stored->answer.isEmpty()) {
            answer(call, QStringLiteral("the device could not keep the answer of this call"));
        } else {
            send(answerMessages(call, stored->answer));
        }
    } catch (const SqliteError &error) {
        FleetLog::error(QStringLiteral("a call can't be found: %1").arg(error.reason()));
        answer(call, cannotRemember());
    }
    return true;
}

/// What the store has, with all changes.
std::optional<StoredCall> Calls::find(const QString &id)
{
    const auto isThis = [&id](const StoredCall &call) { return call.id == id; };
    if (std::any_of(m_changes.answered.begin(), m_changes.answered.end(), isThis) ||
        std::find(m_changes.ended.begin(), m_changes.ended.end(), id) != m_changes.ended.end()) {
        commit();
    }
    return m_store.find(id);
}

void Calls::commit()
{
    while (!m_changes.isEmpty()) { // What follows may change more.
        StoreChanges changes = std::exchange(m_changes, {});
        try {
            m_store.write(changes);
        } catch (const SqliteError &error) {
            giveUp(changes, error.reason());
            continue;
        }
        for (const QString &id : changes.known) {
            answerAgain(m_pending.take(id).call);
        }
        const QScopedValueRollback starting(m_isStarting, true);
        for (const StoredCall &call : changes.begun) {
            if (m_pending.contains(call.id)) {
                start(call.id);
            }
        }
        m_outbox.send(changes.messages);
        tellDropped();
    }
}

/// The answers of what was carried out are sent all the same.
void Calls::giveUp(const StoreChanges &changes, const QString &reason)
{
    FleetLog::error(QStringLiteral("calls and answers can't be kept: %1").arg(reason));
    m_outbox.sendOnce(changes.messages);
    for (const StoredCall &call : changes.begun) {
        const auto pending = m_pending.find(call.id);
        if (pending != m_pending.end()) {
            const FleetCall refused = pending->call;
            m_pending.erase(pending);
            if (!answerAgain(refused)) {
                answer(refused, cannotRemember());
            }
        }
    }
}

void Calls::tellDropped()
{
    if (m_store.dropped() != m_dropped) {
        FleetLog::warning(
            QStringLiteral("answers and events given up because they were too many or too "
                           "old: %1")
                .arg(m_store.dropped() - m_dropped));
        m_dropped = m_store.dropped();
    }
}

void Calls::refuse(const FleetCall::Bad &bad)
{
    FleetLog::warning(QStringLiteral("a message is not a call: %1").arg(bad.reason));
    if (!bad.id.isEmpty()) {
        FleetCall call;
        call.id = bad.id;
        call.from = bad.from;
        answer(call, bad.reason);
    }
}

/// Does nothing if it has to wait for its time, for the host or for others.
void Calls::start(const QString &id)
{
    Pending &pending = m_pending[id];
    if (pending.call.at > now() || !m_client.isAvailable() || m_running >= maxRunning) {
        startTimer(pending);
        return;
    }
    pending.isRunning = true;
    ++m_running;
    if (pending.call.kind == FleetCall::Kind::Cancel) {
        cancelCall(id);
        return;
    }
    m_host.carryOut(pending.call, pending.isAgain,
                    [this, id](const HostCalls::Outcome &outcome) { finish(id, outcome); });
}

void Calls::startWaiting()
{
    if (m_isStarting) {
        return; // A call has finished at once. Who has started it starts the others.
    }
    const QScopedValueRollback starting(m_isStarting, true);
    for (auto pending = m_pending.begin(); pending != m_pending.end() && m_running < maxRunning;) {
        const QString id = pending.key();
        if (!pending->isRunning) {
            start(id);
        }
        pending = m_pending.upperBound(id);
    }
}

/// For a call that waits.
void Calls::startTimer(const Pending &pending)
{
    const qint64 wait = pending.call.at - now();
    const int next = int(qMin(wait > 0 ? wait : pending.deadline.remainingTime(), dayMs));
    if (!m_timer.isActive() || next < m_timer.remainingTime()) {
        m_timer.start(next);
    }
}

/// For all that wait.
void Calls::startTimer()
{
    m_timer.stop();
    for (const Pending &pending : qAsConst(m_pending)) {
        if (!pending.isRunning) {
            startTimer(pending);
        }
    }
}

void Calls::on_timer_timeout()
{
    startWaiting();
    const QStringList ids = m_pending.keys();
    for (const QString &id : ids) {
        const auto pending = m_pending.constFind(id);
        if (pending != m_pending.constEnd() && !pending->isRunning && pending->call.at <= now() &&
            pending->deadline.hasExpired()) {
            finish(id, failed(m_client.isAvailable() ? "too late: the device was busy"
                                                     : "too late: the device had no host"));
        }
    }
    startTimer();
}

void Calls::on_client_availableChanged(bool available)
{
    if (available) {
        startWaiting();
    }
}

/// Ends the target of a call, wherever it is.
void Calls::cancelCall(const QString &id)
{
    const auto finishCancel = [this, id](const HostCalls::Outcome &outcome) {
        finish(id, outcome);
    };
    HostCalls::Outcome outcome;
    outcome.kind = FleetAnswer::Kind::Done;
    const QString target = m_pending[id].call.target;
    const auto pending = m_pending.find(target);
    if (pending != m_pending.end() && target != id) {
        outcome.value = true;
        if (pending->isRunning) {
            pending->isCancelled = true; // once the host has it
        } else {
            finish(target, failed("cancelled"));
        }
        finishCancel(outcome);
        return;
    }
    try {
        const auto stored = find(target);
        if (stored && stored->isOpen) {
            m_host.cancel(callOf(*stored), stored->path, finishCancel);
            return;
        }
    } catch (const SqliteError &error) {
        FleetLog::error(QStringLiteral("a call can't be found: %1").arg(error.reason()));
    }
    outcome.value = false; // It is not open.
    finishCancel(outcome);
}

void Calls::finish(const QString &id, const HostCalls::Outcome &outcome)
{
    const auto found = m_pending.find(id);
    if (found == m_pending.end()) {
        return;
    }
    if (found->isRunning) {
        --m_running;
    }
    found->isRunning = false;
    if (outcome.isUndelivered) {
        found->early.reset(); // of a host that did not have it
        startTimer(*found);   // It waits for a host, or for its inbox.
        return;
    }
    const Pending pending = *found;
    m_pending.erase(found);
    FleetAnswer answer;
    answer.id = id;
    answer.device = m_configuration.device;
    answer.kind = outcome.kind;
    answer.value = outcome.value;
    answer.error = outcome.error;
    StoredCall stored;
    stored.id = id;
    stored.answer = answer.toJson();
    if (stored.answer.size() > maxAnswerBytes) {
        answer.kind = FleetAnswer::Kind::Error;
        answer.error = QStringLiteral("the value is too large for an answer");
        stored.answer = answer.toJson();
    }
    stored.path = outcome.path;
    stored.isOpen = outcome.isOpen;
    m_changes.answered.push_back(stored);
    send(answerMessages(pending.call, stored.answer));
    if (pending.early) {
        on_host_ended(id, pending.early->end, pending.early->action);
    } else if (pending.isCancelled && outcome.isOpen) {
        m_host.cancel(pending.call, outcome.path, [](const HostCalls::Outcome &) {});
    }
    if (m_pending.size() > m_running) {
        startWaiting();
    }
}

void Calls::on_host_ended(const QString &id, FleetEvent::End end, const QString &action)
{
    FleetEvent event;
    event.id = id;
    event.device = m_configuration.device;
    event.end = end;
    event.action = action;
    event.time = now();
    if (const auto pending = m_pending.find(id); pending != m_pending.end()) {
        pending->early = event;
        return;
    }
    try {
        const auto stored = find(id);
        if (!stored || !stored->isOpen) {
            return;
        }
        if (end == FleetEvent::End::Expired && callOf(*stored).kind == FleetCall::Kind::Say) {
            event.end = FleetEvent::End::Finished; // It has been read to its end.
        }
        std::vector<OutgoingMessage> messages{
            message(FleetTopics::event(m_configuration.device), event.toJson())};
        const bool isByPerson = end == FleetEvent::End::Dismissed || end == FleetEvent::End::Action;
        if (isByPerson && !stored->group.isEmpty() && callOf(*stored).isEverywhere) {
            messages.push_back(message(FleetTopics::groupEnd(stored->group), event.toJson()));
        }
        m_changes.ended.push_back(id);
        send(messages);
    } catch (const SqliteError &error) {
        FleetLog::error(QStringLiteral("a call can't be found: %1").arg(error.reason()));
    }
}

/// Only for calls that ask for it, because every device may say so.
void Calls::endWithGroup(const FleetEvent &event, const QString &group)
{
    if (event.device == m_configuration.device) {
        return;
    }
    commit(); // It may be a repeat that has arrived.
    const auto pending = m_pending.find(event.id);
    if (pending != m_pending.end() && pending->call.isEverywhere && pending->group == group) {
        if (pending->isRunning) {
            pending->isCancelled = true;
        } else {
            finish(event.id, failed("cancelled"));
        }
        return;
    }
    try {
        const auto stored = find(event.id);
        if (!stored || !stored->isOpen || stored->group != group) {
            return;
        }
        if (const FleetCall call = callOf(*stored); call.isEverywhere) {
            m_host.cancel(call, stored->path, [](const HostCalls::Outcome &) {});
        }
    } catch (const SqliteError &error) {
        FleetLog::error(QStringLiteral("a call can't be found: %1").arg(error.reason()));
    }
}

void Calls::answer(const FleetCall &call, const QString &error)
{
    FleetAnswer answer;
    answer.id = call.id;
    answer.device = m_configuration.device;
    answer.kind = FleetAnswer::Kind::Error;
    answer.error = error;
    send(answerMessages(call, answer.toJson()));
}

OutgoingMessage Calls::message(const QString &topic, const QByteArray &payload) const
{
    OutgoingMessage message;
    message.topic = topic;
    message.payload = payload;
    message.expires = dayAfter(now());
    return message;
}

/// None for a call that says no sender.
std::vector<OutgoingMessage> Calls::answerMessages(const FleetCall &call,
                                                   const QByteArray &answer) const
{
    std::vector<OutgoingMessage> messages;
    if (!call.from.isEmpty()) {
        messages.push_back(message(FleetTopics::answer(m_configuration.device, call.from), answer));
    }
    return messages;
}

void Calls::send(const std::vector<OutgoingMessage> &messages)
{
    m_changes.messages.insert(m_changes.messages.end(), messages.begin(), messages.end());
}

void Calls::on_tidyTimer_timeout()
{
    try {
        m_store.tidy(now());
    } catch (const SqliteError &error) {
        FleetLog::error(QStringLiteral("old calls can't be removed: %1").arg(error.reason()));
    }
}
