// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/scripted/ScriptedPlayers.h"

#include <simpleplayer/DataSimplePlayer.h>
#include <simpleplayer/FakePlayer.h>
#include <simpleplayer/StreamSimplePlayer.h>
#include <simpleplayer/UriSimplePlayer.h>

/// Only declared in the public headers, and not used here.
class Playback
{
};
struct PlayedSound
{
};

/// Connects the players' classes with the script.
struct ScriptedPlayerHooks
{
    static void constructed(SimplePlayer *player, const ScriptedPlayer &description)
    {
        auto *scripted = new ScriptedPlayer(description);
        scripted->player = player;
        scripted->parent = player->parent();
        script().m_players.push_back(scripted);
        tell("construct", scripted->id);
    }

    static bool play(SimplePlayer *player)
    {
        ScriptedPlayer *scripted = of(player);
        if (scripted->plays++ == 0) {
            scripted->loop = player->loop;
            scripted->usage = player->usage;
        }
        tell("play", scripted->id);
        return !script().m_failing.contains(scripted->id);
    }

    static void setGain(SimplePlayer *player, double gain) { of(player)->gain = gain; }

    static void pause(SimplePlayer *player)
    {
        ++of(player)->pauses;
        tell("pause", of(player)->id);
    }

    static void stop(SimplePlayer *player)
    {
        ++of(player)->stops;
        tell("stop", of(player)->id);
    }

    static void destroyed(SimplePlayer *player)
    {
        ScriptedPlayer *scripted = of(player);
        if (scripted != nullptr) {
            scripted->player = nullptr;
            tell("destroy", scripted->id);
        }
    }

private:
    static ScriptedPlayers &script() { return ScriptedPlayers::instance(); }

    static ScriptedPlayer *of(const SimplePlayer *player)
    {
        for (ScriptedPlayer *scripted : script().all()) {
            if (scripted->player == player) {
                return scripted;
            }
        }
        return nullptr;
    }

    static void tell(const char *call, const QString &id)
    {
        if (script().onCall) {
            script().onCall(QString::fromLatin1(call), id);
        }
    }
};

ScriptedPlayers &ScriptedPlayers::instance()
{
    static ScriptedPlayers players;
    return players;
}

void ScriptedPlayers::reset()
{
    for (ScriptedPlayer *player : m_players) {
        delete player;
    }
    m_players.clear();
    m_failing.clear();
    onCall = nullptr;
}

ScriptedPlayer *ScriptedPlayers::find(const QString &id) const
{
    for (auto player = m_players.rbegin(); player != m_players.rend(); ++player) {
        if ((*player)->id == id) {
            return *player;
        }
    }
    return nullptr;
}

void ScriptedPlayer::reportEnded() const
{
    Q_EMIT player->playbackEnded(id);
}

void ScriptedPlayer::reportStopped() const
{
    Q_EMIT player->playbackStopped(id);
}

void ScriptedPlayer::reportError(const QString &reason) const
{
    Q_EMIT player->playbackErrorReported(id, reason);
}

SimplePlayer::SimplePlayer(const QString &id, std::unique_ptr<const PlayedSound> /*sound*/,
                           QObject *parent)
    : QObject(parent)
    , m_id(id)
{
}

SimplePlayer::~SimplePlayer()
{
    ScriptedPlayerHooks::destroyed(this);
}

bool SimplePlayer::play()
{
    return ScriptedPlayerHooks::play(this);
}

void SimplePlayer::pause()
{
    ScriptedPlayerHooks::pause(this);
}

void SimplePlayer::stop()
{
    ScriptedPlayerHooks::stop(this);
}

void SimplePlayer::setGain(double gain, int /*fadeMs*/)
{
    ScriptedPlayerHooks::setGain(this, gain);
}

UriSimplePlayer::UriSimplePlayer(const QString &uri, const QString &id, const QString &device,
                                 QObject *parent)
    : SimplePlayer(id, nullptr, parent)
{
    ScriptedPlayer description;
    description.kind = QStringLiteral("UriSimplePlayer");
    description.id = id;
    description.content = uri;
    description.device = device;
    ScriptedPlayerHooks::constructed(this, description);
}

StreamSimplePlayer::StreamSimplePlayer(const QString &content, const QString &format,
                                       const QString &id, const QString &device, QObject *parent)
    : SimplePlayer(id, nullptr, parent)
{
    ScriptedPlayer description;
    description.kind = QStringLiteral("StreamSimplePlayer");
    description.id = id;
    description.content = content;
    description.format = format;
    description.device = device;
    ScriptedPlayerHooks::constructed(this, description);
}

DataSimplePlayer::DataSimplePlayer(const QByteArray &data, const QString &id, const QString &device,
                                   QObject *parent)
    : SimplePlayer(id, nullptr, parent)
{
    ScriptedPlayer description;
    description.kind = QStringLiteral("DataSimplePlayer");
    description.id = id;
    description.data = data;
    description.device = device;
    ScriptedPlayerHooks::constructed(this, description);
}

FakePlayer::FakePlayer(const QString &id, QObject *parent)
    : SimplePlayer(id, nullptr, parent)
{
    ScriptedPlayer description;
    description.kind = QStringLiteral("FakePlayer");
    description.id = id;
    ScriptedPlayerHooks::constructed(this, description);
}
