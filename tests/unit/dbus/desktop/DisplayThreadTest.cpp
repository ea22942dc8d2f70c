// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "OpenNotificationsTest.h"
#include "support/EventThread.h"
#include "support/LoadedModule.h"

#include <QThread>

#include <map>
#include <memory>
#include <random>

namespace {
using Priority = TavoNotificationItemPriority;

/// Opens and closes other notifications as fast as it can until it is destroyed.
class BusyRequester : public QThread
{
public:
    ~BusyRequester() override
    {
        requestInterruption();
        wait();
    }

protected:
    void run() override
    {
        QVector<CMPath> paths;
        for (int i = 0; !isInterruptionRequested(); ++i) {
            const auto item = TavoNotificationDisplayItem()
                                  .setPath(CMPath("/other"_s) + QString::number(i))
                                  .setPriority(TavoNotificationItemPriority::Enum(i % 4));
            paths.append(item.path());
            CMRoot()
                ->invoke(TavoNotificationDisplayOpenPath(),
                         TavoValue().setNotificationDisplayItem(item), {})
                .waitForFinished();
            if (paths.size() > 20) {
                CMSubscribe::closeNode(paths.takeAt(i % paths.size()));
            }
        }
    }
};

/// With the display in its own thread, as in the host.
class DisplayThreadTest : public OpenNotificationsTest
{
protected:
    DisplayThreadTest()
    {
        m_thread.run([this] {
            m_display = std::make_unique<LoadedModule>(QStringLiteral(NOTIFICATIONS_MODULE_FILE),
                                                       "notifications");
        });
    }
    ~DisplayThreadTest() override
    {
        m_thread.run([this] { m_display.reset(); });
    }

    void openMany(int count)
    {
        for (int i = 0; i < count; ++i) {
            notifications.open(notifications.freeId(), text({}, 0, Priority::Enum(m_random() % 4)));
        }
    }

    /// Closes a notification in one of the possible ways and returns the reason to expect.
    Reason closeSomehow(quint32 id, bool mayCancel)
    {
        switch (m_random() % (mayCancel ? 3 : 2)) {
        case 0:
            notifications.close(id, Reason::Closed);
            return Reason::Closed;
        case 1:
            CMSubscribe::closeNode(NotificationNode::pathOf(id));
            return Reason::Dismissed;
        default:
            CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(),
                             TavoValue().setPath(NotificationNode::pathOf(id)), {});
            return Reason::Closed;
        }
    }

    std::minstd_rand &random() { return m_random; }

private:
    std::minstd_rand m_random{1};
    EventThread m_thread;
    std::unique_ptr<LoadedModule> m_display;
};

TEST_F(DisplayThreadTest, ReportsTrueReasonsWhileOthersOpenAndClose)
{
    constexpr int count = 1000;
    BusyRequester others;
    others.start();
    openMany(count);
    std::map<quint32, Reason> expected;
    for (quint32 id = 1; id <= count; ++id) {
        // A cancel that arrives before the replacement is queued would end the earlier showing.
        const bool isReplaced = random()() % 4 == 0;
        if (isReplaced) {
            notifications.replace(id, text({}, 0, Priority::Enum(random()() % 4)));
        }
        if (id % 10 == 0) {
            settle();
        }
        if (id % 7 != 0) {
            expected.emplace(id, closeSomehow(id, !isReplaced));
        }
    }
    ASSERT_TRUE(waitFor([&] { return ends.size() >= expected.size(); }));
    settle();
    const std::map<quint32, Reason> reported(ends.begin(), ends.end());
    EXPECT_EQ(reported, expected);
    EXPECT_EQ(ends.size(), expected.size());
    EXPECT_EQ(notifications.count(), count / 7);
}

TEST_F(DisplayThreadTest, TellsExpiryFromCancelling)
{
    BusyRequester others;
    others.start();
    const quint32 id = notifications.freeId();
    notifications.open(id, text({}, 400, Priority::Enum(100)));
    const quint32 cancelled = notifications.freeId();
    notifications.open(cancelled, text({}, 60'000, Priority::Enum(99)));
    ASSERT_TRUE(ended(id));
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(),
                     TavoValue().setPath(NotificationNode::pathOf(cancelled)), {});
    ASSERT_TRUE(ended(cancelled));
    EXPECT_EQ(ends, (Ends{{id, Reason::Expired}, {cancelled, Reason::Closed}}));
}
} // namespace
