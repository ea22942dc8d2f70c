// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"

namespace {
using testing::AnyOf;
using testing::ElementsAre;

const QString limitError = QStringLiteral("org.freedesktop.DBus.Error.LimitsExceeded: ");

class OpenLimitTest : public DesktopTest
{
protected:
    OpenLimitTest()
        : DesktopTest({{"limits"_s, QVariantHash{{"openNotifications"_s, 3}}}})
    {
    }
};

TEST_F(OpenLimitTest, HoldsForAClient)
{
    EXPECT_EQ(python(R"(
print([error(Notify) for i in range(3)])
print(error(Notify))
CloseNotification(2)
print(error(Notify))
print(error(Notify))
)"_s),
              "[1, 2, 3]\n"_s + limitError +
                  "A client may have no more than 3 notifications open\n4\n"_s + limitError +
                  "A client may have no more than 3 notifications open"_s);
}

TEST_F(OpenLimitTest, AllowsChangesOfOpenNotifications)
{
    EXPECT_EQ(python(R"(
for i in range(3): Notify()
print(Notify('New', replaces=2), error(Notify, replaces=7))
)"_s),
              "2 "_s + limitError + "A client may have no more than 3 notifications open"_s);
}

TEST_F(OpenLimitTest, HoldsForEachClientSeparately)
{
    python("for i in range(3): Notify()"_s);
    EXPECT_EQ(python("print(Notify())"_s), "4"_s);
    EXPECT_EQ(displayed().size(), 4);
}

class TotalOpenLimitTest : public DesktopTest
{
protected:
    TotalOpenLimitTest()
        : DesktopTest({{"limits"_s, QVariantHash{{"totalOpenNotifications"_s, 3}}}})
    {
    }
};

TEST_F(TotalOpenLimitTest, IsMadeRoomInByWhatClientsHaveLeftBehind)
{
    const auto signals = monitor();
    for (int i = 0; i < 3; ++i) {
        notifySend({"-t"_s, "0"_s, "Title"_s});
    }
    EXPECT_EQ(python("print(Notify(), Notify(), Notify(), error(Notify))"_s),
              "4 5 6 "_s + limitError +
                  "All clients together may have no more than 3 notifications open"_s);
    EXPECT_TRUE(signals->writes(closedSignal(3, 4)));
    EXPECT_THAT(displayed(), ElementsAre(pathOf(4), pathOf(5), pathOf(6)));
}

TEST_F(TotalOpenLimitTest, IsSharedByClientsThatStay)
{
    EXPECT_EQ(python(R"(
for i in range(3): Notify()
interface = dbus.Interface(dbus.bus.BusConnection(dbus.bus.BUS_SESSION).get_object(
    'org.freedesktop.Notifications', '/org/freedesktop/Notifications'),
    'org.freedesktop.Notifications')
print(Notify(), error(Notify))
)"_s),
              "4 "_s + limitError +
                  "All clients together may have no more than 3 notifications open"_s);
    EXPECT_THAT(displayed(), ElementsAre(pathOf(2), pathOf(3), pathOf(4)));
}

class StoredBytesLimitTest : public DesktopTest
{
protected:
    static constexpr int mebi = 1 << 20;

    StoredBytesLimitTest()
        : DesktopTest({{"limits"_s, QVariantHash{{"totalStoredBytes"_s, mebi}}}})
    {
    }
};

TEST_F(StoredBytesLimitTest, IsMadeRoomInByAllMessagesThatShowANodeAtOnce)
{
    python(R"(
model = dbus.Interface(bus.get_object('org.tavo.Model1', '/org/tavo/Model1'), 'org.tavo.Model1')
for i in range(400):
    shown = {'notificationDisplayItem': dbus.Dictionary({'path': '/node/%d' % (i // 16)}, signature='sv')}
    model.Call('/notifications/display/open', dbus.Dictionary(shown, signature='sv'))
)"_s);
    EXPECT_EQ(displayed().size(), 400);
    const LogCapture displayLog("Notifications");
    EXPECT_EQ(python("print(Notify(body='<b>' + 60000 * 'x' + '</b>'))"_s), "1"_s);
    const QVector<CMPath> left = displayed();
    EXPECT_EQ(left.count(pathOf(1)), 1);
    EXPECT_LT(left.size(), 400);
    for (int node = 0; node < 25; ++node) {
        EXPECT_THAT(left.count(CMPath("/node/%1"_s.arg(node))), AnyOf(0, 16));
    }
    EXPECT_EQ(displayLog.countAt(log4cplus::WARN_LOG_LEVEL), 0);
}

/// A notification that tries to stand before all others.
class PriorityLimitTest : public DesktopTest
{
protected:
    explicit PriorityLimitTest(const QVariantHash &limits = {})
        : DesktopTest({{"limits"_s, limits}})
    {
    }

    void openGreedyThenUrgent()
    {
        python("Notify(hints={'x-tavo-priority': 2**31 - 1, 'urgency': dbus.Byte(0)})\n"
               "Notify(timeout=1000000, hints={'urgency': dbus.Byte(2)})\n"
               "Notify(hints={'x-tavo-priority': 17})\n"
               "Notify(hints={'x-tavo-priority': -(2**31), 'urgency': dbus.Byte(2)})"_s);
    }
};

TEST_F(PriorityLimitTest, IsUrgentByDefault)
{
    openGreedyThenUrgent();
    EXPECT_THAT(displayed(), ElementsAre(pathOf(1), pathOf(2), pathOf(3), pathOf(4)));
}

class LowPriorityLimitTest : public PriorityLimitTest
{
protected:
    LowPriorityLimitTest()
        : PriorityLimitTest({{"priority"_s, 1}})
    {
    }
};

TEST_F(LowPriorityLimitTest, HoldsForUrgenciesToo)
{
    const quint32 normal = notifySend({"-t"_s, "0"_s, "Normal"_s});
    const quint32 critical = notifySend({"-u"_s, "critical"_s, "Critical"_s});
    EXPECT_THAT(displayed(), ElementsAre(pathOf(normal), pathOf(critical)));
}

class HighPriorityLimitTest : public PriorityLimitTest
{
protected:
    HighPriorityLimitTest()
        : PriorityLimitTest({{"priority"_s, 17}})
    {
    }
};

TEST_F(HighPriorityLimitTest, GrantsMoreThanUrgent)
{
    openGreedyThenUrgent();
    EXPECT_THAT(displayed(), ElementsAre(pathOf(1), pathOf(3), pathOf(2), pathOf(4)));
}

class RequestLimitTest : public DesktopTest
{
protected:
    RequestLimitTest()
        : DesktopTest({{"limits"_s, QVariantHash{{"requestsPerSecond"_s, 5}}}})
    {
    }
};

TEST_F(RequestLimitTest, HoldsForAClient)
{
    // Python's first call reads the object's description.
    const QString results = python(R"(
results = [error(Notify) for i in range(100)]
print(len([1 for result in results if type(result) == int]) >= 9)
print(results[-1])
)"_s);
    EXPECT_EQ(results,
              "True\n"_s + limitError + "A client may send no more than 5 requests per second"_s);
    EXPECT_NE(notifySend({"Title"_s}), 0U);
}

class SizeLimitTest : public DesktopTest
{
protected:
    SizeLimitTest()
        : DesktopTest({{"limits"_s, QVariantHash{{"valueBytes"_s, 10'000}}}})
    {
    }
};

TEST_F(SizeLimitTest, HoldsForAllTextsTogether)
{
    const QString results = python(R"(
print(error(Notify, body='x' * 9000))
print(error(Notify, body='x' * 10001))
print(error(Notify, 'x' * 5000, 'x' * 5001))
print(error(Notify, hints={'category': 'x' * 10001}))
print(error(Notify, actions=['key', 'x' * 10001]))
)"_s);
    EXPECT_EQ(results.count(limitError), 4);
    EXPECT_TRUE(results.startsWith("1\n"_s));
    EXPECT_EQ(displayed().size(), 1);
}

TEST_F(SizeLimitTest, ExcludesImages)
{
    EXPECT_EQ(python(R"(
image = dbus.Struct((500, 500, 1500, False, 8, 3, dbus.ByteArray(bytes(750000))), signature='iiibiiay')
print(Notify(hints={'image-data': image}))
)"_s),
              "1"_s);
}

class StorageLimitTest : public DesktopTest
{
protected:
    StorageLimitTest()
        : DesktopTest({{"limits"_s, QVariantHash{{"storedBytes"_s, 1 << 20}}}})
    {
    }
};

/// Each action is a node, which takes more memory than its texts.
TEST_F(StorageLimitTest, CountsTheNodesOfActions)
{
    const QString results = python(R"(
actions = [text for i in range(64) for text in (chr(33 + i), 'x')]
results = [error(Notify, actions=actions) for i in range(20)]
print(len([result for result in results if type(result) == int]))
print(results[-1])
)"_s);
    const QStringList lines = results.split('\n');
    EXPECT_LE(lines.at(0).toInt(), 13);
    EXPECT_GE(lines.at(0).toInt(), 5);
    EXPECT_TRUE(lines.at(1).startsWith(limitError)) << results.toStdString();
}

TEST_F(StorageLimitTest, CountsWhatIsLeftOfTextsThatAreCut)
{
    EXPECT_EQ(python(R"(
results = [error(Notify, body='x' * 1000000) for i in range(150)]
print(len([result for result in results if type(result) == int]))
)"_s),
              "7"_s);
    EXPECT_EQ(python("print(error(Notify, body='x' * 1000000))"_s), "8"_s);
}

TEST_F(SizeLimitTest, IncludesWhatIsSkipped)
{
    EXPECT_TRUE(python(R"(
print(error(Notify, hints={'unknown': dbus.Array([dbus.String('', variant_level=1)] * 1000, signature='v')}))
)"_s)
                    .startsWith(limitError));
}
} // namespace
