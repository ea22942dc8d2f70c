// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationPlayer.h"

#include <simpleplayer/DataSimplePlayer.h>
#include <simpleplayer/FakePlayer.h>
#include <simpleplayer/StreamSimplePlayer.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <QPointer>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>

static log4cplus::Logger logger = log4cplus::Logger::getInstance("Notifications");

namespace {
/// How long the main audio stays ducked after the last item, in milliseconds: long enough for the
/// next sound of a burst, too short to be noticed.
constexpr int inactivityTimeout = 100;

bool failed(const CMVoidReply &reply)
{
    return reply.error().isError();
}

QString messageOf(const CMVoidReply &reply)
{
    return reply.error().message().toString();
}

/// Sends a request whose reply does not matter.
void send(const CMPath &path, const TavoHash &record)
{
    CMRoot()->invoke(path, record, CMReply<QVariant>());
}

TavoPowerManagerResourceRequest resourceRequest(TavoPowerModuleActions::Enum action)
{
    return TavoPowerManagerResourceRequest()
        .setModuleName(TavoNotificationsName())
        .setResource(TavoPowerManagerResources::Audio)
        .setAction(action);
}

TavoPlayerAudioDuckingRequest duckingRequest(bool duckAudio)
{
    return TavoPlayerAudioDuckingRequest().setDuckAudio(duckAudio).setRequester(
        TavoNotificationsName());
}

TavoNotificationPlayerResponse response(const QString &id,
                                        TavoNotificationPlayerResponseType::Enum type)
{
    return TavoNotificationPlayerResponse(TavoHash()).setId(id).setType(type);
}
} // namespace

NotificationPlayer::NotificationPlayer(CMNodes *nodes, QObject *parent)
    : QObject(parent)
    , m_inactivityTimer(this)
{
    m_inactivityTimer.setSingleShot(true);
    m_inactivityTimer.setInterval(inactivityTimeout);
    // A coarse timer may be early.
    m_inactivityTimer.setTimerType(Qt::PreciseTimer);
    tavoConnect(&m_inactivityTimer, &QTimer::timeout, this,
                &NotificationPlayer::on_inactivityTimer_timeout);

    m_isPlayingNode = CMValueNode::create(nodes, TavoNotificationPlayerIsPlayingPath(), nullptr);
    m_isPlayingNode->setValue(TavoValue().setBool_(false));

    const QVariant device = CMRoot()->getValue(TavoPlayerAlsaDeviceNotificationsPath());
    m_outputDevice = TavoValue(TavoHash(device.toHash())).audioDevice().device();
    if (m_outputDevice.isEmpty()) {
        m_outputDevice = QStringLiteral("default");
    }
    LOG4CPLUS_DEBUG(logger, "Output device name: " << m_outputDevice);

    CMActivateNode *revokeNode = CMActivateNode::create(
        nodes, TavoNotificationsPath() + QStringLiteral("/player/revokeResources"));
    revokeNode->setInvoke(this, &NotificationPlayer::on_revokeResources_activated,
                          Qt::QueuedConnection);

    // One node takes both messages; they differ in their type.
    send(TavoPowerManagerModuleRegisterPath(), TavoPowerManagerModuleRegister()
                                                   .setModuleName(TavoNotificationsName())
                                                   .setRevokeResourcesPath(revokeNode->path())
                                                   .setPostRevokeResourcesPath(revokeNode->path()));
}

bool NotificationPlayer::enqueue(const NotificationPlayerItem &item)
{
    TAVO_SCOPE(logger, TRACE,
               "new item " << item.id << " type "
                           << TavoNotificationPlayerItemType::toString(item.type) << " prio "
                           << TavoNotificationItemPriority::toString(item.priority));
    if (item.id.isEmpty()) {
        LOG4CPLUS_ERROR(logger, "Notification item id is empty");
        return false;
    }
    if (m_ranks.contains(item.id) || getPositionFromId(m_stoppingItems, item.id) >= 0) {
        LOG4CPLUS_ERROR(logger, "Notification with the same id already exists");
        return false;
    }
    insert(item);
    dumpQueue(QStringLiteral("enqueue"));
    continuePlayAudio();
    return true;
}

void NotificationPlayer::insert(const NotificationPlayerItem &item)
{
    NotificationPlayerItem admitted = item;
    admitted.arrival = m_arrivals++;
    m_ranks.insert(item.id, {item.priority, admitted.arrival});
    if (m_queue.isEmpty()) {
        LOG4CPLUS_TRACE(logger, "insert item as first");
        m_queue.append(admitted);
        return;
    }
    const auto position = std::upper_bound(m_queue.constBegin(), m_queue.constEnd(), item.priority,
                                           [](int priority, const NotificationPlayerItem &queued) {
                                               return queued.priority < priority;
                                           });
    const int index = int(position - m_queue.constBegin());
    if (index > 0) {
        LOG4CPLUS_TRACE(logger,
                        "inserting after " << index - 1 << " id " << m_queue.at(index - 1).id);
        m_queue.insert(index, admitted);
        return;
    }
    LOG4CPLUS_TRACE(logger, "Inserting before first");
    preemptHead(admitted);
}

void NotificationPlayer::preemptHead(const NotificationPlayerItem &item)
{
    SimplePlayer *preempted = m_queue.constFirst().player;
    m_activePlaybackId.clear();
    // Inserted before the old head is paused, so that the new head is in place whatever the old
    // player does.
    m_queue.prepend(item);
    if (preempted != nullptr) {
        preempted->pause();
    }
}

bool NotificationPlayer::ranksAhead(const NotificationPlayerItem &item, const Rank &rank)
{
    return item.priority != rank.priority ? item.priority > rank.priority
                                          : item.arrival < rank.arrival;
}

int NotificationPlayer::queuePosition(const QString &id) const
{
    const auto rank = m_ranks.constFind(id);
    if (rank == m_ranks.constEnd()) {
        return -1;
    }
    const auto position =
        std::lower_bound(m_queue.constBegin(), m_queue.constEnd(), *rank, ranksAhead);
    Q_ASSERT(position != m_queue.constEnd() && position->id == id);
    return int(position - m_queue.constBegin());
}

NotificationPlayerItem NotificationPlayer::takeFromQueue(int position)
{
    NotificationPlayerItem item = m_queue.takeAt(position);
    m_ranks.remove(item.id);
    Q_ASSERT(m_ranks.size() == m_queue.size());
    return item;
}

int NotificationPlayer::getPositionFromId(QList<NotificationPlayerItem> const &list,
                                          QString const &id)
{
    const auto position =
        std::find_if(list.begin(), list.end(),
                     [&id](const NotificationPlayerItem &item) { return item.id == id; });
    return position == list.end() ? -1 : int(position - list.begin());
}

void NotificationPlayer::dumpQueue(const QString &reason)
{
    TAVO_SCOPE(logger, TRACE, "dump after " << reason);
    // A line for each item is written only if the logger itself is set to TRACE, not if it inherits
    // the level.
    if (logger.getLogLevel() != log4cplus::TRACE_LOG_LEVEL) {
        return;
    }
    for (const NotificationPlayerItem &item : qAsConst(m_queue)) {
        LOG4CPLUS_TRACE(
            logger, "dump --  " << item.id << " type "
                                << TavoNotificationPlayerItemType::toString(item.type) << " prio "
                                << TavoNotificationItemPriority::toString(item.priority));
    }
}

void NotificationPlayer::continuePlayAudio()
{
    m_continueAgain = true;
    if (m_continuing) {
        return;
    }
    const QScopedValueRollback<bool> continuing(m_continuing, true);
    while (m_continueAgain) {
        m_continueAgain = false;
        TAVO_SCOPE(logger, TRACE, "queue size: " << m_queue.size());
        if (m_queue.isEmpty()) {
            if (!m_stoppingItems.isEmpty()) {
                LOG4CPLUS_TRACE(logger, "Notification queue is empty");
                continue;
            }
            m_inactivityTimer.start();
            m_isPlayingNode->setValue(TavoValue().setBool_(false));
            TAVO_LEAVE(DEBUG, "No next item to play");
            continue;
        }
        if (m_inactivityTimer.isActive()) {
            LOG4CPLUS_TRACE(logger, "Stopping unmute timer");
            m_inactivityTimer.stop();
        }
        if (m_activeRequest) {
            TAVO_LEAVE(TRACE, "Active request");
        } else if (!m_activePlaybackId.isEmpty()) {
            TAVO_LEAVE(TRACE, "Playback active: " << m_activePlaybackId);
        } else if (!m_audioDucked) {
            duckMainAudio();
        } else {
            continuePlayAudioMuted();
        }
    }
}

void NotificationPlayer::duckMainAudio()
{
    m_activeRequest = true;
    const CMReply<QVariant> reply;
    CMRoot()->invoke(TavoPlayerMainAudioDuckingPath(), duckingRequest(true), reply);
    reply.connectFinished(this, &NotificationPlayer::on_audioDucking_finished);
}

void NotificationPlayer::on_audioDucking_finished(const CMVoidReply &voidReply)
{
    TAVO_SCOPE(logger, TRACE, "");
    Q_ASSERT(m_activeRequest == true);
    Q_ASSERT(m_audioDucked == false);
    if (failed(voidReply)) {
        LOG4CPLUS_WARN(logger, "Failed to duck audio, error: " << messageOf(voidReply));
    }
    // If ducking failed, the item is played nevertheless, with the loud music.
    m_audioDucked = true;
    m_activeRequest = false;
    continuePlayAudioMuted();
}

void NotificationPlayer::continuePlayAudioMuted()
{
    TAVO_SCOPE(logger, TRACE, "");
    Q_ASSERT(m_audioDucked == true);
    if (m_audioResource) {
        playItemFromQueue();
        return;
    }
    m_resourceRequestPending = true;
    m_activeRequest = true;
    const CMReply<QVariant> reply;
    CMRoot()->invoke(TavoPowerManagerResourceRequestPath(),
                     resourceRequest(TavoPowerModuleActions::Acquire), reply);
    // The reply is handled from the event loop, never inside this call. It has no context object,
    // so the callback itself has to notice that the controller has been deleted.
    const QPointer<NotificationPlayer> player(this);
    reply.onFinished(
        nullptr,
        [player](const CMReply<QVariant> &finished) {
            if (player.isNull()) {
                return;
            }
            player->m_resourceRequestPending = false;
            player->m_activeRequest = false;
            player->handleRequestResourcesFinished(finished);
        },
        Qt::QueuedConnection);
}

void NotificationPlayer::handleRequestResourcesFinished(const CMReply<QVariant> &reply)
{
    TAVO_SCOPE(logger, TRACE, "");
    Q_ASSERT(m_audioResource == false);
    if (!failed(reply)) {
        m_audioResource = true;
        playItemFromQueue();
        return;
    }
    LOG4CPLUS_ERROR(logger,
                    "Failed to request resources, canceling notifications: " << messageOf(reply));
    cancelAll();
    // The queue is emptied without continuePlayAudio(), so the main audio stays ducked until the
    // next item has ended.
    if (m_stoppingItems.isEmpty()) {
        m_isPlayingNode->setValue(TavoValue().setBool_(false));
    }
}

void NotificationPlayer::on_inactivityTimer_timeout()
{
    TAVO_SCOPE(logger, TRACE, "");
    Q_ASSERT(m_activePlaybackId.isEmpty());
    Q_ASSERT(m_audioDucked == true);
    if (m_activeRequest) {
        // The item has been cancelled during its acquire request. Only the reply to that request
        // shows whether there is a resource to release.
        m_inactivityTimer.start();
        return;
    }
    if (m_audioResource) {
        m_audioResource = false;
        send(TavoPowerManagerResourceRequestPath(),
             resourceRequest(TavoPowerModuleActions::Release));
    }
    m_activeRequest = true;
    const CMReply<QVariant> reply;
    CMRoot()->invoke(TavoPlayerMainAudioDuckingPath(), duckingRequest(false), reply);
    reply.connectFinished(this, &NotificationPlayer::on_audioUnducking_finished);
}

void NotificationPlayer::on_audioUnducking_finished(const CMVoidReply &voidReply)
{
    TAVO_SCOPE(logger, TRACE, "");
    Q_ASSERT(m_activePlaybackId.isEmpty());
    Q_ASSERT(m_audioDucked == true);
    Q_ASSERT(m_activeRequest == true);
    if (failed(voidReply)) {
        LOG4CPLUS_WARN(logger, "Failed to unduck audio, error: " << messageOf(voidReply));
    }
    m_audioDucked = false;
    m_activeRequest = false;
    if (!m_queue.isEmpty()) {
        continuePlayAudio();
    }
}

void NotificationPlayer::on_revokeResources_activated(const CMSetDataRequest &request)
{
    const TavoPowerManagerRevokeMessage message(TavoHash(request.value().toHash()));
    TAVO_SCOPE(logger, TRACE, message);
    // Compared as variants, so that a number matches whatever its type is.
    const int audio = TavoPowerManagerResources::Audio;
    if (message.revokeResources().elements().contains(audio)) {
        if (m_resourceRequestPending) {
            LOG4CPLUS_DEBUG(logger, "Ignoring revoke resources command, we already issued a new "
                                    "request resources request");
        } else {
            m_audioResource = false;
            if (message.messageType() == TavoPowerManagerRevokeMessageType::Revoked) {
                LOG4CPLUS_INFO(logger,
                               "Notification player resources revoked, stopping notification");
                cancelAll();
            } else if (message.messageType() == TavoPowerManagerRevokeMessageType::PostRevoked) {
                LOG4CPLUS_DEBUG(logger, "Media player resources revoked (post-callback)");
            }
        }
    }
    request.reply().setValue(QVariant());
}

void NotificationPlayer::playItemFromQueue()
{
    TAVO_SCOPE(logger, TRACE, "");
    Q_ASSERT(m_audioDucked == true);
    Q_ASSERT(m_audioResource == true);
    if (m_queue.isEmpty()) {
        LOG4CPLUS_ERROR(logger, "Expecting not empty queue!");
        continuePlayAudio();
        return;
    }
    m_isPlayingNode->setValue(TavoValue().setBool_(true));
    playItem(m_queue.first());
}

void NotificationPlayer::playItem(NotificationPlayerItem &item)
{
    // Copies, because an end that is reported inside play() removes the item from the queue.
    const QString id = item.id;
    const CMPath responsePath = item.playbackResponsePath;
    TAVO_SCOPE(logger, TRACE, "Playing item: " << id);
    Q_ASSERT(m_activePlaybackId.isEmpty());
    Q_ASSERT(m_audioDucked == true);
    Q_ASSERT(m_audioResource == true);
    m_activePlaybackId = id;

    const bool resumed = item.player != nullptr;
    if (resumed) {
        LOG4CPLUS_TRACE(logger, "Player already constructed, that means it was paused");
    } else {
        item.player = constructPlayer(item);
        if (item.player == nullptr) {
            const QString type = TavoNotificationPlayerItemType::toString(item.type);
            LOG4CPLUS_ERROR(logger, "Invalid item type: " << type);
            on_sound_failed(id, QStringLiteral("Invalid item type: ") + type);
            return;
        }
    }
    LOG4CPLUS_INFO(logger, "Starting playback: " << id);
    if (!item.player->play()) {
        LOG4CPLUS_ERROR(logger, "Failed to start playback: " << id);
        on_sound_failed(id, QStringLiteral("Failed to start playback: ") + id);
        return;
    }
    if (!resumed && !responsePath.isEmpty()) {
        send(responsePath, TavoValue(TavoHash())
                               .setNotificationPlayerResponse(
                                   response(id, TavoNotificationPlayerResponseType::Started)));
    }
    TAVO_LEAVE(DEBUG, "");
}

SimplePlayer *NotificationPlayer::constructPlayer(const NotificationPlayerItem &item)
{
    SimplePlayer *player = nullptr;
    switch (item.type) {
    case TavoNotificationPlayerItemType::Uri:
        player = new UriSimplePlayer(item.content, item.id, m_outputDevice, this);
        break;
    case TavoNotificationPlayerItemType::Data:
        LOG4CPLUS_DEBUG(logger, "Constructing data player");
        player = new DataSimplePlayer(QByteArray::fromBase64(item.content.toLocal8Bit()), item.id,
                                      m_outputDevice, this);
        break;
    case TavoNotificationPlayerItemType::Stream:
        LOG4CPLUS_DEBUG(logger, "Constructing stream player");
        player = new StreamSimplePlayer(item.content, item.contentStreamFormat, item.id,
                                        m_outputDevice, this);
        break;
    case TavoNotificationPlayerItemType::Fake:
        player = new FakePlayer(item.id, this);
        break;
    default:
        return nullptr;
    }
    player->loop = item.loop;
    player->usage = SimplePlayer::UsageNotification;
    if (item.attenuation > 0) {
        constexpr double dbPerDecade = 20.0; // of amplitude
        player->setGain(std::pow(10.0, -item.attenuation / dbPerDecade), 0);
    }
    tavoConnect(player, &SimplePlayer::playbackEnded, this, &NotificationPlayer::on_sound_finished);
    tavoConnect(player, &SimplePlayer::playbackStopped, this,
                &NotificationPlayer::on_sound_stopped);
    tavoConnect(player, &SimplePlayer::playbackErrorReported, this,
                &NotificationPlayer::on_sound_failed);
    return player;
}

void NotificationPlayer::on_sound_finished(const QString &id)
{
    TAVO_SCOPE(logger, DEBUG, "id: " << id);
    soundFinished(id, false, QString());
}

void NotificationPlayer::on_sound_stopped(const QString &id)
{
    TAVO_SCOPE(logger, DEBUG, "id: " << id);
    soundFinished(id, true, QString());
}

void NotificationPlayer::on_sound_failed(const QString &id, const QString &reason)
{
    TAVO_SCOPE(logger, TRACE, "id: " << id << ", reason: " << reason);
    soundFinished(id, false, reason);
}

void NotificationPlayer::soundFinished(const QString &id, bool canceled, const QString &error)
{
    TAVO_SCOPE(logger, DEBUG, "id: " << id << ", canceled: " << canceled << ", error: " << error);
    Q_ASSERT(m_audioDucked == true);
    const bool wasActive = id == m_activePlaybackId;
    if (wasActive) {
        LOG4CPLUS_DEBUG(logger, "Active playback finished");
        m_activePlaybackId.clear();
    }
    int position = queuePosition(id);
    const bool queued = position >= 0;
    if (!queued) {
        position = getPositionFromId(m_stoppingItems, id);
    }
    if (position < 0) {
        LOG4CPLUS_ERROR(logger, "Id of stopped sound does not exists, ignoring. " << id);
        return;
    }
    const NotificationPlayerItem item =
        queued ? takeFromQueue(position) : m_stoppingItems.takeAt(position);
    LOG4CPLUS_DEBUG(logger, "Removed notification item from queue: " << item.id);
    sendStopResponse(item, canceled, error);
    if (item.player != nullptr) {
        item.player->deleteLater();
    }
    if (wasActive) {
        LOG4CPLUS_TRACE(logger, "Active notification stopped");
    } else if (item.type == TavoNotificationPlayerItemType::Fake) {
        LOG4CPLUS_TRACE(logger, "Disabled fake notification on position " << position);
    } else {
        LOG4CPLUS_DEBUG(logger, "Not a first item finished " << position);
        dumpQueue(QStringLiteral("not first item finished"));
    }
    continuePlayAudio();
}

bool NotificationPlayer::cancel(const QString &id)
{
    TAVO_SCOPE(logger, DEBUG, "Cancel notification: " << id);
    const int position = queuePosition(id);
    if (position < 0) {
        LOG4CPLUS_WARN(logger, "Unable to cancel not existing item: " << id);
        return false;
    }
    const NotificationPlayerItem item = takeFromQueue(position);
    if (item.player == nullptr) {
        sendStopResponse(item, true, QString());
        return true;
    }
    m_stoppingItems.append(item);
    item.player->stop();
    return true;
}

void NotificationPlayer::cancelAll()
{
    TAVO_SCOPE(logger, INFO, "");
    const QList<NotificationPlayerItem> queue = m_queue;
    for (auto item = queue.crbegin(); item != queue.crend(); ++item) {
        cancel(item->id);
    }
}

bool NotificationPlayer::sendStopResponse(const NotificationPlayerItem &item, bool canceled,
                                          const QString &error)
{
    TAVO_SCOPE(logger, TRACE, "item: " << item.id);
    if (item.playbackResponsePath.isEmpty()) {
        return true;
    }
    TavoNotificationPlayerResponseType::Enum type = TavoNotificationPlayerResponseType::Finished;
    if (!error.isEmpty()) {
        type = TavoNotificationPlayerResponseType::Failed;
    } else if (canceled) {
        type = TavoNotificationPlayerResponseType::Cancelled;
    }
    const TavoNotificationPlayerResponse res = response(item.id, type);
    LOG4CPLUS_DEBUG(logger, "Sending response to " << item.playbackResponsePath << " res: " << res);
    send(item.playbackResponsePath, TavoValue(TavoHash()).setNotificationPlayerResponse(res));
    return true;
}
