// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"

namespace {
// As X11 numbers them.
constexpr quint32 keyTab = 0xff09;
constexpr quint32 keyReturn = 0xff0d;
constexpr quint32 keyUp = 0xff52;
constexpr quint32 keyDown = 0xff54;
constexpr quint32 keyControl = 0xffe3;
constexpr quint32 keyAlt = 0xffe9;
constexpr quint32 keyN = 'n';

class DisplayPersonTest : public DisplayTest
{
protected:
    /// Shows a message and notes whether it is closed.
    void showWatched()
    {
        start();
        tavoConnect(&m_messages, &TavoMessages::closed, &m_context, [this] { m_isClosed = true; });
        show("Door");
        ASSERT_TRUE(waitForLook(Priority::Normal));
    }

    /// Shows a question with the buttons Open and Wait; the notifier prints the answer.
    void ask(const QString &urgency = QStringLiteral("critical"))
    {
        m_notifier.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
        m_notifier.start(
            {"-u", urgency, "-A", "open=Open", "-A", "wait=Wait", "Doorbell", "Somebody"});
        ASSERT_TRUE(waitForLook(urgency == "critical" ? Priority::Urgent : Priority::Normal));
        waitUntilArmed();
    }

    /// Starts with a key that gives a message the keyboard, and with an editor that has it.
    void startWithEditor()
    {
        writeConfiguration({{"focusKey", "Ctrl+Alt+N"}, {"reducedMotion", true}});
        start();
        m_editor = m_server.openOtherWindow({0, 600, 200, 100});
    }

    void giveTheMessageTheKeyboard()
    {
        m_server.press({keyControl, keyAlt, keyN});
        ASSERT_TRUE(waitFor([&] { return m_server.focusedWindow() != m_editor; }));
    }

    const QObject m_context;
    bool m_isClosed = false;
    Program m_notifier{"notify-send"};
    quint32 m_editor = 0;
};

TEST_F(DisplayPersonTest, closesAMessageWithAClick)
{
    qRegisterMetaType<TavoMessages::End>("TavoMessages::End");
    start();
    const QSignalSpy closed(&m_messages, &TavoMessages::closed);
    const uint id = show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    waitUntilArmed();
    m_server.click(s_closeButton);
    ASSERT_TRUE(waitFor([&] { return !closed.isEmpty(); }));
    EXPECT_EQ(closed[0][0].toUInt(), id);
    EXPECT_EQ(closed[0][1].value<TavoMessages::End>(), TavoMessages::End::Dismissed);
    EXPECT_TRUE(waitForNoWindow());
}

TEST_F(DisplayPersonTest, pressesNothingThatHasJustCome)
{
    showWatched();
    m_server.click(s_closeButton);
    waitUntilArmed();
    EXPECT_FALSE(m_isClosed);
    EXPECT_EQ(m_server.windows().size(), 1);
}

TEST_F(DisplayPersonTest, aPointerOnAMessageDoesNotCloseIt)
{
    showWatched();
    waitUntilArmed();
    m_server.movePointer(s_closeButton);
    m_server.click(s_insideOfCorner);
    waitUntilArmed();
    EXPECT_FALSE(m_isClosed);
}

TEST_F(DisplayPersonTest, pressesTheButtonOfAnAction)
{
    start();
    ask();
    // The first button, below the text.
    const QRect place = waitForWindow();
    m_server.click(place.bottomLeft() + QPoint(40, -36));
    EXPECT_EQ(m_notifier.waitForExit(), 0);
    EXPECT_EQ(m_notifier.output(), "open\n");
    EXPECT_TRUE(waitForNoWindow());
}

TEST_F(DisplayPersonTest, keepsTheKeyboardWhereItIs)
{
    start();
    const quint32 editor = m_server.openOtherWindow({0, 600, 200, 100});
    ASSERT_EQ(m_server.focusedWindow(), editor);
    show("Alarm", Priority::Urgent);
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    EXPECT_EQ(m_server.focusedWindow(), editor);
    m_server.click(s_insideOfCorner);
    m_server.press({keyTab});
    waitUntilArmed();
    EXPECT_EQ(m_server.focusedWindow(), editor);
}

TEST_F(DisplayPersonTest, closesAMessageWithTheKeyboardOnly)
{
    startWithEditor();
    show("Alarm", Priority::Urgent);
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    waitUntilArmed();
    giveTheMessageTheKeyboard();
    m_server.press({keyEscape});
    const auto isEditor = [](const QVector<QRect> &windows) { return windows.size() == 1; };
    EXPECT_TRUE(m_server.waitForWindows(isEditor));
    EXPECT_TRUE(waitFor([&] { return m_server.focusedWindow() == m_editor; }));
}

TEST_F(DisplayPersonTest, framesTheMessageThatHasTheKeyboard)
{
    startWithEditor();
    show("Alarm", Priority::Urgent);
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    const QColor frame = Palette::find("dark", Priority::Urgent).focus;
    const QPoint edge(s_insideOfCorner.x(), s_margin + 1);
    EXPECT_NE(m_server.picture().pixelColor(edge), frame);
    giveTheMessageTheKeyboard();
    EXPECT_TRUE(m_server.waitForPicture(
        [&](const QImage &picture) { return picture.pixelColor(edge) == frame; }));
}

TEST_F(DisplayPersonTest, closesTheMessageThatTakesThePlaceOfAFocusedButton)
{
    startWithEditor();
    ask("normal");
    giveTheMessageTheKeyboard();
    m_server.press({keyTab});
    m_server.press({keyTab}); // Open
    qRegisterMetaType<TavoMessages::End>("TavoMessages::End");
    const QSignalSpy closed(&m_messages, &TavoMessages::closed);
    const uint alarm = show("Alarm", Priority::Urgent);
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    waitUntilArmed();
    m_server.press({keyEscape});
    ASSERT_TRUE(waitFor([&] { return !closed.isEmpty(); }));
    EXPECT_EQ(closed[0][0].toUInt(), alarm);
}

TEST_F(DisplayPersonTest, scrollsALongTextWithTheKeyboard)
{
    startWithEditor();
    QString text;
    for (int line = 0; line < 200; ++line) {
        text += QStringLiteral("Line %1\n").arg(line);
    }
    show("Door", Priority::Urgent, 0, text);
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    giveTheMessageTheKeyboard();
    // Not the frame, which tells later that the message has the keyboard.
    const QRect numbers(s_leftOfCorner + 20, 150, 200, 150);
    const QImage before = m_server.picture().copy(numbers);
    m_server.press({keyDown});
    EXPECT_TRUE(m_server.waitForPicture(
        [&](const QImage &picture) { return picture.copy(numbers) != before; }));
    m_server.press({keyUp});
    EXPECT_TRUE(m_server.waitForPicture(
        [&](const QImage &picture) { return picture.copy(numbers) == before; }));
}

TEST_F(DisplayPersonTest, reachesTheLastOfManyButtonsOnASmallScreen)
{
    writeConfiguration({{"focusKey", "Ctrl+Alt+N"}, {"textSize", 80}});
    start();
    QStringList arguments{"-u", "critical"};
    for (const char *name : {"Alpha", "Beta", "Gamma", "Delta", "Last"}) {
        arguments << "-A" << QStringLiteral("%1=%1").arg(name);
    }
    m_notifier.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    m_notifier.start(arguments << "Menu");
    waitForWindow();
    waitUntilArmed();
    const QRect place = waitForWindow();
    EXPECT_LE(place.bottom(), 800 - s_margin);
    m_editor = m_server.openOtherWindow({0, 600, 200, 100});
    giveTheMessageTheKeyboard();
    for (int i = 0; i < 6; ++i) { // Close, then the five
        m_server.press({keyTab});
    }
    // The last button is on the screen: the lower part of the card is its own.
    m_server.click(place.bottomLeft() + QPoint(200, -100));
    EXPECT_EQ(m_notifier.waitForExit(), 0);
    EXPECT_EQ(m_notifier.output(), "Last\n");
}

TEST_F(DisplayPersonTest, pressesAButtonAndClosesTheNextMessageWithTheKeyboardOnly)
{
    startWithEditor();
    show("Parcel");
    ask();
    giveTheMessageTheKeyboard();
    // Close, Open, Wait
    m_server.press({keyTab});
    m_server.press({keyTab});
    m_server.press({keyTab});
    m_server.press({keyReturn});
    EXPECT_EQ(m_notifier.waitForExit(), 0);
    EXPECT_EQ(m_notifier.output(), "wait\n");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    waitUntilArmed();
    m_server.press({keyEscape});
    EXPECT_TRUE(m_server.waitForWindows(
        [](const auto &windows) { return windows.size() == 1; })); // the editor
}
} // namespace
