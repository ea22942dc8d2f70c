// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/bus/SilentClient.h"
#include "support/EventLoop.h"
#include "support/Text.h"
#include <bus/BusConnection.h>

#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {
class BusConnectionTest : public testing::Test
{
protected:
    PrivateBus m_bus;
    BusConnection m_connection{m_bus.address()};
    QSignalSpy m_connected{&m_connection, &BusConnection::connected};
    QSignalSpy m_lost{&m_connection, &BusConnection::lost};
    QSignalSpy m_acquired{&m_connection, &BusConnection::nameAcquired};
    QSignalSpy m_taken{&m_connection, &BusConnection::nameTaken};

    bool connects()
    {
        m_connection.open();
        return waitFor([this] { return m_connected.count() == 1; });
    }
};

TEST_F(BusConnectionTest, ConnectsToABusThatIsThere)
{
    EXPECT_FALSE(m_connection.isConnected());
    ASSERT_TRUE(connects());
    EXPECT_TRUE(m_connection.isConnected());
    EXPECT_EQ(m_lost.count(), 0);
}

TEST_F(BusConnectionTest, ReportsABusThatIsAwayOnceAndConnectsWhenItComes)
{
    m_bus.stop();
    m_connection.open();
    EXPECT_EQ(m_lost.count(), 1);
    // Long enough for several tries.
    waitFor([] { return false; }, std::chrono::milliseconds(500));
    EXPECT_EQ(m_lost.count(), 1);
    m_bus.start();
    EXPECT_TRUE(waitFor([&] { return m_connected.count() == 1; }));
}

TEST_F(BusConnectionTest, ReportsTheLossWithAReasonWhileTheConnectionIsStillThere)
{
    ASSERT_TRUE(connects());
    bool wasConnected = false;
    QObject::connect(&m_connection, &BusConnection::lost,
                     [&] { wasConnected = m_connection.isConnected(); });
    m_bus.stop();
    ASSERT_TRUE(waitFor([&] { return m_lost.count() == 1; }));
    EXPECT_TRUE(wasConnected);
    EXPECT_FALSE(m_connection.isConnected());
    EXPECT_FALSE(m_lost.at(0).at(0).toString().isEmpty());
}

TEST_F(BusConnectionTest, OwnsItsNamesAgainEachTimeTheBusIsBack)
{
    m_connection.ownName("org.tavo.One"_s);
    m_connection.ownName("org.tavo.Two"_s);
    m_connection.open();
    ASSERT_TRUE(waitFor([&] { return m_acquired.count() == 2; }));
    m_bus.restart();
    ASSERT_TRUE(waitFor([&] { return m_acquired.count() == 4; }));
    EXPECT_EQ(m_acquired.at(2).at(0).toString(), "org.tavo.One"_s);
    EXPECT_EQ(m_acquired.at(3).at(0).toString(), "org.tavo.Two"_s);
}

TEST_F(BusConnectionTest, WaitsInLineForANameThatAnotherOwns)
{
    BusClient other(m_bus.address());
    other.takeName("org.tavo.One"_s);
    m_connection.ownName("org.tavo.One"_s);
    m_connection.open();
    ASSERT_TRUE(waitFor([&] { return m_taken.count() == 1; }));
    EXPECT_EQ(m_acquired.count(), 0);
    other.leave();
    EXPECT_TRUE(waitFor([&] { return m_acquired.count() == 1; }));
}

/// On a bus with the limits of the system bus for unread messages of one sender.
class BusConnectionStallTest : public testing::Test
{
protected:
    BusConnectionStallTest()
    {
        m_connection.ownName("org.tavo.One"_s);
        m_connection.open();
        EXPECT_TRUE(waitFor([this] { return m_acquired.count() == 1; }));
    }

    /// Sends more than the bus stores.
    void fill(const std::string &receiver)
    {
        constexpr int messages = 140;
        const QString text(1 << 20, 'x');
        for (int i = 0; i < messages; ++i) {
            BusWriter call(m_connection.createCall(receiver.c_str(), "/", "org.tavo.Test", "Fill"));
            call.writeString(text);
            call.message().send();
        }
    }

    PrivateBus m_bus{PrivateBus::systemLimits()};
    BusConnection m_connection{m_bus.address()};
    QSignalSpy m_lost{&m_connection, &BusConnection::lost};
    QSignalSpy m_acquired{&m_connection, &BusConnection::nameAcquired};
    QSignalSpy m_taken{&m_connection, &BusConnection::nameTaken};
};

TEST_F(BusConnectionStallTest, IsMadeAgainWithItsNamesWhenItsReceiversDoNotRead)
{
    const SilentClient silent(m_bus.address());
    fill(silent.name());
    ASSERT_TRUE(waitFor([&] { return m_acquired.count() == 2; }, std::chrono::seconds(20)));
    EXPECT_EQ(m_lost.count(), 1);
    EXPECT_EQ(m_taken.count(), 0);
}

TEST_F(BusConnectionStallTest, StaysWhileTheBusHangs)
{
    const SilentClient silent(m_bus.address());
    m_bus.pause();
    BusWriter call(m_connection.createCall(silent.name().c_str(), "/", "org.tavo.Test", "Fill"));
    call.writeString(QString(10 << 20, 'x'));
    call.message().send();
    // Long enough to take the bus for stalled.
    EXPECT_FALSE(waitFor([this] { return m_lost.count() > 0; }, std::chrono::milliseconds(3500)));
    m_bus.resume();
    settle();
    EXPECT_FALSE(waitFor([this] { return m_lost.count() > 0; }, std::chrono::milliseconds(100)));
}

/// Stands between connections and a bus. Served by the event loop of its thread.
class SlowBus
{
public:
    explicit SlowBus(const PrivateBus &bus)
        : m_bus(bus.socket())
    {
        EXPECT_TRUE(m_server.listen(bus.folder() + "/slow"_s));
        QObject::connect(&m_server, &QLocalServer::newConnection, [this] { accept(); });
        m_timer.setInterval(100);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { pass(m_slow, m_toSlow); });
    }

    QString address() const { return "unix:path="_s + m_server.fullServerName(); }

    /// From now on, reads little at a time from the connection that came last. Further ones are served
    /// as usual.
    void slowDown()
    {
        m_slow->disconnect();
        m_slow->setReadBufferSize(1 << 11);
        m_timer.start();
    }

    qint64 bytesRead() const { return m_bytesRead; }

private:
    void accept()
    {
        QLocalSocket *client = m_server.nextPendingConnection();
        auto *bus = new QLocalSocket(client);
        bus->connectToServer(m_bus);
        QObject::connect(client, &QLocalSocket::readyRead, [=] { pass(client, bus); });
        QObject::connect(bus, &QLocalSocket::readyRead, [=] { client->write(bus->readAll()); });
        if (!m_timer.isActive()) {
            m_slow = client;
            m_toSlow = bus;
        }
    }

    void pass(QLocalSocket *client, QLocalSocket *bus)
    {
        const QByteArray bytes = client->readAll();
        m_bytesRead += client == m_slow ? bytes.size() : 0;
        bus->write(bytes);
    }

    const QString m_bus;
    QLocalServer m_server;
    QLocalSocket *m_slow = nullptr;
    QLocalSocket *m_toSlow = nullptr;
    QTimer m_timer;
    qint64 m_bytesRead = 0;
};

/// Like a bus, it reads whenever it wants to: also right before the connection sends more.
class BusConnectionSlowBusTest : public testing::Test
{
protected:
    BusConnectionSlowBusTest()
    {
        m_thread.start();
        m_context.moveToThread(&m_thread);
        runThere([this] { m_slowBus = std::make_unique<SlowBus>(m_bus); });
        m_connection = std::make_unique<BusConnection>(m_slowBus->address());
    }
    ~BusConnectionSlowBusTest() override
    {
        runThere([this] { m_slowBus.reset(); });
        m_thread.quit();
        m_thread.wait();
    }

    void slowDown()
    {
        runThere([this] { m_slowBus->slowDown(); });
    }
    qint64 bytesRead()
    {
        qint64 bytes = 0;
        runThere([&] { bytes = m_slowBus->bytesRead(); });
        return bytes;
    }

    BusConnection &connection() { return *m_connection; }

private:
    template <typename Function>
    void runThere(const Function &function)
    {
        QMetaObject::invokeMethod(&m_context, function, Qt::BlockingQueuedConnection);
    }

    PrivateBus m_bus;
    QThread m_thread;
    QObject m_context;
    std::unique_ptr<SlowBus> m_slowBus;
    std::unique_ptr<BusConnection> m_connection;
};

TEST_F(BusConnectionSlowBusTest, StaysWhileTheBusReadsLessThanIsSent)
{
    const QSignalSpy connected(&connection(), &BusConnection::connected);
    const QSignalSpy lost(&connection(), &BusConnection::lost);
    connection().open();
    ASSERT_TRUE(waitFor([&] { return connected.count() == 1; }));
    slowDown();
    // More than is read in this time.
    constexpr int messages = 500;
    constexpr int size = 1 << 11;
    for (int i = 0; i < messages; ++i) {
        BusWriter call(
            connection().createCall("org.freedesktop.DBus", "/", "org.tavo.Test", "Fill"));
        call.writeString(QString(size, 'x'));
        call.message().send();
    }
    // Long enough to take a bus that reads nothing for stalled.
    EXPECT_FALSE(waitFor([&] { return lost.count() > 0; }, std::chrono::milliseconds(4500)));
    EXPECT_GT(bytesRead(), size);
    EXPECT_LT(bytesRead(), messages * size);
}

TEST(BusConnectionPolicyTest, ReportsANameThatTheBusRefusesAndStaysConnected)
{
    const PrivateBus bus("<policy context=\"default\"><deny own=\"org.tavo.One\"/></policy>");
    BusConnection connection(bus.address());
    const QSignalSpy refused(&connection, &BusConnection::nameRefused);
    const QSignalSpy acquired(&connection, &BusConnection::nameAcquired);
    connection.ownName("org.tavo.One"_s);
    connection.ownName("org.tavo.Two"_s);
    connection.open();
    EXPECT_TRUE(waitFor([&] { return acquired.count() == 1; }));
    EXPECT_EQ(acquired.at(0).at(0).toString(), "org.tavo.Two"_s);
    ASSERT_EQ(refused.count(), 1);
    EXPECT_EQ(refused.at(0).at(0).toString(), "org.tavo.One"_s);
    EXPECT_TRUE(connection.isConnected());
}

TEST_F(BusConnectionTest, ReportsThatAnInvalidAddressCanNotBeConnected)
{
    BusConnection connection("no address"_s);
    const QSignalSpy lost(&connection, &BusConnection::lost);
    connection.open();
    EXPECT_EQ(lost.count(), 1);
    EXPECT_FALSE(connection.isConnected());
}

TEST_F(BusConnectionTest, SendsTheRestWhenTheSocketHasRoomAgain)
{
    ASSERT_TRUE(connects());
    BusClient receiver(m_bus.address());
    int received = 0;
    const BusInterface interface = BusInterface::fromXml(
        "<node name='/test'><interface name='org.tavo.Test'>"
        "<method name='Take'><arg type='s' direction='in'/></method></interface></node>");
    const auto object = receiver.connection().createObject(interface);
    object->setMethod("Take", [&](const BusMessage &) { ++received; });
    receiver.serve(*object);
    constexpr int calls = 20;
    for (int i = 0; i < calls; ++i) {
        const BusMessage call =
            m_connection.createCall(receiver.name().c_str(), "/test", "org.tavo.Test", "Take");
        BusWriter(call).writeString(QString(1 << 20, 'x'));
        m_connection.send(call, std::chrono::seconds(20), [](const BusMessage &) {});
    }
    EXPECT_TRUE(waitFor([&] { return received == calls; }, std::chrono::seconds(20)));
}
} // namespace
