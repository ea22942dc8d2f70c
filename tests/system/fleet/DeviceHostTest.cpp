// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DeviceTest.h"
#include "support/bus/ScriptedHost.h"

/// What a device does when its host is slow, refuses or leaves.
class DeviceHostTest : public DeviceTest
{
protected:
    /// The device shows messages: "/message/1" of the call "0" and so on.
    void show(int messages)
    {
        m_scripted.on("Call", TavoNotificationDisplayOpenPath(),
                      [opened = 0](const BusMessage &call) mutable {
                          const CMPath path(QStringLiteral("/message/%1").arg(++opened));
                          ScriptedHost::reply(call, TavoValue().setPath(path).__variant());
                      });
        m_scripted.appear();
        startDevice();
        for (int i = 0; i < messages; ++i) {
            call("\"id\":\"" + QByteArray::number(i) +
                 R"(","call":"show","title":"x","timeout":0)");
        }
        ASSERT_TRUE(waitForMessage(s_answers, R"("shown":true)", messages));
    }

    /// A script that begins with a refusal.
    static ScriptedHost::Script afterRefusal(const ScriptedHost::Script &script)
    {
        return [script, isRefused = false](const BusMessage &call) mutable {
            if (std::exchange(isRefused, true)) {
                script(call);
            } else {
                ScriptedHost::refuse(call);
            }
        };
    }

    static void agree(const BusMessage &call) { ScriptedHost::reply(call, true); }

    static void replyWithInbox(const BusMessage &call)
    {
        ScriptedHost::replyWithText(call, "/dbus/inbox/7");
    }

    /// The device is killed after the host has got a call, which it does not answer.
    void callAndKill(const CMPath &path, const QByteArray &arguments)
    {
        bool isThere = false;
        m_scripted.on("Call", path, [&](const BusMessage &) { isThere = true; });
        m_scripted.appear();
        startDevice();
        call(arguments);
        ASSERT_TRUE(waitFor([&] { return isThere; }, s_timeout));
        m_device->kill();
        ASSERT_TRUE(waitForMessage("tavo/v1/porch/online", "0"));
    }

    /// The same with a message. Tells whether the device, when it is started again, shows it once more.
    void showAndKill(bool &isShownAgain)
    {
        callAndKill(TavoNotificationDisplayOpenPath(),
                    R"("id":"a","call":"show","title":"Title","text":"Water","timeout":0)");
        m_scripted.on("Call", TavoNotificationDisplayOpenPath(), [&](const BusMessage &call) {
            isShownAgain = true;
            ScriptedHost::refuse(call);
        });
    }

    void endMessage(const char *path, TavoNotificationDisplayEnd::Enum end) const
    {
        const auto ended =
            TavoNotificationDisplayEnded().setPath(CMPath(QLatin1String(path))).setEnd(end);
        m_scripted.emitValueChanged(TavoNotificationDisplayEndedPath(),
                                    TavoValue().setDisplayEnded(ended).__variant());
    }

    /// Counts the sounds that the host gets, by the ids of their calls, and refuses the first of each.
    void countSounds(QMap<QString, int> &sounds)
    {
        allowBell();
        m_scripted.on("Call", TavoNotificationPlayerEnqueuePath(), [&](const BusMessage &call) {
            const auto item =
                TavoValue(ScriptedHost::valueOf(call).toHash()).notificationPlayerItem();
            if (++sounds[item.id()] == 1) {
                ScriptedHost::refuse(call);
            } else {
                ScriptedHost::reply(call, {});
            }
        });
    }

    ScriptedHost m_scripted{m_bus.address()};
};

TEST_F(DeviceHostTest, SoundsWaitUntilTheirEndCanBeReportedAndOtherCallsDoNot)
{
    allowBell();
    bool isFull = true;
    m_scripted.on("OpenInbox", [&](const BusMessage &call) {
        if (isFull) {
            ScriptedHost::refuse(call);
        } else {
            replyWithInbox(call);
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

TEST_F(DeviceHostTest, TheCheckOfMessagesGoesOnWhereItWasRefused)
{
    constexpr int messages = 5;
    QStringList asked;
    m_scripted.on("MatchRow", [&](const BusMessage &call) {
        asked.append(ScriptedHost::valueOf(call).toString());
        if (asked.size() == 3) {
            ScriptedHost::refuse(call);
        } else {
            constexpr int open = 0;
            ScriptedHost::replyWithInt(call, open);
        }
    });
    ASSERT_NO_FATAL_FAILURE(show(messages));
    m_device->kill();
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/online", "0"));
    startDevice();
    ASSERT_TRUE(waitFor([&] { return asked.size() == messages + 1; }, s_timeout));
    EXPECT_EQ(asked.at(3), asked.at(2));
    EXPECT_EQ(asked.removeDuplicates(), 1);
}

TEST_F(DeviceHostTest, AnEndIsReportedAlthoughTheSubscriptionWasRefused)
{
    bool isRefused = false;
    m_scripted.on("Subscribe", TavoNotificationDisplayEndedPath(), [&](const BusMessage &call) {
        if (std::exchange(isRefused, true)) {
            ScriptedHost::reply(call);
            endMessage("/message/1", TavoNotificationDisplayEnd::Closed);
        } else {
            ScriptedHost::refuse(call);
        }
    });
    ASSERT_NO_FATAL_FAILURE(show(1));
    EXPECT_TRUE(waitForEvent(R"("end":"dismissed","id":"0")"));
}

TEST_F(DeviceHostTest, AStateIsFollowedAlthoughTheSubscriptionWasRefused)
{
    bool isRefused = false;
    m_scripted.on("Subscribe", TavoAttentionDoNotDisturbPath(), [&](const BusMessage &call) {
        if (std::exchange(isRefused, true)) {
            ScriptedHost::reply(call);
        } else {
            ScriptedHost::refuse(call);
        }
    });
    m_scripted.on(
        "GetValue", TavoAttentionDoNotDisturbPath(), [reads = 0](const BusMessage &call) mutable {
            const bool isOn = ++reads > 1;
            ScriptedHost::reply(
                call, TavoValue()
                          .setAttentionDoNotDisturb(TavoAttentionDoNotDisturb().setOn(isOn))
                          .__variant());
        });
    m_scripted.appear();
    startDevice();
    EXPECT_TRUE(waitForMessage("tavo/v1/porch/state/quiet", R"("quiet":true)"));
}

TEST_F(DeviceHostTest, ASoundThatGivesWayWhileTheDeviceIsStartedAgainIsThere)
{
    allowBell();
    int requests = 0;
    m_scripted.on("OpenInbox", replyWithInbox);
    m_scripted.on("Call", TavoNotificationPlayerEnqueuePath(), [&](const BusMessage &call) {
        if (++requests > 1) {
            ScriptedHost::refuse(call, {"org.tavo.Error.Dbus", "A sound with this id waits"});
        }
    });
    m_scripted.appear();
    startDevice();
    call(R"("id":"a","call":"sound","sound":"bell","priority":"urgent")");
    ASSERT_TRUE(waitFor([&] { return requests == 1; }, s_timeout));
    m_device->kill();
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/online", "0"));
    startDevice();
    EXPECT_TRUE(waitForAnswer(R"("id":"a","sounding":true)"));
}

TEST_F(DeviceHostTest, ASlowBrokerGetsOnlyTheNewestState)
{
    constexpr int changes = 6;
    const auto current = [](int waiting) {
        return TavoValue()
            .setDisplayCurrent(TavoNotificationDisplayCurrent()
                                   .setPath(CMPath(QStringLiteral("/message/1")))
                                   .setWaiting(waiting))
            .__variant();
    };
    int described = 0;
    m_scripted.on("Describe", [&](const BusMessage &call) {
        ScriptedHost::describe(call, "/message/1", QString::number(++described));
        if (described < changes) {
            m_scripted.emitValueChanged(TavoNotificationDisplayCurrentPath(), current(described));
        }
    });
    m_scripted.appear();
    startDevice();
    m_broker->pause();
    m_scripted.on("GetValue", TavoNotificationDisplayCurrentPath(),
                  [&](const BusMessage &call) { ScriptedHost::reply(call, current(described)); });
    m_scripted.emitValueChanged(TavoNotificationDisplayCurrentPath(), current(0));
    ASSERT_TRUE(waitFor([&] { return described == changes; }, s_timeout));
    m_broker->resume();
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/state/display", R"("text":"6")"));
    EXPECT_LE(count("tavo/v1/porch/state/display", R"("shown":true)"), 3)
        << "the first, the newest, and perhaps the one before that";
}

TEST_F(DeviceHostTest, AStateThatCouldNotBeReadIsReadAgain)
{
    int reads = 0;
    m_scripted.on("GetValue", TavoPlayerMainAudioStatePath(), [&](const BusMessage &call) {
        if (++reads == 1) {
            ScriptedHost::refuse(call);
        } else {
            ScriptedHost::reply(call,
                                TavoValue()
                                    .setMainAudioState(TavoPlayerMainAudioState().setVolume(0.25))
                                    .__variant());
        }
    });
    m_scripted.appear();
    startDevice();
    EXPECT_TRUE(waitForMessage("tavo/v1/porch/state/volume", R"("volume":0.25)"));
}

TEST_F(DeviceHostTest, AMessageWhoseTextsCouldNotBeReadIsReadAgain)
{
    const CMPath path(QStringLiteral("/message/1"));
    m_scripted.on("GetValue", TavoNotificationDisplayCurrentPath(), [&](const BusMessage &call) {
        ScriptedHost::reply(call,
                            TavoValue()
                                .setDisplayCurrent(TavoNotificationDisplayCurrent().setPath(path))
                                .__variant());
    });
    int reads = 0;
    m_scripted.on("Describe", [&](const BusMessage &call) {
        if (++reads == 1) {
            ScriptedHost::refuse(call);
        } else {
            ScriptedHost::describe(call, path.toString(), "Water");
        }
    });
    m_scripted.appear();
    startDevice();
    EXPECT_TRUE(waitForMessage("tavo/v1/porch/state/display", R"("text":"Water")"));
}

TEST_F(DeviceHostTest, ARefusedCancelOfAMessageIsSentAgain)
{
    m_scripted.on("Call", TavoNotificationDisplayCancelNotifyPath(), afterRefusal(agree));
    ASSERT_NO_FATAL_FAILURE(show(1));
    call(R"("id":"c","call":"cancel","target":"0")");
    EXPECT_TRUE(waitForAnswer(R"("done":true,"id":"c")"));
}

TEST_F(DeviceHostTest, ARefusedCancelOfASoundIsSentAgain)
{
    allowBell();
    m_scripted.on("OpenInbox", replyWithInbox);
    m_scripted.on("Call", TavoNotificationPlayerEnqueuePath(), agree);
    m_scripted.on("Call", TavoNotificationPlayerCancelPath(), afterRefusal(agree));
    m_scripted.appear();
    startDevice();
    call(R"("id":"a","call":"sound","sound":"bell")");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","sounding":true)"));
    call(R"("id":"c","call":"cancel","target":"a")");
    EXPECT_TRUE(waitForAnswer(R"("done":true,"id":"c")"));
}

TEST_F(DeviceHostTest, ARefusedCancelOfANotificationIsSentAgain)
{
    m_scripted.on("Call", TavoAttentionNotifyPath(), [](const BusMessage &call) {
        const auto outcome = TavoAttentionOutcome().setShown(true);
        ScriptedHost::reply(call, TavoValue().setAttentionOutcome(outcome).__variant());
    });
    m_scripted.on("Call", TavoAttentionClosePath(), afterRefusal(agree));
    m_scripted.appear();
    startDevice();
    call(R"("id":"a","call":"notify","title":"Water")");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    call(R"("id":"c","call":"cancel","target":"a")");
    EXPECT_TRUE(waitForAnswer(R"("done":true,"id":"c")"));
}

TEST_F(DeviceHostTest, ACancelWithAnUnknownOutcomeIsAnsweredWithAnError)
{
    const std::vector<BusError> unknown{
        {"org.tavo.Error.TimedOut", "The host did not answer"},
        {"org.freedesktop.DBus.Error.NoReply", "The host has left"},
        BusError::limitExceeded("The call was carried out, but its reply is left out: busy")};
    m_scripted.on("Call", TavoNotificationDisplayCancelNotifyPath(),
                  [&, next = unknown.begin()](const BusMessage &call) mutable {
                      if (next == unknown.end()) {
                          agree(call);
                      } else {
                          ScriptedHost::refuse(call, *next++);
                      }
                  });
    ASSERT_NO_FATAL_FAILURE(show(int(unknown.size())));
    for (const char *target : {"0", "1", "2"}) {
        call(QByteArray(R"("id":"c)") + target + R"(","call":"cancel","target":")" + target + '"');
    }
    EXPECT_TRUE(waitForMessage(s_answers, "error", int(unknown.size())));
}

TEST_F(DeviceHostTest, ARefusedCancelWaitsForTheNextHost)
{
    bool isRefused = false;
    m_scripted.on("Call", TavoNotificationDisplayCancelNotifyPath(), [&](const BusMessage &call) {
        ScriptedHost::refuse(call);
        isRefused = true;
    });
    ASSERT_NO_FATAL_FAILURE(show(1));
    call(R"("id":"c","call":"cancel","target":"0")");
    ASSERT_TRUE(waitFor([&] { return isRefused; }, s_timeout));
    m_scripted.leave();
    ASSERT_TRUE(waitForError("no host, calls wait for it"));
    m_scripted.on("Call", TavoNotificationDisplayCancelNotifyPath(), agree);
    m_scripted.appear();
    EXPECT_TRUE(waitForAnswer(R"("done":true,"id":"c")"));
}

TEST_F(DeviceHostTest, ARefusedEndElsewhereIsSentAgain)
{
    int cancels = 0;
    m_scripted.on("Call", TavoNotificationDisplayOpenPath(), [](const BusMessage &call) {
        const CMPath path(QStringLiteral("/message/1"));
        ScriptedHost::reply(call, TavoValue().setPath(path).__variant());
    });
    m_scripted.on("Call", TavoNotificationDisplayCancelNotifyPath(), [&](const BusMessage &call) {
        ++cancels;
        ScriptedHost::refuse(call);
    });
    m_scripted.appear();
    startDevice();
    call(R"("id":"a","call":"show","title":"x","everywhere":true)", "tavo/v1/group/all/call");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    ASSERT_TRUE(publish("tavo/v1/group/all/end",
                        R"({"device":"hall","end":"dismissed","id":"a","time":1793600000000})"));
    EXPECT_TRUE(waitFor([&] { return cancels >= 2; }, s_timeout));
}

TEST_F(DeviceHostTest, TheRefusedSoundOfAMessageIsSentAgain)
{
    QMap<QString, int> sounds;
    countSounds(sounds);
    ASSERT_NO_FATAL_FAILURE(show(0));
    call(R"("id":"a","call":"show","title":"x","timeout":0,"sound":"bell")");
    EXPECT_TRUE(waitFor([&] { return sounds["fleet-a"] == 2; }, s_timeout));
}

TEST_F(DeviceHostTest, TheRefusedSoundOfAMessageThatHasEndedIsNotSentAgain)
{
    QMap<QString, int> sounds;
    countSounds(sounds);
    ASSERT_NO_FATAL_FAILURE(show(0));
    call(R"("id":"a","call":"show","title":"x","timeout":0,"sound":"bell")");
    ASSERT_TRUE(waitFor([&] { return sounds["fleet-a"] == 1; }, s_timeout));
    endMessage("/message/1", TavoNotificationDisplayEnd::Cancelled);
    call(R"("id":"b","call":"show","title":"x","timeout":0,"sound":"bell")");
    ASSERT_TRUE(waitFor([&] { return sounds["fleet-b"] == 2; }, s_timeout));
    EXPECT_EQ(sounds["fleet-a"], 1);
}

TEST_F(DeviceHostTest, TheRefusedSoundOfAMessageIsNotSentToAnotherHost)
{
    QMap<QString, int> sounds;
    countSounds(sounds);
    ASSERT_NO_FATAL_FAILURE(show(0));
    call(R"("id":"a","call":"show","title":"x","timeout":0,"sound":"bell")");
    ASSERT_TRUE(waitFor([&] { return sounds["fleet-a"] == 1; }, s_timeout));
    m_scripted.leave();
    m_scripted.appear();
    call(R"("id":"b","call":"show","title":"x","timeout":0,"sound":"bell")");
    ASSERT_TRUE(waitFor([&] { return sounds["fleet-b"] == 2; }, s_timeout));
    EXPECT_EQ(sounds["fleet-a"], 1);
}

TEST_F(DeviceHostTest, TheRefusedCancelOfADismissedMessagesSoundIsSentAgain)
{
    int cancels = 0;
    m_scripted.on("Call", TavoNotificationPlayerCancelPath(), [&](const BusMessage &call) {
        ++cancels;
        ScriptedHost::refuse(call);
    });
    ASSERT_NO_FATAL_FAILURE(show(1));
    endMessage("/message/1", TavoNotificationDisplayEnd::Closed);
    EXPECT_TRUE(waitFor([&] { return cancels >= 2; }, s_timeout));
}

TEST_F(DeviceHostTest, ACancelHasAlsoEndedTheSoundOfTheMessage)
{
    allowBell();
    bool isSilent = false;
    m_scripted.on("Call", TavoNotificationDisplayCancelNotifyPath(), agree);
    m_scripted.on("Call", TavoNotificationPlayerCancelPath(), afterRefusal([&](const auto &call) {
                      isSilent = true;
                      ScriptedHost::reply(call, {});
                  }));
    ASSERT_NO_FATAL_FAILURE(show(0));
    call(R"("id":"a","call":"show","title":"x","timeout":0,"sound":"bell")");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    call(R"("id":"c","call":"cancel","target":"a")");
    ASSERT_TRUE(waitForAnswer(R"("done":true,"id":"c")"));
    EXPECT_TRUE(isSilent);
}

TEST_F(DeviceHostTest, AMessageIsFoundAgainAlthoughTheListWasRefused)
{
    bool isShownAgain = false;
    ASSERT_NO_FATAL_FAILURE(showAndKill(isShownAgain));
    // Of a refused list, parts are asked for, down to one row.
    bool isRefused = false;
    m_scripted.on("GetRows", TavoNotificationDisplayQueuePath(), [&](const BusMessage &call) {
        if (isRefused) {
            ScriptedHost::replyWithRow(call, "/message/1");
            return;
        }
        BusReader reader(call);
        reader.readString();
        reader.readInt32();
        isRefused = reader.readInt32() == 1;
        ScriptedHost::refuse(call);
    });
    m_scripted.on("Describe", [](const BusMessage &call) {
        BusReader reader(call);
        if (reader.readStringList().isEmpty()) {
            ScriptedHost::reply(call);
        } else {
            ScriptedHost::describe(call, "/message/1", "Water");
        }
    });
    startDevice();
    EXPECT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    EXPECT_FALSE(isShownAgain);
}

TEST_F(DeviceHostTest, AMessageIsFoundAgainAlthoughItsDescriptionWasRefused)
{
    bool isShownAgain = false;
    ASSERT_NO_FATAL_FAILURE(showAndKill(isShownAgain));
    m_scripted.on("GetRows", TavoNotificationDisplayQueuePath(),
                  [](const BusMessage &call) { ScriptedHost::replyWithRow(call, "/message/1"); });
    m_scripted.on("Describe", afterRefusal([](const BusMessage &call) {
                      ScriptedHost::describe(call, "/message/1", "Water");
                  }));
    startDevice();
    EXPECT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    EXPECT_FALSE(isShownAgain);
}

TEST_F(DeviceHostTest, ANotificationIsFoundAgainAlthoughItWasRefused)
{
    ASSERT_NO_FATAL_FAILURE(
        callAndKill(TavoAttentionNotifyPath(), R"("id":"a","call":"notify","title":"Water")"));
    m_scripted.on("Call", TavoAttentionNotifyPath(), afterRefusal([](const BusMessage &call) {
                      ScriptedHost::refuse(call, {"org.tavo.Error.Attention",
                                                  "A notification with this id is open"});
                  }));
    startDevice();
    EXPECT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
}

TEST_F(DeviceHostTest, ASoundIsFoundAgainAlthoughItWasRefused)
{
    allowBell();
    m_scripted.on("OpenInbox", replyWithInbox);
    ASSERT_NO_FATAL_FAILURE(callAndKill(TavoNotificationPlayerEnqueuePath(),
                                        R"("id":"a","call":"sound","sound":"bell")"));
    m_scripted.on(
        "Call", TavoNotificationPlayerEnqueuePath(), afterRefusal([](const BusMessage &call) {
            ScriptedHost::refuse(call, {"org.tavo.Error.Dbus", "A sound with this id waits"});
        }));
    startDevice();
    EXPECT_TRUE(waitForAnswer(R"("id":"a","sounding":true)"));
}

TEST_F(DeviceHostTest, WhatIsToBeSaidIsNotShownBecauseTheHostWasBusy)
{
    m_scripted.on("Call", TavoAttentionTryPath(),
                  [](const BusMessage &call) { ScriptedHost::refuse(call); });
    m_scripted.on("Call", TavoAttentionNotifyPath(), [](const BusMessage &call) {
        const auto outcome = TavoAttentionOutcome().setShown(true);
        ScriptedHost::reply(call, TavoValue().setAttentionOutcome(outcome).__variant());
    });
    m_scripted.appear();
    startDevice();
    call(R"("id":"a","call":"say","text":"Dinner")");
    EXPECT_TRUE(waitForAnswer(R"("error":"Too many calls","id":"a")"));
}
