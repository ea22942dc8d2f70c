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

TEST_F(DisplayWaylandTest, keepsTheKeyboardWhereItIs)
{
    // The compositor's name of what has the keyboard; 0 while a message has it.
    const auto focus = [this] {
        control({"-t", "get_seats", "--raw"});
        return QJsonDocument::fromJson(QByteArray::fromStdString(m_control.output()))[0]["focus"]
            .toInt();
    };
    ASSERT_NE(focus(), 0);
    start();
    show("Door");
    ASSERT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
    EXPECT_NE(focus(), 0);
    show("Alarm", Priority::Urgent);
    ASSERT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Urgent)));
    EXPECT_NE(focus(), 0);
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
TEST_F(DisplayWaylandTest, followsTheScaleOfTheScreen)
{
    start();
    show("Door");
    ASSERT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
    control({"output HEADLESS-1 scale 2"});
    // Everything is twice as large, in pixels.
    const Palette palette = Palette::find("dark", Priority::Normal);
    const int left = s_screenWidth - 2 * (s_margin + s_width) + 4;
    EXPECT_TRUE(waitForPixel({left, 2 * s_insideOfCorner.y()}, palette.accent));
    EXPECT_EQ(picture().pixelColor(s_screenWidth - 2 * s_margin - 16, 2 * s_insideOfCorner.y()),
              palette.background);
}

TEST_F(DisplayWaylandTest, followsTheScreenWhenItIsTurned)
{
    start();
    show("Door");
    ASSERT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
    control({"output HEADLESS-1 transform 90"});
    constexpr int width = 720; // The sides of the screen have changed places.
    EXPECT_TRUE(
        waitForPixel({width - s_margin - 8, s_insideOfCorner.y()}, background(Priority::Normal)));
}

TEST_F(DisplayWaylandTest, goesToItsScreenWhenThatIsPluggedIn)
{
    writeConfiguration({{"screen", "HEADLESS-2"}});
    start();
    show("Door");
    ASSERT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
    control({"create_output"});
    const QPoint onTheNewOne(1920 - s_margin - 8, s_insideOfCorner.y()); // It is wider.
    ASSERT_TRUE(waitForPixel(onTheNewOne, background(Priority::Normal), "HEADLESS-2"));
    EXPECT_NE(picture().pixelColor(s_insideOfCorner), background(Priority::Normal));
}

TEST_F(DisplayWaylandTest, showsTheHistoryBesideTheMark)
{
    startAttention();
    setDoNotDisturb(true);
    miss(1);
    m_display.start({});
    const QPoint insideOfMark(s_screenWidth - s_margin - 4, 720 - s_margin - 8);
    EXPECT_TRUE(waitForPixel(insideOfMark, background(Priority::Normal)));
    const QPoint insideOfHistory(s_screenWidth / 2, 720 / 10 + 10);
    const QColor empty = picture().pixelColor(insideOfHistory);
    Program other(TAVO_DISPLAY_PROGRAM);
    prepare(other);
    other.setEnvironment("DISPLAY", "");
    other.setEnvironment("WAYLAND_DISPLAY", sockets().first());
    EXPECT_EQ(other.run({"--history"}), 0) << other.error();
    EXPECT_TRUE(waitForPixel(insideOfHistory, background(Priority::Normal)));
    m_host.reset();
    EXPECT_TRUE(waitForPixel(insideOfHistory, empty));
}

TEST_F(DisplayWaylandTest, endsWithTheCompositorAndCanBeStartedWithTheNextOne)
{
    start();
    show("Door");
    ASSERT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
    m_compositor->kill();
    EXPECT_NE(m_display.waitForExit(), 0);
    SetUp();
    m_display.start({});
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
}

/// A compositor that shows one window on the whole screen, and has no layers.
class DisplayKioskTest : public DisplayWaylandTest
{
protected:
    // On a screen that is not turned, it hands the window's own buffer to the screen, which no screenshot sees.
    void SetUp() override { startCompositor({"cage", "-r", "--", "sleep", "1000"}); }
};

TEST_F(DisplayKioskTest, coversTheScreen)
{
    start();
    show("Door");
    const Palette normal = Palette::find("dark", Priority::Normal);
    ASSERT_TRUE(waitForPixel({5, 5}, normal.backdrop));
    EXPECT_TRUE(waitForPixel({360 + 100, s_screenWidth / 2 - 20}, normal.background));
}
} // namespace
