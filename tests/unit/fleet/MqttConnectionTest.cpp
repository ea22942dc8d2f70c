// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "mqtt/MqttConnection.h"

#include "support/EventLoop.h"

#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
const QByteArray connAck = QByteArray::fromHex("2003000000");

QByteArray callNumber(char number)
{
    QByteArray packet = QByteArray::fromHex("320700016100000078");
    packet[6] = number;
    return packet;
}

QByteArray ackOf(char number)
{
    return QByteArray::fromHex("400200") + number;
}

const QByteArray answerStart = QByteArray::fromHex("3207000162"); // a message to "b"
constexpr int answerSize = 9;

/// Handles events, but no timers, until the predicate holds.
template <typename Predicate>
bool waitWithoutTimers(Predicate predicate)
{
    const QDeadlineTimer deadline(20000);
    while (!predicate() && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::X11ExcludeTimers);
    }
    return predicate();
}
} // namespace

/// What a client writes to a broker, which the test plays, and when.
class MqttConnectionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *const any = reinterpret_cast<sockaddr *>(&address);
        socklen_t size = sizeof address;
        ASSERT_EQ(::bind(m_listener, any, size), 0);
        ASSERT_EQ(::listen(m_listener, 1), 0);
        ASSERT_EQ(::getsockname(m_listener, any, &size), 0);
        const auto port = QString::number(ntohs(address.sin_port));
        m_client = std::make_unique<MqttConnection>(
            MqttSettings::fromUrl(QStringLiteral("mqtt://127.0.0.1:") + port));
        QObject::connect(m_client.get(), &MqttConnection::received, [this] { ++m_received; });
        m_client->start();
        m_broker = ::accept(m_listener, nullptr, nullptr);
        const timeval timeout{20, 0};
        ::setsockopt(m_broker, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
        send(connAck);
        ASSERT_TRUE(waitWithoutTimers([this] { return m_client->isConnected(); }));
        const QByteArray request = nextBytes(2);
        ASSERT_EQ(request[0], '\x10') << "no request to connect";
        nextBytes(request[1]);
    }

    void TearDown() override
    {
        m_client.reset();
        ::close(m_broker);
        ::close(m_listener);
    }

    void send(const QByteArray &packets) const
    {
        ASSERT_EQ(::send(m_broker, packets.constData(), std::size_t(packets.size()), 0),
                  packets.size());
    }

    /// Has the client handle all messages. No time passes for its timers.
    void handle(const QByteArray &messages, int count)
    {
        send(messages);
        ASSERT_TRUE(waitWithoutTimers([&] { return m_received == count; }));
        QCoreApplication::processEvents(QEventLoop::X11ExcludeTimers);
    }

    void answer() const
    {
        MqttMessage message;
        message.topic = QStringLiteral("b");
        message.payload = "x";
        ASSERT_GE(m_client->publish(message), 0);
    }

    /// Waits for so many bytes from the client, without handling events.
    QByteArray nextBytes(int count) const
    {
        QByteArray bytes(count, '\0');
        const auto size = ::recv(m_broker, bytes.data(), std::size_t(count), MSG_WAITALL);
        return bytes.left(int(size));
    }

    bool isSilent() const
    {
        char byte = 0;
        return ::recv(m_broker, &byte, 1, MSG_PEEK | MSG_DONTWAIT) < 0;
    }

    std::unique_ptr<MqttConnection> m_client;
    int m_received = 0;

private:
    const int m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int m_broker = -1;
};

TEST_F(MqttConnectionTest, AnAcknowledgementLeavesWithTheAnswer)
{
    for (char number : {1, 2}) {
        handle(callNumber(number), number);
        EXPECT_TRUE(isSilent());
        answer();
        EXPECT_EQ(nextBytes(4).toHex(), ackOf(number).toHex());
        EXPECT_EQ(nextBytes(answerSize).left(5).toHex(), answerStart.toHex());
    }
}

TEST_F(MqttConnectionTest, AnAcknowledgementLeavesAloneIfThereIsNoAnswer)
{
    handle(callNumber(1), 1);
    EXPECT_TRUE(isSilent());
    ASSERT_TRUE(waitFor([&] { return !isSilent(); }));
    EXPECT_EQ(nextBytes(4).toHex(), ackOf(1).toHex());
    EXPECT_TRUE(isSilent());
}

TEST_F(MqttConnectionTest, AnAnswerThatIsAcknowledgedDelaysNothing)
{
    handle(callNumber(1), 1);
    answer();
    nextBytes(4);
    const QByteArray id = nextBytes(answerSize).mid(5, 2);
    handle(QByteArray::fromHex("4002") + id + callNumber(2), 2);
    EXPECT_EQ(nextBytes(4).toHex(), ackOf(2).toHex());
    handle(callNumber(3), 3);
    EXPECT_TRUE(isSilent());
}

TEST_F(MqttConnectionTest, ManyAcknowledgementsLeaveAtOnce)
{
    QByteArray calls;
    QByteArray acks;
    for (char number = 1; number <= 5; ++number) {
        calls += callNumber(number);
        acks += ackOf(number);
    }
    handle(calls, 5);
    EXPECT_EQ(nextBytes(acks.size()).toHex(), acks.toHex());
}

TEST_F(MqttConnectionTest, AcknowledgementsThatWaitLeaveBeforeTheEnd)
{
    handle(callNumber(1), 1);
    m_client->stop();
    EXPECT_EQ(nextBytes(4).toHex(), ackOf(1).toHex());
}
