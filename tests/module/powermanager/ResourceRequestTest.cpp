// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/powermanager/PowerManagerTest.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

class ResourceRequestTest : public PowerManagerTest
{
protected:
    const Module m_alarm = makeModule("alarm");
    const Module m_radio = makeModule("radio");
};

TEST_F(ResourceRequestTest, GrantsAResourceToARegisteredModule)
{
    const Request request = acquire(Resources::Audio, "alarm");
    EXPECT_TRUE(request.succeeds());
    EXPECT_FALSE(request.value().isValid());
    EXPECT_THAT(holders(Resources::Audio), ElementsAre("alarm"));
    EXPECT_EQ(log().count(log4cplus::INFO_LOG_LEVEL, "Granted Audio to alarm"), 1);
}

TEST_F(ResourceRequestTest, GrantsAResourceToSeveralModules)
{
    ASSERT_TRUE(acquire(Resources::Audio, "radio").succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    EXPECT_THAT(holders(Resources::Audio), ElementsAre("alarm", "radio"));
}

TEST_F(ResourceRequestTest, ReleasesForOneModuleOnly)
{
    ASSERT_TRUE(acquire(Resources::Audio, "radio").succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    ASSERT_TRUE(release(Resources::Audio, "radio").succeeds());
    EXPECT_THAT(holders(Resources::Audio), ElementsAre("alarm"));
    EXPECT_EQ(log().count(log4cplus::INFO_LOG_LEVEL, "Released Audio of radio"), 1);
}

TEST_F(ResourceRequestTest, NeedsOneReleaseForTwoAcquires)
{
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    ASSERT_TRUE(release(Resources::Audio, "alarm").succeeds());
    EXPECT_THAT(holders(Resources::Audio), IsEmpty());
}

TEST_F(ResourceRequestTest, KeepsResourcesApart)
{
    ASSERT_TRUE(acquire(Resources::Processor, "alarm").succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    ASSERT_TRUE(release(Resources::Audio, "alarm").succeeds());
    EXPECT_THAT(holders(Resources::Processor), ElementsAre("alarm"));
    EXPECT_EQ(state().resources().size(), 1);
}

TEST_F(ResourceRequestTest, RefusesAModuleThatIsNotRegistered)
{
    const Request request = acquire(Resources::Audio, "stranger");
    EXPECT_EQ(request.errorText(), "The module is not registered");
    EXPECT_EQ(request.error().name(), "PowerManager");
    EXPECT_THAT(holders(Resources::Audio), IsEmpty());
}

TEST_F(ResourceRequestTest, RefusesAnEmptyName)
{
    EXPECT_EQ(acquire(Resources::Audio, QString()).errorText(), "The request names no module");
}

TEST_F(ResourceRequestTest, RefusesAnUnknownResource)
{
    EXPECT_EQ(acquire(Resources::Enum(17), "alarm").errorText(), "There is no such resource");
}

TEST_F(ResourceRequestTest, DoesNotTakeAMissingResourceForTheFirst)
{
    const auto request =
        TavoPowerManagerResourceRequest().setModuleName("alarm").setAction(Actions::Acquire);
    EXPECT_EQ(send(request).errorText(), "There is no such resource");
    EXPECT_THAT(holders(Resources::Processor), IsEmpty());
}

TEST_F(ResourceRequestTest, DoesNotTakeAStringForTheFirstResource)
{
    QVariantHash fields = resourceRequest(Actions::Acquire, Resources::Audio, "alarm").fields();
    fields.insert("resource", "Audio");
    EXPECT_EQ(send(fields).errorText(), "There is no such resource");
}

TEST_F(ResourceRequestTest, DoesNotTakeAFractionForTheFirstResource)
{
    QVariantHash fields = resourceRequest(Actions::Acquire, Resources::Audio, "alarm").fields();
    fields.insert("resource", 2.5);
    EXPECT_EQ(send(fields).errorText(), "There is no such resource");
}

TEST_F(ResourceRequestTest, RefusesAnUnknownAction)
{
    EXPECT_EQ(send(resourceRequest(Actions::Enum(17), Resources::Audio, "alarm")).errorText(),
              "The action must be to acquire (1) or release (2)");
}

TEST_F(ResourceRequestTest, RefusesAValueThatIsNotARecord)
{
    EXPECT_FALSE(Request(TavoPowerManagerResourceRequestPath(), QVariant(1)).succeeds());
}

TEST_F(ResourceRequestTest, AnswersAReleaseOfAResourceThatIsNotHeld)
{
    EXPECT_TRUE(release(Resources::Audio, "alarm").succeeds());
}

TEST_F(ResourceRequestTest, KeepsTheGrantsOfOthersWhenAModuleReleasesAResourceThatItDoesNotHold)
{
    const Module alarm = makeModule("alarm");
    const Module radio = makeModule("radio");
    ASSERT_TRUE(acquire(Resources::Display, "radio").succeeds());
    EXPECT_TRUE(release(Resources::Display, "alarm").succeeds());
    EXPECT_THAT(holders(Resources::Display), ElementsAre("radio"));
}

TEST_F(ResourceRequestTest, AnswersAReleaseByAnUnregisteredModule)
{
    EXPECT_TRUE(release(Resources::Enum(17), "stranger").succeeds());
}

TEST_F(ResourceRequestTest, PublishesTheStateBeforeItAnswers)
{
    std::vector<QString> seen;
    const auto request = resourceRequest(Actions::Acquire, Resources::Audio, "alarm");
    const CMReply<QVariant> reply =
        CMRoot()->invoke(TavoPowerManagerResourceRequestPath(), request, CMReply<QVariant>());
    reply.addWatcher(
        m_alarm.get(), [&](const CMVoidReply &) { seen = holders(Resources::Audio); },
        Qt::DirectConnection);
    ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }));
    EXPECT_THAT(seen, ElementsAre("alarm"));
}
} // namespace
