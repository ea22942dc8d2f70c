// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/sound/SoundDevice.h"

#include <simpleplayer/SimplePlayer.h>

#include <algorithm>

namespace {
using Player = SoundItem::Player;
using Response = TavoNotificationPlayerResponseType;

ScriptedPlayers &players()
{
    return ScriptedPlayers::instance();
}
} // namespace

SoundDevice::SoundDevice(SoundJudge *judge, SoundFacts *facts)
    : m_judge(judge)
    , m_facts(facts)
{
}

void SoundDevice::clear()
{
    m_closing = false;
    players().reset();
    players().onCall = [this](const QString &call, const QString &name) { on_call(call, name); };
}

int SoundDevice::alive()
{
    return int(std::count_if(players().all().begin(), players().all().end(),
                             [](const ScriptedPlayer *player) { return player->isAlive(); }));
}

void SoundDevice::on_call(const QString &call, const QString &name)
{
    if (m_closing) {
        if (call != QLatin1String("destroy")) {
            m_judge->broken("nothing is played or stopped once the module is being deleted");
        }
        return;
    }
    SoundItem *item = m_facts->ledger.find(name.at(0).unicode() - 'a');
    if (call == QLatin1String("destroy")) {
        destroy(item);
    } else if (item == nullptr) {
        m_judge->broken("a player is used only while its item lives",
                        (name + QLatin1Char(' ') + call).toStdString());
    } else if (call == QLatin1String("construct")) {
        if (item->player != Player::None || !item->valid) {
            m_judge->broken("an item of a type that can be played gets one player");
        }
        item->player = Player::Made;
    } else if (call == QLatin1String("play")) {
        if (play(item)) {
            players().mendPlay(name);
        } else {
            players().failPlay(name);
        }
    } else if (call == QLatin1String("pause")) {
        pause(item);
    } else if (call == QLatin1String("stop")) {
        stop(item);
    }
}

void SoundDevice::checkPlay(const SoundItem &item)
{
    if (!m_facts->ledger.isHead(item.id) ||
        (item.player != Player::Made && item.player != Player::Paused)) {
        m_judge->broken("only the head of the queue is played, new or paused");
    }
    if (!m_facts->ducked || !m_facts->granted) {
        m_judge->broken("an item is played only over ducked main audio and with the resource held");
    }
    for (const SoundItem &other : m_facts->ledger.queue()) {
        if (other.sounding) {
            m_judge->broken("no two items are started and sounding",
                            soundName(item.id) + " over " + soundName(other.id));
        }
    }
    for (const SoundItem &other : m_facts->ledger.stopping()) {
        if (other.sounding && !other.overtaken) {
            m_judge->broken("no two items are started and sounding", soundName(item.id) + " over " +
                                                                         soundName(other.id) +
                                                                         ", which is stopping");
        }
    }
}

bool SoundDevice::play(SoundItem *item)
{
    checkPlay(*item);
    m_facts->taken = true;
    enum { Succeeds, Fails };
    if (m_judge->decide(2) != Succeeds) {
        m_judge->tell(soundName(item->id) + " fails to play");
        m_facts->end(item->id, Response::Failed);
        m_facts->checkIfEmpty();
        return false;
    }
    m_judge->tell(soundName(item->id) + " plays");
    item->player = Player::Playing;
    item->sounding = true;
    const auto &stopping = m_facts->ledger.stopping();
    if (std::any_of(stopping.begin(), stopping.end(),
                    [](const SoundItem &other) { return other.sounding; })) {
        m_judge->noted("an item is played over one that is still stopping, because a more urgent "
                       "one pre-empted the queue meanwhile");
    }
    return true;
}

void SoundDevice::pause(SoundItem *item)
{
    m_judge->tell(soundName(item->id) + " is paused");
    if (!m_facts->ledger.isQueued(item->id) || m_facts->ledger.isHead(item->id)) {
        m_judge->broken("only a pre-empted head is paused");
    }
    if (item->player == Player::Playing) {
        item->player = Player::Paused;
        item->sounding = false;
    }
}

void SoundDevice::stop(SoundItem *item)
{
    m_judge->tell(soundName(item->id) + " is told to stop");
    if (m_facts->ledger.isQueued(item->id) || item->player == Player::Stopping) {
        m_judge->broken("only cancelled items are stopped, and only once");
    }
    item->player = Player::Stopping;
}

void SoundDevice::destroy(const SoundItem *item)
{
    // A later item with the same name has no player yet.
    if (item != nullptr && item->player != Player::None) {
        m_judge->broken("a player stays until its item has ended", soundName(item->id));
    }
}

void SoundDevice::report(int id, End end)
{
    const ScriptedPlayer *player = players().find(QString(QChar('a' + id)));
    m_facts->end(id, end == End::Ended     ? Response::Finished
                     : end == End::Stopped ? Response::Cancelled
                                           : Response::Failed);
    m_facts->checkIfEmpty();
    m_judge->tell(soundName(id) + "'s player reports " +
                  (end == End::Ended     ? "its end"
                   : end == End::Stopped ? "that it has stopped"
                                         : "an error"));
    if (end == End::Ended) {
        player->reportEnded();
    } else if (end == End::Stopped) {
        player->reportStopped();
    } else {
        player->reportError(QStringLiteral("broken"));
    }
}
