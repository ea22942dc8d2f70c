// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/SilentBus.h"

#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include "support/Text.h"
#include "support/TimeOf.h"
#include <bus/BusConnection.h>

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

using std::chrono::seconds;

namespace {
/// Only something that waits for the bus takes this long.
constexpr int blockedMs = 1000;

/// More than a connection's own timeout, with time for a busy machine.
constexpr seconds timeout(20);

/// A connection and the signals that it has emitted.
class Watched
{
public:
    explicit Watched(const QString &address)
        : m_connection(std::make_unique<BusConnection>(address))
        , m_connected(m_connection.get(), &BusConnection::connected)
        , m_lost(m_connection.get(), &BusConnection::lost)
        , m_acquired(m_connection.get(), &BusConnection::nameAcquired)
    {
        m_connection->ownName("org.tavo.One"_s);
    }

    BusConnection *operator->() { return m_connection.get(); }
    void end() { m_connection.reset(); }

    bool waitForConnected(int times = 1)
    {
        return waitFor([&] { return m_connected.count() == times; }, timeout);
    }
    bool waitForName(int times = 1)
    {
        return waitFor([&] { return m_acquired.count() == times; }, timeout);
    }
    bool waitForLost(int times = 1)
    {
        return waitFor([&] { return m_lost.count() >= times; }, timeout);
    }

    int connected() const { return m_connected.count(); }
    int lost() const { return m_lost.count(); }
    bool isReportedSilent() const { return m_lost.last().at(1).toBool(); }
    std::string reason() const { return m_lost.at(0).at(0).toString().toStdString(); }

private:
    std::unique_ptr<BusConnection> m_connection;
    QSignalSpy m_connected;
    QSignalSpy m_lost;
    QSignalSpy m_acquired;
};

/// A listening socket that accepts no connection, with a full queue.
class CrowdedSocket
{
public:
    explicit CrowdedSocket(const QString &path)
        : m_path(path)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.toLocal8Bit().toStdString().copy(address.sun_path, sizeof address.sun_path - 1);
        const auto *generic = reinterpret_cast<const sockaddr *>(&address);
        open();
        ::bind(m_descriptors.back(), generic, sizeof address);
        ::listen(m_descriptors.back(), 0);
        do {
            open();
        } while (::connect(m_descriptors.back(), generic, sizeof address) == 0);
    }
    ~CrowdedSocket()
    {
        for (const int descriptor : m_descriptors) {
            ::close(descriptor);
        }
    }
    CrowdedSocket(const CrowdedSocket &) = delete;
    CrowdedSocket &operator=(const CrowdedSocket &) = delete;

    QString path() const { return m_path; }

private:
    void open()
    {
        m_descriptors.push_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    }

    const QString m_path;
    std::vector<int> m_descriptors;
};

void turnTheLoop()
{
    waitFor([] { return false; }, std::chrono::milliseconds(200));
}

class SilentBusTest : public testing::TestWithParam<SilentBus::After>
{
protected:
    SilentBus m_bus{GetParam()};
    Watched m_connection{m_bus.address()};
};

TEST_P(SilentBusTest, IsReportedAsSilentOnceAndTriedAgain)
{
    m_connection->open();
    ASSERT_TRUE(m_connection.waitForLost());
    EXPECT_TRUE(m_connection.isReportedSilent());
    EXPECT_THAT(m_connection.reason(), testing::HasSubstr("does not answer"));
    EXPECT_TRUE(waitFor([&] { return m_bus.connections() > 1; }, timeout));
    EXPECT_EQ(m_connection.connected(), 0);
    EXPECT_EQ(m_connection.lost(), 1);
}

TEST_P(SilentBusTest, NeitherConnectingNorDestroyingWaitsForIt)
{
    EXPECT_LT(timeOf([&] { m_connection->open(); }), blockedMs);
    EXPECT_LT(timeOf([] { turnTheLoop(); }), blockedMs);
    EXPECT_EQ(m_bus.connections(), 1);
    EXPECT_EQ(m_bus.greetings(), GetParam() == SilentBus::After::Connecting ? 0 : 1);
    EXPECT_LT(timeOf([&] { m_connection.end(); }), blockedMs);
}

std::string nameOf(const testing::TestParamInfo<SilentBus::After> &info)
{
    switch (info.param) {
    case SilentBus::After::Connecting:
        return "AfterConnecting";
    case SilentBus::After::Authenticating:
        return "AfterAuthenticating";
    case SilentBus::After::Greeting:
        return "AfterGreeting";
    }
    return {};
}

INSTANTIATE_TEST_SUITE_P(EachStep, SilentBusTest,
                         testing::Values(SilentBus::After::Connecting,
                                         SilentBus::After::Authenticating,
                                         SilentBus::After::Greeting),
                         nameOf);

TEST(LateSilentBusTest, IsReportedEvenIfThereWasNoBusBefore)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("bus"_s);
    Watched connection("unix:path="_s + path);
    connection->open();
    ASSERT_TRUE(connection.waitForLost());
    EXPECT_FALSE(connection.isReportedSilent());
    const SilentBus bus(SilentBus::After::Connecting);
    ASSERT_TRUE(QFile::link(bus.path(), path));
    EXPECT_TRUE(connection.waitForLost(2));
    EXPECT_TRUE(connection.isReportedSilent());
}

TEST(FullBusTest, IsReportedAsSilent)
{
    const QTemporaryDir folder;
    const CrowdedSocket socket(folder.filePath("bus"_s));
    Watched connection("unix:path="_s + socket.path());
    connection->open();
    ASSERT_TRUE(connection.waitForLost());
    EXPECT_TRUE(connection.isReportedSilent());
}

class PausedBusTest : public testing::Test
{
protected:
    PrivateBus m_bus;
    Watched m_connection{m_bus.address()};
};

TEST_F(PausedBusTest, IsConnectedToWhenItResumes)
{
    m_bus.pause();
    m_connection->open();
    turnTheLoop();
    EXPECT_EQ(m_connection.connected(), 0);
    m_bus.resume();
    EXPECT_TRUE(m_connection.waitForName());
    EXPECT_EQ(m_connection.lost(), 0);
}

TEST_F(PausedBusTest, IsConnectedToWhenItResumesAfterItWasGivenUp)
{
    m_bus.pause();
    m_connection->open();
    ASSERT_TRUE(m_connection.waitForLost());
    m_bus.resume();
    EXPECT_TRUE(m_connection.waitForName());
    EXPECT_EQ(m_connection.lost(), 1);
}

TEST_F(PausedBusTest, LosesTheConnectionWhenARequestForANameGetsNoReply)
{
    QObject::connect(m_connection.operator->(), &BusConnection::connected, [&] {
        if (m_connection.lost() == 0) {
            m_bus.pause();
        }
    });
    m_connection->open();
    ASSERT_TRUE(m_connection.waitForLost());
    EXPECT_TRUE(m_connection.isReportedSilent());
    m_bus.resume();
    EXPECT_TRUE(m_connection.waitForName());
}

TEST_F(PausedBusTest, KeepsTheConnectionAndTheMessagesSentMeanwhile)
{
    m_connection->open();
    ASSERT_TRUE(m_connection.waitForName());
    m_bus.pause();
    int answers = 0;
    // More than the socket buffers hold.
    constexpr int calls = 1000;
    const auto callAll = [&] {
        for (int i = 0; i < calls; ++i) {
            const BusMessage call =
                m_connection->createCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus", "NameHasOwner");
            BusWriter(call).writeString("org.tavo."_s + QString(200, 'x'));
            m_connection->send(call, timeout,
                               [&](const BusMessage &reply) { answers += reply.error() ? 0 : 1; });
        }
    };
    EXPECT_LT(timeOf(callAll), blockedMs);
    turnTheLoop();
    EXPECT_EQ(answers, 0);
    m_bus.resume();
    EXPECT_TRUE(waitFor([&] { return answers == calls; }, timeout));
    EXPECT_EQ(m_connection.lost(), 0);
}

TEST_F(PausedBusTest, DestroyingDoesNotWaitForUnsentMessages)
{
    m_connection->open();
    ASSERT_TRUE(m_connection.waitForName());
    m_bus.pause();
    const BusMessage call = m_connection->createCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner");
    BusWriter(call).writeString(QString(1 << 24, 'x'));
    bool isAnswered = false;
    m_connection->send(call, timeout, [&](const BusMessage &) { isAnswered = true; });
    turnTheLoop();
    EXPECT_LT(timeOf([&] { m_connection.end(); }), blockedMs);
    EXPECT_FALSE(isAnswered);
}

TEST_F(PausedBusTest, EndsACallAtItsTimeoutAndKeepsTheConnection)
{
    m_connection->open();
    ASSERT_TRUE(m_connection.waitForName());
    m_bus.pause();
    std::string error;
    m_connection->send(m_connection->createCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                "org.freedesktop.DBus", "GetId"),
                       std::chrono::milliseconds(100),
                       [&](const BusMessage &reply) { error = reply.error()->name(); });
    EXPECT_TRUE(waitFor([&] { return !error.empty(); }));
    EXPECT_EQ(error, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(m_connection.lost(), 0);
}
} // namespace
