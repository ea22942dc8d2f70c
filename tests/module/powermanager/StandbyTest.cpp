// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/powermanager/PowerManagerTest.h"

#include <QElapsedTimer>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

class StandbyTest : public PowerManagerTest
{
protected:
    using PowerManagerTest::PowerManagerTest;

    Module makeHolder(const QString &name, Manner manner = Manner::Answers)
    {
        Module module = makeModule(name, manner);
        EXPECT_TRUE(acquire(Resources::Audio, name).succeeds());
        return module;
    }
};

TEST_F(StandbyTest, AnswersAtOnceWhenNothingIsHeld)
{
    const Module alarm = makeModule("alarm");
    EXPECT_TRUE(standby().succeeds());
    EXPECT_TRUE(state().standby());
    settle();
    EXPECT_THAT(journal(), IsEmpty());
}

TEST_F(StandbyTest, TellsEachHolderWhatItLosesAndThenThatAllHaveStopped)
{
    const Module alarm = makeHolder("alarm");
    const Module radio = makeHolder("radio");
    ASSERT_TRUE(acquire(Resources::Network, "radio").succeeds());
    EXPECT_TRUE(standby().succeeds());
    settle();
    EXPECT_THAT(journal(), ElementsAre("alarm revoked 2", "radio revoked 2 3", "alarm notice 2",
                                       "radio notice 2 3"));
    EXPECT_THAT(holders(Resources::Audio), IsEmpty());
}

TEST_F(StandbyTest, SendsNoNoticeBeforeTheLastHolderHasAnswered)
{
    const Module alarm = makeHolder("alarm");
    const Module radio = makeHolder("radio", Manner::StaysSilent);
    const Request request = standby();
    settle();
    EXPECT_THAT(journal(), ElementsAre("alarm revoked 2", "radio revoked 2"));
    EXPECT_FALSE(request.isAnswered());

    radio->answer();
    EXPECT_TRUE(request.succeeds());
    settle();
    EXPECT_EQ(journal().size(), 4U);
}

TEST_F(StandbyTest, CountsAnErrorAsAnAnswer)
{
    const Module alarm = makeHolder("alarm", Manner::Refuses);
    EXPECT_TRUE(standby().succeeds());
    EXPECT_EQ(
        log().count(log4cplus::WARN_LOG_LEVEL, "Failed to revoke resources from alarm: Not now"),
        1);
}

TEST_F(StandbyTest, DoesNotWaitForAModuleThatGoesAway)
{
    Module alarm = makeHolder("alarm", Manner::StaysSilent);
    const Request request = standby();
    ASSERT_TRUE(waitFor([this] { return !journal().empty(); }));
    alarm.reset();
    EXPECT_TRUE(request.succeeds());
}

TEST_F(StandbyTest, DoesNotWaitForAModuleWithoutANode)
{
    ASSERT_TRUE(registerModule(
                    TavoPowerManagerModuleRegister().setModuleName("ghost").setRevokeResourcesPath(
                        CMPath("/test/nothing")))
                    .succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "ghost").succeeds());
    EXPECT_TRUE(standby().succeeds());
}

class StandbyTimeoutTest : public StandbyTest
{
protected:
    static constexpr int timeoutMs = 50;

    StandbyTimeoutTest()
        : StandbyTest({{"revokeTimeout", timeoutMs}})
    {
    }
};

TEST_F(StandbyTimeoutTest, GivesUpOnSilentHoldersAfterTheConfiguredTime)
{
    const Module alarm = makeHolder("alarm", Manner::StaysSilent);
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_TRUE(standby().succeeds());
    // A coarse timer may fire up to 5 % early.
    EXPECT_GE(elapsed.elapsed(), timeoutMs - timeoutMs / 20 - 1);
    settle();
    EXPECT_THAT(journal(), ElementsAre("alarm revoked 2", "alarm notice 2"));
    EXPECT_EQ(
        log().count(log4cplus::WARN_LOG_LEVEL, "No answer to revoke within 50 ms from: alarm"), 1);
}

TEST_F(StandbyTest, GivesUpAfterTheTimeThatAReloadHasSet)
{
    EXPECT_EQ(reconfigure({{"revokeTimeout", 20}}), QStringList());
    EXPECT_THROW(reconfigure({{"revokeTimeout", 0}}), std::runtime_error);
    const Module alarm = makeHolder("alarm", Manner::StaysSilent);
    EXPECT_TRUE(standby().succeeds());
    EXPECT_EQ(
        log().count(log4cplus::WARN_LOG_LEVEL, "No answer to revoke within 20 ms from: alarm"), 1);
}

TEST_F(StandbyTimeoutTest, IgnoresAnAnswerThatComesTooLate)
{
    const Module alarm = makeHolder("alarm", Manner::StaysSilent);
    ASSERT_TRUE(standby().succeeds());
    alarm->answer();
    settle();
    EXPECT_THAT(journal(), ElementsAre("alarm revoked 2", "alarm notice 2"));
}

TEST_F(StandbyTest, RefusesAcquiresWhileHoldersAreStopping)
{
    const Module alarm = makeHolder("alarm", Manner::StaysSilent);
    const Request request = standby();
    EXPECT_EQ(acquire(Resources::Audio, "alarm").errorText(), "The device is in standby");
    EXPECT_FALSE(request.isAnswered());
    EXPECT_TRUE(state().standby());
}

TEST_F(StandbyTest, RefusesAcquiresInStandby)
{
    const Module alarm = makeModule("alarm");
    ASSERT_TRUE(standby().succeeds());
    EXPECT_EQ(acquire(Resources::Audio, "alarm").errorText(), "The device is in standby");
    EXPECT_THAT(holders(Resources::Audio), IsEmpty());
}

TEST_F(StandbyTest, TakesReleasesAndRegistrationsInStandby)
{
    ASSERT_TRUE(standby().succeeds());
    const Module alarm = makeModule("alarm");
    EXPECT_TRUE(release(Resources::Audio, "alarm").succeeds());
    EXPECT_THAT(elementsOf(state().modules()), ElementsAre("alarm"));
}

TEST_F(StandbyTest, AnswersASecondRequestAtOnceWhenInStandby)
{
    const Module alarm = makeHolder("alarm");
    ASSERT_TRUE(standby().succeeds());
    EXPECT_TRUE(standby().succeeds());
    settle();
    EXPECT_THAT(journal(), ElementsAre("alarm revoked 2", "alarm notice 2"));
}

TEST_F(StandbyTest, AnswersASecondRequestTogetherWithTheFirst)
{
    const Module alarm = makeHolder("alarm", Manner::StaysSilent);
    const Request first = standby();
    const Request second = standby();
    settle();
    EXPECT_FALSE(second.isAnswered());
    alarm->answer();
    EXPECT_TRUE(first.succeeds());
    EXPECT_TRUE(second.succeeds());
    EXPECT_EQ(journal().front(), "alarm revoked 2");
    settle();
    EXPECT_EQ(journal().size(), 2U);
}

TEST_F(StandbyTest, GrantsAgainAfterResume)
{
    const Module alarm = makeHolder("alarm");
    ASSERT_TRUE(standby().succeeds());
    EXPECT_TRUE(resume().succeeds());
    EXPECT_FALSE(state().standby());
    EXPECT_THAT(holders(Resources::Audio), IsEmpty());
    EXPECT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
}

TEST_F(StandbyTest, AnswersAResumeWithoutStandby)
{
    EXPECT_TRUE(resume().succeeds());
    EXPECT_EQ(log().count("Resumed"), 0);
}

TEST_F(StandbyTest, AnswersAStandbyRequestWithAnErrorWhenResumedMeanwhile)
{
    const Module alarm = makeHolder("alarm", Manner::StaysSilent);
    const Request request = standby();
    EXPECT_TRUE(resume().succeeds());
    EXPECT_EQ(request.errorText(), "Standby was ended by a resume before it was complete");
    EXPECT_FALSE(state().standby());
}

TEST_F(StandbyTest, SendsNoNoticeForAStandbyThatWasResumed)
{
    const Module alarm = makeHolder("alarm", Manner::StaysSilent);
    const Request request = standby();
    ASSERT_TRUE(resume().succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    alarm->answer();
    settle();
    EXPECT_THAT(journal(), ElementsAre("alarm revoked 2"));
    EXPECT_THAT(holders(Resources::Audio), ElementsAre("alarm"));
}

TEST_F(StandbyTest, DoesNotCountALateAnswerForTheNextStandby)
{
    const Module alarm = makeHolder("alarm", Manner::StaysSilent);
    const Request first = standby();
    ASSERT_TRUE(resume().succeeds());
    const Module radio = makeHolder("radio", Manner::StaysSilent);
    const Request second = standby();
    settle();
    alarm->answer();
    settle();
    EXPECT_FALSE(second.isAnswered());
    radio->answer();
    EXPECT_TRUE(second.succeeds());
}

TEST_F(StandbyTest, AnswersWaitingRequestsWhenTheServiceGoesAway)
{
    const Module alarm = makeHolder("alarm", Manner::StaysSilent);
    const Request request = standby();
    settle();
    removeService();
    EXPECT_TRUE(request.waitForReply());
    EXPECT_EQ(request.error().name(), CMErrors::noAnswer());
}

TEST_F(StandbyTest, ReportsItsStateToSubscribers)
{
    struct Receiver : QObject
    {
        void changed(const CMPath & /*path*/, const QVariant &value)
        {
            standby.push_back(TavoValue(value.toHash()).powerManagerState().standby());
        }
        std::vector<bool> standby;
    } receiver;
    CMRoot()->connectValueChange(TavoPowerManagerStatePath(), &receiver, &Receiver::changed);
    ASSERT_TRUE(standby().succeeds());
    ASSERT_TRUE(resume().succeeds());
    settle();
    EXPECT_THAT(receiver.standby, ElementsAre(true, false));
}
} // namespace
