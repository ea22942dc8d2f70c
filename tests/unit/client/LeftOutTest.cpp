// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientTest.h"
#include "support/EventThread.h"
#include <client/TavoInbox.h>

#include <atomic>
#include <functional>
#include <future>

/// A client in a thread of its own that stops reading, and a host that lets it leave little unread.
class ClientLeftOutTest : public ClientTest
{
protected:
    static constexpr int s_count = 10;

    ClientLeftOutTest()
    {
        constexpr int mebi = 1 << 20;
        startHost({{"limits", QVariantHash{{"unreadBytes", mebi}, {"messageBytes", 2 * mebi}}}});
        m_service.publish(m_text, large(0));
        EXPECT_TRUE(connectedClient().isAvailable());
    }

    ~ClientLeftOutTest() override
    {
        m_thread.run([this] { m_slow.reset(); });
    }

    /// Starts the client and calls the function in its thread, then waits until the host has handled what
    /// the function requested.
    void startSlowClient(const std::function<void()> &prepare)
    {
        m_thread.run([&] {
            m_slow = std::make_unique<TavoClient>(m_bus.address());
            QObject::connect(m_slow.get(), &TavoClient::valueChanged, [this] { ++m_changes; });
            QObject::connect(m_slow.get(), &TavoClient::changesDropped,
                             [this](const CMPath &where, uint count) {
                                 EXPECT_EQ(where, m_text);
                                 m_droppedChanges += int(count);
                             });
            prepare();
            // The host handles this request after those for the subscriptions.
            QObject::connect(m_slow.get(), &TavoClient::availableChanged, [this] {
                m_slow->list().onFinished(m_slow.get(), [this](const auto &) { m_isReady = true; });
            });
        });
        ASSERT_TRUE(waitFor([this] { return m_isReady.load(); }));
    }

    /// Calls the function for each number while the client does not read.
    void whileNotReading(const std::function<void(int)> &act)
    {
        std::promise<void> over;
        m_thread.start([wait = over.get_future().share()] { wait.wait(); });
        for (int i = 1; i <= s_count; ++i) {
            act(i);
            EXPECT_TRUE(succeeds(connectedClient().list()));
        }
        over.set_value();
    }

    static TavoValue large(int number)
    {
        constexpr int size = 1'000'000;
        return TavoValue().setString_(QString(size, QChar('a' + number)));
    }

    const CMPath m_text{"/test/text"_s};
    EventThread m_thread;
    std::unique_ptr<TavoClient> m_slow; ///< used in the thread
    std::atomic<bool> m_isReady{false};
    std::atomic<int> m_changes{0};
    std::atomic<int> m_droppedChanges{0};
    std::atomic<int> m_requests{0};
    std::atomic<int> m_droppedRequests{0};
};

TEST_F(ClientLeftOutTest, ChangesAreCountedAndLaterOnesAreReported)
{
    startSlowClient([this] { m_slow->subscribe(m_text, TavoClient::Change::Value); });
    whileNotReading([this](int number) { m_service.publishAgain(m_text, large(number)); });
    ASSERT_TRUE(waitFor([this] { return m_changes + m_droppedChanges >= s_count; }));
    EXPECT_GT(m_droppedChanges, 0);
    EXPECT_EQ(m_changes + m_droppedChanges, s_count);
    const int before = m_changes;
    m_service.publishAgain(m_text, TavoValue().setInt_(1));
    EXPECT_TRUE(waitFor([&] { return m_changes == before + 1; }));
}

TEST_F(ClientLeftOutTest, RequestsToAnInboxAreCountedByTheInbox)
{
    TavoInbox *inbox = nullptr;
    startSlowClient([&] {
        inbox = new TavoInbox(m_slow.get(), m_slow.get());
        QObject::connect(inbox, &TavoInbox::received, [this] { ++m_requests; });
        QObject::connect(inbox, &TavoInbox::requestsDropped,
                         [this](uint count) { m_droppedRequests += int(count); });
    });
    CMPath path;
    ASSERT_TRUE(waitFor([&] {
        path = m_thread.run([&] { return inbox->path(); });
        return !path.isEmpty();
    }));
    whileNotReading(
        [&](int number) { EXPECT_TRUE(succeeds(connectedClient().call(path, large(number)))); });
    ASSERT_TRUE(waitFor([this] { return m_requests + m_droppedRequests >= s_count; }));
    EXPECT_GT(m_droppedRequests, 0);
    EXPECT_EQ(m_requests + m_droppedRequests, s_count);
    EXPECT_EQ(m_droppedChanges, 0);
}
