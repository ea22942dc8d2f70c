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

TEST_F(RegistrationTest, RefusesTheNameOfAModuleThatIsThere)
{
    const Module alarm = makeModule("alarm");
    const Module other = makeModule("other");
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    const Request takeover = registerModule(other->registration().setModuleName("alarm"));
    EXPECT_EQ(takeover.errorText(), "The name or the revoke path belongs to another module");
    const Request newPost =
        registerModule(alarm->registration().setPostRevokeResourcesPath(other->postRevokePath()));
    EXPECT_FALSE(newPost.succeeds());
    EXPECT_THAT(holders(Resources::Audio), ElementsAre("alarm"));
    ASSERT_TRUE(standby().succeeds());
    settle();
    EXPECT_THAT(journal(), ElementsAre("alarm revoked 2", "alarm notice 2"));
}

TEST_F(RegistrationTest, RefusesTheRevokePathOfAnotherModule)
{
    const Module alarm = makeModule("alarm");
    const Request request = registerModule(alarm->registration().setModuleName("other"));
    EXPECT_EQ(request.errorText(), "The name or the revoke path belongs to another module");
    EXPECT_THAT(elementsOf(state().modules()), ElementsAre("alarm"));
}

TEST_F(RegistrationTest, ReplacesARegistrationWhoseModuleWasNeverThere)
{
    ASSERT_TRUE(registerModule(
                    TavoPowerManagerModuleRegister().setModuleName("alarm").setRevokeResourcesPath(
                        CMPath("/test/nothing")))
                    .succeeds());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    const Module alarm = makeModule("alarm");
    EXPECT_THAT(holders(Resources::Audio), IsEmpty());
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    ASSERT_TRUE(standby().succeeds());
    settle();
    EXPECT_THAT(journal(), ElementsAre("alarm revoked 2", "alarm notice 2"));
}

TEST_F(RegistrationTest, ChangesNothingWhenAModuleRegistersTheSameAgain)
{
    const Module alarm = makeModule("alarm");
    ASSERT_TRUE(acquire(Resources::Audio, "alarm").succeeds());
    ASSERT_TRUE(registerModule(alarm->registration()).succeeds());
    EXPECT_THAT(holders(Resources::Audio), ElementsAre("alarm"));
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
    const Module alarm = makeUnregistered("alarm");
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

TEST_F(RegistrationTest, RefusesTooLongNamesAndPaths)
{
    const Module alarm = makeModule("alarm");
    const QString longest(256, 'x');
    const CMPath longestPath(QString(255, 'x'));
    const auto registration = [](const QString &name, const CMPath &revoke, const CMPath &post) {
        return TavoPowerManagerModuleRegister()
            .setModuleName(name)
            .setRevokeResourcesPath(revoke)
            .setPostRevokeResourcesPath(post);
    };
    EXPECT_TRUE(registerModule(registration(longest, longestPath, longestPath)).succeeds());
    const CMPath tooLong = longestPath + "x";
    for (const auto &refused : {registration(longest + "x", longestPath, longestPath),
                                registration("radio", tooLong, longestPath),
                                registration("radio", longestPath, tooLong)}) {
        EXPECT_EQ(registerModule(refused).errorText(),
                  "The name or a path of the module is too long");
    }
    EXPECT_THAT(elementsOf(state().modules()), ElementsAre("alarm", longest));
}

TEST_F(RegistrationTest, RefusesTooManyModules)
{
    const auto registerNumber = [](int number) {
        const QString name = QString::number(number);
        return registerModule(
            TavoPowerManagerModuleRegister().setModuleName(name).setRevokeResourcesPath(
                CMPath("/test") + name));
    };
    for (int i = 0; i < 256; ++i) {
        ASSERT_TRUE(registerNumber(i).succeeds());
    }
    EXPECT_EQ(registerNumber(256).errorText(), "There are too many modules");
    EXPECT_TRUE(registerNumber(0).succeeds());
    EXPECT_EQ(state().modules().size(), 256);
}

TEST_F(RegistrationTest, StoresNothingElseThatARecordHolds)
{
    const Module alarm = makeModule("alarm");
    QVariantHash fields =
        alarm->registration().setModuleName("other").setRevokeResourcesPath(CMPath("/x")).fields();
    QByteArray extra(1 << 20, 'x');
    fields.insert("extra", extra);
    ASSERT_TRUE(registerModule(fields).succeeds());
    fields.clear();
    EXPECT_TRUE(waitFor([&extra] { return extra.isDetached(); })) << "somebody shares the bytes";
}
} // namespace
