// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Playing one item: which player it gets, what is reported, and what happens when it can't start.

#include "NotificationsTest.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

namespace {
using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;
using Type = TavoNotificationPlayerItemType;

class PlayingTest : public NotificationsTest
{
protected:
    PlayingTest() { load(); }

    ScriptedPlayer *playAs(Type::Enum type, const QString &content, const QString &format = {})
    {
        enqueue(item("a"_s).setType(type).setContent(content).setContentStreamFormat(format));
        return scripted("a"_s);
    }
};
} // namespace

TEST_F(PlayingTest, PlaysAUriWithTheUriPlayer)
{
    const ScriptedPlayer *player = playAs(Type::Uri, "file:///a.wav"_s);
    ASSERT_NE(player, nullptr);
    EXPECT_EQ(player->kind, "UriSimplePlayer"_s);
    EXPECT_EQ(player->content, "file:///a.wav"_s);
    EXPECT_EQ(player->id, "a"_s);
    EXPECT_EQ(player->device, "testdevice"_s);
    EXPECT_EQ(player->parent, this->player());
}

TEST_F(PlayingTest, PlaysBase64WithTheDataPlayer)
{
    const ScriptedPlayer *player = playAs(Type::Data, "UklGRg=="_s);
    ASSERT_NE(player, nullptr);
    EXPECT_EQ(player->kind, "DataSimplePlayer"_s);
    EXPECT_EQ(player->data, QByteArray("RIFF"));
    EXPECT_EQ(player->device, "testdevice"_s);
    EXPECT_EQ(player->parent, this->player());
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Constructing data player"), 1);
}

TEST_F(PlayingTest, HandsBadBase64ToTheDataPlayerAsItDecodes)
{
    const ScriptedPlayer *player = playAs(Type::Data, "no base64: \u00e4!"_s);
    ASSERT_NE(player, nullptr);
    EXPECT_EQ(player->data, QByteArray::fromBase64("no base64: \u00e4!"_s.toLocal8Bit()));
}

TEST_F(PlayingTest, PlaysAStreamWithTheStreamPlayer)
{
    const ScriptedPlayer *player = playAs(Type::Stream, "/run/fifo"_s, "audio/L16"_s);
    ASSERT_NE(player, nullptr);
    EXPECT_EQ(player->kind, "StreamSimplePlayer"_s);
    EXPECT_EQ(player->content, "/run/fifo"_s);
    EXPECT_EQ(player->format, "audio/L16"_s);
    EXPECT_EQ(player->device, "testdevice"_s);
    EXPECT_EQ(player->parent, this->player());
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Constructing stream player"), 1);
}

TEST_F(PlayingTest, PlaysASilentOneWithTheFakePlayer)
{
    const ScriptedPlayer *player = playAs(Type::Fake, "ignored"_s);
    ASSERT_NE(player, nullptr);
    EXPECT_EQ(player->kind, "FakePlayer"_s);
    EXPECT_EQ(player->id, "a"_s);
    EXPECT_EQ(player->parent, this->player());
}

TEST_F(PlayingTest, SetsTheLoopFlagAndTheUsageBeforeItPlays)
{
    enqueue(item("a"_s).setLoop(true));
    EXPECT_TRUE(scripted("a"_s)->loop);
    EXPECT_EQ(scripted("a"_s)->usage, 1);
    scripted("a"_s)->reportEnded();
    settle();
    enqueue(item("b"_s).setLoop(false));
    EXPECT_FALSE(scripted("b"_s)->loop);
    EXPECT_EQ(scripted("b"_s)->usage, 1);
}

TEST_F(PlayingTest, LogsTheStart)
{
    play("a"_s);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "playItem", "Playing item: a"), 1);
    EXPECT_EQ(logged(INFO_LOG_LEVEL, "Starting playback: a"), 1);
    EXPECT_EQ(left(DEBUG_LOG_LEVEL, "playItem", ""), 1);
}

TEST_F(PlayingTest, ReportsTheStartOnceItPlays)
{
    play("a"_s);
    EXPECT_EQ(journalOf("a"_s), (QStringList{"construct"_s, "play"_s, "started"_s}));
    const auto response = TavoValue(services().requests(responsePath()).front().value().toHash())
                              .notificationPlayerResponse();
    EXPECT_EQ(response.id(), "a"_s);
    EXPECT_EQ(int(response.type()), 1);
}

TEST_F(PlayingTest, ReportsNothingWithoutAResponsePath)
{
    enqueue(item("a"_s).setPlaybackResponsePath(CMPath()));
    scripted("a"_s)->reportEnded();
    settle();
    EXPECT_EQ(journalOf("a"_s), (QStringList{"construct"_s, "play"_s, "destroy"_s}));
    EXPECT_EQ(services().count(responsePath()), 0);
}

TEST_F(PlayingTest, PlaysOnWhenTheResponsePathLeadsNowhere)
{
    enqueue(item("a"_s).setPlaybackResponsePath(CMPath("/nobody"_s)));
    scripted("a"_s)->reportEnded();
    settle();
    play("b"_s);
}

TEST_F(PlayingTest, SaysThatSomethingPlays)
{
    play("a"_s);
    EXPECT_TRUE(isPlaying());
}

TEST_F(PlayingTest, ResumesThePlayerOfAPausedItemWithoutASecondStart)
{
    play("a"_s, 1);
    play("b"_s, 2);
    scripted("b"_s)->reportEnded();
    settle();
    EXPECT_EQ(journalOf("a"_s),
              (QStringList{"construct"_s, "play"_s, "started"_s, "pause"_s, "play"_s}));
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Player already constructed, that means it was paused"), 1);
    EXPECT_EQ(logged(INFO_LOG_LEVEL, "Starting playback: a"), 2);
}

TEST_F(PlayingTest, HearsAResumedPlayersEndOnce)
{
    play("a"_s, 1);
    play("b"_s, 2);
    scripted("b"_s)->reportEnded();
    settle();
    scripted("a"_s)->reportEnded();
    settle();
    EXPECT_EQ(journal().count("a finished"_s), 1);
    EXPECT_EQ(log().countAt(ERROR_LOG_LEVEL), 0);
}

class InvalidTypeTest : public PlayingTest, public testing::WithParamInterface<int>
{
};

TEST_P(InvalidTypeTest, FailsAtOnceWithoutAPlayerOrAStart)
{
    enqueue(item("a"_s).setType(Type::Enum(GetParam())));
    const std::string reason = "Invalid item type: " + std::to_string(GetParam());
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, reason), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "on_sound_failed", "id: a, reason: " + reason), 1);
    EXPECT_EQ(journalOf("a"_s), QStringList{"failed"_s});
    EXPECT_TRUE(ScriptedPlayers::instance().all().empty());
}

INSTANTIATE_TEST_SUITE_P(Types, InvalidTypeTest,
                         testing::Values(4, 42, -1, std::numeric_limits<int>::min(),
                                         std::numeric_limits<int>::max()));

TEST_F(PlayingTest, FailsWhatCannotStartAndPlaysTheNext)
{
    setDucking(ScriptedService::keep());
    ScriptedPlayers::instance().failPlay("a"_s);
    enqueue("a"_s);
    enqueue("b"_s);
    answer(TavoPlayerMainAudioDuckingPath());
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Failed to start playback: a"), 1);
    EXPECT_EQ(
        entered(TRACE_LOG_LEVEL, "on_sound_failed", "id: a, reason: Failed to start playback: a"),
        1);
    EXPECT_EQ(journal().count("a failed"_s), 1);
    EXPECT_EQ(journal().count("a started"_s), 0);
    EXPECT_FALSE(scripted("a"_s)->isAlive());
    EXPECT_EQ(journalOf("b"_s).last(), "started"_s);
}

TEST_F(PlayingTest, IsDeafToAnEndOfWhatCouldNotStart)
{
    play("a"_s, 1);
    play("b"_s, 2);
    ScriptedPlayers::instance().failPlay("a"_s);
    scripted("b"_s)->reportEnded();
    scripted("a"_s)->reportEnded(); // was on its way when a was resumed
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Id of stopped sound does not exists, ignoring. a"), 0);
    settle();
    EXPECT_EQ(journal().count("a failed"_s), 1);
    EXPECT_EQ(journal().count("a finished"_s), 0);
}

TEST_F(PlayingTest, FailsAPausedItemThatCannotGoOn)
{
    play("a"_s, 1);
    play("b"_s, 2);
    ScriptedPlayers::instance().failPlay("a"_s);
    scripted("b"_s)->reportEnded();
    settle();
    EXPECT_EQ(journal().count("a failed"_s), 1);
    EXPECT_TRUE(inactivityTimer()->isActive());
}

TEST_F(PlayingTest, SaysThatSomethingPlaysEvenIfTheItemThenFails)
{
    setDucking(ScriptedService::keep());
    ScriptedPlayers::instance().failPlay("a"_s);
    bool saidSo = false;
    ScriptedPlayers::instance().onCall = [&](const QString &call, const QString &) {
        saidSo = saidSo || (call == "play"_s && isPlaying());
    };
    enqueue("a"_s);
    answer(TavoPlayerMainAudioDuckingPath());
    EXPECT_TRUE(saidSo);
    EXPECT_FALSE(isPlaying());
}

TEST_F(PlayingTest, EndsTenThousandInvalidItemsOneByOneAndInOrder)
{
    setDucking(ScriptedService::keep());
    log().setLevel(log4cplus::FATAL_LOG_LEVEL);
    constexpr int count = 10000;
    QStringList expected;
    for (int i = 0; i < count; ++i) {
        const QString id = QString::number(i);
        CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(),
                         TavoValue().setNotificationPlayerItem(item(id).setType(Type::Enum(7))),
                         CMReply<QVariant>());
        expected.append(id + " failed"_s);
    }
    settle();
    journal().clear();
    answer(TavoPlayerMainAudioDuckingPath());
    EXPECT_EQ(journal().first(), "acquire"_s);
    EXPECT_EQ(journal().mid(1), expected);
    EXPECT_TRUE(inactivityTimer()->isActive());
}

TEST_F(PlayingTest, EndsTenThousandInvalidItemsAtTheStackDepthOfTheFirstTen)
{
    constexpr int count = 10000;
    setDucking(ScriptedService::keep());
    log().setLevel(log4cplus::FATAL_LOG_LEVEL);
    std::vector<std::intptr_t> frames;
    services().setDirectScript(responsePath(), [&frames](const CMSetDataRequest &request) {
        frames.push_back(reinterpret_cast<std::intptr_t>(__builtin_frame_address(0)));
        request.reply().setValue(QVariant());
    });
    for (int i = 0; i < count; ++i) {
        CMRoot()->invoke(
            TavoNotificationPlayerEnqueuePath(),
            TavoValue().setNotificationPlayerItem(item(QString::number(i)).setType(Type::Enum(7))),
            CMReply<QVariant>());
    }
    settle();
    answer(TavoPlayerMainAudioDuckingPath());
    ASSERT_EQ(int(frames.size()), count);
    EXPECT_EQ(*std::min_element(frames.begin(), frames.end()),
              *std::min_element(frames.begin(), frames.begin() + 10));
}
