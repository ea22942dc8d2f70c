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
        const auto rows = client().rows(CMPath(openMessages().value(0)), 1, 1);
        ASSERT_TRUE(waitFor([&] { return rows.isFinished(); }, s_timeout));
        ASSERT_FALSE(rows.value().isEmpty());
        const CMPath path(rows.value().first().toHash().value("path").toString());
        const auto reply = client().call(path);
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
    const auto quiet = client().call(
        TavoAttentionSetDoNotDisturbPath(),
        TavoValue().setAttentionDoNotDisturb(TavoAttentionDoNotDisturb().setOn(true)));
    ASSERT_TRUE(waitFor([&] { return quiet.isFinished(); }, s_timeout));
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
