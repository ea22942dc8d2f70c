// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The players on a device without hardware. Corrupted sounds come as data, as a file and as a
// stream, while a caller pauses, resumes and stops. Each player emits exactly one end signal.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/MemoryFile.h"
#include "fuzz/support/ValueReader.h"
#include "support/EventLoop.h"
#include <core/base/stream.h>
#include <simpleplayer/DataSimplePlayer.h>
#include <simpleplayer/StreamSimplePlayer.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <memory>

namespace {
const QString id = QStringLiteral("id");

// A device that takes everything at once, so hours of sound pass in no time.
const QString device = QStringLiteral("null");

constexpr qint64 maxBytes = 1 << 20;
constexpr std::chrono::seconds endLimit(8);

/// Counts a player's end signals.
struct Ends
{
    explicit Ends(SimplePlayer &player)
    {
        QObject::connect(&player, &SimplePlayer::playbackEnded, [this] { ++ended; });
        QObject::connect(&player, &SimplePlayer::playbackStopped, [this] { ++stopped; });
        QObject::connect(&player, &SimplePlayer::playbackErrorReported,
                         [this](const QString &, const QString &reason) {
                             FUZZ_CHECK(!reason.isEmpty(), "an error without a reason");
                             ++failed;
                         });
    }

    int count() const { return ended + stopped + failed; }

    int ended = 0;
    int stopped = 0;
    int failed = 0;
};

std::unique_ptr<SimplePlayer> makePlayer(int kind, const QString &format, const QByteArray &data,
                                         const QString &path)
{
    if (kind == 0) {
        return std::make_unique<DataSimplePlayer>(data, id, device, nullptr);
    }
    if (kind == 1) {
        return std::make_unique<UriSimplePlayer>(path, id, device, nullptr);
    }
    return std::make_unique<StreamSimplePlayer>(path, format, id, device, nullptr);
}

/// False once the player has refused to play.
bool follow(SimplePlayer &player, const Ends &ends, const QByteArray &commands)
{
    bool playable = player.play();
    for (const char command : commands) {
        if (command % 4 == 0) {
            player.pause();
        } else if (command % 4 == 1) {
            // A sound that has ended can't be played again.
            playable = playable && (player.play() || ends.count() > 0);
        } else if (command % 4 == 2) {
            player.setGain(command / 64.0, 5);
        } else {
            settle();
        }
    }
    return playable;
}

void play(SimplePlayer &player, const QByteArray &commands)
{
    const Ends ends(player);
    bool playable = follow(player, ends, commands);
    // It may be paused.
    playable = playable && (ends.count() > 0 || player.play());
    if (player.loop || !playable) {
        player.stop();
    }
    if (!playable) {
        settle();
        FUZZ_CHECK(ends.count() == 0, "an end is reported although play() failed");
        return;
    }
    FUZZ_CHECK(waitFor([&ends] { return ends.count() > 0; }, endLimit), "no end is reported");
    settle();
    FUZZ_CHECK(ends.count() == 1, ends.count() << " ends are reported");
}
} // namespace

void fuzzOne(ByteReader &input)
{
    const int kind = input.below(3);
    const bool loop = input.below(2) == 1;
    const QByteArray commands = input.bytes(input.below(5));
    const QString format = ValueReader(input).text();
    const QByteArray data = input.rest();
    const MemoryFile file(data);
    const auto player = makePlayer(kind, format, data, file.path());
    player->limits.maxSoundBytes = maxBytes;
    player->loop = loop;
    play(*player, commands);
}
