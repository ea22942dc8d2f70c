// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Sequences of requests to the player's nodes, with sounds that end, fail or can't be started.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/SentRequest.h"
#include "fuzz/support/ValueReader.h"
#include "support/LoadedModule.h"
#include "support/PostedEvents.h"
#include "support/scripted/ScriptedPlayers.h"

#include <QSet>
#include <QTimer>

namespace {
constexpr int maxSteps = 200;

TavoPlayerMainAudioState state()
{
    return TavoValue(CMRoot()->getValue(TavoPlayerMainAudioStatePath()).toHash()).mainAudioState();
}

ScriptedPlayer *playing()
{
    const auto &players = ScriptedPlayers::instance().all();
    return players.empty() || !players.back()->isAlive() ? nullptr : players.back();
}

void checkState()
{
    const TavoPlayerMainAudioState now = state();
    FUZZ_CHECK(now.volume() >= 0 && now.volume() <= 1, now);
    FUZZ_CHECK(now.playing() == (playing() != nullptr), now);
    FUZZ_CHECK(!now.playing() || now.error().isEmpty(), now);
    QSet<QString> requesters;
    for (int i = 0; i < now.requesters().size(); ++i) {
        requesters.insert(now.requesters().at(i));
    }
    FUZZ_CHECK(requesters.size() == now.requesters().size(), now);
    FUZZ_CHECK(!requesters.contains(QString()), now);
    FUZZ_CHECK(now.ducked() == !requesters.isEmpty(), now);
}

void request(int node, const QVariant &value)
{
    const CMPath paths[] = {TavoPlayerMainAudioDuckingPath(), TavoPlayerMainAudioPlayPath(),
                            TavoPlayerMainAudioStopPath(), TavoPlayerMainAudioVolumePath()};
    const CMPath &path = paths[node];
    const TavoPlayerMainAudioState before = state();
    const SentRequest sent(path, value);
    deliverPosted();
    sent.checkAnswered();
    checkState();
    if (!sent.isRefused()) {
        FUZZ_CHECK(!sent.reply().value().isValid(), path);
        return;
    }
    checkError(sent.error(), QStringLiteral("Player"));
    // A source that can't be played ends the previous one.
    FUZZ_CHECK(path == TavoPlayerMainAudioPlayPath() || state() == before,
               "a refused request has changed the state");
}

void endMusic(int how)
{
    ScriptedPlayer *player = playing();
    if (player == nullptr) {
        return;
    }
    if (how == 0) {
        player->reportEnded();
    } else {
        player->reportError(QStringLiteral("gone"));
    }
    deliverPosted();
    FUZZ_CHECK(!state().playing(), state());
    checkState();
}

/// The time after which something is tried again has passed.
void fireTimers(const LoadedModule &module)
{
    const auto timers = module.worker()->findChildren<QTimer *>();
    for (QTimer *timer : timers) {
        if (timer->isActive()) {
            timer->stop();
            QMetaObject::invokeMethod(timer, "timeout");
            deliverPosted();
        }
    }
    checkState();
}

// The numbers of the steps in inputs.
enum class Step { Request, EndMusic, FailPlay, FireTimers, Count };

void readStep(ByteReader &input, ValueReader &values, const LoadedModule &module)
{
    switch (Step(input.below(int(Step::Count)))) {
    case Step::Request: {
        const int node = input.below(4);
        request(node, values.value());
        break;
    }
    case Step::EndMusic:
        endMusic(input.below(2));
        break;
    case Step::FailPlay:
        ScriptedPlayers::instance().failPlay(values.text());
        break;
    case Step::FireTimers:
        fireTimers(module);
        break;
    case Step::Count:
        break;
    }
}
} // namespace

void fuzzOne(ByteReader &input)
{
    ScriptedPlayers::instance().reset();
    {
        const LoadedModule module(QStringLiteral(TAVO_PLAYER_MODULE), "player");
        deliverPosted();
        ValueReader values(input);
        for (int i = 0; i < maxSteps && !input.isEmpty(); ++i) {
            readStep(input, values, module);
        }
    }
    ScriptedPlayers::instance().reset();
}
