// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// What is on display, and how each notification ended, as user interfaces read it.

#include "DisplayTest.h"
#include "support/clock/VirtualClock.h"

#include <chrono>
#include <string>
#include <vector>

namespace {
using namespace std::chrono_literals;
using End = TavoNotificationDisplayEnd;
using testing::ElementsAre;
using testing::IsEmpty;

class DisplayStatusTest : public DisplayTest
{
protected:
    /// Records the changes from now on.
    void subscribe()
    {
        CMRoot()->connectRowsChange(TavoNotificationDisplayQueuePath(), &m_recorder,
                                    &Recorder::on_rowsChanged);
        CMRoot()->connectValueChange(TavoNotificationDisplayCurrentPath(), &m_recorder,
                                     &Recorder::on_currentChanged);
        CMRoot()->connectValueChange(TavoNotificationDisplayEndedPath(), &m_recorder,
                                     &Recorder::on_endedChanged);
    }

    static TavoNotificationDisplayCurrent current()
    {
        return valueAt(TavoNotificationDisplayCurrentPath()).displayCurrent();
    }

    static TavoNotificationDisplayEnded ended()
    {
        return valueAt(TavoNotificationDisplayEndedPath()).displayEnded();
    }

    static TavoNotificationDisplayItem named(const char *name, int priority = 1, int timeout = 0)
    {
        return reference(pathOf(name), priority, timeout).setId(QString::fromLatin1(name));
    }

    static CMPath pathOf(const char *name) { return CMPath("/client"_s) + QString(name); }

    CMReply<QVariant> cancelNamed(const char *name) { return cancelDisplay(pathOf(name)); }

    /// "a 5000/5000 +1": the id of the head, its remaining and whole timeout and how many wait.
    const std::vector<std::string> &heads() const
    {
        settle();
        return m_recorder.heads;
    }
    /// "a 2 1000": the id of what has ended, how, and its remaining timeout.
    const std::vector<std::string> &ends() const { return m_recorder.ends; }
    /// The kinds of all changes.
    const std::vector<std::string> &changes() const { return m_recorder.changes; }

    void forgetChanges() { m_recorder.changes.clear(); }

private:
    class Recorder : public QObject
    {
    public:
        void on_rowsChanged(const CMPath & /*path*/, const QStringList &names, int first, int)
        {
            changes.push_back((names.join(',') + ' ' + QString::number(first)).toStdString());
        }

        void on_currentChanged(const CMPath & /*path*/, const QVariant &value)
        {
            const auto head = TavoValue(value.toHash()).displayCurrent();
            changes.emplace_back("current");
            heads.push_back(head.isEmpty()
                                ? "nothing"
                                : head.id().toStdString() + ' ' + std::to_string(head.remaining()) +
                                      '/' + std::to_string(head.timeout()) + " +" +
                                      std::to_string(head.waiting()));
        }

        void on_endedChanged(const CMPath & /*path*/, const QVariant &value)
        {
            const auto end = TavoValue(value.toHash()).displayEnded();
            changes.emplace_back("ended");
            ends.push_back(end.id().toStdString() + ' ' + End::toString(end.end()).toStdString() +
                           ' ' + std::to_string(end.remaining()));
        }

        std::vector<std::string> heads;
        std::vector<std::string> ends;
        std::vector<std::string> changes;
    };

    static TavoValue valueAt(const CMPath &path) { return {CMRoot()->getValue(path).toHash()}; }

    Recorder m_recorder;
};
} // namespace

TEST_F(DisplayStatusTest, IsEmptyFromTheStart)
{
    EXPECT_TRUE(CMRoot()->getValue(TavoNotificationDisplayCurrentPath()).isValid());
    EXPECT_TRUE(CMRoot()->getValue(TavoNotificationDisplayEndedPath()).isValid());
    EXPECT_TRUE(current().isEmpty());
    EXPECT_TRUE(ended().isEmpty());
}

TEST_F(DisplayStatusTest, TellsWhatIsOnDisplay)
{
    VirtualClock clock;
    open(named("a", 7, 5000));
    EXPECT_EQ(current(), TavoNotificationDisplayCurrent()
                             .setPath(pathOf("a"))
                             .setId("a"_s)
                             .setPriority(TavoNotificationItemPriority::Enum(7))
                             .setTimeout(5000)
                             .setRemaining(5000)
                             .setSince(clock.now() / 1ms)
                             .setWaiting(0));
}

TEST_F(DisplayStatusTest, NamesTheNodeOfAMessage)
{
    const CMPath path = open("hello"_s);
    EXPECT_EQ(current().path(), path);
    cancelDisplay(path);
    EXPECT_EQ(ended().path(), path);
}

TEST_F(DisplayStatusTest, HasNoRemainderWithoutATimeout)
{
    open(named("a", 1, -5));
    EXPECT_EQ(current().timeout(), 0);
    EXPECT_EQ(current().remaining(), 0);
    cancelNamed("a");
    EXPECT_EQ(ended().remaining(), 0);
}

TEST_F(DisplayStatusTest, IsReportedOnceForEachHead)
{
    VirtualClock clock; // no time passes between two heads
    subscribe();
    open(named("a", 1, 5000));
    open(named("b", 1, 4000));
    open(named("urgent", 3));
    cancelNamed("urgent");
    cancelNamed("a");
    cancelNamed("b");
    EXPECT_THAT(heads(), ElementsAre("a 5000/5000 +0", "urgent 0/0 +2", "a 5000/5000 +1",
                                     "b 4000/4000 +0", "nothing"));
}

TEST_F(DisplayStatusTest, IsReportedAfterTheRowsAndTheEndBeforeTheNextHead)
{
    subscribe();
    open(named("a"));
    EXPECT_THAT(changes(), ElementsAre("inserted 0", "current"));
    open(named("b"));
    forgetChanges();
    cancelNamed("a");
    EXPECT_THAT(changes(), ElementsAre("removed 0", "ended", "current"));
}

TEST_F(DisplayStatusTest, TellsTheRestOfOneThatResumes)
{
    VirtualClock clock;
    subscribe();
    open(named("a", 1, 5000));
    clock.pass(2s);
    open(named("urgent", 3, 1000));
    clock.pass(1s);
    open(named("more", 4, 1000));
    clock.pass(1s);
    clock.pass(500ms);
    open(named("urgent", 3, 1000));
    clock.pass(1s);
    EXPECT_THAT(heads(), ElementsAre("a 5000/5000 +0", "urgent 1000/1000 +1", "a 3000/5000 +0",
                                     "more 1000/1000 +1", "a 3000/5000 +0", "urgent 1000/1000 +1",
                                     "a 2500/5000 +0"));
}

TEST_F(DisplayStatusTest, FollowsTheNumberOfThoseThatWaitWithinATenthOfASecond)
{
    VirtualClock clock;
    open(named("a", 1, 5000));
    const qint64 since = current().since();
    subscribe();
    for (int i = 0; i < 50; ++i) {
        open(named("b"));
    }
    EXPECT_THAT(heads(), IsEmpty());
    clock.pass(105ms);
    EXPECT_THAT(heads(), ElementsAre("a 5000/5000 +50"));
    EXPECT_EQ(current().since(), since);
    cancelNamed("b");
    clock.pass(105ms);
    EXPECT_THAT(heads(), ElementsAre("a 5000/5000 +50", "a 5000/5000 +0"));
}

TEST_F(DisplayStatusTest, IsNotReportedAgainWhenTheNumberIsTheSame)
{
    VirtualClock clock;
    open(named("a"));
    clock.pass(1s);
    subscribe();
    open(named("b"));
    cancelNamed("b");
    clock.pass(1s);
    EXPECT_THAT(heads(), IsEmpty());
}

TEST_F(DisplayStatusTest, TellsHowEachOneEnded)
{
    VirtualClock clock;
    subscribe();
    open(named("expired", 1, 50));
    clock.pass(50ms);
    open(named("cancelled"));
    cancelNamed("cancelled");
    open(named("closed"));
    close(pathOf("closed"));
    open(named("overtaken", 1, 50));
    clock.advance(60ms);
    open(named("urgent", 3));
    EXPECT_THAT(ends(), ElementsAre("expired Expired 0", "cancelled Cancelled 0", "closed Closed 0",
                                    "overtaken Overtaken 0"));
    EXPECT_EQ(ended().number(), 4);
}

TEST_F(DisplayStatusTest, TellsACancelJustBeforeTheTimeoutFromAnExpiry)
{
    VirtualClock clock;
    subscribe();
    open(named("a", 1, 5000));
    clock.pass(4999ms);
    cancelNamed("a");
    EXPECT_THAT(ends(), ElementsAre("a Cancelled 1"));
}

TEST_F(DisplayStatusTest, TellsTheRestOfOneThatEndsEarly)
{
    VirtualClock clock;
    subscribe();
    open(named("head", 1, 5000));
    open(named("waiting", 0, 3000));
    clock.pass(2s);
    open(named("urgent", 3));
    clock.pass(9s);
    cancelNamed("waiting");
    cancelNamed("head");
    EXPECT_THAT(ends(), ElementsAre("waiting Cancelled 3000", "head Cancelled 3000"));
}

TEST_F(DisplayStatusTest, ReportsEachOfManyEndsAtOnce)
{
    subscribe();
    constexpr int count = 1000;
    for (int i = 0; i < count; ++i) {
        open(named("same"));
    }
    cancelNamed("same");
    EXPECT_EQ(ends(), std::vector<std::string>(count, "same Cancelled 0"));
    EXPECT_EQ(ended().number(), count);
    EXPECT_THAT(heads(), ElementsAre("same 0/0 +0", "nothing"));
}

TEST_F(DisplayStatusTest, StaysEmptyWhenACancelFindsNothing)
{
    subscribe();
    cancelNamed("a");
    EXPECT_THAT(ends(), IsEmpty());
    EXPECT_THAT(heads(), IsEmpty());
}
