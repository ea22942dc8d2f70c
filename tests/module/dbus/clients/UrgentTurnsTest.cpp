// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Urgent sounds of several users. The test stands in for the player.

#include "module/dbus/UsersTest.h"

#include <QElapsedTimer>

#include <algorithm>
#include <optional>

namespace {
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::Lt;
using testing::Not;
using ResponseType = TavoNotificationPlayerResponseType;

class DbusUrgentTurnsTest : public UsersTest
{
protected:
    DbusUrgentTurnsTest()
    {
        publishRequest(TavoNotificationPlayerEnqueuePath().toString(),
                       [this](const CMSetDataRequest &request) {
                           request.reply().setValue({});
                           const TavoNotificationPlayerItem item =
                               TavoValue(request.value().toHash()).notificationPlayerItem();
                           sounds[item.id()] = item;
                           events.push_back(item.id().toStdString() + " at " +
                                            std::to_string(item.priority()));
                       });
        publishRequest(TavoNotificationPlayerCancelPath().toString(),
                       [this](const CMSetDataRequest &request) {
                           request.reply().setValue({});
                           const QString id = TavoValue(request.value().toHash()).string_();
                           events.push_back(id.toStdString() + " cancelled");
                           if (respondsToCancels) {
                               respond(id, ResponseType::Cancelled);
                           }
                       });
    }

    static void
    enqueue(ModelClient &by, const QString &id,
            TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Urgent,
            const CMPath &responses = {})
    {
        ASSERT_TRUE(send(by, itemOf(id).setLoop(true).setPriority(priority).setPlaybackResponsePath(
                                 responses))
                        .succeeds());
    }

    static TavoNotificationPlayerItem itemOf(const QString &id)
    {
        return TavoNotificationPlayerItem(TavoHash())
            .setId(id)
            .setType(TavoNotificationPlayerItemType::Fake)
            .setPriority(TavoNotificationItemPriority::Urgent);
    }
    static BusCall send(ModelClient &by, const TavoNotificationPlayerItem &item)
    {
        return by.send(TavoNotificationPlayerEnqueuePath().toString(),
                       TavoValue().setNotificationPlayerItem(item).__variant());
    }

    void respond(const QString &id, ResponseType::Enum type)
    {
        CMRoot()->invoke(sounds.at(id).playbackResponsePath(),
                         TavoValue().setNotificationPlayerResponse(
                             TavoNotificationPlayerResponse(TavoHash()).setId(id).setType(type)),
                         {});
    }

    static void cancel(ModelClient &by, const QString &id)
    {
        ASSERT_TRUE(by.send(TavoNotificationPlayerCancelPath().toString(),
                            TavoValue().setString_(id).__variant())
                        .succeeds());
    }

    static void pass(int ms)
    {
        QElapsedTimer passed;
        passed.start();
        ASSERT_TRUE(waitFor([&] { return passed.hasExpired(ms); }));
    }

    /// The second user plays a sound for a short time, then it takes long to open the other one, of the first user.
    void playAndOpen(const QString &played, const QString &opened)
    {
        enqueue(*second, played);
        respond(played, ResponseType::Started);
        pass(300);
        respond(played, ResponseType::Finished);
        enqueue(*first, opened);
        pass(700);
    }

    /// Two sounds of the first user, one of which plays, give way to an alarm of the second one.
    void giveWay(const QString &played, const QString &next)
    {
        enqueue(*first, played);
        enqueue(*first, next);
        respond(played, ResponseType::Started);
        enqueue(*second, "alarm"_s);
        ASSERT_TRUE(happens(played.toStdString() + " cancelled"));
    }

    bool happens(const std::string &event) const
    {
        return waitFor(
            [&] { return std::find(events.begin(), events.end(), event) != events.end(); });
    }

    std::map<QString, TavoNotificationPlayerItem> sounds;
    std::vector<std::string> events;
    bool respondsToCancels = true;
};

TEST_F(DbusUrgentTurnsTest, AnEndlessSoundGivesWayAndPlaysAgainLater)
{
    const QString inbox = first->ask("OpenInbox").text();
    enqueue(*first, "endless"_s, TavoNotificationItemPriority::Urgent, CMPath(inbox));
    respond("endless"_s, ResponseType::Started);
    ASSERT_TRUE(first->waitForSignals(1));
    enqueue(*second, "alarm"_s);
    ASSERT_TRUE(happens("endless cancelled"));
    ASSERT_TRUE(waitFor([this] { return events.size() == 4; }));
    EXPECT_THAT(events,
                ElementsAre("endless at 3", "alarm at 3", "endless cancelled", "endless at 3"));
    respond("alarm"_s, ResponseType::Started);
    respond("alarm"_s, ResponseType::Finished);
    respond("endless"_s, ResponseType::Started);
    respond("endless"_s, ResponseType::Finished);
    ASSERT_TRUE(first->waitForSignals(2));
    EXPECT_THAT(first->received, ElementsAre(HasSubstr("type: 1"), HasSubstr("type: 2")));
}

/// Stands in for the module for attention as well.
class DbusAttentionTurnsTest : public DbusUrgentTurnsTest
{
protected:
    DbusAttentionTurnsTest()
    {
        publishRequest(TavoAttentionNotifyPath().toString(),
                       [](const CMSetDataRequest &request) { request.reply().setValue({}); });
        publishRequest(
            TavoAttentionSoundPath().toString(), [this](const CMSetDataRequest &request) {
                const TavoValue value(request.value().toHash());
                if (value.fields().contains("bool"_s)) {
                    events.push_back(value.bool_() ? "comes again" : "does not come again");
                    return;
                }
                const TavoNotificationPlayerItem item = value.notificationPlayerItem();
                events.push_back(item.id().toStdString() + " for its notification");
                sounds[item.id()] = item;
                onItsWay = request.reply();
            });
    }

    void requestAttention(const QString &id)
    {
        const auto sound = itemOf(id).setPriority(TavoNotificationItemPriority::Low).setLoop(true);
        const auto item = TavoAttentionItem()
                              .setTitle("Water"_s)
                              .setPriority(TavoNotificationItemPriority::Urgent)
                              .setSound(sound);
        ASSERT_TRUE(first
                        ->send(TavoAttentionNotifyPath().toString(),
                               TavoValue().setAttentionItem(item).__variant())
                        .succeeds());
    }

    void notify(const QString &id = "endless"_s)
    {
        requestAttention(id);
        ASSERT_TRUE(happens(id.toStdString() + " for its notification"));
    }

    /// The player has the sound, which starts before that is known.
    void arrive()
    {
        respond("endless"_s, ResponseType::Started);
        onItsWay->setValue(TavoValue().setInt_(TavoNotificationItemPriority::Urgent).__variant());
    }

    std::optional<CMReply<QVariant>> onItsWay;
};

TEST_F(DbusAttentionTurnsTest, TheSoundOfAnUrgentNotificationGivesWayWhateverItsOwnPriority)
{
    notify();
    arrive();
    enqueue(*second, "alarm"_s);
    EXPECT_TRUE(happens("endless cancelled"));
    // The module for attention does not take the notification for over.
    EXPECT_TRUE(waitFor([this] { return events.size() == 5; }));
    EXPECT_THAT(events, ElementsAre("endless for its notification", "alarm at 3", "comes again",
                                    "endless cancelled", "endless for its notification"));
}

TEST_F(DbusAttentionTurnsTest, ASoundThatWasOnItsWayGivesWay)
{
    notify();
    enqueue(*second, "alarm"_s);
    ASSERT_TRUE(happens("alarm at 3"));
    arrive();
    EXPECT_TRUE(happens("endless cancelled"));
}

TEST_F(DbusAttentionTurnsTest, ASoundIsCancelledWhenItArrives)
{
    notify();
    ASSERT_TRUE(first
                    ->send(TavoNotificationPlayerCancelPath().toString(),
                           TavoValue().setString_("endless"_s).__variant())
                    .succeeds());
    EXPECT_THAT(events, Not(Contains("endless cancelled")));
    arrive();
    EXPECT_TRUE(happens("endless cancelled"));
}

TEST_F(DbusAttentionTurnsTest, ASoundThatIsCancelledBeforeItIsSentIsForgotten)
{
    notify("endless"_s); // the next one waits until it has arrived
    requestAttention("next"_s);
    const auto sounds = [] { return CMCatalog::children(CMPath("/dbus/sounds"_s)).size(); };
    ASSERT_EQ(sounds(), 2);
    cancel(*first, "next"_s);
    EXPECT_EQ(sounds(), 1);
    EXPECT_TRUE(happens("does not come again"));
}

TEST_F(DbusAttentionTurnsTest, TheIdOfASoundThatWaitsIsTakenForNotificationsToo)
{
    giveWay("1"_s, "2"_s);
    const auto item = TavoAttentionItem().setTitle("Water"_s).setSound(itemOf("1"_s));
    EXPECT_EQ(second
                  ->send(TavoAttentionNotifyPath().toString(),
                         TavoValue().setAttentionItem(item).__variant())
                  .errorMessage(),
              "A sound with this id waits");
}

TEST_F(DbusUrgentTurnsTest, AllSoundsOfAUserThatHasPlayedMuchGiveWay)
{
    giveWay("endless"_s, "next"_s);
    EXPECT_TRUE(happens("next cancelled"));
}

TEST_F(DbusUrgentTurnsTest, ASoundThatWaitsGivesWayHoweverLittleItsUserHasPlayed)
{
    enqueue(*first, "short"_s);
    respond("short"_s, ResponseType::Started);
    settle();
    respond("short"_s, ResponseType::Finished);
    enqueue(*first, "next"_s);
    enqueue(*second, "alarm"_s);
    EXPECT_TRUE(happens("next cancelled"));
}

TEST_F(DbusUrgentTurnsTest, TheTimeThatSoundsTakeToFailCounts)
{
    enqueue(*first, "broken"_s);
    enqueue(*first, "next"_s);
    pass(700);
    respond("broken"_s, ResponseType::Failed);
    enqueue(*second, "alarm"_s);
    EXPECT_TRUE(happens("next cancelled"));
}

TEST_F(DbusUrgentTurnsTest, TheTimeThatASoundTakesToOpenCounts)
{
    playAndOpen("short"_s, "slow"_s);
    respond("slow"_s, ResponseType::Started);
    respond("slow"_s, ResponseType::Finished);
    enqueue(*first, "next"_s);
    enqueue(*second, "alarm"_s);
    EXPECT_TRUE(happens("next cancelled"));
}

TEST_F(DbusUrgentTurnsTest, TheTimeThatACancelledSoundHasTakenToOpenCounts)
{
    playAndOpen("short"_s, "slow"_s);
    cancel(*first, "slow"_s);
    enqueue(*first, "next"_s);
    enqueue(*second, "alarm"_s);
    EXPECT_TRUE(happens("next cancelled"));
}

TEST_F(DbusUrgentTurnsTest, ASoundWhoseClientLeftBeforeItsUserWasKnownGivesWay)
{
    auto visitor = std::make_unique<ModelClient>(bus().address());
    bus().pause();
    send(*visitor, itemOf("left"_s));
    visitor.reset();
    bus().resume();
    ASSERT_TRUE(happens("left at 3"));
    respond("left"_s, ResponseType::Started);
    enqueue(*second, "alarm"_s);
    EXPECT_TRUE(happens("left cancelled"));
}

TEST_F(DbusUrgentTurnsTest, ASoundThatIsCancelledForItsClientHasLeftDoesNotPlayAgain)
{
    enqueue(*first, "endless"_s);
    respond("endless"_s, ResponseType::Started);
    // Long enough to have to give way to another user's.
    QElapsedTimer playing;
    playing.start();
    ASSERT_TRUE(waitFor([&] { return playing.hasExpired(300); }));
    respondsToCancels = false;
    first.reset();
    ASSERT_TRUE(happens("endless cancelled"));
    enqueue(*second, "alarm"_s);
    ASSERT_TRUE(happens("alarm at 3"));
    respond("endless"_s, ResponseType::Cancelled);
    enqueue(*second, "next"_s);
    ASSERT_TRUE(happens("next at 3"));
    EXPECT_THAT(events,
                ElementsAre("endless at 3", "endless cancelled", "alarm at 3", "next at 3"));
}

TEST_F(DbusUrgentTurnsTest, ASoundThatHasGivenWayOftenIsNoLongerUrgent)
{
    enqueue(*first, "endless"_s);
    for (const char *alarm : {"1", "2", "3"}) {
        events.clear();
        respond("endless"_s, ResponseType::Started);
        enqueue(*second, QLatin1String(alarm));
        ASSERT_TRUE(happens("endless cancelled"));
        respond(QLatin1String(alarm), ResponseType::Finished);
    }
    EXPECT_TRUE(happens("endless at 2"));
}

TEST_F(DbusUrgentTurnsTest, ACancelEndsASoundThatIsAboutToPlayAgain)
{
    const QString inbox = first->ask("OpenInbox").text();
    enqueue(*first, "endless"_s, TavoNotificationItemPriority::Urgent, CMPath(inbox));
    respond("endless"_s, ResponseType::Started);
    respondsToCancels = false;
    enqueue(*second, "alarm"_s);
    ASSERT_TRUE(happens("endless cancelled"));
    EXPECT_TRUE(first
                    ->send(TavoNotificationPlayerCancelPath().toString(),
                           TavoValue().setString_("endless"_s).__variant())
                    .succeeds());
    respond("endless"_s, ResponseType::Cancelled);
    ASSERT_TRUE(first->waitForSignals(2));
    EXPECT_THAT(first->received.back(), HasSubstr("type: 3"));
    EXPECT_THAT(events, ElementsAre("endless at 3", "alarm at 3", "endless cancelled"));
}

TEST_F(DbusUrgentTurnsTest, OfManySoundsOneAfterTheOtherComesBackThoseThatHavePlayedLast)
{
    for (const QString &id : {"1"_s, "2"_s, "3"_s}) {
        enqueue(*first, id);
    }
    respond("1"_s, ResponseType::Started);
    enqueue(*second, "alarm"_s);
    ASSERT_TRUE(happens("1 cancelled"));
    respond("alarm"_s, ResponseType::Finished);
    respond("2"_s, ResponseType::Started);
    events.clear();
    ASSERT_TRUE(happens("3 at 3"));
    respond("2"_s, ResponseType::Finished);
    respond("3"_s, ResponseType::Started);
    ASSERT_TRUE(happens("1 at 3"));
    EXPECT_THAT(events, ElementsAre("3 at 3", "1 at 3"));
}

TEST_F(DbusUrgentTurnsTest, HoweverManySoundsWaitFewGiveWay)
{
    constexpr int count = 60;
    for (int i = 0; i < count; ++i) {
        enqueue(*first, QString::number(i));
    }
    respond("0"_s, ResponseType::Started);
    for (const QString &id : {"fire"_s, "water"_s, "gas"_s}) {
        enqueue(*second, id);
        respond(id, ResponseType::Started);
        respond(id, ResponseType::Finished);
    }
    const auto isCancel = [](const std::string &event) {
        return event.find("cancelled") != std::string::npos;
    };
    const auto cancelled = std::count_if(events.begin(), events.end(), isCancel);
    EXPECT_THAT(cancelled, AllOf(Ge(count - 1), Lt(count + 10)));
}

TEST_F(DbusUrgentTurnsTest, ACancelEndsASoundThatWaitsForItsTurn)
{
    const QString inbox = first->ask("OpenInbox").text();
    enqueue(*first, "endless"_s);
    enqueue(*first, "next"_s);
    enqueue(*first, "last"_s, TavoNotificationItemPriority::Urgent, CMPath(inbox));
    respond("endless"_s, ResponseType::Started);
    enqueue(*second, "alarm"_s);
    ASSERT_TRUE(happens("endless cancelled"));
    cancel(*first, "last"_s);
    ASSERT_TRUE(first->waitForSignals(1));
    EXPECT_THAT(first->received, ElementsAre(HasSubstr("type: 3")));
    respond("alarm"_s, ResponseType::Finished);
    events.clear();
    for (const QString &id : {"next"_s, "endless"_s}) {
        respond(id, ResponseType::Started);
        respond(id, ResponseType::Finished);
    }
    enqueue(*first, "other"_s);
    EXPECT_THAT(events, Not(Contains("last at 3")));
}

TEST_F(DbusUrgentTurnsTest, ASoundThatHasWaitedLongComesNextHoweverMuchItsUserHasPlayed)
{
    enqueue(*second, "long"_s);
    respond("long"_s, ResponseType::Started);
    enqueue(*first, "short"_s);
    pass(150);
    respond("long"_s, ResponseType::Finished);
    enqueue(*second, "alarm"_s);
    respond("short"_s, ResponseType::Started);
    ASSERT_TRUE(happens("short cancelled"));
}

TEST_F(DbusUrgentTurnsTest, SoundsOfOneUserKeepTheirOrderHoweverLongTheyAre)
{
    enqueue(*first, "long"_s);
    respond("long"_s, ResponseType::Started);
    enqueue(*first, "next"_s);
    pass(1200);
    EXPECT_THAT(events, ElementsAre("long at 3", "next at 3"));
}

TEST_F(DbusUrgentTurnsTest, AStartThatWasUnderWayWhenTheSoundGaveWayDoesNotCount)
{
    respondsToCancels = false;
    enqueue(*first, "endless"_s);
    respond("endless"_s, ResponseType::Started);
    for (const QString &id : {"1"_s, "2"_s, "3"_s}) {
        events.clear();
        enqueue(*second, id);
        ASSERT_TRUE(happens("endless cancelled"));
        respond("endless"_s, ResponseType::Started);
        respond("endless"_s, ResponseType::Cancelled);
        ASSERT_TRUE(happens("endless at 3"));
        respond(id, ResponseType::Finished);
    }
}

TEST_F(DbusUrgentTurnsTest, TheIdOfASoundThatWaitsForItsTurnIsTaken)
{
    giveWay("1"_s, "2"_s);
    EXPECT_FALSE(send(*second, itemOf("1"_s)).succeeds());
    EXPECT_TRUE(send(*second, itemOf("3"_s)).succeeds());
}

TEST_F(DbusUrgentTurnsTest, WhoHasPlayedWhileNobodyWaitedIsNotBehindOthers)
{
    enqueue(*second, "long"_s);
    respond("long"_s, ResponseType::Started);
    pass(700);
    respond("long"_s, ResponseType::Finished);
    for (const QString &id : {"1"_s, "2"_s}) {
        enqueue(*first, id);
    }
    respond("1"_s, ResponseType::Started);
    enqueue(*second, "alarm"_s);
    EXPECT_TRUE(happens("1 cancelled"));
    EXPECT_TRUE(happens("2 cancelled"));
}

TEST_F(DbusUrgentTurnsTest, LessUrgentSoundsAreLeftToThePlayer)
{
    enqueue(*first, "music"_s, TavoNotificationItemPriority::High);
    enqueue(*first, "endless"_s);
    respond("endless"_s, ResponseType::Started);
    enqueue(*second, "alarm"_s);
    ASSERT_TRUE(happens("endless cancelled"));
    EXPECT_THAT(events, Not(Contains("music cancelled")));
}
} // namespace
