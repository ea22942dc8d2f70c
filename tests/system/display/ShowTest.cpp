// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"

#include <QHostAddress>
#include <QTcpServer>

namespace {
class DisplayShowTest : public DisplayTest
{
};

TEST_F(DisplayShowTest, hasAWindowOnlyWhileThereIsAMessage)
{
    start();
    const uint id = show("Door");
    const QRect place = waitForWindow();
    EXPECT_EQ(place.topRight(), QPoint(s_screenWidth - s_margin - 1, s_margin));
    EXPECT_EQ(place.width(), s_width);
    EXPECT_TRUE(waitForLook(Priority::Normal));
    m_messages.close(id);
    EXPECT_TRUE(waitForNoWindow());
}

TEST_F(DisplayShowTest, aMessageThatSaysTheSameAsTheLastOneIsDrawnToo)
{
    start();
    for (int i = 0; i < 3; ++i) {
        const uint id = show("Door");
        EXPECT_TRUE(waitForLook(Priority::Normal));
        m_messages.close(id);
        EXPECT_TRUE(waitForNoWindow());
    }
}

TEST_F(DisplayShowTest, comesInFrontOfWindowsThatAreOpenedBetweenMessages)
{
    start();
    const uint id = show("Door");
    EXPECT_TRUE(waitForLook(Priority::Normal));
    m_messages.close(id);
    EXPECT_TRUE(waitForNoWindow());
    m_server.openOtherWindow({0, 0, s_screenWidth, 800});
    show("Door");
    EXPECT_TRUE(waitForLook(Priority::Normal));
}

TEST_F(DisplayShowTest, aMessageThatExpiresGoes)
{
    start();
    show("Parcel", Priority::Normal);
    ASSERT_TRUE(waitForLook(Priority::Normal));
    show("Alarm", Priority::Urgent, 1500);
    EXPECT_TRUE(waitForLook(Priority::Urgent));
    EXPECT_TRUE(waitForLook(Priority::Normal));
}

TEST_F(DisplayShowTest, everyPriorityHasItsLook)
{
    start();
    for (const auto priority : {Priority::Low, Priority::Normal, Priority::Urgent}) {
        const uint id = show("Door", priority);
        EXPECT_TRUE(waitForLook(priority)) << priority;
        m_messages.close(id);
    }
}

TEST_F(DisplayShowTest, anUrgentMessageComesInFrontAndTheOtherComesBack)
{
    start();
    show("Parcel", Priority::Normal);
    EXPECT_TRUE(waitForLook(Priority::Normal));
    const uint alarm = show("Alarm", Priority::Urgent);
    EXPECT_TRUE(waitForLook(Priority::Urgent));
    m_messages.close(alarm);
    EXPECT_TRUE(waitForLook(Priority::Normal));
}

TEST_F(DisplayShowTest, drawsTheCountdown)
{
    start();
    show("Door", Priority::Normal, 60000);
    ASSERT_TRUE(waitForLook(Priority::Normal));
    const QRect numbers(s_closeButton.x() - 120, s_margin, 90, 40);
    QImage before;
    // The first pictures may come while the window is being drawn, so two changes are awaited.
    for (int i = 0; i < 2; ++i) {
        before = m_server.picture().copy(numbers);
        ASSERT_TRUE(m_server.waitForPicture(
            [&](const QImage &picture) { return picture.copy(numbers) != before; }));
    }
}

TEST_F(DisplayShowTest, takesTheModeFromTheCommandLine)
{
    start({"--mode", "banner"});
    show("Door");
    const QRect place = waitForWindow();
    EXPECT_EQ(place.topLeft(), QPoint(0, 0));
    EXPECT_EQ(place.width(), s_screenWidth);
    EXPECT_LT(place.height(), 300);
}

TEST_F(DisplayShowTest, coversTheScreenInTheModeFullscreen)
{
    start({"--mode", "fullscreen"});
    show("Door");
    EXPECT_EQ(waitForWindow(), QRect(0, 0, s_screenWidth, 800));
    const Palette palette = Palette::find("dark", Priority::Normal);
    EXPECT_TRUE(m_server.waitForPicture([&](const QImage &picture) {
        return picture.pixelColor(5, 5) == palette.backdrop &&
               picture.pixelColor(s_screenWidth / 2 + 200, 400) == palette.background;
    }));
}

TEST_F(DisplayShowTest, obeysThePosition)
{
    writeConfiguration({{"position", "bottom-start"}, {"margin", 5}, {"width", 300}});
    start();
    show("Door");
    const QRect place = waitForWindow();
    EXPECT_EQ(place.bottomLeft(), QPoint(5, 800 - 5 - 1));
    EXPECT_EQ(place.width(), 300);
}

TEST_F(DisplayShowTest, followsTheScreenWhenItsSizeChanges)
{
    writeConfiguration({{"position", "bottom-end"}});
    start();
    show("Door");
    const auto isInCornerOf = [this](const QSize &screen) {
        const QPoint corner(screen.width() - s_margin - 1, screen.height() - s_margin - 1);
        return m_server.waitForWindows([&](const QVector<QRect> &windows) {
            return windows.size() == 1 && windows[0].bottomRight() == corner;
        });
    };
    EXPECT_TRUE(isInCornerOf({s_screenWidth, 800}));
    const QString timings = "30 800 810 820 830 600 610 620 630";
    for (const QString &arguments :
         {"--newmode small " + timings, QString("--addmode screen small"),
          QString("--output screen --mode small")}) {
        Program xrandr("xrandr");
        prepare(xrandr);
        ASSERT_EQ(xrandr.run(arguments.split(' ')), 0) << xrandr.error();
    }
    EXPECT_TRUE(isInCornerOf({800, 600}));
}

TEST_F(DisplayShowTest, mirrorsTheLayoutOfALanguageThatIsWrittenFromRightToLeft)
{
    writeConfiguration({{"language", "ar"}});
    start();
    show(QString::fromUtf8("باب"));
    const QRect place = waitForWindow();
    EXPECT_EQ(place.topLeft(), QPoint(s_margin, s_margin));
    const Palette palette = Palette::find("dark", Priority::Normal);
    EXPECT_TRUE(m_server.waitForPicture([&](const QImage &picture) {
        return picture.pixelColor(place.right() - 2, 60) == palette.accent &&
               picture.pixelColor(place.left() + 2, 60) == palette.background;
    }));
}

TEST_F(DisplayShowTest, showsATextOfAnyLengthAndKind)
{
    start();
    for (const QString &text :
         {QString(1 << 16, QLatin1Char('a')), QString("line\n").repeated(10'000),
          QString("e") + QString(QChar(0x301)).repeated(60'000),
          QString::fromUtf8("\u202E\U0001F514\x07<img src='http://127.0.0.1:1/a.png'>")}) {
        const uint id = show("Door", Priority::Normal, 0, text);
        EXPECT_TRUE(waitForLook(Priority::Normal));
        EXPECT_LE(waitForWindow().height(), 320);
        m_messages.close(id);
        EXPECT_TRUE(waitForNoWindow());
    }
}

TEST_F(DisplayShowTest, fetchesNothing)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    const QString url = QStringLiteral("http://127.0.0.1:%1/a.png").arg(server.serverPort());
    QFile svg(m_folder.filePath("a.svg"));
    ASSERT_TRUE(svg.open(QIODevice::WriteOnly));
    svg.write("<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' "
              "width='9' height='9'><image width='9' height='9' xlink:href='" +
              url.toUtf8() + "'/></svg>");
    svg.close();
    start();
    for (const QString &picture : {url, svg.fileName()}) {
        Program notifier("notify-send");
        notifier.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
        ASSERT_EQ(notifier.run(
                      {"-u", "critical", "-i", picture, "-h", "string:image-path:" + picture,
                       "Door", "<b>a</b> <img src=\"" + url + "\"> <a href=\"" + url + "\">b</a>"}),
                  0);
        ASSERT_TRUE(waitForLook(Priority::Urgent));
        waitUntilArmed();
        EXPECT_FALSE(server.hasPendingConnections());
        m_server.click(s_closeButton);
        ASSERT_TRUE(waitForNoWindow());
    }
}

TEST_F(DisplayShowTest, theDemoEndsByItself)
{
    m_display.start({"--demo"});
    EXPECT_TRUE(waitForLook(Priority::Normal));
    while (m_display.isRunning()) {
        waitUntilArmed();
        m_server.click(s_closeButton);
    }
    EXPECT_EQ(m_display.waitForExit(), 0);
}
} // namespace
