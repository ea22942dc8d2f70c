// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"
#include "ScriptedHost.h"

namespace {
class DisplayHostTest : public DisplayTest
{
};

TEST_F(DisplayHostTest, waitsForAHostThatComesLate)
{
    m_display.start({});
    startHost();
    show("Door");
    EXPECT_TRUE(waitForLook(Priority::Normal));
}

TEST_F(DisplayHostTest, showsWhatIsOnDisplayWhenItStarts)
{
    startHost();
    show("Door");
    m_display.start({});
    EXPECT_TRUE(waitForLook(Priority::Normal));
}

TEST_F(DisplayHostTest, hidesTheMessageOfAHostThatIsKilledAndFollowsTheNextOne)
{
    start();
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    m_host->sendSignal(SIGKILL);
    EXPECT_TRUE(waitForNoWindow());
    startHost();
    show("Alarm", Priority::Urgent);
    EXPECT_TRUE(waitForLook(Priority::Urgent));
}

TEST_F(DisplayHostTest, staysWithAHostThatHangs)
{
    start();
    const uint id = show("Door", Priority::Normal, 60000);
    ASSERT_TRUE(waitForLook(Priority::Normal));
    m_host->sendSignal(SIGSTOP);
    const QRect numbers(s_closeButton.x() - 120, s_margin, 90, 40);
    const QImage before = m_server.picture().copy(numbers);
    EXPECT_TRUE(m_server.waitForPicture(
        [&](const QImage &picture) { return picture.copy(numbers) != before; }));
    m_host->sendSignal(SIGCONT);
    m_messages.close(id);
    EXPECT_TRUE(waitForNoWindow());
}

TEST_F(DisplayHostTest, showsNoWindowForAMessageThatIsLate)
{
    ScriptedHost host(m_bus.address());
    m_display.start({});
    ASSERT_TRUE(waitFor([&] { return host.isRead(); }));
    waitUntilArmed(); // Longer than a window waits for its message.
    EXPECT_TRUE(waitForNoWindow());
    host.letRead();
    EXPECT_TRUE(waitForLook(Priority::Normal));
}

TEST_F(DisplayHostTest, readsAMessageAgainWhenItsChangesAreReported)
{
    ScriptedHost host(m_bus.address());
    m_display.start({});
    ASSERT_TRUE(waitFor([&] { return host.isRead(); }));
    EXPECT_FALSE(host.isFollowed()); // It is shown sooner so.
    host.letRead();
    ASSERT_TRUE(waitFor([&] { return host.isRead(); }));
    EXPECT_TRUE(host.isFollowed());
}

TEST_F(DisplayHostTest, showsAMessageWithoutAnyFont)
{
    QFile fonts(m_folder.filePath("fonts.conf"));
    ASSERT_TRUE(fonts.open(QIODevice::WriteOnly));
    fonts.write("<fontconfig><cachedir>" + m_folder.path().toUtf8() + "</cachedir></fontconfig>");
    fonts.close();
    m_display.setEnvironment("FONTCONFIG_FILE", fonts.fileName());
    start();
    show("Alarm", Priority::Urgent);
    EXPECT_TRUE(waitForLook(Priority::Urgent));
    waitUntilArmed();
    m_server.click(s_closeButton);
    EXPECT_TRUE(waitForNoWindow());
}

TEST_F(DisplayHostTest, survivesTheBus)
{
    start();
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    m_bus.stop();
    EXPECT_TRUE(waitForNoWindow());
    m_bus.start();
    const auto isServed = [this] {
        const CMReply<bool> reply = m_messages.isDesktopServer();
        return waitFor([&] { return reply.isFinished(); }) && reply.value();
    };
    ASSERT_TRUE(waitFor(isServed, std::chrono::seconds(20)));
    show("Alarm", Priority::Urgent);
    EXPECT_TRUE(waitForLook(Priority::Urgent));
}

TEST_F(DisplayHostTest, showsTheLastOfManyHeads)
{
    start();
    for (int i = 0; i < 300; ++i) {
        m_messages.close(show("Door", Priority::Normal));
    }
    show("Alarm", Priority::Urgent);
    EXPECT_TRUE(waitForLook(Priority::Urgent));
}

TEST_F(DisplayHostTest, aSecondInstanceSaysSoAndEnds)
{
    start();
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    Program second(TAVO_DISPLAY_PROGRAM);
    prepare(second);
    EXPECT_EQ(second.run({}), 75);
    EXPECT_THAT(second.error(),
                testing::StartsWith("tavo-display: another one shows the messages"));
    EXPECT_TRUE(m_display.isRunning());
}

TEST_F(DisplayHostTest, tellsWhetherAnotherOneRuns)
{
    Program other(TAVO_DISPLAY_PROGRAM);
    prepare(other);
    EXPECT_EQ(other.run({"--check"}), 0);
    EXPECT_EQ(other.output(), "built-in configuration: good\nnot running\n");
    start();
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    EXPECT_EQ(other.run({"--check"}), 0);
    EXPECT_EQ(other.output(), "built-in configuration: good\nrunning\n");
}

TEST_F(DisplayHostTest, endsBySignal)
{
    start();
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    m_display.sendSignal(SIGTERM);
    EXPECT_EQ(m_display.waitForExit(), 0);
    EXPECT_TRUE(waitForNoWindow());
}

TEST_F(DisplayHostTest, saysThatThereIsNoDisplay)
{
    m_display.setEnvironment("DISPLAY", ":65000");
    m_display.setEnvironment("QT_QPA_PLATFORM", "xcb");
    EXPECT_EQ(m_display.run({}), 69);
    EXPECT_THAT(m_display.error(), testing::HasSubstr("there is no display"));
}

TEST_F(DisplayHostTest, refusesAWrongConfigurationAtTheStart)
{
    writeConfiguration({{"mode", "middle"}});
    EXPECT_EQ(m_display.run({}), 78);
    EXPECT_EQ(m_display.error(), m_folder.filePath("tavo/display.json").toStdString() +
                                     ": mode: must be one of corner, banner, fullscreen\n");
}

TEST_F(DisplayHostTest, followsItsConfigurationAndKeepsTheLastGoodOne)
{
    writeConfiguration({{"width", 300}});
    start();
    show("Door");
    ASSERT_EQ(waitForWindow().width(), 300);
    const auto hasWidth = [this](int width) {
        return m_server.waitForWindows(
            [width](const QVector<QRect> &windows) { return windows.value(0).width() == width; });
    };
    writeConfiguration({{"width", 500}});
    EXPECT_TRUE(hasWidth(500));
    writeConfiguration({{"width", "wide"}});
    EXPECT_TRUE(waitFor([&] {
        return m_display.error().find("width: must be an integer from 200 to 10000; the "
                                      "configuration stays as it was") != std::string::npos;
    }));
    EXPECT_TRUE(hasWidth(500));
    writeConfiguration({{"width", 600}});
    EXPECT_TRUE(hasWidth(600));
}

class DisplayThemeTest : public DisplayTest
{
protected:
    void writeTheme(const QByteArray &qml)
    {
        QFile file(m_folder.filePath("Theme.qml"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(qml);
        file.close();
        writeConfiguration({{"theme", file.fileName()}});
    }

    void expectBuiltInLook(const std::string &reason)
    {
        start();
        show("Door");
        EXPECT_TRUE(waitForLook(Priority::Normal));
        EXPECT_THAT(m_display.error(), testing::HasSubstr(reason));
    }
};

TEST_F(DisplayThemeTest, drawsAThemeOfOnesOwn)
{
    writeTheme(
        "import QtQuick 2.15\n"
        "Rectangle { implicitHeight: 123; color: message.title === 'Door' ? '#00ff00' : 'red' }");
    start();
    show("Door");
    EXPECT_EQ(waitForWindow().height(), 123);
    EXPECT_TRUE(m_server.waitForPicture([](const QImage &picture) {
        return picture.pixelColor(s_insideOfCorner) == QColor(0, 255, 0);
    }));
}

TEST_F(DisplayThemeTest, aThemeThatCantBeReadStillShowsTheMessage)
{
    writeTheme("import QtQuick 2.15\nRectangle {");
    expectBuiltInLook("Theme.qml:2");
}

TEST_F(DisplayThemeTest, aThemeThatIsMissingStillShowsTheMessage)
{
    writeConfiguration({{"theme", "/nowhere/Theme.qml"}});
    expectBuiltInLook("/nowhere/Theme.qml");
}

TEST_F(DisplayThemeTest, aThemeThatShowsNothingStillShowsTheMessage)
{
    writeTheme("import QtQuick 2.15\nItem {}");
    expectBuiltInLook("must have an implicitHeight");
}
} // namespace
