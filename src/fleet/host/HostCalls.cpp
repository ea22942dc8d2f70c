// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/host/HostCalls.h"

#include "base/Json.h"
#include "fleet/FleetLog.h"
#include <client/BusyHost.h>
#include <core/base/connect.h>
#include <core/tavo.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <utility>

namespace {
using Kind = FleetCall::Kind;
using End = FleetEvent::End;
using Outcome = HostCalls::Outcome;

constexpr int checkAfterMs = 1000; // more may be left out until then

const QString &application()
{
    static const QString s_application = QStringLiteral("fleet");
    return s_application;
}

const QString &idPrefix()
{
    static const QString s_prefix = QStringLiteral("fleet-");
    return s_prefix;
}

/// The id of the call of a notification or a sound; empty if it is not the fleet's.
QString callOf(const QString &id)
{
    return id.startsWith(idPrefix()) ? id.mid(idPrefix().size()) : QString();
}

Outcome failed(const QString &reason)
{
    Outcome outcome;
    outcome.error = reason;
    return outcome;
}

Outcome failed(const CMError &error)
{
    Outcome outcome = failed(error.message().toString());
    outcome.isUndelivered =
        error.name() == TavoClientError::noHost() || error.name() == TavoClientError::noBus();
    return outcome;
}

Outcome done(const QJsonValue &value)
{
    Outcome outcome;
    outcome.kind = FleetAnswer::Kind::Done;
    outcome.value = value;
    return outcome;
}

Outcome opened(FleetAnswer::Kind kind, const QString &path = {})
{
    Outcome outcome;
    outcome.kind = kind;
    outcome.path = path;
    outcome.isOpen = true;
    return outcome;
}

QJsonValue jsonOf(const QVariant &value)
{
    return QJsonDocument::fromJson('[' + toJson(value, JsonForm::Line) + ']').array().at(0);
}

QVariant variantOf(const QJsonValue &value)
{
    if (value.isUndefined()) {
        return {};
    }
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    const auto read = fromJson(array.mid(1, array.size() - 2));
    return std::holds_alternative<QVariant>(read) ? std::get<QVariant>(read) : QVariant();
}

TavoAttentionItem attentionItem(const FleetCall &call)
{
    TavoList<TavoAttentionAction> actions;
    for (const auto &action : call.actions) {
        actions.append(TavoAttentionAction().setKey(action.key).setLabel(action.label));
    }
    const bool isSaid = call.kind == Kind::Say;
    return TavoAttentionItem()
        .setId(idPrefix() + call.id)
        .setTitle(call.title)
        .setText(isSaid ? QString() : call.text)
        .setSpeech(isSaid ? call.text : QString())
        .setApplication(application())
        .setIcon(call.icon)
        .setActions(actions);
}

/// A message needs a text; the title can be one.
std::pair<QString, QString> titleAndText(const FleetCall &call)
{
    return call.text.isEmpty() ? std::pair(QString(), call.title)
                               : std::pair(call.title, call.text);
}

End endOf(TavoNotificationDisplayEnd::Enum end)
{
    switch (end) {
    case TavoNotificationDisplayEnd::Expired:
    case TavoNotificationDisplayEnd::Overtaken:
        return End::Expired;
    case TavoNotificationDisplayEnd::Closed:
        return End::Dismissed;
    default:
        return End::Closed;
    }
}

End endOf(TavoAttentionEnd::Enum end)
{
    switch (end) {
    case TavoAttentionEnd::Expired:
        return End::Expired;
    case TavoAttentionEnd::Dismissed:
        return End::Dismissed;
    case TavoAttentionEnd::ActedOn:
        return End::Action;
    case TavoAttentionEnd::Failed:
        return End::Failed;
    default:
        return End::Closed;
    }
}

/// The history does not tell whether a person or a program has dismissed it.
End endOf(TavoAttentionState::Enum state)
{
    switch (state) {
    case TavoAttentionState::Seen:
    case TavoAttentionState::Expired:
        return End::Expired;
    case TavoAttentionState::Dismissed:
        return End::Dismissed;
    case TavoAttentionState::ActedOn:
        return End::Action;
    case TavoAttentionState::Silenced:
        return End::Closed;
    default:
        return End::Failed;
    }
}

/// The player refuses a sound only if it has one with this id. The host refuses one with the id of a sound that
/// gives way to others.
bool isSoundThere(const CMError &error)
{
    return error.name() == TavoNotificationsName() ||
           error.message().toString() == QLatin1String("A sound with this id waits");
}

/// Whether the host has not carried out the request because of a limit. The error of one that was carried out, and
/// whose reply was too much for a limit, has the same name.
bool isRefused(const CMError &error)
{
    return error.name() == TavoClientError::limitExceeded() &&
           !error.message().toString().startsWith(QLatin1String("The call was carried out"));
}

/// For a request that must not fail because the host is busy. Not for ever, because some limits are for the request
/// itself.
std::function<bool(const CMError &)> isRefusedAgain(bool isAgain)
{
    constexpr int maxAskedMs = 60000;
    return [until = QDeadlineTimer(isAgain ? maxAskedMs : 0)](const CMError &error) {
        return isRefused(error) && !until.hasExpired();
    };
}

QVector<CMPath> endPaths()
{
    return {TavoNotificationDisplayEndedPath(), TavoAttentionEndedPath()};
}
} // namespace

HostCalls::HostCalls(TavoClient &client, const Permissions &permissions, int timeoutMs)
    : m_client(client)
    , m_permissions(permissions)
    , m_timeoutMs(timeoutMs)
{
    tavoConnect(&client, &TavoClient::availableChanged, this,
                &HostCalls::on_client_availableChanged);
    tavoConnect(&client, &TavoClient::valueChanged, this, &HostCalls::on_client_valueChanged);
    tavoConnect(&client, &TavoClient::changesDropped, this, &HostCalls::tellDropped);
    tavoConnect(&client, &TavoClient::subscriptionFailed, this,
                &HostCalls::on_client_subscriptionFailed);
    m_inboxTimer.setSingleShot(true);
    m_inboxTimer.setInterval(askBusyHostAgainMs);
    tavoConnect(&m_inboxTimer, &QTimer::timeout, this, &HostCalls::on_inboxTimer_timeout);
    openInbox();
    m_askTimer.setSingleShot(true);
    m_askTimer.setInterval(askBusyHostAgainMs);
    tavoConnect(&m_askTimer, &QTimer::timeout, this, &HostCalls::on_askTimer_timeout);
    m_checkTimer.setSingleShot(true);
    m_checkTimer.setInterval(checkAfterMs);
    tavoConnect(&m_checkTimer, &QTimer::timeout, this, &HostCalls::checkOpen);
}

void HostCalls::openInbox()
{
    m_inbox.emplace(&m_client);
    tavoConnect(&*m_inbox, &TavoInbox::opened, this, &HostCalls::soundsPossible);
    tavoConnect(&*m_inbox, &TavoInbox::failed, &m_inboxTimer, QOverload<>::of(&QTimer::start));
    tavoConnect(&*m_inbox, &TavoInbox::responded, this, &HostCalls::on_inbox_responded);
    tavoConnect(&*m_inbox, &TavoInbox::requestsDropped, this, &HostCalls::tellDropped);
}

void HostCalls::on_inboxTimer_timeout()
{
    if (m_inbox->path().isEmpty()) {
        openInbox();
    }
}

void HostCalls::carryOut(const FleetCall &call, bool isAgain, const Finish &finish)
{
    switch (call.kind) {
    case Kind::Show:
        if (!call.actions.isEmpty()) {
            notify(call, isAgain, finish);
        } else if (isAgain) {
            findShown(call, finish);
        } else {
            show(call, finish);
        }
        break;
    case Kind::Notify:
        notify(call, isAgain, finish);
        break;
    case Kind::Say:
        say(call, isAgain, finish);
        break;
    case Kind::Sound:
        sound(call, isAgain, finish);
        break;
    case Kind::Call:
        callNode(call, isAgain, finish);
        break;
    case Kind::Cancel: // by cancel(): the caller knows what is open
    case Kind::Ping:
        finish(done(true));
        break;
    }
}

int HostCalls::timeoutOf(const FleetCall &call) const
{
    return call.timeoutMs == FleetCall::defaultTimeout ? m_timeoutMs : call.timeoutMs;
}

TavoNotificationItemPriority::Enum HostCalls::priorityOf(const FleetCall &call) const
{
    return TavoNotificationItemPriority::Enum(m_permissions.allowedPriority(call.priority));
}

TavoNotificationPlayerItem HostCalls::soundItem(const FleetCall &call) const
{
    const auto location = m_permissions.sound(call.sound);
    const bool isThere = std::holds_alternative<QString>(location);
    return TavoNotificationPlayerItem()
        .setId(idPrefix() + call.id)
        .setType(TavoNotificationPlayerItemType::Uri)
        .setContent(isThere ? std::get<QString>(location) : QString())
        .setPriority(priorityOf(call));
}

/// Repeats the request each second while its reply has an error that is no answer; fails once the host has gone.
template <typename IsNoAnswer, typename Request, typename Take>
void HostCalls::ask(IsNoAnswer isNoAnswer, const Request &request, const Take &take)
{
    using Reply = decltype(request());
    request().onFinished(this, [this, isNoAnswer, request, take](const Reply &reply) {
        if (!isNoAnswer(reply.error())) {
            take(reply);
            return;
        }
        askLater([this, isNoAnswer, request, take] {
            if (m_client.isAvailable()) {
                ask(isNoAnswer, request, take);
                return;
            }
            const Reply none;
            none.setError(CMError(TavoClientError::noHost(), m_client.unavailableReason()));
            take(none);
        });
    });
}

/// Runs it within a second, or when the host goes.
void HostCalls::askLater(const std::function<void()> &request)
{
    m_refused.push_back(request);
    if (!m_askTimer.isActive()) {
        m_askTimer.start();
    }
}

void HostCalls::on_askTimer_timeout()
{
    for (const auto &request : std::exchange(m_refused, {})) {
        request();
    }
}

void HostCalls::show(const FleetCall &call, const Finish &finish)
{
    const auto [title, text] = titleAndText(call);
    auto item = TavoNotificationDisplayItem().setMessage(text).setPriority(priorityOf(call));
    // What is left out need not be sent.
    if (!title.isEmpty()) {
        item.setTitle(title);
    }
    if (const int timeout = timeoutOf(call); timeout != 0) {
        item.setTimeout(timeout);
    }
    m_client.open(item).onFinished(this, [this, call, finish](const CMReply<CMPath> &reply) {
        if (reply.error().isError()) {
            finish(failed(reply.error()));
            return;
        }
        const QString path = reply.value().toString();
        if (!call.sound.isEmpty()) {
            ring(call, path);
        }
        openMessage(call, path, finish);
    });
}

/// While the host refuses it, a sound is due as long as its message is open.
void HostCalls::ring(const FleetCall &call, const QString &path)
{
    m_client.enqueue(soundItem(call))
        .onFinished(this, [this, call, path](const CMReply<QVariant> &reply) {
            if (isRefused(reply.error())) {
                askLater([this, call, path] {
                    if (m_client.isAvailable() && m_messages.contains(path)) {
                        ring(call, path);
                    }
                });
            }
        });
}

void HostCalls::openMessage(const FleetCall &call, const QString &path, const Finish &finish)
{
    const auto early = m_early.constFind(path);
    finish(opened(FleetAnswer::Kind::Shown, path));
    if (early == m_early.constEnd()) {
        m_messages.insert(path, call.id);
    } else {
        Q_EMIT ended(call.id, *early, {});
    }
}

/// A message has no id by which it could be found. One with the same texts is taken for it.
void HostCalls::findShown(const FleetCall &call, const Finish &finish)
{
    constexpr int maxSearched = 1000;
    using Messages = QVector<TavoClientDescription>;
    const auto compare = [this, call, finish](const CMReply<Messages> &described) {
        const auto [title, text] = titleAndText(call);
        for (const TavoClientDescription &message : described.value()) {
            if (message.text == text && message.title == title &&
                !m_messages.contains(message.path.toString())) {
                openMessage(call, message.path.toString(), finish);
                return;
            }
        }
        show(call, finish);
    };
    ask(
        isBusy,
        [this] { return m_client.rows(TavoNotificationDisplayQueuePath(), 0, maxSearched); },
        [this, compare](const CMReply<QVariantList> &reply) {
            QVector<CMPath> paths;
            for (const QVariant &row : reply.value()) {
                paths.append(CMPath::fromQVariant(row));
            }
            ask(
                isBusy, [this, paths] { return m_client.describe(paths); }, compare);
        });
}

void HostCalls::notify(const FleetCall &call, bool isAgain, const Finish &finish)
{
    auto item = attentionItem(call);
    item.setTimeout(timeoutOf(call)).setPriority(priorityOf(call));
    if (!call.sound.isEmpty()) {
        item.setSound(soundItem(call).setId(QString()));
    }
    m_others.insert(call.id); // The end may be reported before the reply.
    ask(
        isRefusedAgain(isAgain),
        [this, item] {
            return m_client.call(TavoAttentionNotifyPath(), TavoValue().setAttentionItem(item));
        },
        [this, call, isAgain, finish](const CMReply<QVariant> &reply) {
            finishNotify(call, isAgain, reply, finish);
        });
}

/// The host tells whether it can be said before it begins to make a sound of the text.
void HostCalls::say(const FleetCall &call, bool isAgain, const Finish &finish)
{
    auto item = attentionItem(call);
    item.setPriority(priorityOf(call));
    ask(
        isRefusedAgain(isAgain),
        [this, item] {
            return m_client.call(TavoAttentionTryPath(), TavoValue().setAttentionItem(item));
        },
        [this, call, isAgain, finish](const CMReply<QVariant> &reply) {
            const auto trial = TavoValue(reply.value().toHash()).attentionTrial();
            if (isBusy(reply.error())) {
                finish(failed(reply.error())); // It might be shown only.
            } else if (!reply.error().isError() && !trial.spoken()) {
                finish(failed(QStringLiteral("not read aloud: %1").arg(trial.reason())));
            } else {
                notify(call, isAgain, finish);
            }
        });
}

void HostCalls::finishNotify(const FleetCall &call, bool isAgain, const CMReply<QVariant> &reply,
                             const Finish &finish)
{
    const CMError error = reply.error();
    const auto outcome = TavoValue(reply.value().toHash()).attentionOutcome();
    if (!error.isError() && (outcome.shown() || outcome.sounding())) {
        finish(opened(outcome.shown() ? FleetAnswer::Kind::Shown : FleetAnswer::Kind::Sounding));
        return;
    }
    const bool mayBeOpen = m_unanswered.remove(call.id) || isAgain;
    // Otherwise it is another program's.
    if (mayBeOpen &&
        error.message().toString() == QLatin1String("A notification with this id is open")) {
        finish(opened(FleetAnswer::Kind::Shown));
        return;
    }
    m_others.remove(call.id);
    if (!error.isError()) {
        finish(failed(QStringLiteral("kept from people: %1").arg(outcome.reason())));
    } else if (error.name() != CMErrors::noSuchNode()) {
        const Outcome failure = failed(error);
        if (failure.isUndelivered) {
            m_unanswered.insert(call.id);
        }
        finish(failure);
    } else if (call.kind == Kind::Notify && call.actions.isEmpty()) {
        show(call, finish);
    } else {
        finish(failed(QStringLiteral("the host of this device has no module attention, which this "
                                     "call needs")));
    }
}

void HostCalls::sound(const FleetCall &call, bool isAgain, const Finish &finish)
{
    if (m_inbox->path().isEmpty()) {
        Outcome undelivered;
        undelivered.isUndelivered = true;
        finish(undelivered);
        return;
    }
    m_others.insert(call.id);
    auto item = soundItem(call);
    item.setPlaybackResponsePath(m_inbox->path());
    ask(
        isRefusedAgain(isAgain), [this, item] { return m_client.enqueue(item); },
        [this, call, isAgain, finish](const CMReply<QVariant> &reply) {
            const CMError error = reply.error();
            if (error.isError() && !(isAgain && isSoundThere(error))) {
                m_others.remove(call.id);
                finish(failed(error));
            } else {
                finish(opened(FleetAnswer::Kind::Sounding));
            }
        });
}

void HostCalls::callNode(const FleetCall &call, bool isAgain, const Finish &finish)
{
    if (isAgain) {
        finish(failed(QStringLiteral("the device was stopped during this call, which may have been "
                                     "carried out")));
        return;
    }
    m_client.call(CMPath(call.path), variantOf(call.value))
        .onFinished(this, [finish](const CMReply<QVariant> &reply) {
            finish(reply.error().isError() ? failed(reply.error()) : done(jsonOf(reply.value())));
        });
}

void HostCalls::cancel(const FleetCall &target, const QString &path, const Finish &finish)
{
    const QString id = idPrefix() + target.id;
    const auto finishWith = [finish](const CMReply<QVariant> &reply) {
        const CMError error = reply.error();
        const Outcome failure = failed(error);
        // Otherwise the host has said whether there was something to end.
        const bool isUnknown =
            failure.isUndelivered || isBusy(error) || error.name() == CMErrors::noAnswer();
        finish(isUnknown ? failure : done(!error.isError()));
    };
    const auto cancelSound = [this, id] { return m_client.cancelSound(id); };
    if (!path.isEmpty()) {
        const auto cancelMessage = [this, path] { return m_client.cancelMessage(CMPath(path)); };
        const auto endSound = [=,
                               hasSound = !target.sound.isEmpty()](const CMReply<QVariant> &reply) {
            if (hasSound) { // ring() no longer repeats it.
                ask(isRefusedAgain(true), cancelSound,
                    [=](const CMReply<QVariant> &) { finishWith(reply); });
            } else {
                finishWith(reply);
            }
        };
        ask(isRefusedAgain(true), cancelMessage, endSound);
    } else if (target.kind == Kind::Sound) {
        ask(isRefusedAgain(true), cancelSound, finishWith);
    } else {
        ask(
            isRefusedAgain(true),
            [this, id] {
                return m_client.call(TavoAttentionClosePath(), TavoValue().setString_(id));
            },
            finishWith);
    }
}

void HostCalls::follow(const QString &id, const QString &path)
{
    if (path.isEmpty()) {
        m_others.insert(id);
    } else {
        m_messages.insert(path, id);
    }
}

void HostCalls::on_client_availableChanged(bool available)
{
    m_inboxTimer.stop(); // Each host is asked for the inbox when it comes.
    if (available) {
        checkOpen();
        return;
    }
    // They have ended with the host.
    const QSet<QString> others = std::exchange(m_others, {});
    for (const QString &id : others) {
        Q_EMIT ended(id, End::Failed, {});
    }
    on_askTimer_timeout();
}

void HostCalls::tellDropped()
{
    constexpr qint64 quietMs = 60000;
    if (m_untilWarning.hasExpired()) {
        FleetLog::warning(QStringLiteral("the host left out reports that were not read in time: it "
                                         "is asked how messages ended"));
    }
    m_untilWarning.setRemainingTime(quietMs);
    checkLater();
}

void HostCalls::on_client_subscriptionFailed(const CMPath &path, const CMError &error)
{
    if (isBusy(error) && endPaths().contains(path)) {
        checkLater();
    }
}

void HostCalls::checkLater()
{
    if (!m_checkTimer.isActive()) {
        m_checkTimer.start();
    }
}

/// Ends may have been missed.
void HostCalls::checkOpen()
{
    for (const CMPath &path : endPaths()) {
        m_client.subscribe(path, TavoClient::Change::Value);
    }
    m_unchecked = m_messages.keys();
    m_isHistoryDue = true;
    if (!m_isChecking) {
        checkNext();
    }
}

/// One request after the other: a bus may refuse who has many without replies. What is refused is asked again
/// later.
void HostCalls::checkNext()
{
    constexpr int maxPages = 100;
    m_isChecking = m_client.isAvailable() && (!m_unchecked.isEmpty() || m_isHistoryDue);
    if (!m_isChecking) {
        return;
    }
    if (!m_unchecked.isEmpty()) {
        checkMessage(m_unchecked.takeLast());
    } else {
        m_isHistoryDue = false;
        checkHistory(m_others, 0, maxPages);
    }
}

/// By itself: others may have opened more than fit into one reply.
void HostCalls::checkMessage(const QString &path)
{
    ask(
        isBusy,
        [this, path] { return m_client.matchRow(TavoNotificationDisplayQueuePath(), path); },
        [this, path](const CMReply<int> &reply) {
            const CMError error = reply.error();
            const bool isOpen =
                error.isError() ? error.name() != CMErrors::noSuchNode() : reply.value() >= 0;
            const QString id = isOpen ? QString() : m_messages.take(path);
            if (!id.isEmpty()) {
                Q_EMIT ended(id, End::Failed, {});
            }
            checkNext();
        });
}

/// Looks for the newest entry of each of these calls. A sound has none.
void HostCalls::checkHistory(const QSet<QString> &ids, qint64 before, int maxPages)
{
    constexpr int pageSize = 10; // A busy bus has no time for large replies.
    if (ids.isEmpty() || maxPages == 0) {
        checkNext();
        return;
    }
    const auto query =
        TavoAttentionQuery().setSource(application()).setBefore(before).setLimit(pageSize);
    const auto take = [this, ids, maxPages](const CMReply<QVariant> &reply) {
        const auto page = TavoValue(reply.value().toHash()).attentionPage();
        const auto records = page.records();
        QSet<QString> others = ids;
        for (int index = 0; index < records.size(); ++index) {
            const TavoAttentionRecord record = records.at(index);
            const QString id = callOf(record.id());
            if (others.remove(id) && record.endTime() != 0 && m_others.remove(id)) {
                Q_EMIT ended(id, endOf(record.state()), record.action());
            }
        }
        if (page.next() != 0) {
            checkHistory(others, page.next(), maxPages - 1);
        } else {
            checkNext();
        }
    };
    ask(
        isBusy,
        [this, query] {
            return m_client.call(TavoAttentionHistoryPath(), TavoValue().setAttentionQuery(query));
        },
        take);
}

void HostCalls::on_client_valueChanged(const CMPath &path, const QVariant &value)
{
    if (path == TavoNotificationDisplayEndedPath()) {
        endMessage(TavoValue(value.toHash()).displayEnded());
    } else if (path == TavoAttentionEndedPath()) {
        endNotification(TavoValue(value.toHash()).attentionEnded());
    }
}

void HostCalls::endMessage(const TavoNotificationDisplayEnded &displayEnded)
{
    constexpr int maxEarly = 64;
    const QString path = displayEnded.path().toString();
    const End end = endOf(displayEnded.end());
    const QString id = m_messages.take(path);
    if (id.isEmpty()) {
        if (m_early.size() >= maxEarly) {
            m_early.clear();
        }
        m_early.insert(path, end);
        return;
    }
    if (end == End::Dismissed) {
        ask(
            isRefused, [this, id] { return m_client.cancelSound(idPrefix() + id); },
            [](const CMReply<QVariant> &) {});
    }
    Q_EMIT ended(id, end, {});
}

void HostCalls::endNotification(const TavoAttentionEnded &attentionEnded)
{
    const QString id = callOf(attentionEnded.id());
    if (m_others.remove(id)) {
        Q_EMIT ended(id, endOf(attentionEnded.end()), attentionEnded.action());
    }
}

void HostCalls::on_inbox_responded(const TavoNotificationPlayerResponse &response)
{
    const QString id = callOf(response.id());
    const auto type = response.type();
    if (type == TavoNotificationPlayerResponseType::Started || !m_others.remove(id)) {
        return;
    }
    const bool isFinished = type == TavoNotificationPlayerResponseType::Finished;
    const bool isCancelled = type == TavoNotificationPlayerResponseType::Cancelled;
    Q_EMIT ended(id, isFinished ? End::Finished : isCancelled ? End::Closed : End::Failed, {});
}
