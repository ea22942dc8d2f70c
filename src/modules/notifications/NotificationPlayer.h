// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QHash>
#include <QList>
#include <QString>
#include <QTimer>

class SimplePlayer;

/// One sound notification, from its acceptance to its end. A value; a copy names the same player.
struct NotificationPlayerItem
{
    QString content;             ///< what to play, as the type says
    QString contentStreamFormat; ///< the media type of a stream
    TavoNotificationPlayerItemType::Enum type = TavoNotificationPlayerItemType::Uri;
    TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Low;
    QString id;                  ///< the requester's name for it; never empty in a list
    CMPath playbackResponsePath; ///< where start and end are reported; may be empty
    bool loop = false;
    SimplePlayer *player = nullptr; ///< a child of the NotificationPlayer, once there is one
    quint64 arrival = 0;            ///< counts the items that were admitted
};

/// Plays sound notifications, one at a time and the most urgent first, over ducked main audio and
/// with the power manager's audio resource held.
///
/// Thread: the worker's; everything is driven by its event loop. Owner: the worker.
///
/// Guarantees:
/// - every accepted item with a response path gets exactly one end response, and at most one started
///   response before it; those still there when the controller is deleted get none;
/// - at most one request of the audio sequence (duck, acquire, unduck) is outstanding at any time;
/// - the stack depth doesn't grow with the number of items that fail one after another.
class NotificationPlayer : public QObject
{
    Q_OBJECT

public:
    NotificationPlayer(CMNodes *nodes, QObject *parent);

    /// Admits a copy of the item. False, with nothing changed, for an empty id or one in use.
    bool enqueue(const NotificationPlayerItem &item);

    /// Ends the queued item with that id; false when there is none.
    bool cancel(const QString &id);

private Q_SLOTS:
    void on_audioDucking_finished(const CMVoidReply &voidReply);
    void on_inactivityTimer_timeout();
    void on_audioUnducking_finished(const CMVoidReply &voidReply);
    void on_sound_finished(const QString &id);
    void on_sound_stopped(const QString &id);
    void on_sound_failed(const QString &id, const QString &reason);
    void on_revokeResources_activated(const CMSetDataRequest &request);

private:
    // The audio sequence: duck, acquire, play; and back when the queue has run dry.
    void continuePlayAudio();
    void duckMainAudio();
    void continuePlayAudioMuted();
    void handleRequestResourcesFinished(const CMReply<QVariant> &reply);
    void playItemFromQueue();
    void playItem(NotificationPlayerItem &item);
    SimplePlayer *constructPlayer(const NotificationPlayerItem &item);

    // The end of an item.
    void soundFinished(const QString &id, bool canceled, const QString &error);
    void cancelAll();
    bool sendStopResponse(const NotificationPlayerItem &item, bool canceled, const QString &error);

    void insert(const NotificationPlayerItem &item);
    void preemptHead(const NotificationPlayerItem &item);
    static int getPositionFromId(QList<NotificationPlayerItem> const &list, QString const &id);
    int queuePosition(const QString &id) const;
    NotificationPlayerItem takeFromQueue(int position);
    void dumpQueue(const QString &reason);

    /// The main audio is ducked for us, or tried to be.
    bool m_audioDucked = false;
    /// We hold the power manager's audio resource.
    bool m_audioResource = false;
    /// An acquire is on its way: revokes speak of the grant before it.
    bool m_resourceRequestPending = false;
    /// The item that sounds; empty when nothing does.
    QString m_activePlaybackId;
    /// A duck, unduck or acquire is on its way: no other step may start.
    bool m_activeRequest = false;
    /// Ends the audio sequence when nothing new has come for a while.
    QTimer m_inactivityTimer;
    /// Waiting and playing items, the head first.
    QList<NotificationPlayerItem> m_queue;
    /// Cancelled items whose players have yet to report their end.
    QList<NotificationPlayerItem> m_stoppingItems;
    CMValueNode *m_isPlayingNode = nullptr; ///< the model's
    QString m_outputDevice;

    /// A nested call of continuePlayAudio() only asks the outer one to go round again.
    bool m_continuing = false;
    bool m_continueAgain = false;

    /// What the queue is ordered by: the more urgent first, then the older.
    struct Rank
    {
        int priority;
        quint64 arrival;
    };
    static bool ranksAhead(const NotificationPlayerItem &item, const Rank &rank);

    /// The queued items' ranks by their ids, in step with the queue: an item is found by a search in the
    /// order instead of a walk.
    QHash<QString, Rank> m_ranks;
    quint64 m_arrivals = 0;
};
