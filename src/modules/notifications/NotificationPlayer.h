// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QHash>
#include <QList>
#include <QString>
#include <QTimer>

class SimplePlayer;

/// One sound notification, from its acceptance to its end. Copies share the player.
struct NotificationPlayerItem
{
    QString content;             ///< what to play; its form depends on the type
    QString contentStreamFormat; ///< the media type of a stream
    TavoNotificationPlayerItemType::Enum type = TavoNotificationPlayerItemType::Uri;
    TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Low;
    QString id;                  ///< chosen by the client; unique until the item has ended
    CMPath playbackResponsePath; ///< where the start and the end are reported; may be empty
    bool loop = false;
    int attenuation = 0;            ///< dB; 0 or less: none
    SimplePlayer *player = nullptr; ///< a child of the NotificationPlayer; null until it is made
    quint64 arrival = 0;            ///< the number of earlier items
};

/// Plays sound notifications one at a time, the most urgent first. While it plays, the main audio is
/// ducked and the power manager's audio resource is held.
///
/// Runs in the worker's thread, driven by its event loop. Owned by the worker.
///
/// Guarantees:
/// - every accepted item with a response path gets exactly one end response, and at most one started
///   response before it. Items that have not ended when the controller is deleted get none.
/// - at most one request of the audio sequence (duck, acquire, unduck) is outstanding at any time.
/// - the stack does not grow with the number of items that fail one after another.
class NotificationPlayer : public QObject
{
    Q_OBJECT

public:
    NotificationPlayer(CMNodes *nodes, QObject *parent);

    /// Queues a copy of the item. Returns false and changes nothing if the id is empty or in use.
    bool enqueue(const NotificationPlayerItem &item);

    /// Cancels the queued item with that id. Returns false if there is none.
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
    friend class SoundInsideTest;
    friend struct SoundMembers; // for the explorer

    // The audio sequence: duck, acquire, play; release and unduck once the queue is empty.
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

    /// The main audio has been ducked for us. Also set when that failed.
    bool m_audioDucked = false;
    /// We hold the power manager's audio resource.
    bool m_audioResource = false;
    /// An acquire request is outstanding. Revokes that come now concern an earlier grant.
    bool m_resourceRequestPending = false;
    /// The id of the item that is playing; empty if there is none.
    QString m_activePlaybackId;
    /// A duck, unduck or acquire request is outstanding; no other step may start.
    bool m_activeRequest = false;
    /// Ends the audio sequence if nothing new is queued for a while.
    QTimer m_inactivityTimer;
    /// Waiting and playing items, the most urgent first. The first one is played.
    QList<NotificationPlayerItem> m_queue;
    /// Cancelled items whose players have yet to report their end.
    QList<NotificationPlayerItem> m_stoppingItems;
    CMValueNode *m_isPlayingNode = nullptr; ///< owned by the worker's node set
    QString m_outputDevice;

    /// A nested call of continuePlayAudio() only makes the outer call repeat its loop.
    bool m_continuing = false;
    bool m_continueAgain = false;

    /// The order of the queue: the more urgent first; among equally urgent ones, the earlier first.
    struct Rank
    {
        int priority;
        quint64 arrival;
    };
    static bool ranksAhead(const NotificationPlayerItem &item, const Rank &rank);

    /// The ranks of the queued items by id. An item is found by a binary search for its rank:
    /// reading a queue of 100,000 would take longer than the rest of a cancel.
    QHash<QString, Rank> m_ranks;
    quint64 m_arrivals = 0;
};
