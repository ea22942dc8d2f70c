// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/attention/HostAttention.h"
#include "display/message/HostMessages.h"
#include "support/bus/PrivateBus.h"
#include "support/bus/ScriptedHost.h"
#include "support/EventLoop.h"
#include <core/base/connect.h>

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <optional>

namespace {
/// A host that refuses requests for a while.
class DisplayBusyHostTest : public testing::Test
{
protected:
    void SetUp() override
    {
        tavoConnect(&m_messages, &MessageSource::shown, &m_client,
                    [this](const Head & /*head*/, const Message &message) { m_shown = message; });
        tavoConnect(&m_messages, &MessageSource::messageChanged, &m_client,
                    [this](const Message &message) { m_shown = message; });
        m_host.appear();
    }

    /// The first calls are refused, later ones answered so.
    void refuse(int calls, const QString &method, const CMPath &path,
                const ScriptedHost::Script &answer)
    {
        m_host.on(method, path, [calls, answer](const BusMessage &call) mutable {
            if (--calls >= 0) {
                ScriptedHost::refuse(call);
            } else {
                answer(call);
            }
        });
    }

    /// Refuses to report changes of the value and of the node. When it does later, the value is another one.
    void refuseSubscriptions(const CMPath &path, const QVariant &value)
    {
        refuse(2, "Subscribe", path, [this, path, value](const BusMessage &call) {
            ScriptedHost::reply(call);
            setValue(path, value);
        });
    }

    void setValue(const CMPath &path, const QVariant &value)
    {
        m_host.on("GetValue", path,
                  [value](const BusMessage &call) { ScriptedHost::reply(call, value); });
    }

    void putOnDisplay(const CMPath &path)
    {
        setValue(TavoNotificationDisplayCurrentPath(), current(path));
    }

    static QVariant current(const CMPath &path)
    {
        return TavoValue()
            .setDisplayCurrent(TavoNotificationDisplayCurrent().setPath(path).setSince(1))
            .__variant();
    }

    static QVariant doNotDisturb()
    {
        return TavoValue()
            .setAttentionDoNotDisturb(TavoAttentionDoNotDisturb().setOn(true))
            .__variant();
    }

    static void replyWithTitle(const BusMessage &call, const QString &title)
    {
        BusWriter reply(call.createReply());
        reply.writeString(title);
        reply.openArray("v");
        reply.close();
        reply.message().send();
    }

    const CMPath m_door{QStringLiteral("/door")};
    PrivateBus m_bus;
    ScriptedHost m_host{m_bus.address()};
    TavoClient m_client{m_bus.address()};
    HostMessages m_messages{m_client};
    HostAttention m_attention{m_client};
    std::optional<Message> m_shown;
};

TEST_F(DisplayBusyHostTest, AMessageIsSeenAlthoughTheSubscriptionWasRefused)
{
    putOnDisplay({});
    refuseSubscriptions(TavoNotificationDisplayCurrentPath(), current(m_door));
    m_messages.start();
    EXPECT_TRUE(waitFor([&] { return m_shown.has_value(); }));
}

TEST_F(DisplayBusyHostTest, AMessageThatCouldNotBeReadIsReadAgain)
{
    putOnDisplay(m_door);
    constexpr int calls = 2; // Each message is read twice.
    refuse(calls, "Preview", m_door,
           [](const BusMessage &call) { replyWithTitle(call, QStringLiteral("Door")); });
    m_messages.start();
    EXPECT_TRUE(waitFor([&] { return m_shown && m_shown->title == QLatin1String("Door"); }));
}

TEST_F(DisplayBusyHostTest, AMessageIsFollowedAlthoughTheSubscriptionWasRefused)
{
    putOnDisplay(m_door);
    QString title = QStringLiteral("Door");
    refuse(1, "Subscribe", m_door, [&](const BusMessage &call) {
        title = QStringLiteral("Gate");
        ScriptedHost::reply(call);
    });
    m_host.on("Preview", [&](const BusMessage &call) { replyWithTitle(call, title); });
    m_messages.start();
    EXPECT_TRUE(waitFor([&] { return m_shown && m_shown->title == QLatin1String("Gate"); }));
}

TEST_F(DisplayBusyHostTest, DoNotDisturbIsFollowedAlthoughTheSubscriptionWasRefused)
{
    refuseSubscriptions(TavoAttentionDoNotDisturbPath(), doNotDisturb());
    m_attention.start();
    EXPECT_TRUE(waitFor([&] { return m_attention.doNotDisturb().on(); }));
}

TEST_F(DisplayBusyHostTest, DoNotDisturbThatCouldNotBeReadIsReadAgain)
{
    refuse(1, "GetValue", TavoAttentionDoNotDisturbPath(),
           [](const BusMessage &call) { ScriptedHost::reply(call, doNotDisturb()); });
    m_attention.start();
    EXPECT_TRUE(waitFor([&] { return m_attention.doNotDisturb().on(); }));
}

TEST_F(DisplayBusyHostTest, TheHistoryIsReadAgainWhenTheSubscriptionWasRefused)
{
    bool isFollowed = false;
    refuse(1, "Subscribe", TavoAttentionHistoryStatePath(), [&](const BusMessage &call) {
        isFollowed = true;
        ScriptedHost::reply(call);
    });
    m_attention.start();
    const QSignalSpy changed(&m_attention, &HostAttention::historyChanged);
    m_attention.followHistory(true);
    EXPECT_TRUE(waitFor([&] { return isFollowed && !changed.isEmpty(); }));
}
} // namespace
