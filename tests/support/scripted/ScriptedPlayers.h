// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <vector>

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

class SimplePlayer;

/// What a test knows of one player that the module made, and does to it. Outlives the player.
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

    int plays = 0;
    int pauses = 0;
    int stops = 0;

    bool isAlive() const { return player != nullptr; }

    // What the device does. Emitted here and now, as from an event loop.
    void reportEnded() const;
    void reportStopped() const;
    void reportError(const QString &reason) const;
};

/// Stands in for the players' library: keeps the players that have been made and does nothing with
/// them but what a test says. It has the library's name and is loaded in its place, so that the
/// module under test is the one that devices run.
class Q_DECL_EXPORT ScriptedPlayers
{
public:
    static ScriptedPlayers &instance();

    /// Forgets everything; called before a test.
    void reset();

    /// The players in the order of their making.
    const std::vector<ScriptedPlayer *> &all() const { return m_players; }

    /// The newest with that id; null when none has been made.
    ScriptedPlayer *find(const QString &id) const;

    /// Makes play() of players with that id return false.
    void failPlay(const QString &id) { m_failing.append(id); }
    /// Lets it succeed again.
    void mendPlay(const QString &id) { m_failing.removeAll(id); }

    /// Is told of every call: "construct", "play", "pause", "stop", "destroy".
    std::function<void(const QString &call, const QString &id)> onCall;

private:
    friend struct ScriptedPlayerHooks;

    std::vector<ScriptedPlayer *> m_players;
    QStringList m_failing;
};
