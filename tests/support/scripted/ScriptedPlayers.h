// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class SimplePlayer;

/// A player that the module has constructed, as a test sees it. Outlives the player itself.
struct ScriptedPlayer
{
    QString kind; ///< the class: "UriSimplePlayer", ...
    QString id;
    QString content;
    QString format;
    QByteArray data;
    QString device;
    QObject *parent = nullptr;
    SimplePlayer *player = nullptr; ///< null once it has been destroyed

    // Read at the first play().
    bool loop = false;
    int usage = -1;

    double gain = 1.0;

    int plays = 0;
    int pauses = 0;
    int stops = 0;

    bool isAlive() const { return player != nullptr; }

    // Emit the player's signals, inside the call.
    void reportEnded() const;
    void reportStopped() const;
    void reportError(const QString &reason) const;
};

/// Replaces the players' library: lists the players that have been constructed, which do only what the
/// test says. Has the library's name and is loaded in its place, so that the module under test is the
/// one that devices run.
class Q_DECL_EXPORT ScriptedPlayers
{
public:
    static ScriptedPlayers &instance();
    ~ScriptedPlayers() { reset(); }

    /// Removes all players and settings. Called before each test.
    void reset();

    /// The players in the order of their construction.
    const std::vector<ScriptedPlayer *> &all() const { return m_players; }

    /// The newest player with that id; null if there is none.
    ScriptedPlayer *find(const QString &id) const;

    /// Makes play() of players with that id return false.
    void failPlay(const QString &id) { m_failing.append(id); }
    /// Lets it succeed again.
    void mendPlay(const QString &id) { m_failing.removeAll(id); }

    /// Called for every call of a player: "construct", "play", "pause", "stop", "destroy".
    std::function<void(const QString &call, const QString &id)> onCall;

private:
    friend struct ScriptedPlayerHooks;

    std::vector<ScriptedPlayer *> m_players;
    QStringList m_failing;
};
