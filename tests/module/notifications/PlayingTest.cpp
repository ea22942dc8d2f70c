// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Playing one item: its player, its started response, and its failure to start.

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

TEST_F(PlayingTest, PassesTheDecodedPartOfBadBase64ToTheDataPlayer)
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

TEST_F(PlayingTest, PlaysASilentItemWithTheFakePlayer)
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

TEST_F(PlayingTest, PlaysAsMuchQuieterAsTheItemSays)
{
    const auto gainWith = [this](int attenuation) {
        const QString id = QString::number(attenuation);
        enqueue(item(id).setAttenuation(attenuation));
        const double gain = scripted(id)->gain;
        scripted(id)->reportEnded();
        settle();
        return gain;
    };
    EXPECT_DOUBLE_EQ(gainWith(20), 0.1);
    EXPECT_EQ(gainWith(0), 1.0);
    EXPECT_EQ(gainWith(-20), 1.0);
}

TEST_F(PlayingTest, TreatsEveryKindOfPlayerAlike)
{
    for (const Type::Enum type : {Type::Uri, Type::Data, Type::Stream, Type::Fake}) {
        const QString id = Type::toString(type);
        enqueue(item(id).setType(type).setLoop(true));
        EXPECT_TRUE(scripted(id)->loop) << id;
        EXPECT_EQ(scripted(id)->usage, 1) << id;
        scripted(id)->reportEnded();
        settle();
    }
}

class PlayingStoryTest : public PlayingTest
{
protected:
    /// The story of an item from the grant of the resource on.
    std::vector<std::string> storyOf(Type::Enum type)
    {
        setResources(ScriptedService::keep());
        enqueue(item("a"_s).setType(type));
        beginStory();
        services().requests(TavoPowerManagerResourceRequestPath()).back().reply().setValue({});
        QCoreApplication::sendPostedEvents(); // delivers only the reply
        return story();
    }
};

TEST_F(PlayingStoryTest, LogsConstructionAndStartBeforehand)
{
    EXPECT_THAT(storyOf(Type::Data),
                testing::ElementsAre(
                    "TRACE Enter handleRequestResourcesFinished: ",
                    "TRACE Enter playItemFromQueue: ", "TRACE Enter playItem: Playing item: a",
                    "DEBUG Constructing data player", "a construct", "INFO Starting playback: a",
                    "a play", "to /test/response",
                    "DEBUG Leave playItem: ", "TRACE Leave playItemFromQueue: ",
                    "TRACE Leave handleRequestResourcesFinished: "));
}

TEST_F(PlayingStoryTest, LogsTheConstructionOfAStreamPlayerBeforehand)
{
    const auto lines = storyOf(Type::Stream);
    ASSERT_EQ(lines.size(), 11U);
    EXPECT_EQ(lines[3], "DEBUG Constructing stream player");
    EXPECT_EQ(lines[4], "a construct");
}

TEST_F(PlayingStoryTest, DoesNotLogTheConstructionOfOtherPlayers)
{
    for (const Type::Enum type : {Type::Uri, Type::Fake}) {
        const auto lines = storyOf(type);
        EXPECT_EQ(lines.at(2), "TRACE Enter playItem: Playing item: a");
        EXPECT_EQ(lines.at(3), "a construct");
        unload();
        load();
    }
}

TEST_F(PlayingStoryTest, LogsAFailureToStartBeforeItIsHandled)
{
    ScriptedPlayers::instance().failPlay("a"_s);
    EXPECT_THAT(
        storyOf(Type::Uri),
        testing::ElementsAre(
            "TRACE Enter handleRequestResourcesFinished: ", "TRACE Enter playItemFromQueue: ",
            "TRACE Enter playItem: Playing item: a", "a construct", "INFO Starting playback: a",
            "a play", "ERROR Failed to start playback: a",
            "TRACE Enter on_sound_failed: id: a, reason: Failed to start playback: a",
            "DEBUG Enter soundFinished: id: a, canceled: 0, error: Failed to start "
            "playback: a",
            "DEBUG Active playback finished", "DEBUG Removed notification item from queue: a",
            "TRACE Enter sendStopResponse: item: a",
            "DEBUG Sending response to /test/response res: {id: \"a\", type: 4}",
            "to /test/response", "TRACE Leave sendStopResponse: ",
            "TRACE Active notification stopped", "TRACE Enter continuePlayAudio: queue size: 0",
            "DEBUG Leave continuePlayAudio: No next item to play", "DEBUG Leave soundFinished: ",
            "TRACE Leave on_sound_failed: ", "TRACE Leave playItem: ",
            "TRACE Leave playItemFromQueue: ", "TRACE Leave handleRequestResourcesFinished: "));
}

TEST_F(PlayingStoryTest, MakesAnItemOfAnInvalidTypeTheActiveOneBeforeItFails)
{
    EXPECT_THAT(
        storyOf(Type::Enum(7)),
        testing::ElementsAre(
            "TRACE Enter handleRequestResourcesFinished: ", "TRACE Enter playItemFromQueue: ",
            "TRACE Enter playItem: Playing item: a", "ERROR Invalid item type: 7",
            "TRACE Enter on_sound_failed: id: a, reason: Invalid item type: 7",
            "DEBUG Enter soundFinished: id: a, canceled: 0, error: Invalid item type: 7",
            "DEBUG Active playback finished", "DEBUG Removed notification item from queue: a",
            "TRACE Enter sendStopResponse: item: a",
            "DEBUG Sending response to /test/response res: {id: \"a\", type: 4}",
            "to /test/response", "TRACE Leave sendStopResponse: ",
            "TRACE Active notification stopped", "TRACE Enter continuePlayAudio: queue size: 0",
            "DEBUG Leave continuePlayAudio: No next item to play", "DEBUG Leave soundFinished: ",
            "TRACE Leave on_sound_failed: ", "TRACE Leave playItem: ",
            "TRACE Leave playItemFromQueue: ", "TRACE Leave handleRequestResourcesFinished: "));
}

TEST_F(PlayingTest, IsPlayingWhenAnInvalidItemFails)
{
    bool saidSo = false;
    services().setDirectScript(responsePath(), [&](const CMSetDataRequest &request) {
        saidSo = isPlaying();
        request.reply().setValue(QVariant());
    });
    enqueue(item("a"_s).setType(Type::Enum(7)));
    EXPECT_TRUE(saidSo);
    EXPECT_FALSE(isPlaying());
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

TEST_F(PlayingTest, SendsNothingOnAnyPathForItemsWithoutAResponsePath)
{
    const auto enqueueSilently = [this](const QString &id, int priority, Type::Enum type) {
        enqueue(item(id, priority).setType(type).setPlaybackResponsePath(CMPath()));
    };
    enqueueSilently("finished"_s, 1, Type::Uri);
    enqueueSilently("cancelled while waiting"_s, 1, Type::Uri);
    enqueueSilently("invalid"_s, 2, Type::Enum(9));
    enqueueSilently("failing"_s, 3, Type::Uri);
    cancel("cancelled while waiting"_s);
    enqueueSilently("stopped"_s, 2, Type::Stream);
    enqueueSilently("without a start"_s, 1, Type::Data);
    ScriptedPlayers::instance().failPlay("without a start"_s);
    const auto end = [](const QString &id, auto report) {
        report(scripted(id));
        settle();
    };
    const int before = requestedPaths().size();
    end("failing"_s, [](auto *player) { player->reportError("broken"_s); });
    end("stopped"_s, [](auto *player) { player->reportStopped(); });
    end("finished"_s, [](auto *player) { player->reportEnded(); });
    EXPECT_EQ(requestedPaths().size(), before);
    EXPECT_TRUE(inactivityTimer()->isActive());

    int others = 0;
    for (const CMPath &path : requestedPaths()) {
        others += int(path != TavoNotificationPlayerEnqueuePath() &&
                      path != TavoNotificationPlayerCancelPath() &&
                      path != TavoPowerManagerModuleRegisterPath() &&
                      path != TavoPlayerMainAudioDuckingPath() &&
                      path != TavoPowerManagerResourceRequestPath());
    }
    EXPECT_EQ(others, 0);
}

TEST_F(PlayingTest, GoesOnWhenTheResponsePathHasNoNode)
{
    enqueue(item("a"_s).setPlaybackResponsePath(CMPath("/nobody"_s)));
    scripted("a"_s)->reportEnded();
    settle();
    play("b"_s);
}

TEST_F(PlayingTest, IsPlayingWhileAnItemPlays)
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

TEST_F(PlayingTest, LogsThatItResumesBeforeItDoes)
{
    play("a"_s, 1);
    play("b"_s, 2);
    beginStory();
    scripted("b"_s)->reportEnded();
    const auto lines = story();
    const auto first = std::find(lines.begin(), lines.end(), "TRACE Enter playItemFromQueue: ");
    EXPECT_THAT(std::vector<std::string>(first, lines.end()),
                testing::ElementsAre(
                    "TRACE Enter playItemFromQueue: ", "TRACE Enter playItem: Playing item: a",
                    "TRACE Player already constructed, that means it was paused",
                    "INFO Starting playback: a", "a play",
                    "DEBUG Leave playItem: ", "TRACE Leave playItemFromQueue: ",
                    "TRACE Leave continuePlayAudioMuted: ", "TRACE Leave continuePlayAudio: ",
                    "DEBUG Leave soundFinished: ", "DEBUG Leave on_sound_finished: "));
}

TEST_F(PlayingTest, HandlesTheEndOfAResumedPlayerOnce)
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

TEST_F(PlayingTest, FailsAnItemThatCannotStartAndPlaysTheNext)
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

TEST_F(PlayingTest, IgnoresALateEndOfAnItemThatCouldNotStart)
{
    play("a"_s, 1);
    play("b"_s, 2);
    ScriptedPlayers::instance().failPlay("a"_s);
    scripted("b"_s)->reportEnded();
    scripted("a"_s)->reportEnded();
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Id of stopped sound does not exists, ignoring. a"), 1);
    settle();
    EXPECT_EQ(journal().count("a failed"_s), 1);
    EXPECT_EQ(journal().count("a finished"_s), 0);
}

TEST_F(PlayingTest, AcceptsAnEndReportedFromInsideAPlayThatFails)
{
    ScriptedPlayers::instance().failPlay("a"_s);
    ScriptedPlayers::instance().onCall = [](const QString &call, const QString &id) {
        if (call == "play"_s && id == "a"_s) {
            scripted(id)->reportError("broken"_s);
        }
    };
    setDucking(ScriptedService::keep());
    enqueue("a"_s);
    enqueue("b"_s);
    answer(TavoPlayerMainAudioDuckingPath());
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Failed to start playback: a"), 1);
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Id of stopped sound does not exists, ignoring. a"), 1);
    EXPECT_EQ(journalOf("a"_s), QStringList{"failed"_s});
    EXPECT_FALSE(scripted("a"_s)->isAlive());
    EXPECT_EQ(journalOf("b"_s), QStringList{"started"_s});
}

TEST_F(PlayingTest, FailsAPausedItemThatCannotBeResumed)
{
    play("a"_s, 1);
    play("b"_s, 2);
    ScriptedPlayers::instance().failPlay("a"_s);
    scripted("b"_s)->reportEnded();
    settle();
    EXPECT_EQ(journal().count("a failed"_s), 1);
    EXPECT_TRUE(inactivityTimer()->isActive());
}

TEST_F(PlayingTest, IsPlayingEvenIfTheItemThenFailsToStart)
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
