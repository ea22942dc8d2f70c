// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Requests.h"

#include <chrono>

namespace {
using Clock = std::chrono::steady_clock;

/// Records the reply, in the thread that gives it.
class Answer : public CMReplyWatcher
{
public:
    Answer(Ledger &ledger, RequestKind kind, const OnAnswer &onAnswer)
        : m_ledger(ledger)
        , m_kind(kind)
        , m_onAnswer(onAnswer)
        , m_sent(Clock::now())
    {
        m_ledger.requestSent(kind);
    }

    void replyFinished(const CMVoidReply &reply) override
    {
        const std::chrono::duration<double> took = Clock::now() - m_sent;
        const bool accepted = !reply.error().isError();
        if (m_onAnswer) {
            m_onAnswer(accepted, accepted ? CMReply<QVariant>(reply).value() : QVariant());
        }
        m_ledger.requestAnswered(m_kind, accepted, took.count());
        delete this;
    }

private:
    Ledger &m_ledger;
    const RequestKind m_kind;
    const OnAnswer m_onAnswer;
    const Clock::time_point m_sent;
};

bool isMessage(const CMPath &path)
{
    const QString parent = TavoNotificationDisplaySimpleMessageNodePath().toString();
    return path.toString().startsWith(parent + QLatin1Char('/'));
}

QString lastSegment(const CMPath &path)
{
    return path.toString().section(QLatin1Char('/'), -1);
}
} // namespace

void sendRequest(Ledger &ledger, RequestKind kind, const CMPath &path, const QVariant &value,
                 const OnAnswer &onAnswer)
{
    const CMReply<QVariant> reply;
    reply.addWatcher(new Answer(ledger, kind, onAnswer));
    CMRoot()->invoke(path, value, reply);
}

void sendRowsRequest(Ledger &ledger, const CMPath &path, const OnAnswer &onAnswer)
{
    const CMReply<QVariant> reply;
    reply.addWatcher(new Answer(ledger, RequestKind::ReadRows, onAnswer));
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, 0, -1, reply));
}

void sendDisplayCancel(Ledger &ledger, const CMPath &path)
{
    sendRequest(ledger, RequestKind::CancelDisplay, TavoNotificationDisplayCancelNotifyPath(),
                TavoValue().setPath(path).__variant());
}

void sendDisplayCancels(Ledger &ledger, int count)
{
    sendRowsRequest(ledger, TavoNotificationDisplayQueuePath(),
                    [&ledger, count](bool, const QVariant &answer) {
                        for (const QVariant &row : answer.toList().mid(0, count)) {
                            sendDisplayCancel(ledger, CMPath::fromQVariant(row));
                        }
                    });
}

void sendDisplayOpen(Ledger &ledger, RequestKind kind, const QVariant &value)
{
    sendRequest(ledger, kind, TavoNotificationDisplayOpenPath(), value,
                [&ledger, kind](bool accepted, const QVariant &answer) {
                    if (!accepted) {
                        return;
                    }
                    if (kind != RequestKind::OpenDisplay) {
                        // A random value that the module accepted is recorded as what
                        // it became.
                        ledger.requestSent(RequestKind::OpenDisplay);
                        ledger.requestAnswered(RequestKind::OpenDisplay, true, 0);
                    }
                    const CMPath path = TavoValue(answer.toHash()).path();
                    if (path.isEmpty()) {
                        ledger.violation(QStringLiteral("a display was opened without a path"));
                    } else if (isMessage(path)) {
                        ledger.messageOpened(path);
                    }
                });
}

void nameMessage(Ledger &ledger, const CMPath &message)
{
    // Nobody owns a node at its path, so the reply must not record the message again.
    sendDisplayOpen(
        ledger, RequestKind::OpenDisplay,
        TavoValue()
            .setNotificationDisplayItem(TavoNotificationDisplayItem()
                                            .setId(lastSegment(message))
                                            .setPath(CMPath(QStringLiteral("/soak/cleaning")))
                                            .setPriority(TavoNotificationItemPriority::Enum(9))
                                            .setTimeout(1))
            .__variant());
}

void sendSound(Ledger &ledger, const TavoNotificationPlayerItem &item, bool observed)
{
    const QString id = item.id();
    ledger.soundRequested(id, observed);
    sendRequest(
        ledger, RequestKind::EnqueueSound, TavoNotificationPlayerEnqueuePath(),
        TavoValue().setNotificationPlayerItem(item).__variant(),
        [&ledger, id](bool accepted, const QVariant &) { ledger.soundAnswered(id, accepted); });
}

void sendSoundCancel(Ledger &ledger, const QString &id)
{
    sendRequest(ledger, RequestKind::CancelSound, TavoNotificationPlayerCancelPath(),
                TavoValue().setString_(id).__variant(),
                [&ledger, id](bool accepted, const QVariant &) {
                    if (!accepted) {
                        ledger.soundIsGone(id);
                    }
                });
}
