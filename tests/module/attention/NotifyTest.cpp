// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/attention/AttentionModuleTest.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

class AttentionNotifyTest : public AttentionModuleTest
{
protected:
    AttentionNotifyTest() { load(); }

    static Request requestReplace(const TavoAttentionItem &item)
    {
        return {TavoAttentionReplacePath(), TavoValue().setAttentionItem(item)};
    }
};

TEST_F(AttentionNotifyTest, ShowsAMessage)
{
    const auto outcome = notify(message("Parcel"_s));
    EXPECT_TRUE(outcome.shown());
    EXPECT_FALSE(outcome.sounding());
    EXPECT_EQ(outcome.id(), "Parcel"_s);
    EXPECT_THAT(displayed(), ElementsAre("Parcel"_s));
    EXPECT_EQ(rowOf(displayedPath()).title().toString(), "text"_s);
}

TEST_F(AttentionNotifyTest, ChoosesAnIdIfThereIsNone)
{
    const auto first = notify(message("one"_s).setId({}));
    const auto second = notify(message("two"_s).setId({}));
    EXPECT_FALSE(first.id().isEmpty());
    EXPECT_NE(first.id(), second.id());
}

TEST_F(AttentionNotifyTest, RefusesAnEmptyRequest)
{
    EXPECT_EQ(requestNotify({}).errorText(), "There is nothing to show or to play");
}

TEST_F(AttentionNotifyTest, RefusesAnIdThatIsOpen)
{
    notify(message("Parcel"_s));
    EXPECT_EQ(requestNotify(message("Parcel"_s)).errorText(),
              "A notification with this id is open");
}

TEST_F(AttentionNotifyTest, RefusesAnIdThatTheDisplayHasForAnother)
{
    notify(message("Door"_s));
    const QString onDisplay = valueAt(TavoNotificationDisplayCurrentPath()).displayCurrent().id();
    const auto like = message(onDisplay).setPath(CMPath("/door/message"_s));
    EXPECT_EQ(requestNotify(like).errorText(), "A notification with this id is open");
}

TEST_F(AttentionNotifyTest, EndsWithItsOwnMessageEvenIfAnotherHasASimilarId)
{
    const auto door = message("Door"_s).setPath(CMPath("/door/message"_s));
    notify(door);
    notify(message("Door/2"_s).setPath(CMPath("/door/second"_s)));
    const auto urgent = TavoAttentionItem(door).setPriority(Priority::Urgent);
    ASSERT_TRUE(
        Request(TavoAttentionReplacePath(), TavoValue().setAttentionItem(urgent)).succeeds());
    ASSERT_TRUE(requestClose("Door"_s).succeeds());
    EXPECT_EQ(endOf("Door"_s).end(), End::Closed);
    settle();
    EXPECT_EQ(ends().size(), 1);
}

TEST_F(AttentionNotifyTest, ShowsTheNodeOfARequester)
{
    services().publish(CMPath("/door/message"_s), {});
    notify(message("Door"_s).setPath(CMPath("/door/message"_s)));
    EXPECT_EQ(displayedPath(), CMPath("/door/message"_s));
}

TEST_F(AttentionNotifyTest, RepliesAtOnceIfTheRequesterHasANode)
{
    const Request request = requestNotify(message("Door"_s).setPath(CMPath("/door/message"_s)));
    EXPECT_TRUE(request.isAnswered());
    EXPECT_TRUE(TavoValue(request.value().toHash()).attentionOutcome().shown());
}

TEST_F(AttentionNotifyTest, KeepsTheOrderOfRequests)
{
    const Request first = requestNotify(message("first"_s));
    const Request second = requestNotify(message("second"_s).setPath(CMPath("/door/message"_s)));
    const Request close = requestClose("second"_s);
    const Request again = requestNotify(message("second"_s).setPath(CMPath("/door/again"_s)));
    EXPECT_FALSE(second.isAnswered());
    for (const Request &request : {first, second, close, again}) {
        EXPECT_TRUE(request.succeeds()) << request.errorText();
    }
    settle();
    EXPECT_EQ(displayedPath(1), CMPath("/door/again"_s));
    EXPECT_EQ(endOf("second"_s).end(), End::Closed);
}

TEST_F(AttentionNotifyTest, TakesRequestsOfSeveralThreads)
{
    constexpr int threads = 4;
    constexpr int requests = 50;
    std::atomic<int> shown{0};
    std::vector<std::thread> requesters;
    for (int thread = 0; thread < threads; ++thread) {
        requesters.emplace_back([thread, &shown] {
            for (int number = 0; number < requests; ++number) {
                const QString id = QString::number(thread * requests + number);
                const auto item =
                    message(id, QString::number(number)).setPath(CMPath("/door/"_s + id));
                const auto reply = CMRoot()->invoke(TavoAttentionNotifyPath(),
                                                    TavoValue().setAttentionItem(item), {});
                shown += TavoValue(reply.value().toHash()).attentionOutcome().shown();
                if (number % 2 == 0) {
                    CMRoot()->invoke(TavoAttentionClosePath(), TavoValue().setString_(id), {});
                }
            }
        });
    }
    EXPECT_TRUE(waitFor([this, &shown] {
        return shown == threads * requests && ends().size() == threads * requests / 2;
    }));
    for (std::thread &requester : requesters) {
        requester.join();
    }
    settle();
    EXPECT_EQ(displayed().size(), std::size_t(threads * requests / 2));
    EXPECT_EQ(history(TavoAttentionQuery().setLimit(200)).size(), std::size_t(threads * requests));
}

TEST_F(AttentionNotifyTest, PlaysASoundWithItsPriority)
{
    const auto outcome = notify(withSound(message("Door"_s), "bell"_s).setPriority(Priority::High));
    EXPECT_TRUE(outcome.sounding());
    ASSERT_NE(playing("bell"_s), nullptr);
    EXPECT_EQ(playing("bell"_s)->content, "/sounds/bell"_s);
}

TEST_F(AttentionNotifyTest, ReportsOneEndForMessageAndSound)
{
    notify(withSound(message("Door"_s), "bell"_s).setTimeout(1));
    ASSERT_TRUE(waitFor([] { return displayed().empty(); }));
    settle();
    EXPECT_THAT(ends(), IsEmpty()) << "the sound still plays";
    playing("bell"_s)->reportEnded();
    const auto ended = endOf("Door"_s);
    EXPECT_EQ(ended.end(), End::Expired);
    EXPECT_GT(ended.shownUntil(), 0);
    EXPECT_GE(ended.heardUntil(), ended.shownUntil());
    EXPECT_EQ(ends().size(), 1);
}

TEST_F(AttentionNotifyTest, PassesOnTheResponsesOfASound)
{
    std::vector<TavoNotificationPlayerResponseType::Enum> types;
    const CMPath target("/door/responses"_s);
    services().take(target, [&types](const CMSetDataRequest &request) {
        types.push_back(TavoValue(request.value().toHash()).notificationPlayerResponse().type());
        request.reply().setValue(QVariant());
    });
    auto item = message("Door"_s);
    item.setSound(
        TavoNotificationPlayerItem().setId("bell"_s).setContent("/bell"_s).setPlaybackResponsePath(
            target));
    notify(item);
    playing("bell"_s)->reportEnded();
    EXPECT_TRUE(waitFor([&types] { return types.size() == 2; }));
    EXPECT_THAT(types, ElementsAre(TavoNotificationPlayerResponseType::Started,
                                   TavoNotificationPlayerResponseType::Finished));
}

TEST_F(AttentionNotifyTest, EndsWithItsOwnSoundEvenIfAnotherWantsTheSameId)
{
    const auto bell = TavoNotificationPlayerItem().setId("bell"_s).setContent("/bell"_s);
    notify(TavoAttentionItem().setId("Door"_s).setSound(bell));
    ScriptedPlayer *player = playing("bell"_s);
    notify(TavoAttentionItem().setId("Gate"_s).setSound(bell));
    EXPECT_EQ(endOf("Gate"_s).end(), End::Silenced) << "the player has refused it";
    player->reportEnded();
    EXPECT_EQ(endOf("Door"_s).end(), End::Expired);
}

TEST_F(AttentionNotifyTest, PlaysSoundsOfNegativePrioritiesAsLowOnes)
{
    const auto sound = [](const QString &id, int priority) {
        return withSound(message(id), id).setPriority(Priority::Enum(priority));
    };
    notify(sound("first"_s, -1000));
    ASSERT_NE(playing("first"_s), nullptr);
    notify(sound("second"_s, -999));
    settle();
    EXPECT_EQ(ScriptedPlayers::instance().all().size(), 1U) << "it does not go before the first";
}

TEST_F(AttentionNotifyTest, StaysOpenWhileItsSoundIsToBeSentAgain)
{
    const auto bell = TavoNotificationPlayerItem().setId("bell"_s).setContent("/bell"_s);
    const auto send = [](const TavoValue &value) {
        EXPECT_TRUE(Request(TavoAttentionSoundPath(), value).succeeds());
    };
    notify(TavoAttentionItem().setId("Door"_s).setPriority(Priority::Urgent).setSoundFollows(true));
    send(TavoValue().setString_("Door"_s).setNotificationPlayerItem(bell));
    ScriptedPlayer *first = playing("bell"_s);
    send(TavoValue().setString_("Door"_s).setBool_(true));
    Request(TavoNotificationPlayerCancelPath(), TavoValue().setString_("bell"_s)).succeeds();
    first->reportStopped();
    settle();
    EXPECT_THAT(ends(), IsEmpty());
    const Request again(
        TavoAttentionSoundPath(),
        TavoValue().setString_("Door"_s).setNotificationPlayerItem(bell).setInt_(Priority::High));
    ASSERT_TRUE(again.succeeds());
    EXPECT_EQ(TavoValue(again.value().toHash()).int_(), Priority::High);
    ASSERT_NE(playing("bell"_s), first);
    playing("bell"_s)->reportEnded();
    EXPECT_EQ(endOf("Door"_s).end(), End::Expired);
}

TEST_F(AttentionNotifyTest, EndsIfItsSoundDoesNotComeAgain)
{
    notify(withSound(TavoAttentionItem().setId("Door"_s), "bell"_s));
    ScriptedPlayer *bell = playing("bell"_s);
    const auto tell = [](bool isAgain) {
        const auto value = TavoValue().setString_("Door"_s).setBool_(isAgain);
        EXPECT_TRUE(Request(TavoAttentionSoundPath(), value).succeeds());
    };
    tell(true);
    Request(TavoNotificationPlayerCancelPath(), TavoValue().setString_("bell"_s)).succeeds();
    bell->reportStopped();
    settle();
    tell(false);
    EXPECT_EQ(endOf("Door"_s).end(), End::Closed);
}

TEST_F(AttentionNotifyTest, StopsTheSoundWhenAPersonClosesTheMessage)
{
    notify(withSound(message("Door"_s), "bell"_s));
    ScriptedPlayer *bell = playing("bell"_s);
    CMSubscribe::closeNode(displayedPath());
    EXPECT_TRUE(waitFor([bell] { return bell->stops > 0; }));
    bell->reportStopped();
    EXPECT_EQ(endOf("Door"_s).end(), End::Dismissed);
}

TEST_F(AttentionNotifyTest, EndsBothAtARequest)
{
    notify(withSound(message("Door"_s), "bell"_s));
    ScriptedPlayer *bell = playing("bell"_s);
    EXPECT_TRUE(requestClose("Door"_s).succeeds());
    EXPECT_TRUE(waitFor([bell] { return bell->stops > 0; }));
    bell->reportStopped();
    EXPECT_EQ(endOf("Door"_s).end(), End::Closed);
    EXPECT_THAT(displayed(), IsEmpty());
    EXPECT_EQ(requestClose("Door"_s).errorText(), "There is no such notification");
}

TEST_F(AttentionNotifyTest, EndsOnceHoweverOftenItIsClosed)
{
    LogCapture player("Notifications");
    notify(withSound(message("Door"_s), "bell"_s));
    ScriptedPlayer *bell = playing("bell"_s);
    CMSubscribe::closeNode(displayedPath());
    ASSERT_TRUE(waitFor([bell] { return bell->stops > 0; }));
    EXPECT_TRUE(requestClose("Door"_s).succeeds()) << "the sound has not stopped yet";
    settle();
    bell->reportStopped();
    EXPECT_EQ(endOf("Door"_s).end(), End::Dismissed);
    EXPECT_EQ(bell->stops, 1);
    EXPECT_EQ(player.countAt(log4cplus::WARN_LOG_LEVEL), 0) << "it is cancelled once";
    EXPECT_EQ(player.countAt(log4cplus::ERROR_LOG_LEVEL), 0);
}

TEST_F(AttentionNotifyTest, LeavesNothingToComplainOfForThePlayer)
{
    LogCapture player("Notifications");
    notify(withSound(message("Door"_s).setTimeout(1), "bell"_s));
    ASSERT_TRUE(waitFor([] { return displayed().empty(); }));
    playing("bell"_s)->reportEnded();
    EXPECT_EQ(endOf("Door"_s).end(), End::Expired);
    EXPECT_EQ(player.countAt(log4cplus::WARN_LOG_LEVEL), 0);
    EXPECT_EQ(player.countAt(log4cplus::ERROR_LOG_LEVEL), 0);
}

TEST_F(AttentionNotifyTest, ReportsTheActionThatAPersonChooses)
{
    notify(message("Door"_s).setActions({TavoAttentionAction().setKey("open"_s).setLabel("Open"_s),
                                         TavoAttentionAction()
                                             .setKey("wait"_s)
                                             .setLabel("In a moment"_s)
                                             .setIcon("appointment-soon"_s)}));
    const TavoRoles row = rowOf(displayedPath(), 2);
    EXPECT_EQ(row.title().toString(), "In a moment"_s);
    EXPECT_EQ(row.icon(), "appointment-soon"_s);
    EXPECT_TRUE(Request(row.path(), QVariant()).succeeds());
    const auto ended = endOf("Door"_s);
    EXPECT_EQ(ended.end(), End::ActedOn);
    EXPECT_EQ(ended.action(), "wait"_s);
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(AttentionNotifyTest, ReplacesTheTextInPlace)
{
    notify(message("Door"_s));
    notify(message("Parcel"_s));
    const CMPath path = displayedPath();
    const Request request(
        TavoAttentionReplacePath(),
        TavoValue().setAttentionItem(message("Door"_s).setText(TrString("Somebody has gone"))));
    EXPECT_TRUE(request.succeeds());
    EXPECT_EQ(displayedPath(), path);
    EXPECT_EQ(rowOf(path).title().toString(), "Somebody has gone"_s);
}

TEST_F(AttentionNotifyTest, QueuesAReplacedMessageAnewWithAnotherPriority)
{
    notify(message("Door"_s));
    notify(message("Parcel"_s));
    const Request request(
        TavoAttentionReplacePath(),
        TavoValue().setAttentionItem(message("Parcel"_s).setPriority(Priority::Urgent)));
    EXPECT_TRUE(request.succeeds());
    settle();
    EXPECT_THAT(displayed(), ElementsAre("Parcel"_s, "Door"_s));
    EXPECT_THAT(ends(), IsEmpty());
}

TEST_F(AttentionNotifyTest, RefusesToReplaceWhatIsNotOpen)
{
    const Request request(TavoAttentionReplacePath(), TavoValue().setAttentionItem(message("x"_s)));
    EXPECT_EQ(request.errorText(), "There is no such notification");
}

TEST_F(AttentionNotifyTest, RefusesToReplaceWhatIsAnotherUsersOrTheHosts)
{
    notify(message("Theirs"_s).setUser("1000"_s));
    notify(message("Own"_s));
    for (const QString &id : {"Theirs"_s, "Own"_s}) {
        EXPECT_EQ(requestReplace(message(id).setUser("1001"_s)).errorText(),
                  "The notification is another user's");
        EXPECT_TRUE(requestReplace(message(id).setUser("1001"_s).setGivesWay(true)).succeeds());
    }
    EXPECT_TRUE(requestReplace(message("Theirs"_s).setUser("1000"_s)).succeeds());
    EXPECT_TRUE(requestReplace(message("Own"_s)).succeeds());
}

TEST_F(AttentionNotifyTest, LetsTheHostReplaceWhatStaysAUsers)
{
    notify(message("Theirs"_s).setUser("1000"_s));
    EXPECT_TRUE(requestReplace(message("Theirs"_s)).succeeds());
    EXPECT_EQ(requestReplace(message("Theirs"_s).setUser("1001"_s)).errorText(),
              "The notification is another user's");
    EXPECT_TRUE(requestReplace(message("Theirs"_s).setUser("1000"_s)).succeeds());
}

TEST_F(AttentionNotifyTest, ShowsNothingForAReplacementWithoutAMessage)
{
    notify(withSound(TavoAttentionItem().setId("Alarm"_s), "bell"_s));
    const auto lower =
        TavoAttentionItem().setId("Alarm"_s).setPriority(Priority::Low).setGivesWay(true);
    EXPECT_TRUE(
        Request(TavoAttentionReplacePath(), TavoValue().setAttentionItem(lower)).succeeds());
    settle();
    EXPECT_THAT(displayed(), IsEmpty());
    playing("bell"_s)->reportEnded();
    EXPECT_EQ(endOf("Alarm"_s).end(), End::Expired);
}

TEST_F(AttentionNotifyTest, DoesNotShowAgainWhatHasEndedAndStillSounds)
{
    notify(withSound(message("Door"_s).setTimeout(1), "bell"_s));
    ASSERT_TRUE(waitFor([] { return displayed().empty(); }));
    const auto again = TavoValue().setAttentionItem(message("Door"_s));
    EXPECT_TRUE(Request(TavoAttentionReplacePath(), again).succeeds());
    settle();
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(AttentionNotifyTest, EndsWhenTheDisplayGoes)
{
    notify(message("Door"_s));
    unloadNotifications();
    EXPECT_EQ(endOf("Door"_s).end(), End::Failed);
}

TEST_F(AttentionNotifyTest, FailsWithoutADisplay)
{
    unloadNotifications();
    notify(message("Door"_s));
    EXPECT_EQ(endOf("Door"_s).end(), End::Failed);
}

TEST_F(AttentionNotifyTest, KeepsFloodsOfASourceFromPeople)
{
    setSettings(R"({"eachSource": {"messages": 2, "seconds": 3600}})");
    EXPECT_TRUE(notify(message("1"_s)).shown());
    EXPECT_TRUE(notify(message("2"_s)).shown());
    const auto third = notify(message("3"_s));
    EXPECT_FALSE(third.shown());
    EXPECT_EQ(third.reason(), "its source has sent too many"_s);
    EXPECT_EQ(endOf("3"_s).end(), End::Silenced);
    EXPECT_TRUE(notify(message("other"_s, "chat"_s)).shown());
    EXPECT_TRUE(notify(message("fire"_s).setPriority(Priority::Urgent)).shown());
}

TEST_F(AttentionNotifyTest, TellsHowManyMoreCameInAFlood)
{
    setSettings(R"({"groupFrom": 0, "eachSource": {"messages": 1, "seconds": 1}})");
    int more = 0;
    const auto flood = [this, &more] {
        for (int number = 0; number < 5; ++number) {
            const auto outcome = notify(message("mail"_s).setId({}));
            more += outcome.shown() ? 0 : 1;
        }
    };
    const auto isTold = [&more] {
        return waitFor([&more] {
            const auto titles = displayed();
            const QString expected = QString::number(more) + " more of mail"_s;
            return std::count(titles.begin(), titles.end(), expected) == 1;
        });
    };
    flood();
    EXPECT_TRUE(isTold());
    flood();
    EXPECT_TRUE(isTold());
    EXPECT_EQ(displayed().size(), std::size_t(10 - more + 1)) << "in the same message";
    EXPECT_EQ(history().size(), 11U) << "nothing is lost";
}

TEST_F(AttentionNotifyTest, KeepsAFloodFromFillingTheHistory)
{
    setSettings(R"({"eachSource": {"messages": 1, "seconds": 3600}})");
    for (int number = 0; number < 110; ++number) {
        notify(message("mail"_s).setId({}));
    }
    EXPECT_EQ(history(TavoAttentionQuery().setLimit(200)).size(), 101U);
}

TEST_F(AttentionNotifyTest, OfOneUserDoNotUseUpASourceForOthers)
{
    constexpr int most = 5000;
    const auto urgent = [](const QString &title) {
        return message(title).setPriority(TavoNotificationItemPriority::Urgent);
    };
    for (int i = 0; i < most; ++i) {
        EXPECT_TRUE(notify(urgent("many %1"_s.arg(i)).setUser("1001"_s)).shown());
    }
    EXPECT_EQ(requestNotify(urgent("one more"_s).setUser("1001"_s)).errorText(),
              "There are too many notifications");
    EXPECT_TRUE(notify(urgent("of another"_s).setUser("1000"_s)).shown());
}

TEST_F(AttentionNotifyTest, CountsNoFloodOfWhatRulesDrop)
{
    setSettings(R"({"eachSource": {"messages": 1, "seconds": 1},
                    "rules": [{"name": "nothing", "then": {"drop": true}}]})");
    notify(message("1"_s));
    EXPECT_EQ(notify(message("2"_s)).reason(), "a rule"_s);
}
} // namespace
