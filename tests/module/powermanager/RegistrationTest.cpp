// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/powermanager/PowerManagerTest.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

class RegistrationTest : public PowerManagerTest
{
};

TEST_F(RegistrationTest, StartsAwakeWithoutModulesOrHolders)
{
    EXPECT_FALSE(state().standby());
    EXPECT_THAT(elementsOf(state().modules()), IsEmpty());
    EXPECT_THAT(elementsOf(state().resources()), IsEmpty());
}

TEST_F(RegistrationTest, ShowsTheRegisteredModulesSorted)
{
    const Module radio = makeModule("radio");
    const Module alarm = makeModule("alarm");
    EXPECT_THAT(elementsOf(state().modules()), ElementsAre("alarm", "radio"));
}

TEST_F(RegistrationTest, ReplacesTheRegistrationOfAModuleThatRegistersAgain)
{
    const Module alarm = makeModule("alarm");
    const Module other = makeModule("other");
    ASSERT_TRUE(registerModule(other->registration().setModuleName("alarm")).succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    ASSERT_TRUE(standby().succeeds());
    settle();
    EXPECT_THAT(journal(), ElementsAre("other revoked 2", "other notice 2"));
}

TEST_F(RegistrationTest, ReleasesTheResourcesOfAModuleThatRegistersAgain)
{
    const Module alarm = makeModule("alarm");
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    ASSERT_TRUE(registerModule(alarm->registration()).succeeds());
    EXPECT_THAT(holders(Resources::Audio), IsEmpty());
}

TEST_F(RegistrationTest, ForgetsAModuleThatIsGoneAndReleasesItsResources)
{
    Module alarm = makeModule("alarm");
    const Module radio = makeModule("radio");
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    alarm.reset();
    EXPECT_TRUE(waitFor([] { return holders(Resources::Audio).empty(); }));
    EXPECT_THAT(elementsOf(state().modules()), ElementsAre("radio"));
}

TEST_F(RegistrationTest, LetsAModuleRegisterBeforeItPublishesItsPaths)
{
    const CMPath revoke("/test/alarm/revoke");
    ASSERT_TRUE(
        registerModule(
            TavoPowerManagerModuleRegister().setModuleName("alarm").setRevokeResourcesPath(revoke))
            .succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    CMNodesWorker late({}, "Late");
    CMValueNode::create(late.nodes(), revoke);
    settle();
    EXPECT_THAT(holders(Resources::Audio), ElementsAre("alarm"));
}

TEST_F(RegistrationTest, AcceptsAModuleThatHasComeBack)
{
    makeModule("alarm").reset();
    const Module alarm = makeModule("alarm");
    settle();
    EXPECT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
}

TEST_F(RegistrationTest, AllowsARegistrationWithoutAPostRevokePath)
{
    const Module alarm = makeModule("alarm");
    ASSERT_TRUE(
        registerModule(alarm->registration().setPostRevokeResourcesPath(CMPath())).succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    ASSERT_TRUE(standby().succeeds());
    settle();
    EXPECT_THAT(journal(), ElementsAre("alarm revoked 2"));
}

TEST_F(RegistrationTest, RefusesARegistrationWithoutAName)
{
    const Request request = registerModule(
        TavoPowerManagerModuleRegister().setRevokeResourcesPath(CMPath("/test/revoke")));
    EXPECT_EQ(request.errorText(), "A registration needs a moduleName and a revokeResourcesPath");
    EXPECT_EQ(request.error().name(), "PowerManager");
    EXPECT_THAT(elementsOf(state().modules()), IsEmpty());
}

TEST_F(RegistrationTest, RefusesARegistrationWithoutARevokePath)
{
    EXPECT_FALSE(
        registerModule(TavoPowerManagerModuleRegister().setModuleName("alarm")).succeeds());
}

TEST_F(RegistrationTest, RefusesAValueThatIsNotARecord)
{
    EXPECT_FALSE(Request(TavoPowerManagerModuleRegisterPath(), QVariant("alarm")).succeeds());
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 1);
}
} // namespace
