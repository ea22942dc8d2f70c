// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ScreenReader.h"

#include "support/Sanitized.h"
#include "WaylandDisplayTest.h"

namespace {
/// A person who sees nothing.
template <typename Base>
class ScreenReaderTest : public Base
{
protected:
    void SetUp() override
    {
        if (!TAVO_HAS_ACCESSIBILITY) {
            GTEST_SKIP() << "tavo-display was built without Qt's private headers";
        }
        Base::SetUp();
        this->m_display.setEnvironment("DBUS_SESSION_BUS_ADDRESS", this->m_bus.address());
    }

    void TearDown() override
    {
        Base::TearDown();
        if (this->HasFailure()) {
            std::cout << "The reader said:\n" << m_reader.output() << std::endl;
        }
    }

    void startReader(const QStringList &arguments = {})
    {
        m_reader.start([this](Program &program) { this->prepare(program); }, this->m_bus.address(),
                       arguments);
    }

    ScreenReader m_reader;
};

using DisplayScreenReaderTest = ScreenReaderTest<DisplayTest>;
using DisplayWaylandScreenReaderTest = ScreenReaderTest<DisplayWaylandTest>;

TEST_F(DisplayScreenReaderTest, speaksAnUrgentMessageAndClosesIt)
{
    startReader({"Close"});
    start();
    show("Alarm", Priority::Urgent, 0, "The cellar is full of water");
    EXPECT_TRUE(
        m_reader.hears("notification: Alarm: Urgent. The cellar is full of water\nbutton Close\n"));
    EXPECT_TRUE(m_reader.hears("pressed\n"));
    EXPECT_TRUE(waitForNoWindow());
}

TEST_F(DisplayScreenReaderTest, speaksAllOfALongText)
{
    startReader();
    start();
    show("Letter", Priority::Normal, 0, QStringLiteral("word ").repeated(700) + "End");
    EXPECT_TRUE(m_reader.hears("word word End\nbutton Close\n"));
    EXPECT_THAT(m_reader.output(), testing::StartsWith("listening\nnotification: Letter: word "));
}

TEST_F(DisplayScreenReaderTest, speaksEachMessageOnceEvenIfItWasThereAtTheStart)
{
    startReader();
    startHost();
    show("Parcel", Priority::Normal, 0, "At the door");
    m_display.start({});
    EXPECT_TRUE(m_reader.hears("notification: Parcel: At the door\n"));
    show("Alarm", Priority::Urgent, 0, "The cellar");
    EXPECT_TRUE(m_reader.hears("notification: Alarm: Urgent. 1 more. The cellar\nbutton Close\n"));
    EXPECT_EQ(m_reader.output(), "listening\n"
                                 "notification: Parcel: At the door\nbutton Close\nended\n"
                                 "notification: Alarm: Urgent. 1 more. The cellar\nbutton Close\n");
}

TEST_F(DisplayScreenReaderTest, speaksToAReaderThatStartsLater)
{
    start();
    const uint id = show("Parcel");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    startReader();
    m_messages.close(id);
    // The program learns of a new reader only while a message is already on its way.
    EXPECT_TRUE(waitFor(
        [this] {
            const uint alarm = show("Alarm", Priority::Urgent, 0, "The cellar");
            EXPECT_TRUE(waitForLook(Priority::Urgent));
            m_messages.close(alarm);
            EXPECT_TRUE(waitForNoWindow());
            return m_reader.output().find("notification: Alarm: Urgent. The cellar\n") !=
                   std::string::npos;
        },
        std::chrono::seconds(20)));
}

TEST_F(DisplayScreenReaderTest, pressesTheButtonOfAnAction)
{
    startReader({"Open"});
    start();
    Program notifier("notify-send");
    notifier.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    notifier.start({"-u", "critical", "-A", "open=Open", "Doorbell", "Somebody"});
    EXPECT_EQ(notifier.waitForExit(), 0);
    EXPECT_EQ(notifier.output(), "open\n");
}

TEST_F(DisplayScreenReaderTest, speaksTheMessagesOfOtherLibraries)
{
    startReader();
    start();
    Program glib("gdbus");
    glib.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    EXPECT_EQ(
        glib.run({"call", "--session", "-d", "org.freedesktop.Notifications", "-o",
                  "/org/freedesktop/Notifications", "-m", "org.freedesktop.Notifications.Notify",
                  "glib", "0", "", "Parcel", "At the <b>door</b>", "[]", "{'value': <30>}", "0"}),
        0)
        << glib.error();
    EXPECT_TRUE(
        m_reader.hears("notification: Parcel: glib. At the door\nprogress bar: Progress 30 %\n"));
    Program python("/usr/bin/python3");
    python.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    EXPECT_EQ(
        python.run({"-c",
                    "import dbus\n"
                    "dbus.Interface(dbus.SessionBus().get_object("
                    "'org.freedesktop.Notifications', '/org/freedesktop/Notifications'), "
                    "'org.freedesktop.Notifications').Notify("
                    "'python', 0, '', 'Alarm', 'The cellar', [], {'urgency': dbus.Byte(2)}, 0)"}),
        0)
        << python.error();
    EXPECT_TRUE(m_reader.hears("notification: Alarm: Urgent. python. 1 more. The cellar\n"));
}

TEST_F(DisplayScreenReaderTest, findsTheMarkAndReadsTheHistoryThatItOpens)
{
    startReader({"Do not disturb. Missed: 1", "--look"});
    startAttention();
    setDoNotDisturb(true);
    miss(1);
    m_display.start({});
    EXPECT_TRUE(m_reader.hears("push button: Do not disturb. Missed: 1: \npressed\n"));
    EXPECT_TRUE(m_reader.hears("list item: 1: mail. "));
    EXPECT_TRUE(m_reader.hears(". missed, do not disturb. A text\n"));
    EXPECT_TRUE(m_reader.hears("dialog: History"));
    EXPECT_TRUE(m_reader.hears("radio button: All: \n"));
    EXPECT_TRUE(m_reader.hears("check box: Do not disturb: \n"));
    notify("Parcel");
    EXPECT_TRUE(m_reader.hears("list item: Parcel: mail. "));
}

TEST_F(DisplayScreenReaderTest, speaksAMessageThatIsReplaced)
{
    startReader();
    start();
    const uint id = show("Call", Priority::Normal, 0, "Ann rings");
    EXPECT_TRUE(m_reader.hears("notification: Call: Ann rings\nbutton Close\n"));
    Program notifier("notify-send");
    notifier.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    EXPECT_EQ(notifier.run(
                  {"-a", "", "-r", QString::number(id), "-t", "0", "Missed call", "Ann has rung"}),
              0);
    EXPECT_TRUE(m_reader.hears("notification: Missed call: Ann has rung\nbutton Close\n"));
}

TEST_F(DisplayScreenReaderTest, saysHowLongAMessageStays)
{
    startReader();
    start();
    constexpr int timeoutMs = 59 * 60'000 + 30'000;
    show("Parcel", Priority::Normal, timeoutMs, "At the door");
    EXPECT_TRUE(m_reader.hears("notification: Parcel: At the door. For 60 min\n"));
}

TEST_F(DisplayScreenReaderTest, tellsWhenAWindowComesAndGoes)
{
    startReader({"--showing", "frame"});
    start();
    const uint id = show("Parcel");
    EXPECT_TRUE(m_reader.hears("listening\nframe Tavo 1\n"));
    m_messages.close(id);
    EXPECT_TRUE(m_reader.hears("frame Tavo 1\nframe Tavo 0\n"));
    show("Parcel");
    EXPECT_TRUE(m_reader.hears("frame Tavo 0\nframe Tavo 1\n"));
}

TEST_F(DisplayScreenReaderTest, tellsWhenTheHistoryIsClosed)
{
    startReader({"--showing", "frame"});
    startAttention();
    m_display.start({});
    ASSERT_TRUE(waitFor([this] { return openHistory() == 0; }));
    EXPECT_TRUE(m_reader.hears("frame Tavo 1\n"));
    EXPECT_TRUE(waitFor([this] { // It gets the keyboard a moment after it has come.
        m_server.press({keyEscape});
        return m_reader.output().find("frame Tavo 0\n") != std::string::npos;
    }));
}

TEST_F(DisplayWaylandScreenReaderTest, speaksAnUrgentMessageAndClosesIt)
{
    startReader({"Close"});
    const QColor empty = picture().pixelColor(s_insideOfCorner);
    start();
    show("Alarm", Priority::Urgent, 0, "The cellar is full of water");
    EXPECT_TRUE(
        m_reader.hears("notification: Alarm: Urgent. The cellar is full of water\nbutton Close\n"));
    EXPECT_TRUE(m_reader.hears("pressed\n"));
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, empty));
    m_display.sendSignal(SIGTERM);
    const int exitCode = m_display.waitForExit();
    if (!sanitized) { // A leak of Qt's bridge is no concern here.
        EXPECT_EQ(exitCode, 0);
    }
}
} // namespace
