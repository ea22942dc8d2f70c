// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"

namespace {
/// The server as used by a GLib program in its main loop.
class GlibClientTest : public DesktopTest
{
};

TEST_F(GlibClientTest, LearnsOfTheActionChangesTheTextAndLearnsOfTheEnd)
{
    ClientProgram program(bus(), GLIB_NOTIFIER, {"ask"_s});
    ASSERT_TRUE(program.writes("notified 1\n"_s));
    EXPECT_EQ(rowOf(1).title().toString(), "Coming?"_s);
    EXPECT_EQ(rowOf(1).category(), "im.received"_s);
    EXPECT_EQ(rowOf(1).desktopEntry(), "org.example.Mail"_s);
    ASSERT_EQ(rowCount(1), 3);

    CMRoot()->invoke(rowOf(1, 2).path(), QVariant(), {});
    ASSERT_TRUE(program.writes("ActionInvoked (uint32 1, 'no')\nreplaced 1\n"_s));
    EXPECT_EQ(rowOf(1).title().toString(), "Answered."_s);
    EXPECT_EQ(rowCount(1), 1);

    CMSubscribe::closeNode(pathOf(1));
    EXPECT_TRUE(program.succeeds());
    EXPECT_TRUE(program.output().endsWith(closedSignal(1, 2) + '\n'))
        << program.output().toStdString();
}

TEST_F(GlibClientTest, IsServedWithAnyImages)
{
    ClientProgram program(bus(), GLIB_NOTIFIER, {"false-images"_s});
    EXPECT_TRUE(program.succeeds());
    constexpr int images = 18;
    EXPECT_EQ(program.output(), "(uint32 1,)\n"_s.repeated(images));
    EXPECT_EQ(rowOf(1).title().toString(), "Picture"_s);
}

TEST_F(GlibClientTest, GetsErrorsByTheirNames)
{
    ClientProgram program(bus(), GLIB_NOTIFIER, {"close"_s});
    EXPECT_TRUE(program.succeeds());
    EXPECT_EQ(program.output(), "org.freedesktop.Notifications.InvalidId: No notification is open "
                                "with the id 17\n"_s);
}
} // namespace
