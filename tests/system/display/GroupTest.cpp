// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"

namespace {
/// Three messages of a program, which are shown as one.
class DisplayGroupTest : public DisplayTest
{
protected:
    void SetUp() override
    {
        startAttention(R"({"groupFrom": 3})");
        m_display.start({});
        for (const char *title : {"1", "2", "3"}) {
            notify(title);
        }
        ASSERT_TRUE(waitForTitle("3 messages of mail"));
        ASSERT_TRUE(waitForHeight([](int height) { return height > s_minGroupHeight; }));
    }

    /// Waits until a message with this title is on display.
    bool waitForTitle(const QString &title)
    {
        return waitFor([&] {
            const auto current = m_client.getValue(TavoNotificationDisplayCurrentPath());
            EXPECT_TRUE(waitFor([&] { return current.isFinished(); }));
            const CMPath path = TavoValue(current.value().toHash()).displayCurrent().path();
            const auto message = m_client.preview(path, 0, 0);
            EXPECT_TRUE(waitFor([&] { return message.isFinished(); }));
            return message.value().title == title;
        });
    }

    template <typename Condition>
    bool waitForHeight(Condition condition)
    {
        return m_server.waitForWindows([&](const QVector<QRect> &windows) {
            return windows.size() == 1 && condition(windows[0].height());
        });
    }

    /// Opens the oldest message, which is listed last, and closes it.
    void readOldest(const QString &title)
    {
        waitUntilArmed();
        m_server.click(waitForWindow().bottomLeft() + QPoint(60, -36));
        ASSERT_TRUE(waitForTitle(title));
        ASSERT_TRUE(waitForHeight([](int height) { return height < s_minGroupHeight; }));
        close();
    }

    void close()
    {
        waitUntilArmed();
        m_server.click(s_closeButton);
    }

    /// Of two lines with a finger's height, below the title.
    static constexpr int s_minGroupHeight = 160;
};

TEST_F(DisplayGroupTest, opensEachMessageToReadAndShowsTheLastOneByItself)
{
    readOldest("1");
    ASSERT_TRUE(waitForTitle("2 messages of mail"));
    ASSERT_TRUE(waitForHeight([](int height) { return height > s_minGroupHeight; }));
    readOldest("2");
    ASSERT_TRUE(waitForTitle("3"));
    close();
    EXPECT_TRUE(waitForNoWindow());
}

TEST_F(DisplayGroupTest, closesAllMessagesWithOneTouch)
{
    close();
    EXPECT_TRUE(waitForNoWindow());
    EXPECT_EQ(missed(), 0);
}
} // namespace
