// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The rules that must hold after every step.

#include "DisplaySystem.h"
#include "support/Text.h"

#include <algorithm>

namespace {
QString toText(const QVector<CMPath> &paths)
{
    QStringList texts;
    for (const CMPath &path : paths) {
        texts.append(path.toString());
    }
    return texts.isEmpty() ? "none"_s : texts.join(' ');
}
} // namespace

void DisplaySystem::check()
{
    if (isReplaying()) {
        m_client->takeLog();
        m_expectedLog.clear();
        return;
    }
    // A broken rule breaks others; only the first is reported.
    for (const auto check :
         {&DisplaySystem::checkRows, &DisplaySystem::checkTimer, &DisplaySystem::checkStatus,
          &DisplaySystem::checkNodes, &DisplaySystem::checkSubscriptions, &DisplaySystem::checkLog,
          &DisplaySystem::checkShown}) {
        if (!m_broken) {
            (this->*check)();
        }
    }
}

void DisplaySystem::checkRows()
{
    QVector<CMPath> expected;
    for (const DisplayModel::Entry &entry : m_model.queue()) {
        expected.append(m_paths.value(entry.path()));
    }
    const QVector<CMPath> rows = DisplayClient::rows();
    if (rows != expected) {
        broken("the queue node's rows are the open notifications, most urgent first, equal ones in "
               "their order of arrival",
               toText(rows) + " instead of " + toText(expected));
    }
}

void DisplaySystem::checkTimer()
{
    const QTimer &timer = m_client->closeTimer();
    if (timer.isActive() != m_model.isHeadTimed()) {
        broken("the close timer runs while the head has a timeout, and only then",
               timer.isActive() ? "it runs"_s : "it is not running"_s);
        return;
    }
    if (!timer.isActive()) {
        return;
    }
    const int left = m_model.queue().front().left * tick;
    if (timer.interval() != left) {
        broken("the head is shown for its remaining timeout",
               QStringLiteral("%1 ms instead of %2").arg(timer.interval()).arg(left));
        return;
    }
    const int remaining = std::max(left - m_model.elapsed() * tick, 0);
    // Qt rounds the remaining time up, and a whole number of milliseconds to the next.
    const int found = timer.remainingTime();
    if (found != remaining && (remaining == 0 || found != remaining + 1)) {
        broken("the head's timeout starts when it is shown",
               QStringLiteral("%1 ms to go instead of %2").arg(found).arg(remaining));
    }
}

void DisplaySystem::checkStatus()
{
    const TavoNotificationDisplayCurrent current = DisplayClient::current();
    if (m_model.queue().empty()) {
        if (!current.isEmpty()) {
            broken("nothing is reported as on display when the queue is empty");
        }
    } else {
        const DisplayModel::Entry &head = m_model.queue().front();
        if (current.path() != m_paths.value(head.path()) || current.timeout() != head.time * tick ||
            current.remaining() != head.left * tick) {
            broken("the head is reported with its whole and its remaining timeout",
                   QStringLiteral("%1, %2 of %3 ms")
                       .arg(current.path().toString())
                       .arg(current.remaining())
                       .arg(current.timeout()));
        }
    }
    const auto ends = m_model.opened() - int(m_model.queue().size());
    if (DisplayClient::ended().number() != ends) {
        broken("every end is reported once",
               QStringLiteral("%1 instead of %2").arg(DisplayClient::ended().number()).arg(ends));
    }
}

void DisplaySystem::checkNodes()
{
    for (const int message : m_model.messages()) {
        const CMPath path = m_paths.value(message);
        const bool exists = DisplayClient::exists(path);
        if (exists != m_model.hasNode(message)) {
            broken("a message's node stays until a notification with its name as id is closed",
                   exists ? "there is a node too many"_s : "it is gone"_s);
            return;
        }
        const TavoRoles row = DisplayClient::rowOf(path);
        if (exists &&
            (row.type() != TavoRolesType::Text || row.title().toString() != messageText(message))) {
            broken("a message's node has its text as the only row", row.title().toString());
            return;
        }
    }
}

void DisplaySystem::checkSubscriptions()
{
    for (auto path = m_paths.cbegin(); path != m_paths.cend(); ++path) {
        const int expected = m_model.count(path.key());
        const int found = DisplayClient::subscriptions(*path);
        if (found != expected) {
            broken("there is one subscription for each open notification and no other",
                   QStringLiteral("%1 instead of %2").arg(found).arg(expected));
            return;
        }
    }
    if (DisplayClient::subscriptions(TavoNotificationDisplayQueuePath()) != 0) {
        broken("there is one subscription for each open notification and no other",
               "one to the queue itself"_s);
        return;
    }
    // A reset has been reported to the subscribers, which must not close anything.
    ModuleHost::settle();
    checkRows();
}

void DisplaySystem::checkLog()
{
    const QStringList log = m_client->takeLog();
    if (log != m_expectedLog) {
        broken("warnings, errors and fatal records are written where the contract has them, at its "
               "levels",
               '"' + log.join("\", \""_s) + "\" instead of \"" + m_expectedLog.join("\", \""_s) +
                   '"');
    }
    m_expectedLog.clear();
}

void DisplaySystem::checkShown()
{
    for (const DisplayModel::Entry &entry : m_model.queue()) {
        if (entry.time > 0 && (entry.shown > entry.time || entry.left < 1)) {
            broken("nothing is shown longer in total than its timeout");
        }
    }
}

void DisplaySystem::expectCancelled(const CMReply<QVariant> &reply)
{
    if (!reply.isFinished()) {
        broken("every request is answered");
    } else if (reply.error().isError() || reply.value().userType() != QMetaType::Bool ||
               !reply.value().toBool()) {
        broken("a cancel that finds its notification is answered with true",
               reply.error().message().toString());
    }
}

void DisplaySystem::expectRefusal(const CMReply<QVariant> &reply, const char *text)
{
    if (!reply.isFinished()) {
        broken("every request is answered");
    } else if (reply.error().name() != "Notifications"_s ||
               reply.error().message().toString() != QString(text)) {
        broken("a refusal is answered with its own text",
               QStringLiteral("\"%1\" instead of \"%2\"")
                   .arg(reply.error().message().toString(), QString(text)));
    }
}

void DisplaySystem::broken(const std::string &rule, const QString &detail)
{
    m_broken = true;
    finding(rule, detail.toStdString());
}
