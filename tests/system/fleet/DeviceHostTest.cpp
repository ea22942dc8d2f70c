// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DeviceTest.h"
#include "ScriptedHost.h"

/// What a device does when its host is slow, refuses or leaves.
class DeviceHostTest : public DeviceTest
{
protected:
    ScriptedHost m_scripted{m_bus.address()};
};

TEST_F(DeviceHostTest, SoundsWaitUntilTheirEndCanBeReportedAndOtherCallsDoNot)
{
    makeSound();
    set("allow", QJsonObject{{"sounds", QJsonObject{{"folder", m_folder.path()}}}});
    bool isFull = true;
    m_scripted.on("OpenInbox", [&](const BusMessage &call) {
        if (isFull) {
            ScriptedHost::refuse(call);
        } else {
            ScriptedHost::replyWithText(call, "/dbus/inbox/7");
        }
    });
    QString path;
    m_scripted.on("Call", TavoNotificationPlayerEnqueuePath(), [&](const BusMessage &call) {
        path = TavoValue(ScriptedHost::valueOf(call).toHash())
                   .notificationPlayerItem()
                   .playbackResponsePath()
                   .toString();
        ScriptedHost::reply(call, {});
    });
    startDevice();
    call(R"("id":"a","call":"sound","sound":"bell")");
    m_scripted.appear();
    call(R"("id":"b","call":"ping")");
    ASSERT_TRUE(waitForAnswer(R"("id":"b")"));
    EXPECT_EQ(count(s_answers), 1);
    isFull = false;
    ASSERT_TRUE(waitForAnswer(R"("id":"a","sounding":true)"));
    EXPECT_EQ(path, "/dbus/inbox/7");
}

TEST_F(DeviceHostTest, ACallThatDidNotReachTheHostHasNotEndedWithIt)
{
    std::optional<BusMessage> trial;
    m_scripted.on("Call", TavoAttentionTryPath(), [&](const BusMessage &call) { trial = call; });
    m_scripted.on("Call", TavoAttentionNotifyPath(), [](const BusMessage &call) {
        ScriptedHost::reply(
            call,
            TavoValue().setAttentionOutcome(TavoAttentionOutcome().setSounding(true)).__variant());
    });
    const auto letSay = [&] {
        const auto spoken = TavoAttentionTrial().setSpoken(true);
        ScriptedHost::reply(*trial, TavoValue().setAttentionTrial(spoken).__variant());
        trial.reset();
    };
    m_scripted.appear();
    startDevice();
    call(R"("id":"a","call":"say","text":"Dinner")");
    ASSERT_TRUE(waitFor([&] { return trial.has_value(); }, s_timeout));
    m_device->sendSignal(SIGSTOP);
    letSay();
    m_scripted.leave();
    m_device->sendSignal(SIGCONT);
    ASSERT_TRUE(waitForError("no host, calls wait for it"));
    m_scripted.appear();
    ASSERT_TRUE(waitFor([&] { return trial.has_value(); }, s_timeout)) << "it is said again";
    letSay();
    ASSERT_TRUE(waitForAnswer(R"("id":"a","sounding":true)"));
    m_scripted.emitValueChanged(TavoAttentionEndedPath(),
                                TavoValue()
                                    .setAttentionEnded(TavoAttentionEnded().setId("fleet-a").setEnd(
                                        TavoAttentionEnd::Dismissed))
                                    .__variant());
    EXPECT_TRUE(waitForEvent(R"("end":"dismissed","id":"a")"));
    EXPECT_EQ(count("tavo/v1/porch/event"), 1);
}
