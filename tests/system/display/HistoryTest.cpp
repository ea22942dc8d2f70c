// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/attention/HostAttention.h"
#include "DisplayTest.h"

namespace {
// As X11 numbers them.
constexpr quint32 keyEnd = 0xff57;

class DisplayHistoryTest : public DisplayTest
{
protected:
    void startQuiet(int missedCount)
    {
        startAttention();
        setDoNotDisturb(true);
        miss(missedCount);
        m_display.start({});
        m_mark = waitForWindow();
    }

    /// Waits until the history is in the middle of the screen, beside the mark.
    bool waitForHistory()
    {
        return m_server.waitForPicture([](const QImage &picture) {
            return picture.pixelColor(s_insideOfHistory) == background(Priority::Normal);
        });
    }

    bool waitForNoHistory()
    {
        return m_server.waitForPicture([](const QImage &picture) {
            return picture.pixelColor(s_insideOfHistory) == QColor(Qt::black);
        });
    }

    /// The titles of what nobody has seen.
    QStringList missedTitles()
    {
        const auto reply = m_client.call(
            TavoAttentionHistoryPath(),
            TavoValue().setAttentionQuery(TavoAttentionQuery().setMissed(true).setLimit(200)));
        EXPECT_TRUE(waitFor([&] { return reply.isFinished(); }));
        const auto records = TavoValue(reply.value().toHash()).attentionPage().records();
        QStringList titles;
        for (int i = 0; i < records.size(); ++i) {
            titles.append(records.at(i).title());
        }
        return titles;
    }

    static constexpr QPoint s_insideOfHistory{s_screenWidth / 2, 90};
    static constexpr QPoint s_closeOfHistory{s_screenWidth / 2 + 320 - 36, 80 + 36};

    QRect m_mark;
};

TEST_F(DisplayHistoryTest, marksThatPeopleDoNotWantToBeDisturbed)
{
    startAttention();
    m_display.start({});
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    setDoNotDisturb(true);
    QRect mark;
    ASSERT_TRUE(m_server.waitForWindows([&](const QVector<QRect> &windows) {
        mark = windows.value(1);
        return windows.size() == 2;
    }));
    // In the corner below that of the messages, and not smaller than a finger.
    EXPECT_EQ(mark.bottomRight(), QPoint(s_screenWidth - s_margin - 1, 800 - s_margin - 1));
    EXPECT_EQ(mark.size(), QSize(48, 48));
    const Palette palette = Palette::find("dark", Priority::Normal);
    EXPECT_TRUE(m_server.waitForPicture([&](const QImage &picture) {
        // The crescent is open at its upper right side.
        return picture.pixelColor(mark.center() - QPoint(9, 0)) == palette.text &&
               picture.pixelColor(mark.center() + QPoint(5, -3)) == palette.background;
    }));
    setDoNotDisturb(false);
    EXPECT_TRUE(m_server.waitForWindows([](const auto &windows) { return windows.size() == 1; }));
}

TEST_F(DisplayHistoryTest, hasNoMarkIfItIsConfiguredSo)
{
    writeConfiguration({{"mark", "never"}});
    startAttention();
    setDoNotDisturb(true);
    m_display.start({});
    ASSERT_TRUE(waitFor([&] { return openHistory() == 0; })); // It has read the state.
    ASSERT_TRUE(waitForHistory());
    EXPECT_EQ(m_server.windows().size(), 1);
}

TEST_F(DisplayHistoryTest, showsNothingWithoutAttention)
{
    start();
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    EXPECT_EQ(openHistory(), 69);
    EXPECT_EQ(m_server.windows().size(), 1);
}

TEST_F(DisplayHistoryTest, reportsAsSeenWhatWasShown)
{
    startQuiet(20);
    m_server.click(m_mark.center());
    ASSERT_TRUE(waitForHistory());
    EXPECT_TRUE(waitFor([&] { // What has just come may not have been seen.
        waitUntilArmed();
        m_server.click(s_closeOfHistory);
        const bool isGone = waitForNoHistory();
        const bool isSeen = isGone && missed() < 20;
        if (!isSeen) {
            m_server.click(m_mark.center());
            waitForHistory();
        }
        return isSeen;
    }));
    const QStringList titles = missedTitles();
    EXPECT_EQ(titles.last(), "1");       // below the end of the list
    EXPECT_FALSE(titles.contains("20")); // the newest one
    EXPECT_GT(titles.size(), 10);
}

TEST_F(DisplayHistoryTest, readsTheNextPageAtItsEnd)
{
    startQuiet(70);
    EXPECT_TRUE(waitFor([&] {
        EXPECT_EQ(openHistory(), 0);
        EXPECT_TRUE(waitForHistory());
        for (int page = 0; page < 3; ++page) {
            waitUntilArmed();
            m_server.press({keyEnd});
        }
        waitUntilArmed();
        m_server.press({keyEscape});
        EXPECT_TRUE(waitForNoHistory());
        return !missedTitles().contains("1");
    }));
    EXPECT_TRUE(missedTitles().contains("50")); // which was jumped over
}

TEST_F(DisplayHistoryTest, readsAShorterPageWhenALongOneDoesNotFitIntoAReply)
{
    startAttention("{}", {{"messageBytes", 65536}});
    setDoNotDisturb(true);
    miss(120);
    HostAttention attention(m_client);
    int read = 0;
    attention.readPage(TavoAttentionQuery().setLimit(200), [&](const auto &page) {
        const auto *found = std::get_if<TavoAttentionPage>(&page);
        read = found != nullptr ? found->records().size() : -1;
    });
    ASSERT_TRUE(waitFor([&] { return read != 0; }));
    EXPECT_EQ(read, 50);
}

TEST_F(DisplayHistoryTest, listsWhatComesWhileItIsOpen)
{
    startQuiet(1);
    ASSERT_EQ(openHistory(), 0);
    ASSERT_TRUE(waitForHistory());
    const QRect second(s_insideOfHistory.x() - 280, 310, 280, 50);
    const auto isEmpty = [second](const QImage &picture) {
        QImage empty = picture.copy(second);
        empty.fill(background(Priority::Normal));
        return picture.copy(second) == empty;
    };
    EXPECT_TRUE(m_server.waitForPicture(isEmpty));
    notify("2");
    EXPECT_TRUE(m_server.waitForPicture([&](const QImage &picture) { return !isEmpty(picture); }));
}

TEST_F(DisplayHistoryTest, goesWithTheHost)
{
    startQuiet(1);
    ASSERT_EQ(openHistory(), 0);
    ASSERT_TRUE(waitForHistory());
    m_host.reset();
    EXPECT_TRUE(waitForNoWindow());
}
} // namespace
