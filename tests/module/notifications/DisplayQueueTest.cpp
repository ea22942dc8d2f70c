// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The queue of open notifications: its order, the head's timeout, and pre-emption.

#include "DisplayTest.h"
#include "support/clock/VirtualClock.h"

#include <QMetaMethod>

#include <chrono>

namespace {
using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;

using namespace std::chrono_literals;
using DisplayQueueTest = DisplayTest;
} // namespace

TEST_F(DisplayQueueTest, DeclaresItsTwoSlotsInOrderAndNothingElse)
{
    const QMetaObject *meta = display()->metaObject();
    ASSERT_EQ(meta->methodCount() - meta->methodOffset(), 2);
    EXPECT_STREQ(meta->method(meta->methodOffset()).methodSignature().constData(),
                 "on_subscribe_rowsChanged(CMPath,QStringList,int,int)");
    EXPECT_STREQ(meta->method(meta->methodOffset() + 1).methodSignature().constData(),
                 "on_closeTimer_timeout()");
    EXPECT_EQ(meta->method(meta->methodOffset()).parameterNames(),
              (QList<QByteArray>{"path", "changes", "", ""}));
    for (int i = 0; i < 2; ++i) {
        const QMetaMethod slot = meta->method(meta->methodOffset() + i);
        EXPECT_EQ(slot.methodType(), QMetaMethod::Slot);
        EXPECT_EQ(slot.returnType(), int(QMetaType::Void));
    }
    EXPECT_EQ(meta->propertyCount(), meta->propertyOffset());
}

TEST_F(DisplayQueueTest, HasAPreciseSingleShotTimerThatIsNotRunning)
{
    EXPECT_TRUE(closeTimer()->isSingleShot());
    EXPECT_EQ(closeTimer()->timerType(), Qt::PreciseTimer);
    EXPECT_FALSE(closeTimer()->isActive());
    EXPECT_EQ(closeTimer()->parent(), display());
}

TEST_F(DisplayQueueTest, ShowsTheFirstNotificationAtOnceForItsTimeout)
{
    open("a"_s, 1, 5000);
    EXPECT_TRUE(closeTimer()->isActive());
    EXPECT_EQ(closeTimer()->interval(), 5000);
}

TEST_F(DisplayQueueTest, ShowsOneWithoutATimeoutUntilItIsClosed)
{
    for (const int timeout : {0, -1, -5000}) {
        const CMPath path = open("a"_s, 1, timeout);
        EXPECT_FALSE(closeTimer()->isActive());
        cancelDisplay(path);
    }
}

TEST_F(DisplayQueueTest, ClosesTheHeadAtItsTimeout)
{
    VirtualClock clock;
    const CMPath path = open("a"_s, 1, 50);
    clock.pass(49ms);
    EXPECT_EQ(rows(), QVector<CMPath>{path});
    clock.pass(1ms);
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_FALSE(closeTimer()->isActive());
}

TEST_F(DisplayQueueTest, ShowsTheNextForItsOwnTimeout)
{
    open("a"_s, 1, 1000);
    const CMPath b = open("b"_s, 1, 2000);
    fireCloseTimer();
    EXPECT_EQ(rows(), QVector<CMPath>{b});
    EXPECT_TRUE(closeTimer()->isActive());
    EXPECT_EQ(closeTimer()->interval(), 2000);
}

TEST_F(DisplayQueueTest, ShowsAnUntimedNextWithoutATimer)
{
    open("a"_s, 1, 1000);
    const CMPath b = open("b"_s, 1, 0);
    fireCloseTimer();
    EXPECT_EQ(rows(), QVector<CMPath>{b});
    EXPECT_FALSE(closeTimer()->isActive());
}

TEST_F(DisplayQueueTest, KeepsTheOrderOfArrivalAndTheTimerAmongEqualPriorities)
{
    VirtualClock clock;
    const CMPath a = open("a"_s, 2, 60000);
    clock.advance(20ms);
    const CMPath b = open("b"_s, 2, 500);
    const CMPath c = open("c"_s, 2, 500);
    EXPECT_EQ(rows(), (QVector<CMPath>{a, b, c}));
    clock.pass(59979ms);
    EXPECT_EQ(rows(), (QVector<CMPath>{a, b, c}));
    clock.pass(1ms);
    EXPECT_EQ(rows(), (QVector<CMPath>{b, c}));
}

TEST_F(DisplayQueueTest, PausesTheHeadWithItsOwnRemainingTimeAfterOthersHaveCome)
{
    VirtualClock clock;
    open("a"_s, 2, 60000);
    clock.advance(20ms);
    open("b"_s, 2, 500);
    open("urgent"_s, 3, 0);
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Pausing current item, remaining time is [ms] 59980"), 1);
}

TEST_F(DisplayQueueTest, PutsALowestPriorityLastAndOneBetweenBeforeTheFirstLowerOne)
{
    const CMPath a = open("a"_s, 3);
    const CMPath b = open("b"_s, 1);
    const CMPath c = open("c"_s, 0);
    const CMPath d = open("d"_s, 2);
    const CMPath e = open("e"_s, 1);
    EXPECT_EQ(rows(), (QVector<CMPath>{a, d, b, e, c}));
}

TEST_F(DisplayQueueTest, PausesTheHeadWithItsRemainingTimeForAMoreUrgentOne)
{
    VirtualClock clock;
    const CMPath a = open("a"_s, 1, 60000);
    clock.advance(20ms);
    const CMPath b = open("b"_s, 2, 1000);
    EXPECT_EQ(rows(), (QVector<CMPath>{b, a}));
    EXPECT_EQ(closeTimer()->interval(), 1000);
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Pausing current item, remaining time is [ms] 59980"), 1);
    fireCloseTimer();
    EXPECT_EQ(rows(), QVector<CMPath>{a});
    EXPECT_EQ(closeTimer()->interval(), 59980);
}

TEST_F(DisplayQueueTest, ReducesTheTimeoutOfANotificationByEachOfItsShowings)
{
    VirtualClock clock;
    open("a"_s, 1, 60000);
    for (int i = 0; i < 3; ++i) {
        clock.advance(5ms);
        open("urgent"_s, 2, 1000);
        fireCloseTimer();
    }
    EXPECT_EQ(closeTimer()->interval(), 60000 - 3 * 5);
}

TEST_F(DisplayQueueTest, DoesNotPauseAnUntimedHead)
{
    const CMPath a = open("a"_s, 1, 0);
    const CMPath b = open("b"_s, 2, 1000);
    EXPECT_EQ(rows(), (QVector<CMPath>{b, a}));
    fireCloseTimer();
    EXPECT_EQ(rows(), QVector<CMPath>{a});
    EXPECT_FALSE(closeTimer()->isActive());
    EXPECT_EQ(log().countAt(WARN_LOG_LEVEL), 0);
}

TEST_F(DisplayQueueTest, RemovesAHeadWhoseTimeoutHasPassedButIsNotYetReported)
{
    VirtualClock clock;
    open("a"_s, 1, 2);
    clock.advance(5ms);
    const CMPath b = open("b"_s, 2, 0);
    EXPECT_EQ(rows(), QVector<CMPath>{b});
    EXPECT_FALSE(closeTimer()->isActive());
    EXPECT_THAT(log().messages(WARN_LOG_LEVEL),
                testing::ElementsAre(
                    "The item should have been expired, elapsed: 5 item length 2 , removing"));
}

TEST_F(DisplayQueueTest, ReportsAnOverdueHeadAsRemovedBeforeTheNewOneIsInserted)
{
    class Subscriber : public QObject
    {
    public:
        void on_rowsChanged(const CMPath &, const QStringList &changes, int first, int)
        {
            seen.append(changes.join(',') + ' ' + QString::number(first));
        }
        QStringList seen;
    };
    VirtualClock clock;
    open("a"_s, 1, 2);
    Subscriber subscriber;
    CMRoot()->connectRowsChange(TavoNotificationDisplayQueuePath(), &subscriber,
                                &Subscriber::on_rowsChanged);
    clock.advance(5ms);
    open("b"_s, 2);
    EXPECT_EQ(subscriber.seen, (QStringList{"removed 0"_s, "inserted 0"_s}));
}

TEST_F(DisplayQueueTest, WarnsAboutAnExpiryWithNothingOnDisplay)
{
    fireCloseTimer();
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Item index out of bounds (cannot remove) 0"), 1);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "removeNotificationItem", ""), 1);
    EXPECT_FALSE(closeTimer()->isActive());
}

TEST_F(DisplayQueueTest, LogsTheStepsOfAnOpenInOrder)
{
    log().clear();
    const CMPath path = open("a"_s, 1, 1000);
    std::vector<std::string> steps;
    for (const auto &record : log().records()) {
        const std::string name = record.message.substr(0, record.message.find('('));
        steps.push_back(name.substr(0, 6) + name.substr(name.rfind(':') + 1));
    }
    EXPECT_THAT(steps,
                testing::ElementsAre("Enter on_notificationDisplayEnqueue_activated",
                                     "Enter enqueue", "Enter setPathToNotification",
                                     testing::StartsWith("Node c"), "Leave setPathToNotification",
                                     "Enter queuePosition", "Leave queuePosition",
                                     "Enter startTimer", "Leave startTimer", "Leave enqueue"));
}

TEST_F(DisplayQueueTest, ShowsAPreemptingNotificationForItsFullTimeout)
{
    VirtualClock clock;
    open("a"_s, 1, 2);
    clock.advance(5ms);
    open("b"_s, 2, 3000);
    EXPECT_TRUE(closeTimer()->isActive());
    EXPECT_EQ(closeTimer()->interval(), 3000);
}

TEST_F(DisplayQueueTest, LogsAnEmptyNotificationAndDropsIt)
{
    open("a"_s, 1, 1000);
    EXPECT_EQ(errorOf(request(TavoNotificationDisplayItem()
                                  .setTitle("a title"_s)
                                  .setPriority(TavoNotificationItemPriority::Urgent))),
              "Failed to enqueue notification"_s);
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Dropping empty notification"), 1);
    EXPECT_EQ(rows().size(), 1);
    EXPECT_EQ(closeTimer()->interval(), 1000);
}

TEST_F(DisplayQueueTest, TracesItsOperationsByTheirWholeSignatures)
{
    open("a"_s, 1, 10);
    fireCloseTimer();
    const CMPath b = open("b"_s);
    close(b);
    const std::string changes = "Path: " + b.toString().toStdString() + ", changes: (close)";
    const std::string removal = "queue size: 1 notifs: 1 index 0";
    const struct
    {
        std::string signature;
        int calls;
        std::string enter;
        std::string leave;
    } expected[] = {
        {"NotificationDisplay::NotificationDisplay(CMNodes*, QObject*)", 1, "", ""},
        {"bool NotificationDisplay::enqueue(TavoNotificationDisplayItem*)", 2, "", ""},
        {"int NotificationDisplay::queuePosition(TavoNotificationItemPriority::Enum) const", 2, "",
         ""},
        {"void NotificationDisplay::startTimer()", 3, "", ""},
        {"void NotificationDisplay::on_closeTimer_timeout()", 1, "", ""},
        {"void NotificationDisplay::setPathToNotification(TavoNotificationDisplayItem*)", 2, "",
         ""},
        {"bool NotificationDisplay::removeNotificationItem(int)", 2, removal, "queue: 0"},
        {"bool NotificationDisplay::cancel(const CMPath&)", 1, b.toString().toStdString(), ""},
        {"void NotificationDisplay::on_subscribe_rowsChanged(const CMPath&, const QStringList&, "
         "int, int)",
         1, changes, ""},
    };
    for (const auto &[signature, calls, enter, leave] : expected) {
        EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Enter " + signature + ": " + enter), calls);
        EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Leave " + signature + ": " + leave), calls) << signature;
    }
}

TEST_F(DisplayQueueTest, DoesNotAffectSounds)
{
    play("sound"_s);
    open("a"_s, 3, 1000);
    EXPECT_EQ(journalOf("sound"_s).last(), "started"_s);
    fireCloseTimer();
    EXPECT_EQ(journalOf("sound"_s).last(), "started"_s);
}
