// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/requests/FuzzedNotifications.h"

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/SentRequest.h"
#include "support/PostedEvents.h"

#include <QTimer>

#include <log4cplus/logger.h>

namespace {
const CMPath &responsePath()
{
    static const CMPath path(QStringLiteral("/test/response"));
    return path;
}
} // namespace

FuzzedNotifications::FuzzedNotifications()
    : m_services(QStringLiteral("Services"))
    , m_module([this]() -> LoadedModule {
        // The queue is listed only if the logger itself has the level.
        log4cplus::Logger::getInstance("Notifications").setLogLevel(log4cplus::TRACE_LOG_LEVEL);
        ScriptedPlayers::instance().reset();
        ScriptedPlayers::instance().onCall = [this](const QString &call, const QString &id) {
            on_playerCall(call, id);
        };
        m_services.take(TavoPowerManagerModuleRegisterPath(), ScriptedService::accept());
        m_services.take(TavoPlayerMainAudioDuckingPath(), {});
        m_services.take(TavoPowerManagerResourceRequestPath(), {});
        m_services.take(responsePath(),
                        [this](const CMSetDataRequest &request) { on_response(request); });
        setDucking(0);
        setResources(0);
        m_services.publish(TavoPlayerAlsaDeviceNotificationsPath(), TavoValue());
        return LoadedModule(QStringLiteral(TAVO_NOTIFICATIONS_MODULE), "notifications");
    }())
{
    deliverPosted();
}

FuzzedNotifications::~FuzzedNotifications()
{
    ScriptedPlayers::instance().onCall = nullptr;
}

bool FuzzedNotifications::Published::operator==(const Published &other) const
{
    return isPlaying == other.isPlaying && rows == other.rows && players == other.players &&
           requests == other.requests;
}

CMPath FuzzedNotifications::path(Node node)
{
    switch (node) {
    case Node::Enqueue:
        return TavoNotificationPlayerEnqueuePath();
    case Node::Cancel:
        return TavoNotificationPlayerCancelPath();
    case Node::Open:
        return TavoNotificationDisplayOpenPath();
    case Node::CancelNotify:
        return TavoNotificationDisplayCancelNotifyPath();
    default:
        return TavoNotificationsPath() + QStringLiteral("/player/revokeResources");
    }
}

void FuzzedNotifications::request(Node node, const QVariant &value)
{
    const Published before = published();
    const SentRequest sent(path(node), value);
    deliverPosted();
    sent.checkAnswered();
    checkForm(node, sent.reply());
    checkAnswer(node, value, sent.reply(), before);
    if (sent.isRefused()) {
        FUZZ_CHECK(published() == before, "a refused request has changed something");
    }
}

void FuzzedNotifications::requestAtOnce(const QVector<QPair<Node, QVariant>> &requests)
{
    std::vector<SentRequest> sent;
    for (const auto &[node, value] : requests) {
        sent.emplace_back(path(node), value);
    }
    deliverPosted();
    for (std::size_t i = 0; i < sent.size(); ++i) {
        const auto &[node, value] = requests.at(int(i));
        sent[i].checkAnswered();
        checkForm(node, sent[i].reply());
        if (!sent[i].isRefused()) {
            noteAccepted(node, value, sent[i].reply());
        }
    }
}

void FuzzedNotifications::checkForm(Node node, const CMReply<QVariant> &reply)
{
    static const QStringList texts[] = {{QStringLiteral("Failed to enqueue sound notification")},
                                        {QStringLiteral("Invalid notification sound id to stop")},
                                        {QStringLiteral("Failed to enqueue notification")},
                                        {QStringLiteral("Path to close empty"),
                                         QStringLiteral("Node already closed or non-existent")},
                                        {}};
    const CMError error = reply.error();
    if (error.isError()) {
        const QString message = error.message().toString();
        checkError(error, QStringLiteral("Notifications"));
        FUZZ_CHECK(texts[int(node)].contains(message), message);
        return;
    }
    const QVariant value = reply.value();
    if (node == Node::Open) {
        FUZZ_CHECK(!TavoValue(value.toHash()).path().isEmpty(), value);
    } else if (node == Node::CancelNotify) {
        FUZZ_CHECK(value.userType() == QMetaType::Bool && value.toBool(), value);
    } else {
        FUZZ_CHECK(!value.isValid(), value);
    }
}

void FuzzedNotifications::checkAnswer(Node node, const QVariant &value,
                                      const CMReply<QVariant> &reply, const Published &before)
{
    const bool accepted = !reply.error().isError();
    const TavoValue record(value.toHash());
    if (node == Node::Enqueue) {
        const QString id = record.notificationPlayerItem().id();
        FUZZ_CHECK(accepted ? !id.isEmpty() : id.isEmpty() || m_usedIds.contains(id), id);
    } else if (node == Node::Cancel) {
        FUZZ_CHECK(!accepted || m_usedIds.contains(record.string_()), record.string_());
    } else if (node == Node::Open) {
        const TavoNotificationDisplayItem item = record.notificationDisplayItem();
        const bool isShown = !item.message().isEmpty() || !item.path().isEmpty();
        FUZZ_CHECK(accepted == isShown, value);
    } else if (node == Node::CancelNotify) {
        const CMPath field = record.path();
        const CMPath path = field.isEmpty() ? CMPath::fromQVariant(value) : field;
        FUZZ_CHECK(accepted == before.rows.contains(path.toQVariant()), path);
        FUZZ_CHECK(!accepted || !rows().contains(path.toQVariant()), path);
    }
    if (accepted) {
        noteAccepted(node, value, reply);
    }
    if (accepted && node == Node::Open) {
        FUZZ_CHECK(rows().contains(m_paths.constLast()), "an opened notification has no row");
    }
}

void FuzzedNotifications::noteAccepted(Node node, const QVariant &value,
                                       const CMReply<QVariant> &reply)
{
    if (node == Node::Enqueue) {
        const TavoNotificationPlayerItem item = TavoValue(value.toHash()).notificationPlayerItem();
        m_usedIds.insert(item.id());
        if (item.playbackResponsePath() == responsePath()) {
            // The end may have been reported before the reply is looked at.
            ++m_awaited[item.id()];
        }
    } else if (node == Node::Open) {
        m_paths.append(TavoValue(reply.value().toHash()).path().toString());
    }
}

void FuzzedNotifications::on_response(const CMSetDataRequest &request)
{
    request.reply().setValue(QVariant());
    const TavoNotificationPlayerResponse response =
        TavoValue(request.value().toHash()).notificationPlayerResponse();
    const QString id = response.id();
    if (response.type() == TavoNotificationPlayerResponseType::Started) {
        FUZZ_CHECK(!m_started.contains(id), "started twice: " << id);
        m_started.insert(id);
        return;
    }
    FUZZ_CHECK(response.type() >= TavoNotificationPlayerResponseType::Finished &&
                   response.type() <= TavoNotificationPlayerResponseType::Failed,
               response);
    m_started.remove(id);
    --m_awaited[id];
}

void FuzzedNotifications::on_playerCall(const QString &call, const QString &id)
{
    if (call == QLatin1String("destroy")) {
        return; // perhaps of an older sound
    }
    PlayerState &state = m_players[ScriptedPlayers::instance().find(id)];
    if (call == QLatin1String("construct")) {
        state = PlayerState::Made;
    } else if (call == QLatin1String("play")) {
        FUZZ_CHECK(state != PlayerState::Stopping && state != PlayerState::Ended, id);
        state = PlayerState::Playing;
    } else if (call == QLatin1String("pause")) {
        FUZZ_CHECK(state != PlayerState::Stopping && state != PlayerState::Ended, id);
        state = PlayerState::Paused;
    } else if (call == QLatin1String("stop")) {
        FUZZ_CHECK(state != PlayerState::Ended, id);
        state = PlayerState::Stopping;
    }
}

QVector<ScriptedPlayer *>
FuzzedNotifications::playersIn(std::initializer_list<PlayerState> states) const
{
    QVector<ScriptedPlayer *> result;
    for (ScriptedPlayer *player : ScriptedPlayers::instance().all()) {
        const auto state = m_players.constFind(player);
        if (player->isAlive() && std::count(states.begin(), states.end(), *state) > 0) {
            result.append(player);
        }
    }
    return result;
}

void FuzzedNotifications::endPlayer(int which, int how)
{
    const auto players =
        playersIn({PlayerState::Playing, PlayerState::Paused, PlayerState::Stopping});
    if (players.isEmpty()) {
        return;
    }
    ScriptedPlayer *player = players.at(which % players.size());
    PlayerState &state = m_players[player];
    const bool stops = state == PlayerState::Stopping;
    state = PlayerState::Ended;
    if (stops) {
        player->reportStopped();
    } else if (how % 2 == 0) {
        player->reportEnded();
    } else {
        player->reportError(QStringLiteral("gone"));
    }
    deliverPosted();
}

QObject *FuzzedNotifications::controller(const char *className) const
{
    for (QObject *child : m_module.worker()->children()) {
        if (qstrcmp(child->metaObject()->className(), className) == 0) {
            return child;
        }
    }
    return nullptr;
}

void FuzzedNotifications::fireTimer(int which)
{
    const char *owner = which % 2 == 0 ? "NotificationPlayer" : "NotificationDisplay";
    auto *timer = controller(owner)->findChild<QTimer *>();
    if (!timer->isActive()) {
        return;
    }
    timer->stop();
    QMetaObject::invokeMethod(timer, "timeout");
    deliverPosted();
}

void FuzzedNotifications::setScript(const CMPath &path, int script)
{
    m_services.setScript(path, [this, script](const CMSetDataRequest &request) {
        ++m_serviceRequests;
        if (script % 3 == 0) {
            request.reply().setValue(QVariant());
        } else if (script % 3 == 1) {
            ScriptedService::refuse(QStringLiteral("no"))(request);
        } else {
            keep(request);
        }
    });
}

void FuzzedNotifications::answerKept(int which, bool accept)
{
    if (m_kept.isEmpty()) {
        return;
    }
    const CMSetDataRequest request = m_kept.takeAt(which % m_kept.size());
    (accept ? ScriptedService::accept() : ScriptedService::refuse(QStringLiteral("no")))(request);
    deliverPosted();
}

void FuzzedNotifications::closeNode(const CMPath &path)
{
    CMSubscribe::closeNode(path);
    deliverPosted();
    FUZZ_CHECK(!rows().contains(path.toQVariant()), "closed but still in the queue: " << path);
}

void FuzzedNotifications::changeRows(const CMPath &path, const QStringList &changes)
{
    const Published before = published();
    CMSubscribe::raiseRowsChange(path, changes);
    deliverPosted();
    FUZZ_CHECK(changes.contains(CMSubscribe::RowsChangeClose()) || published() == before,
               "a rows change without the close marker has changed something");
}

QVariant FuzzedNotifications::knownPath(int which) const
{
    // The newest are most likely still open.
    return which < m_paths.size() ? m_paths.at(m_paths.size() - 1 - which)
                                  : responsePath().toString();
}

FuzzedNotifications::Published FuzzedNotifications::published()
{
    return {isPlaying(), rows(), ScriptedPlayers::instance().all().size(), m_serviceRequests};
}

bool FuzzedNotifications::isPlaying()
{
    return TavoValue(CMRoot()->getValue(TavoNotificationPlayerIsPlayingPath()).toHash()).bool_();
}

QVariantList FuzzedNotifications::rows()
{
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(TavoNotificationDisplayQueuePath(), 0, -1, reply));
    deliverPosted();
    FUZZ_CHECK(reply.isFinished(), "the rows can't be read");
    return reply.value().toList();
}

bool FuzzedNotifications::goOn()
{
    if (!m_kept.isEmpty()) {
        answerKept(0, true);
        return true;
    }
    if (!playersIn({PlayerState::Playing, PlayerState::Stopping}).isEmpty()) {
        endPlayer(0, 0);
        return true;
    }
    for (int which : {0, 1}) {
        const char *owner = which == 0 ? "NotificationPlayer" : "NotificationDisplay";
        if (controller(owner)->findChild<QTimer *>()->isActive()) {
            fireTimer(which);
            return true;
        }
    }
    return false;
}

void FuzzedNotifications::finish()
{
    setDucking(0);
    setResources(0);
    while (goOn()) {
    }
    FUZZ_CHECK(playersIn({PlayerState::Made, PlayerState::Paused}).isEmpty(),
               "a sound waits forever");
    FUZZ_CHECK(!isPlaying(), "is-playing is true, but nothing plays");
    for (auto awaited = m_awaited.constBegin(); awaited != m_awaited.constEnd(); ++awaited) {
        FUZZ_CHECK(*awaited == 0, awaited.key() << " lacks " << *awaited << " end responses");
    }
}
