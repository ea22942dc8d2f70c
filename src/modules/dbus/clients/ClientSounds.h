// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "PathHash.h"
#include "Quotas.h"
#include "SlowRequests.h"
#include "SoundAccess.h"
#include "SoundOpener.h"
#include "UrgentTurns.h"
#include <core/tavo.h>

#include <QElapsedTimer>
#include <QObject>

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>

class Clients;

/// The sounds that clients have enqueued, and those of their notifications, each from its request to
/// its end. A sound counts for its client, and in the total even after the client has left.
///
/// Owned by the worker, used in its thread. Each sound gets a response path of the module's own, and
/// its responses are passed on to the client's. When a client leaves, its looped sounds and its streams
/// are cancelled; the others play to their end.
///
/// An urgent sound that has to give way to another user's is cancelled and enqueued again; after some
/// times, with the next lower priority. Its client is not told.
class ClientSounds : public QObject
{
    Q_OBJECT

public:
    ClientSounds(Clients &clients, CMNodes *nodes, SoundAccess access);

    /// Checks a sound that the client names. Throws Clients::NotYet if that takes a moment, so it must be
    /// called before anything is done. Then the client's handler is called again, and this returns the outcome.
    Result<AllowedSound> check(const std::string &client, const QString &location,
                               SoundAccess::Kind kind);
    /// The same for a sound with a name, which is searched for in a thread of the client's user.
    Result<AllowedSound> find(const std::string &client, const QString &name,
                              const SoundOpener::Check &search);

    void setAccess(SoundAccess access) { m_access = std::move(access); }

    /// Passes on a client's request to enqueue a sound, whose value has this many bytes. Throws
    /// BusError::limitExceeded() for one sound too many, and BusError::accessDenied() for a sound
    /// or a response path that is not allowed.
    CMReply<QVariant> enqueue(const std::string &client, const QVariant &value, std::size_t bytes);

    /// Checks and charges the sound of a notification that a client requests of the module for attention.
    /// Throws as enqueue() does. It counts until it is started and has ended, so start() or discard() must follow.
    CMPath prepare(const std::string &client, const TavoNotificationPlayerItem &requested,
                   std::size_t bytes, const QString &notification);

    /// Sends a prepared sound to that module, by the path that prepare() returned.
    void start(const CMPath &path, const QString &notification);

    /// Gives up a prepared sound; an empty path is none.
    void discard(const CMPath &path) { forget(path); }

    /// Enqueues the sound of a client's notification. The sound has been checked; the file is the
    /// one that was opened then. The notification is its id for the module for attention, which passes
    /// the sound on; empty without that module. Throws BusError::limitExceeded() as enqueue() does.
    CMReply<QVariant> play(const std::string &client, const TavoNotificationPlayerItem &item,
                           const std::optional<OpenedSound> &file, const QString &notification);

    /// Ends a sound, as the request to the player does.
    CMReply<QVariant> cancel(const std::string &client, const QVariant &value);
    void cancel(const QString &id);

    /// A notification has ended. The module for attention does not know its sounds that have given way.
    void cancelOfNotification(const QString &notification);

    /// Passes on a client's request to play music, after those that wait. Throws
    /// BusError::accessDenied() as enqueue() does, and BusError::limitExceeded() when too many requests of the
    /// client wait.
    CMReply<QVariant> playMusic(const std::string &client, const QVariant &value);

    /// Throws BusError::accessDenied() for a path where only the player reports. If a client
    /// could report there, it could make this module forget a sound that is playing.
    static void checkTarget(const CMPath &path);

private Q_SLOTS:
    void on_clients_left(const std::string &client);
    void on_clients_userKnown();
    void on_turns_gaveWay(const CMPath &path);
    void on_turns_cameBack(const CMPath &path);
    void on_player_nodeChanged(const CMPath &path, bool published);
    void on_sound_responded(const CMSetDataRequest &request);

private:
    struct Sound
    {
        Quotas::Charge charge;
        TavoNotificationPlayerItem item; ///< as it was sent to the player
        CMPath target;                   ///< where the client wants its responses; may be empty
        std::optional<OpenedSound> file; ///< what the player plays
        CMActivateNode *node;            ///< receives the responses; owned by the node set
        QString notification{}; ///< its id for the module for attention, if it has the sound
        bool hasStarted = false;
        bool isPlaying = false; ///< has started, and has not given way since
        int timesGivenWay = 0;
        bool givesWay = false;    ///< is taken from the player until its turn has come again
        bool hasLeft = false;     ///< the player has let it go because it gives way
        bool comesBack = false;   ///< as soon as the player has let it go
        bool isOnItsWay = false;  ///< to the player, through the module for attention
        bool isCancelled = false; ///< for good; one on its way, when the player has it
        bool isSent = false;
        std::uint64_t turn = 0; ///< see UrgentTurns
    };

    CMReply<QVariant> send(const std::string &client, const TavoNotificationPlayerItem &item,
                           std::size_t bytes, const std::optional<OpenedSound> &file,
                           const QString &notification = {});
    TavoNotificationPlayerItem clean(const TavoNotificationPlayerItem &requested) const;
    std::optional<OpenedSound> checkAccess(const std::string &client,
                                           TavoNotificationPlayerItem &item);
    std::optional<Result<AllowedSound>> takeChecked(const std::string &client, const QString &key);
    [[noreturn]] void checkLater(const std::string &client, const QString &key,
                                 const SoundOpener::Check &check);
    AllowedSound allowed(const std::string &client, const QString &location,
                         SoundAccess::Kind kind);
    CMReply<QVariant> startMusic(Quotas::UserId user, const QString &source);
    void startMusic(const Result<AllowedSound> &checked, const CMReply<QVariant> &reply);
    CMPath watch(const std::string &client, const TavoNotificationPlayerItem &item,
                 std::size_t bytes, const std::optional<OpenedSound> &file);
    CMReply<QVariant> sendInTurn(const CMPath &path);
    CMReply<QVariant> sendToPlayer(const CMPath &path, Sound &sound);
    template <typename Predicate>
    void cancelEach(const Predicate &isMeant);
    CMReply<QVariant> cancelInTurn(Quotas::UserId user, const QVariant &value);
    CMReply<QVariant> cancel(const QVariant &value);
    void takeOutcome(const CMPath &path, const QVariant &outcome);
    void takeTurns(const CMPath &path, const Sound &sound);

    void checkId(const QString &id, const QString &notification) const;
    void giveUp(const CMPath &path);
    void sendAgain(const CMPath &path, Sound &sound);

    /// The sound has been cancelled and will not play again.
    static void stopGivingWay(Sound &sound);
    void forget(const CMPath &path);

    struct Checked
    {
        QString key;
        Result<AllowedSound> outcome;
        QElapsedTimer age;
    };

    Clients &m_clients;
    SoundAccess m_access;
    SoundOpener m_opener;
    std::unordered_map<std::string, Checked>
        m_checked; ///< by client, until its handler is called again
    CMNodes *m_nodes;
    std::unordered_map<CMPath, Sound, PathHash> m_sounds; ///< by their nodes
    UrgentTurns m_turns;
    SlowRequests m_musicRequests;
    SlowRequests m_playerRequests;      ///< to play sounds, and to cancel them
    SlowRequests m_attentionRequests;   ///< to pass on those of notifications
    std::optional<OpenedSound> m_music; ///< the last music of a client; it may be played again
    quint64 m_lastNumber = 0;
};
