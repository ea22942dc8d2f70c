// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Entrance.h"
#include "history/History.h"
#include "MessageGroups.h"
#include "speech/Speech.h"
#include <base/AttentionItem.h>
#include <base/MessageNode.h>
#include <core/tavo.h>

#include <QHash>
#include <QMap>
#include <QObject>
#include <QSet>

#include <attention/Decision.h>
#include <optional>

/// The notifications that are open: their messages on the display, and their sounds.
///
/// Owned by the worker, used in its thread. Nothing waits for another module. Each notification ends once,
/// when both its message and its sounds have ended. If the messages of a source pile up, they are shown as
/// one; urgent ones and those that must be seen are never among them.
class OpenItems : public QObject
{
    Q_OBJECT

public:
    OpenItems(CMNodes *nodes, Entrance &entrance, History &history, Speech &speech);
    ~OpenItems() override;

    bool isOpen(const QString &id) const { return m_entries.contains(id); }
    /// Whether the display would take one with this id for another message.
    bool isOnDisplay(const QString &id) const
    {
        return m_requests.contains(id) || m_groups.isRequest(id);
    }
    int count() const { return m_entries.size(); }
    /// Of one that is open.
    QString userOf(const QString &id) const { return m_entries.find(id)->item.user; }
    /// Of the item's source, and from its user.
    int countLike(const AttentionItem &item) const { return m_counts.value(sourceOf(item)); }

    /// From how many messages on those of a source are shown as one; 0: never. Counts for those that come.
    void setGroupFrom(int count) { m_groupFrom = count; }

    /// Opens a notification, whose id is not open, as decided.
    AttentionOutcome open(const AttentionItem &item, const Decision &decision);

    /// Whether open() takes no more than to have the requester's own node displayed. Then it may be called in
    /// any thread, within a hold of the entrance.
    bool opensAtOnce(const AttentionItem &item, const Decision &decision) const;

    /// What would be read aloud; empty if nothing.
    static QString spokenText(const AttentionItem &item, const Decision &decision);

    /// Opens one again that the history has as open.
    void openAgain(const HistoryEntry &entry);

    /// What has been decided about one that is open, with the priority that it asks for now if that is lower.
    Decision givingWay(const AttentionItem &item) const;

    /// Changes one that is open. A message that the new decision does not show is closed.
    AttentionOutcome replace(const AttentionItem &item, const Decision &decision);

    /// Plays a sound of a notification with its priority or a lower one, or cancels it at once if it is to be
    /// kept from people, or the notification is over. An empty sound: there is none after all.
    void play(const QString &id, const TavoNotificationPlayerItem &sound, int maxPriority,
              const CMReply<QVariant> &reply);

    /// Whether the sound of a notification, which is cancelled, will be sent again by play(). Until then the
    /// notification stays open.
    void setAwaitsSound(const QString &id, bool awaitsSound);

    /// Ends an open one. Does nothing if a person or its requester has ended it already, and only its sound
    /// has not stopped yet.
    void close(const QString &id, TavoAttentionEnd::Enum end, const QString &action);

private Q_SLOTS:
    void on_display_ended(const CMPath &path, const QVariant &value);
    void on_groups_ended(const QStringList &ids, TavoNotificationDisplayEnd::Enum end);
    void on_groups_opened(const QString &id);
    void on_queue_nodeChanged(const CMPath &path, bool published);
    void on_player_nodeChanged(const CMPath &path, bool published);
    void on_sound_responded(const CMSetDataRequest &request);
    void on_action_activated(const CMSetDataRequest &request);

private:
    struct Entry
    {
        AttentionItem item{};
        Decision decision{};
        qint64 number = 0;                 ///< in the history
        bool comesBack = false;            ///< after a restart, as it must be seen
        CMPath path{};                     ///< of its message
        std::optional<MessageNode> node{}; ///< if the requester has none of its own
        QString request{};     ///< the id of the request to show it; empty if it is not shown alone
        int requests = 0;      ///< to show it
        QString pile{};        ///< those that may be shown as one with it; empty: it is shown alone
        bool isFolded = false; ///< shown as one with others
        int openedPriority = -1;     ///< on display, once a person has opened it in its group
        bool awaitsSound = false;    ///< its requester sends one, or says that there is none
        int awaitedSpeech = 0;       ///< the number of the speech that is being made; 0: none
        QMap<int, QString> sounds{}; ///< the ids of those that have not ended, by number
        TavoAttentionEnd::Enum end = TavoAttentionEnd::Unknown;
        QString action{};
        qint64 shownUntil = 0;
        qint64 heardUntil = 0;

        bool isShown() const { return !request.isEmpty() || isFolded; }
        bool isOpened() const { return openedPriority >= 0; }
    };
    using Entries = QMap<QString, Entry>;
    class RefusalWatcher;

    /// A sound that has not ended.
    struct Sound
    {
        int number;
        QString notification;
        CMPath target;       ///< where its requester wants the responses; may be empty
        Speech::File speech; ///< what it plays; may be null
        bool isCancelled = false;
    };

    static QPair<QString, QString> sourceOf(const AttentionItem &item)
    {
        return {item.user, item.source};
    }

    void uncount(const AttentionItem &item);
    Entry &insert(const AttentionItem &item, const Decision &decision);
    AttentionOutcome outcomeOf(const Entry &entry) const;

    static HistoryEntry historyEntryOf(const Entry &entry);

    /// How many more of a user that must be seen may come back after a restart.
    int freePlaces(const QString &user) const;

    /// One of a user's no longer comes back after a restart.
    void leavePlace(const QString &user);

    /// Lets the oldest of those that had no place come back.
    void fillPlaces();

    void show(Entry &entry);

    /// Which messages may be shown as one with it.
    QString pileOf(const Entry &entry) const;
    QString pileOf(const AttentionItem &item, const Decision &decision) const;
    int groupFrom(const Decision &decision) const;

    /// Whether one more of the pile makes a group, or is one more of it.
    bool piles(const QString &pile, const Decision &decision) const;

    /// Shows it alone, or as one with those of its pile.
    void showInPile(Entry &entry);
    void fold(const QString &pile, const QStringList &ids);
    static MessageGroups::Member memberOf(const Entry &entry);

    /// Its message is no longer one of its pile.
    void leavePile(Entry &entry);

    void changeShown(Entry &entry, bool isQueuedAnew);
    void fillNode(Entry &entry);
    void hide(Entry &entry);
    void requestDisplay(Entry &entry);
    void on_show_failed(const QString &id, const QString &request, const CMError &error);

    /// The requester's sound, or that of the rules.
    CMReply<QVariant> startRequested(Entry &entry, TavoNotificationPlayerItem sound, int priority);
    CMReply<QVariant> startSound(Entry &entry, TavoNotificationPlayerItem sound,
                                 const Speech::File &speech = {});
    void startFile(Entry &entry, const QString &file, const Speech::File &speech = {});
    void speak(Entry &entry);
    void on_speech_made(const QString &id, int number, const Result<Speech::File> &made);
    void soundEnded(const QString &sound, int number);
    void cancelSounds(const Entry &entry);

    void messageEnded(Entry &entry, TavoAttentionEnd::Enum end);

    /// What has become of one that has ended.
    static HistoryEntry::State stateOf(const Entry &entry);

    /// Ends the notification if nothing of it is open any more.
    void finishIfOver(const QString &id);

    CMNodes *m_nodes;
    Entrance &m_entrance;
    History &m_history;
    Speech &m_speech;
    CMValueNode *m_ended;
    CMPath m_responsePath;

    // Programs choose the ids and the names, and could choose some with the same hash, so no QHash has them as keys.
    // The hash of a path is secret.
    Entries m_entries;                           ///< by id
    QMap<QPair<QString, QString>, int> m_counts; ///< of open ones, by user and source
    QHash<CMPath, QString> m_shownNodes; ///< ids of notifications, by the paths of their own nodes
    /// Ids of notifications, by the requests to show them that have other ids.
    QMap<QString, QString> m_requests;
    QMap<QString, QStringList> m_piles; ///< ids of those that are shown alone, by pile
    MessageGroups m_groups;             ///< by pile
    int m_groupFrom = 0;
    QSet<QString> m_usersWithPlaces; ///< some of whom may wait for these; see fillPlaces()
    /// By id, in the order in which the player has them: it takes another one with the same id once the first
    /// has stopped, and refuses it before.
    QMap<QString, QVector<Sound>> m_sounds;
    int m_lastSound = 0;
    quint64 m_lastMessage = 0;
    int m_lastSpeech = 0;
    qint64 m_ends = 0;
};
