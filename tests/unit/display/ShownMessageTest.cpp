// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/ShownMessage.h"

#include "support/clock/VirtualClock.h"
#include "support/EventLoop.h"

#include <QElapsedTimer>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <functional>

namespace {
using namespace std::chrono_literals;

class ScriptedSource : public MessageSource
{
public:
    void start() override {}
    void close(const CMPath &path) override { m_closed.append(path.toString()); }
    void activate(const CMPath &action) override { m_activated.append(action.toString()); }

    QStringList m_closed;
    QStringList m_activated;
};

class DisplayShownMessageTest : public testing::Test
{
protected:
    static Head head(const QString &path, int remaining = 0, int waiting = 0)
    {
        QElapsedTimer now;
        now.start();
        Head head;
        head.path = CMPath(path);
        head.since = now.msecsSinceReference();
        head.remaining = remaining;
        head.waitingCount = waiting;
        return head;
    }

    static Message message(const QString &title)
    {
        Message message;
        message.title = title;
        message.actions = {{CMPath("/a/open"), "Open", {}}, {CMPath("/a/wait"), "Wait", {}}};
        message.defaultAction = CMPath("/a/default");
        return message;
    }

    VirtualClock m_clock;
    ScriptedSource m_source;
    ShownMessage m_shown{&m_source};
};

TEST_F(DisplayShownMessageTest, showsWhatTheSourceShows)
{
    const QSignalSpy shown(&m_shown, &ShownMessage::shown);
    Q_EMIT m_source.shown(head("/a", 0, 3), message("Door"));
    EXPECT_EQ(shown.size(), 1);
    EXPECT_TRUE(m_shown.isShown());
    EXPECT_EQ(m_shown.title(), "Door");
    EXPECT_EQ(m_shown.actionLabels(), QStringList({"Open", "Wait"}));
    EXPECT_EQ(m_shown.waitingCount(), 3);
    EXPECT_EQ(m_shown.seconds(), Countdown::none);
}

TEST_F(DisplayShownMessageTest, aMessageEndsBeforeTheNextOneTakesItsPlace)
{
    QStringList ended;
    QObject::connect(&m_shown, &ShownMessage::ended, [&] { ended.append(m_shown.title()); });
    Q_EMIT m_source.shown(head("/a"), message("Door"));
    EXPECT_TRUE(ended.isEmpty());
    Q_EMIT m_source.shown(head("/b"), message("Gate"));
    Q_EMIT m_source.emptied();
    EXPECT_EQ(ended, QStringList({"Door", "Gate"}));
}

TEST_F(DisplayShownMessageTest, aMessageIsCompleteWhenAllOfItIsThereAndAgainWhenItsTextsChange)
{
    const QSignalSpy completed(&m_shown, &ShownMessage::completed);
    Message cut = message("Door");
    cut.isWhole = false;
    Q_EMIT m_source.shown(head("/a"), cut);
    EXPECT_EQ(completed.size(), 0);
    Message door = message("Door");
    Q_EMIT m_source.messageChanged(door);
    EXPECT_EQ(completed.size(), 1);
    door.actions.clear();
    Q_EMIT m_source.messageChanged(door);
    EXPECT_EQ(completed.size(), 1);
    door.text = "Open";
    Q_EMIT m_source.messageChanged(door);
    EXPECT_EQ(completed.size(), 2);
    Q_EMIT m_source.shown(head("/b"), message("Gate"));
    EXPECT_EQ(completed.size(), 3);
}

TEST_F(DisplayShownMessageTest, aProgressDoesNotCompleteAMessageAgain)
{
    const QSignalSpy completed(&m_shown, &ShownMessage::completed);
    Message copy = message("Copy");
    copy.value = 10;
    Q_EMIT m_source.shown(head("/a"), copy);
    copy.value = 20;
    copy.text = "2 of 10 files";
    Q_EMIT m_source.messageChanged(copy);
    EXPECT_EQ(completed.size(), 1);
    copy.value = Message::noValue;
    copy.text = "Done";
    Q_EMIT m_source.messageChanged(copy);
    EXPECT_EQ(completed.size(), 2);
}

TEST_F(DisplayShownMessageTest, whatWasExpectedAndDoesNotComeDoesNotEnd)
{
    const QSignalSpy ended(&m_shown, &ShownMessage::ended);
    const QSignalSpy hidden(&m_shown, &ShownMessage::hidden);
    Q_EMIT m_source.expected();
    Q_EMIT m_source.emptied();
    EXPECT_EQ(ended.size(), 0);
    EXPECT_EQ(hidden.size(), 1);
}

TEST_F(DisplayShownMessageTest, buttonsAreDeafForHalfASecond)
{
    Q_EMIT m_source.shown(head("/a"), message("Door"));
    m_clock.pass(499ms);
    m_shown.close();
    m_shown.activate(0);
    m_shown.activateDefault();
    EXPECT_TRUE(m_source.m_closed.isEmpty());
    EXPECT_TRUE(m_source.m_activated.isEmpty());
    m_clock.pass(2ms);
    m_shown.close();
    m_shown.activate(1);
    m_shown.activateDefault();
    EXPECT_EQ(m_source.m_closed, QStringList("/a"));
    EXPECT_EQ(m_source.m_activated, QStringList({"/a/wait", "/a/default"}));
}

TEST_F(DisplayShownMessageTest, buttonsAreDeafAgainAfterEachNewHead)
{
    Q_EMIT m_source.shown(head("/a"), message("Door"));
    m_clock.pass(600ms);
    EXPECT_TRUE(m_shown.isArmed());
    Q_EMIT m_source.shown(head("/b"), message("Door"));
    EXPECT_FALSE(m_shown.isArmed());
    m_shown.close();
    EXPECT_TRUE(m_source.m_closed.isEmpty());
    m_clock.pass(501ms);
    m_shown.close();
    EXPECT_EQ(m_source.m_closed, QStringList("/b"));
}

TEST_F(DisplayShownMessageTest, aChangeOfTheTextKeepsTheButtonsArmed)
{
    Q_EMIT m_source.shown(head("/a"), message("Door"));
    m_clock.pass(600ms);
    Q_EMIT m_source.messageChanged(message("Gate"));
    EXPECT_EQ(m_shown.title(), "Gate");
    EXPECT_TRUE(m_shown.isArmed());
    Message other = message("Gate");
    std::swap(other.actions[0], other.actions[1]);
    Q_EMIT m_source.messageChanged(other);
    EXPECT_FALSE(m_shown.isArmed());
}

TEST_F(DisplayShownMessageTest, nothingIsPressedWhenNothingIsShown)
{
    Q_EMIT m_source.shown(head("/a"), message("Door"));
    m_clock.pass(600ms);
    Q_EMIT m_source.emptied();
    m_shown.close();
    m_shown.activate(0);
    EXPECT_TRUE(m_source.m_closed.isEmpty());
    EXPECT_TRUE(m_source.m_activated.isEmpty());
}

TEST_F(DisplayShownMessageTest, ignoresAButtonThatIsNotThere)
{
    Q_EMIT m_source.shown(head("/a"), message("Door"));
    m_clock.pass(600ms);
    m_shown.activate(-1);
    m_shown.activate(2);
    EXPECT_TRUE(m_source.m_activated.isEmpty());
}

TEST_F(DisplayShownMessageTest, countsTheSecondsThatAreLeft)
{
    Q_EMIT m_source.shown(head("/a", 2500), message("Door"));
    const QSignalSpy changed(&m_shown, &ShownMessage::secondsChanged);
    EXPECT_EQ(m_shown.seconds(), 3);
    m_clock.pass(499ms);
    EXPECT_EQ(m_shown.seconds(), 3);
    m_clock.pass(1ms);
    EXPECT_EQ(m_shown.seconds(), 2);
    m_clock.pass(1s);
    EXPECT_EQ(m_shown.seconds(), 1);
    m_clock.pass(1s);
    EXPECT_EQ(m_shown.seconds(), 0);
    m_clock.pass(10s);
    EXPECT_EQ(changed.size(), 3);
}

TEST_F(DisplayShownMessageTest, countsFromWhenTheMessageCameOnDisplay)
{
    const Head late = head("/a", 10000);
    m_clock.advance(4200ms);
    Q_EMIT m_source.shown(late, message("Door"));
    EXPECT_EQ(m_shown.seconds(), 6);
}

TEST_F(DisplayShownMessageTest, aMessageWithoutATimeoutHasNoSeconds)
{
    Q_EMIT m_source.shown(head("/a", 5000), message("Door"));
    Q_EMIT m_source.shown(head("/b", 0), message("Door"));
    EXPECT_EQ(m_shown.seconds(), Countdown::none);
}

TEST_F(DisplayShownMessageTest, everyPictureHasANameOfItsOwn)
{
    Message first = message("Door");
    Q_EMIT m_source.shown(head("/a"), first);
    EXPECT_EQ(m_shown.picture(), QString());
    first.picture.source = "bell";
    Q_EMIT m_source.messageChanged(first);
    const QString name = m_shown.picture();
    EXPECT_FALSE(name.isEmpty());
    first.title = "Gate";
    Q_EMIT m_source.messageChanged(first);
    EXPECT_EQ(m_shown.picture(), name);
    first.picture.source = "gate";
    Q_EMIT m_source.messageChanged(first);
    EXPECT_NE(m_shown.picture(), name);
}
} // namespace
