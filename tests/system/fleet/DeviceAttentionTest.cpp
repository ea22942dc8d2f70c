// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DeviceTest.h"

/// What calls do on a host with the module attention.
class DeviceAttentionTest : public DeviceTest
{
protected:
    void SetUp() override
    {
        DeviceTest::SetUp();
        // Reads aloud by ringing.
        makeSound();
        const QString script =
            QStringLiteral("cd '%1'; cat >said; cat bell.wav").arg(m_folder.path());
        QFile settings(m_folder.filePath("attention.json"));
        ASSERT_TRUE(settings.open(QIODevice::WriteOnly));
        const QJsonObject speech{{"command", QJsonArray{"sh", "-c", script}}};
        settings.write(QJsonDocument(QJsonObject{{"speech", speech}}).toJson());
        settings.close();
        startHostWithAttention();
        startDevice();
    }

    /// Does what a person does who chooses the first action of the message on display.
    void chooseAction()
    {
        ASSERT_TRUE(waitFor([&] { return !openMessages().isEmpty(); }, s_timeout));
        const auto rows = client().rows(CMPath(openMessages().value(0)), 1, 1);
        ASSERT_TRUE(waitFor([&] { return rows.isFinished(); }, s_timeout));
        ASSERT_FALSE(rows.value().isEmpty());
        const CMPath path(rows.value().first().toHash().value("path").toString());
        const auto reply = client().call(path);
        ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }, s_timeout));
    }

    /// Does what a person does who does not want to be disturbed.
    void quiet()
    {
        const auto reply = client().call(
            TavoAttentionSetDoNotDisturbPath(),
            TavoValue().setAttentionDoNotDisturb(TavoAttentionDoNotDisturb().setOn(true)));
        ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }, s_timeout));
    }
};

TEST_F(DeviceAttentionTest, AChosenActionIsAnEvent)
{
    call(R"("id":"a","call":"show","title":"Water","timeout":0,"actions":{"ok":"Seen"})");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    chooseAction();
    EXPECT_TRUE(waitForEvent(R"("action":"ok","device":"porch","end":"action","id":"a")"));
}

TEST_F(DeviceAttentionTest, AnotherProgramsMessageIsNotTakenForACalls)
{
    const auto other =
        client().call(TavoAttentionNotifyPath(),
                      TavoValue().setAttentionItem(
                          TavoAttentionItem().setId("fleet-a").setTitle("Other").setTimeout(0)));
    ASSERT_TRUE(waitFor([&] { return other.isFinished(); }, s_timeout));
    call(R"("id":"a","call":"notify","title":"Water","timeout":0)");
    EXPECT_TRUE(waitForAnswer("A notification with this id is open"));
}

TEST_F(DeviceAttentionTest, WhatIsKeptFromPeopleIsAnsweredWithTheReason)
{
    quiet();
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/state/quiet", R"("quiet":true)"));
    call(R"("id":"a","call":"notify","title":"Mail")");
    ASSERT_TRUE(waitForAnswer("kept from people"));
    call(R"("id":"b","call":"notify","title":"Fire","priority":"urgent")");
    EXPECT_TRUE(waitForAnswer(R"("id":"b","shown":true)"));
}

TEST_F(DeviceAttentionTest, WhatIsToBeSaidIsReadAloud)
{
    call(R"("id":"a","call":"say","text":"Dinner is ready")");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","sounding":true)"));
    ASSERT_TRUE(waitForEvent(R"("end":"finished","id":"a")"));
    QFile said(m_folder.filePath("said"));
    ASSERT_TRUE(said.open(QIODevice::ReadOnly));
    EXPECT_THAT(said.readAll().toStdString(), testing::HasSubstr("Dinner is ready"));
}

TEST_F(DeviceAttentionTest, AnActionThatWasChosenWhileTheDeviceWasAwayIsAnEvent)
{
    call(R"("id":"a","call":"show","title":"Water","timeout":0,"actions":{"ok":"Seen"})");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    m_device->kill();
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/online", "0"));
    chooseAction();
    startDevice();
    EXPECT_TRUE(waitForEvent(R"("action":"ok","device":"porch","end":"action","id":"a")"));
}

/// A device that stops reading, and a host that lets it leave little unread.
class DeviceLeftOutTest : public DeviceAttentionTest
{
protected:
    DeviceLeftOutTest() { m_limits = {{"unreadBytes", 1 << 20}, {"messageBytes", 1 << 21}}; }

    /// Has the host report more than the device may leave unread.
    void flood()
    {
        constexpr int nearlyAll = 1'000'000;
        finish(client().call(CMPath("/dbus/inbox/1"), QString(nearlyAll, 'x')));
        constexpr int enoughForTheRest = 100;
        for (int i = 0; i < enoughForTheRest; ++i) {
            const QString id = QString::number(i).rightJustified(200, 'x');
            // So many less urgent ones would be kept from people.
            const auto item = TavoAttentionItem().setId(id).setTitle("Other").setPriority(
                TavoNotificationItemPriority::Urgent);
            finish(client().call(TavoAttentionNotifyPath(), TavoValue().setAttentionItem(item)));
            finish(client().call(TavoAttentionClosePath(), TavoValue().setString_(id)));
        }
        ASSERT_TRUE(m_host->waitForLog("doesn't read its signals: some are left out"));
        ASSERT_TRUE(waitFor([this] { return openMessages().size() <= 1; }))
            << "the call's may stay";
    }

    static void finish(const CMReply<QVariant> &reply)
    {
        EXPECT_TRUE(waitFor([&] { return reply.isFinished(); }, s_timeout));
        EXPECT_FALSE(reply.error().isError()) << reply.error().message();
    }
};

TEST_F(DeviceLeftOutTest, AnActionWhoseReportIsLeftOutIsAnEvent)
{
    call(R"("id":"a","call":"show","title":"Water","timeout":0,"actions":{"ok":"Seen"})");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    m_device->sendSignal(SIGSTOP);
    flood();
    chooseAction();
    m_device->sendSignal(SIGCONT);
    EXPECT_TRUE(waitForEvent(R"("action":"ok","device":"porch","end":"action","id":"a")"));
    EXPECT_TRUE(waitForError("the host left out reports"));
}

TEST_F(DeviceLeftOutTest, AMessageWhoseEndIsLeftOutHasFailed)
{
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    m_device->sendSignal(SIGSTOP);
    flood();
    closeMessage();
    m_device->sendSignal(SIGCONT);
    EXPECT_TRUE(waitForEvent(R"("end":"failed","id":"a")"));
}

TEST_F(DeviceLeftOutTest, AStateWhoseChangeIsLeftOutIsReadAgain)
{
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/state/quiet", R"("quiet":false)"));
    m_device->sendSignal(SIGSTOP);
    flood();
    quiet();
    m_device->sendSignal(SIGCONT);
    EXPECT_TRUE(waitForMessage("tavo/v1/porch/state/quiet", R"("quiet":true)"));
}

/// A host with the module attention, and no program that reads aloud.
class DeviceWithoutSpeechTest : public DeviceTest
{
};

TEST_F(DeviceWithoutSpeechTest, WhatCannotBeSaidIsAnsweredWithTheReason)
{
    startHostWithAttention();
    startDevice();
    call(R"("id":"a","call":"say","text":"Dinner is ready")");
    EXPECT_TRUE(waitForAnswer("not read aloud: no program for speech is configured"));
}
