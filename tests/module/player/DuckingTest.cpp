// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/player/PlayerTest.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

class DuckingTest : public PlayerTest
{
};

TEST_F(DuckingTest, StartsUnducked)
{
    EXPECT_FALSE(state().ducked());
    EXPECT_THAT(requesters(), IsEmpty());
}

TEST_F(DuckingTest, DucksForARequesterWithoutAnyMusic)
{
    const Request request = duck("alarm");
    EXPECT_TRUE(request.succeeds());
    EXPECT_FALSE(request.value().isValid());
    EXPECT_TRUE(state().ducked());
    EXPECT_THAT(requesters(), ElementsAre("alarm"));
}

TEST_F(DuckingTest, CountsARequesterOnce)
{
    ASSERT_TRUE(duck("alarm").succeeds());
    ASSERT_TRUE(duck("alarm").succeeds());
    ASSERT_TRUE(unduck("alarm").succeeds());
    EXPECT_FALSE(state().ducked());
}

TEST_F(DuckingTest, StaysDuckedUntilTheLastRequesterHasUnducked)
{
    ASSERT_TRUE(duck("alarm").succeeds());
    ASSERT_TRUE(duck("call").succeeds());
    ASSERT_TRUE(unduck("alarm").succeeds());
    EXPECT_TRUE(state().ducked());
    EXPECT_THAT(requesters(), ElementsAre("call"));
    ASSERT_TRUE(unduck("call").succeeds());
    EXPECT_FALSE(state().ducked());
}

TEST_F(DuckingTest, IgnoresAnUnduckByAnUnknownRequester)
{
    ASSERT_TRUE(duck("alarm").succeeds());
    EXPECT_TRUE(unduck("stranger").succeeds());
    EXPECT_THAT(requesters(), ElementsAre("alarm"));
}

TEST_F(DuckingTest, RefusesAnEmptyRequester)
{
    const Request request = duck(QString());
    EXPECT_EQ(request.errorText(), "The request names no requester");
    EXPECT_EQ(request.error().name(), "Player");
    EXPECT_FALSE(state().ducked());
}

TEST_F(DuckingTest, RefusesARequesterWithATooLongName)
{
    EXPECT_TRUE(duck(QString(256, 'x')).succeeds());
    EXPECT_EQ(duck(QString(257, 'x')).errorText(),
              "The requester's name is too long, or there are too many");
    EXPECT_THAT(requesters(), ElementsAre(QString(256, 'x')));
}

TEST_F(DuckingTest, RefusesTooManyRequesters)
{
    for (int i = 0; i < 256; ++i) {
        ASSERT_TRUE(duck(QString::number(i)).succeeds());
    }
    EXPECT_EQ(duck("alarm").errorText(), "The requester's name is too long, or there are too many");
    EXPECT_TRUE(duck("0").succeeds()) << "known already";
    ASSERT_TRUE(unduck("0").succeeds());
    EXPECT_TRUE(duck("alarm").succeeds());
    EXPECT_EQ(requesters().size(), 256U);
}

TEST_F(DuckingTest, DoesNotTakeAMissingFieldForAnUnduck)
{
    ASSERT_TRUE(duck("alarm").succeeds());
    const auto request = sendDucking(TavoPlayerAudioDuckingRequest().setRequester("alarm"));
    EXPECT_EQ(request.errorText(), "duckAudio must be true or false");
    EXPECT_TRUE(state().ducked());
}

TEST_F(DuckingTest, RefusesAFieldThatIsNotABoolean)
{
    const QVariantHash fields{{"requester", "alarm"}, {"duckAudio", "yes"}};
    EXPECT_EQ(sendDucking(fields).errorText(), "duckAudio must be true or false");
}

TEST_F(DuckingTest, RefusesAValueThatIsNotARecord)
{
    EXPECT_FALSE(Request(TavoPlayerMainAudioDuckingPath(), QVariant(true)).succeeds());
    EXPECT_FALSE(Request(TavoPlayerMainAudioDuckingPath(), QVariant()).succeeds());
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 2);
}

TEST_F(DuckingTest, PublishesTheStateBeforeItAnswers)
{
    bool ducked = false;
    QObject context;
    const auto ducking = TavoPlayerAudioDuckingRequest().setDuckAudio(true).setRequester("alarm");
    const CMReply<QVariant> reply =
        CMRoot()->invoke(TavoPlayerMainAudioDuckingPath(), ducking, CMReply<QVariant>());
    reply.addWatcher(
        &context, [&](const CMVoidReply &) { ducked = state().ducked(); }, Qt::DirectConnection);
    ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }));
    EXPECT_TRUE(ducked);
}
} // namespace
