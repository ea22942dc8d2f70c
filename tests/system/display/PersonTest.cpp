// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"

namespace {
// As X11 numbers them.
constexpr quint32 keyTab = 0xff09;
constexpr quint32 keyReturn = 0xff0d;
constexpr quint32 keyEscape = 0xff1b;
constexpr quint32 keyUp = 0xff52;
constexpr quint32 keyDown = 0xff54;
constexpr quint32 keyControl = 0xffe3;
constexpr quint32 keyAlt = 0xffe9;
constexpr quint32 keyN = 'n';

class DisplayPersonTest : public DisplayTest
{
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
    start();
    bool isClosed = false;
    const QObject context;
    tavoConnect(&m_messages, &TavoMessages::closed, &context, [&] { isClosed = true; });
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    m_server.click(s_closeButton);
    waitUntilArmed();
    EXPECT_FALSE(isClosed);
    EXPECT_EQ(m_server.windows().size(), 1);
}

TEST_F(DisplayPersonTest, aPointerOnAMessageDoesNotCloseIt)
{
    start();
    bool isClosed = false;
    const QObject context;
    tavoConnect(&m_messages, &TavoMessages::closed, &context, [&] { isClosed = true; });
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    waitUntilArmed();
    m_server.movePointer(s_closeButton);
    m_server.click(s_insideOfCorner);
    waitUntilArmed();
    EXPECT_FALSE(isClosed);
}

TEST_F(DisplayPersonTest, pressesTheButtonOfAnAction)
{
    start();
    Program notifier("notify-send");
    notifier.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    notifier.start(
        {"-u", "critical", "-A", "open=Open", "-A", "wait=Wait", "Doorbell", "Somebody"});
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    waitUntilArmed();
    // The first button, below the text.
    const QRect place = waitForWindow();
    m_server.click(place.bottomLeft() + QPoint(40, -36));
    EXPECT_EQ(notifier.waitForExit(), 0);
    EXPECT_EQ(notifier.output(), "open\n");
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
    writeConfiguration({{"focusKey", "Ctrl+Alt+N"}});
    start();
    const quint32 editor = m_server.openOtherWindow({0, 600, 200, 100});
    show("Alarm", Priority::Urgent);
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    waitUntilArmed();
    m_server.press({keyControl, keyAlt, keyN});
    ASSERT_TRUE(waitFor([&] { return m_server.focusedWindow() != editor; }));
    m_server.press({keyEscape});
    const auto isEditor = [](const QVector<QRect> &windows) { return windows.size() == 1; };
    EXPECT_TRUE(m_server.waitForWindows(isEditor));
    EXPECT_TRUE(waitFor([&] { return m_server.focusedWindow() == editor; }));
}

TEST_F(DisplayPersonTest, scrollsALongTextWithTheKeyboard)
{
    writeConfiguration({{"focusKey", "Ctrl+Alt+N"}, {"reducedMotion", true}});
    start();
    const quint32 editor = m_server.openOtherWindow({0, 600, 200, 100});
    QString text;
    for (int line = 0; line < 200; ++line) {
        text += QStringLiteral("Line %1\n").arg(line);
    }
    show("Door", Priority::Urgent, 0, text);
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    m_server.press({keyControl, keyAlt, keyN});
    ASSERT_TRUE(waitFor([&] { return m_server.focusedWindow() != editor; }));
    const QRect numbers(s_leftOfCorner + 20, 300, 200, 200);
    const QImage before = m_server.picture().copy(numbers);
    m_server.press({keyDown});
    EXPECT_TRUE(m_server.waitForPicture(
        [&](const QImage &picture) { return picture.copy(numbers) != before; }));
    m_server.press({keyUp});
    EXPECT_TRUE(m_server.waitForPicture(
        [&](const QImage &picture) { return picture.copy(numbers) == before; }));
}

TEST_F(DisplayPersonTest, pressesAButtonWithTheKeyboardOnly)
{
    writeConfiguration({{"focusKey", "Ctrl+Alt+N"}});
    start();
    const quint32 editor = m_server.openOtherWindow({0, 600, 200, 100});
    Program notifier("notify-send");
    notifier.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    notifier.start(
        {"-u", "critical", "-A", "open=Open", "-A", "wait=Wait", "Doorbell", "Somebody"});
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    waitUntilArmed();
    m_server.press({keyControl, keyAlt, keyN});
    ASSERT_TRUE(waitFor([&] { return m_server.focusedWindow() != editor; }));
    // Close, Open, Wait
    m_server.press({keyTab});
    m_server.press({keyTab});
    m_server.press({keyTab});
    m_server.press({keyReturn});
    EXPECT_EQ(notifier.waitForExit(), 0);
    EXPECT_EQ(notifier.output(), "wait\n");
}
} // namespace
