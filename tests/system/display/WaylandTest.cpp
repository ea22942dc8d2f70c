// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "WaylandDisplayTest.h"

namespace {
TEST_F(DisplayWaylandTest, showsAMessageInACorner)
{
    start();
    show("Door");
    const Palette palette = Palette::find("dark", Priority::Normal);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, palette.background));
    EXPECT_EQ(picture().pixelColor(s_leftOfCorner, s_insideOfCorner.y()), palette.accent);
    EXPECT_NE(picture().pixelColor(s_screenWidth - 4, 4), palette.background);
}

TEST_F(DisplayWaylandTest, anUrgentMessageComesInFrontAndTheOtherComesBack)
{
    start();
    show("Parcel", Priority::Normal);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
    const uint alarm = show("Alarm", Priority::Urgent);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Urgent)));
    m_messages.close(alarm);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
}

TEST_F(DisplayWaylandTest, isGoneWithTheMessage)
{
    const QColor empty = picture().pixelColor(s_insideOfCorner);
    start();
    const uint id = show("Door");
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
    m_messages.close(id);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, empty));
}

TEST_F(DisplayWaylandTest, obeysTheModesAndThePosition)
{
    writeConfiguration({{"mode", "banner"}, {"position", "bottom-end"}});
    start();
    show("Door");
    constexpr int bottom = 719; // of the compositor's only output
    EXPECT_TRUE(waitForPixel({s_screenWidth / 2, bottom - 8}, background(Priority::Normal)));
    writeConfiguration({{"mode", "fullscreen"}});
    EXPECT_TRUE(waitForPixel({5, 5}, Palette::find("dark", Priority::Normal).backdrop));
}
} // namespace
