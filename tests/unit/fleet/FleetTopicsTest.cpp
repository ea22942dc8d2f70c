// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <fleet/protocol/FleetTopics.h>

TEST(FleetTopics, EveryTopicIsReadAsItWasMade)
{
    using Kind = FleetTopic::Kind;
    const auto expect = [](const QString &topic, Kind kind, const QString &name,
                           const QString &detail = {}) {
        const auto read = FleetTopic::parse(topic);
        ASSERT_TRUE(read) << topic.toStdString();
        EXPECT_EQ(read->kind, kind);
        EXPECT_EQ(read->name, name);
        EXPECT_EQ(read->detail, detail);
    };
    expect(FleetTopics::call("porch"), Kind::Call, "porch");
    expect(FleetTopics::groupCall("all"), Kind::GroupCall, "all");
    expect(FleetTopics::groupEnd("all"), Kind::GroupEnd, "all");
    expect(FleetTopics::answer("porch", "desk"), Kind::Answer, "porch", "desk");
    expect(FleetTopics::event("porch"), Kind::Event, "porch");
    expect(FleetTopics::online("porch"), Kind::Online, "porch");
    expect(FleetTopics::info("porch"), Kind::Info, "porch");
    expect(FleetTopics::state("porch", "display"), Kind::State, "porch", "display");
}

TEST(FleetTopics, OtherTopicsAreNotRead)
{
    for (const char *topic :
         {"", "tavo", "tavo/v1/", "tavo/v1/porch", "tavo/v1//call", "tavo/v1/porch/call/more",
          "tavo/v1/+/call", "tavo/v1/#", "tavo/v1/$SYS/call", "tavo/v1/group/all",
          "tavo/v1/group/call", "tavo/v1/group/all/answer", "tavo/v2/porch/call",
          "tavo/v1/p\u00f6rch/call", "/tavo/v1/porch/call", "tavo/v1/porch/answer",
          "tavo/v1/porch/state"}) {
        EXPECT_FALSE(FleetTopic::parse(QString::fromUtf8(topic))) << topic;
    }
}

TEST(FleetTopics, NamesAreShortAndPlain)
{
    EXPECT_TRUE(isFleetName("Door-1_a.b"));
    EXPECT_TRUE(isFleetName(QString(64, 'a')));
    for (const QString &name :
         {QString(), QString(65, 'a'), QString("a/b"), QString("a b"), QString("+")}) {
        EXPECT_FALSE(isFleetName(name)) << name.toStdString();
    }
    EXPECT_TRUE(isDeviceName("groups"));
    EXPECT_FALSE(isDeviceName("group"));
}
