// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundTest.h"
#include "support/EventLoop.h"

#include <QDir>
#include <QFile>

#include <utility>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TAVO_THREAD_SANITIZER 1
#endif
#endif

namespace {

/// What a process has done so far.
struct Activity
{
    int threads = 0;
    QByteArray names;  // of its threads
    long ticks = 0;    // processor time of all threads
    long switches = 0; // voluntary switches: each is a wait that has ended
};

long valueAfter(const QByteArray &text, const QByteArray &key)
{
    const int at = text.indexOf(key);
    return at < 0 ? -1 : text.mid(at + key.size()).trimmed().split('\n').first().toLong();
}

Activity activityOf(qint64 process)
{
    Activity activity;
    const QString tasks = QString("/proc/%1/task/").arg(process);
    for (const QString &task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        // The fields after the name, which is in parentheses.
        const QByteArray stat = readFile(tasks + task + "/stat");
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        constexpr int userTime = 11;
        constexpr int systemTime = 12;
        ++activity.threads;
        activity.names += ' ' + readFile(tasks + task + "/comm").trimmed();
        activity.ticks += fields.value(userTime).toLong() + fields.value(systemTime).toLong();
        activity.switches +=
            valueAfter(readFile(tasks + task + "/status"), "\nvoluntary_ctxt_switches:");
    }
    return activity;
}

} // namespace

class IdleTest : public SoundTest
{
protected:
    void SetUp() override
    {
#if defined(__SANITIZE_THREAD__) || defined(TAVO_THREAD_SANITIZER)
        GTEST_SKIP() << "The sanitizer has a thread of its own that never rests.";
#endif
        start();
        waitForRest();
        m_atStart = activityOf(m_host.processId());
    }

    /// Plays, interrupts and cancels sounds, lets one fail, and waits until all are over.
    void playAndWaitForQuiet()
    {
        m_requester.enqueue(fileItem("sound", toneFile(1000, 300)));
        m_requester.enqueue(fileItem("urgent", toneFile(2000, 300), 3));
        m_requester.enqueue(fileItem("missing", inFolder("nowhere.wav")));
        m_requester.enqueue(fileItem("cancelled", toneFile(1000, 300)));
        m_requester.cancel("cancelled");
        ASSERT_TRUE(m_requester.waitFor("finished sound")) << m_host.log().toStdString();
        ASSERT_TRUE(m_requester.waitFor("restored"));
    }

    /// Waits until the host does nothing for a moment, so all earlier work is done.
    void waitForRest() const
    {
        long before = -1;
        waitFor([&] {
            waitFor([] { return false; }, std::chrono::milliseconds(200));
            const long now = activityOf(m_host.processId()).switches;
            return now == std::exchange(before, now);
        });
    }

    /// What the host does while it gets no requests.
    Activity activityInTwoSeconds() const
    {
        const Activity before = activityOf(m_host.processId());
        waitFor([] { return false; }, std::chrono::seconds(2));
        const Activity after = activityOf(m_host.processId());
        return {after.threads, after.names, after.ticks - before.ticks,
                after.switches - before.switches};
    }

    Activity m_atStart;
};

TEST_F(IdleTest, AnIdleHostSleeps)
{
    const Activity activity = activityInTwoSeconds();
    EXPECT_EQ(activity.switches, 0);
    EXPECT_EQ(activity.ticks, 0);
}

TEST_F(IdleTest, AHostSleepsAfterItsLastSound)
{
    playAndWaitForQuiet();
    waitForRest();
    const Activity activity = activityInTwoSeconds();
    EXPECT_EQ(activity.switches, 0);
    EXPECT_EQ(activity.ticks, 0);
}

TEST_F(IdleTest, NoThreadOutlivesItsSound)
{
    playAndWaitForQuiet();
    EXPECT_TRUE(waitFor([this] {
        return activityOf(m_host.processId()).threads == m_atStart.threads;
    })) << "threads:"
        << activityOf(m_host.processId()).names.toStdString()
        << "\nat the start:" << m_atStart.names.toStdString();
}

// Qt keeps its threads for the network, and cleans up once.
TEST_F(IdleTest, AHostNearlySleepsAfterAFetchedSound)
{
    HttpServer server;
    const QByteArray file = readFile(toneFile(1000, 300));
    m_requester.enqueue(fileItem("fetched", server.serve("tone.wav", file)));
    ASSERT_TRUE(m_requester.waitFor("finished fetched")) << m_host.log().toStdString();
    ASSERT_TRUE(m_requester.waitFor("restored"));
    waitForRest();
    const Activity activity = activityInTwoSeconds();
    EXPECT_LE(activity.switches, 2);
    EXPECT_EQ(activity.ticks, 0);
}
