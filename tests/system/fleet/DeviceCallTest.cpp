// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DeviceTest.h"

/// What calls do, on a host as it is by default.
class DeviceCallTest : public DeviceTest
{
protected:
    void SetUp() override
    {
        DeviceTest::SetUp();
        startHost();
    }

    /// The device is killed while it shows a message.
    void showAndKill()
    {
        startDevice();
        call(R"("id":"a","call":"show","title":"Water","timeout":0)");
        ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
        m_device->kill();
        ASSERT_TRUE(waitForMessage("tavo/v1/porch/online", "0"));
    }
};

TEST_F(DeviceCallTest, AShownMessageIsAnsweredOnceAndItsEndIsAnEvent)
{
    startDevice();
    call(R"("id":"leak-7","call":"show","title":"Water","text":"In the cellar","timeout":0)");
    ASSERT_TRUE(waitForAnswer(R"("id":"leak-7","shown":true)"));
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/state/display", R"("title":"Water")"));
    closeMessage();
    ASSERT_TRUE(waitForEvent(R"("end":"dismissed")"));
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/state/display", R"("shown":false)"));
    EXPECT_EQ(count(s_answers), 1);
    EXPECT_EQ(count("tavo/v1/porch/event"), 1);
}

TEST_F(DeviceCallTest, TheStateHasTheBeginningOfALongText)
{
    const QByteArray beginning(999, 'x');
    startDevice();
    call(R"("id":"a","call":"show","text":")" + beginning + "😀yyy\"");
    EXPECT_TRUE(waitForMessage("tavo/v1/porch/state/display", '"' + beginning + '"'));
}

TEST_F(DeviceCallTest, ARepeatedCallIsAnsweredAgainAndNotCarriedOutAgain)
{
    startDevice();
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    ASSERT_TRUE(waitForMessage(s_answers, R"("id":"a","shown":true)", 2));
    EXPECT_EQ(openMessages().size(), 1);
}

TEST_F(DeviceCallTest, CallsThatArriveTogetherAreCarriedOutOnce)
{
    startDevice();
    m_device->sendSignal(SIGSTOP);
    call(R"("id":"a","call":"cancel","target":"unknown")");
    call(R"("id":"b","call":"show","title":"Water","timeout":0)");
    call(R"("id":"c","call":"show","title":"Fire","timeout":0)");
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/call", R"("id":"c")")) << "the broker has sent them";
    m_device->sendSignal(SIGCONT);
    ASSERT_TRUE(waitForAnswer(R"("id":"b","shown":true)"));
    ASSERT_TRUE(waitForAnswer(R"("id":"c","shown":true)"));
    EXPECT_EQ(openMessages().size(), 2);
}

TEST_F(DeviceCallTest, ACallIsNotCarriedOutAgainAfterTheDeviceHasBeenKilled)
{
    ASSERT_NO_FATAL_FAILURE(showAndKill());
    startDevice();
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    EXPECT_EQ(openMessages().size(), 1);
    closeMessage();
    ASSERT_TRUE(waitForEvent(R"("id":"a")"));
}

TEST_F(DeviceCallTest, AMessageIsFoundAgainHoweverManyOthersAreOpen)
{
    startDevice();
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    constexpr int moreThanFitIntoOneReply = 100;
    for (int i = 0; i < moreThanFitIntoOneReply; ++i) {
        const auto other = TavoNotificationDisplayItem().setPath(
            CMPath(QString::asprintf("/%04d", i).repeated(800)));
        const auto reply = client().open(other);
        ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }, s_timeout));
        ASSERT_FALSE(reply.error().isError()) << reply.error().message();
    }
    m_device->kill();
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/online", "0"));
    startDevice();
    call(R"("id":"b","call":"show","title":"Fire","timeout":0)");
    ASSERT_TRUE(waitForAnswer(R"("id":"b","shown":true)")) << "after it has looked for the first";
    closeMessage();
    EXPECT_TRUE(waitForEvent(R"("end":"dismissed","id":"a")"));
    EXPECT_EQ(count("tavo/v1/porch/event"), 1);
}

TEST_F(DeviceCallTest, AMessageThatEndedWhileTheDeviceWasAwayHasFailed)
{
    ASSERT_NO_FATAL_FAILURE(showAndKill());
    closeMessage();
    startDevice();
    EXPECT_TRUE(waitForEvent(R"("end":"failed","id":"a")"));
}

TEST_F(DeviceCallTest, CallsOfGroupsAndCancelsArrive)
{
    startDevice();
    call(R"("id":"a","call":"show","title":"Fire","timeout":0)", "tavo/v1/group/floor-1/call");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    call(R"("id":"b","call":"cancel","target":"a")", "tavo/v1/group/all/call");
    ASSERT_TRUE(waitForAnswer(R"("done":true,"id":"b")")) << "keys are sorted";
    ASSERT_TRUE(waitForEvent(R"("end":"closed")"));
    EXPECT_TRUE(openMessages().isEmpty());
    call(R"("id":"c","call":"cancel","target":"a")");
    EXPECT_TRUE(waitForAnswer(R"("done":false)"));
}

TEST_F(DeviceCallTest, AnEndElsewhereEndsOnlyWhatAsksForIt)
{
    startDevice();
    call(R"("id":"here","call":"show","title":"1","timeout":0)", "tavo/v1/group/all/call");
    call(R"("id":"all","call":"show","title":"2","timeout":0,"everywhere":true)",
         "tavo/v1/group/all/call");
    ASSERT_TRUE(waitForAnswer(R"("id":"all")"));
    for (const char *id : {"here", "all"}) {
        ASSERT_TRUE(
            publish("tavo/v1/group/all/end",
                    QByteArray(R"({"device":"hall","end":"dismissed","id":")") + id + "\"}"));
    }
    ASSERT_TRUE(waitForEvent(R"("end":"closed")"));
    EXPECT_EQ(openMessages().size(), 1);
    closeMessage();
    ASSERT_TRUE(waitForEvent(R"("id":"here")"));
    EXPECT_EQ(count("tavo/v1/group/all/end", "porch"), 0);
}

TEST_F(DeviceCallTest, AnEndByAPersonIsToldToTheGroup)
{
    startDevice();
    call(R"("id":"a","call":"show","title":"1","timeout":0,"everywhere":true)",
         "tavo/v1/group/all/call");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    closeMessage();
    EXPECT_TRUE(
        waitForMessage("tavo/v1/group/all/end", R"("device":"porch","end":"dismissed","id":"a")"));
}

TEST_F(DeviceCallTest, ASoundIsAnsweredAndItsEndReported)
{
    allowBell();
    startDevice();
    call(R"("id":"a","call":"sound","sound":"bell")");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","sounding":true)"));
    ASSERT_TRUE(waitForEvent(R"("end":"finished","id":"a")"));
    call(R"("id":"b","call":"sound","sound":"../bell")");
    EXPECT_TRUE(waitForAnswer(R"("id":"b")"));
    call(R"("id":"c","call":"sound","sound":"file:///etc/passwd")");
    EXPECT_TRUE(waitForMessage(s_answers, "does not allow sounds of file:"));
}

TEST_F(DeviceCallTest, TheEndOfASoundThatWaitedForTheHostIsReported)
{
    ASSERT_EQ(m_host->stop(), 0);
    allowBell();
    startDevice();
    call(R"("id":"a","call":"sound","sound":"bell")");
    call(R"("id":"b","call":"nonsense")");
    ASSERT_TRUE(waitForAnswer(R"("id":"b")")) << "it has both";
    startHost();
    ASSERT_TRUE(waitForAnswer(R"("id":"a","sounding":true)"));
    EXPECT_TRUE(waitForEvent(R"("end":"finished","id":"a")"));
}

TEST_F(DeviceCallTest, ADeviceDoesOnlyWhatItsConfigurationAllows)
{
    set("allow",
        QJsonObject{{"calls", QJsonArray{"call"}}, {"paths", QJsonArray{"/player/mainAudio"}}});
    startDevice();
    call(R"("id":"a","call":"show","title":"Water")");
    ASSERT_TRUE(waitForAnswer("does not allow the call show"));
    call(R"("id":"b","call":"call","path":"/notifications/player/enqueue","value":{}})");
    call(R"("id":"c","call":"call","path":"/player/mainAudio/volume","value":0.25)");
    ASSERT_TRUE(waitForAnswer(R"("done":null,"id":"c")"));
    EXPECT_TRUE(waitForMessage("tavo/v1/porch/state/volume", R"("volume":0.25)"));
}

TEST_F(DeviceCallTest, WhatIsNotACallIsAnsweredWithAnErrorIfItSaysWhom)
{
    startDevice();
    const auto wrong = [this](const QByteArray &payload) {
        ASSERT_TRUE(publish("tavo/v1/porch/call", payload));
    };
    wrong("");
    wrong("\xff\x00\x01");
    wrong("[1]");
    wrong(R"({"id":"a/b","from":"desk","call":"show","title":"x"})");
    wrong(R"({"id":7,"from":"desk","call":"show","title":"x"})");
    wrong(R"({"id":"a","from":"x/+","call":"show","title":"x"})");
    wrong(QByteArray(100000, '['));
    call(R"("id":"b","call":"show","title":7)");
    ASSERT_TRUE(waitForAnswer(R"("error":"title: must be a string","id":"b")"));
    call(R"("id":"c","call":"dance")");
    ASSERT_TRUE(waitForAnswer(R"("id":"c")"));
    call(R"("id":"d","call":"show","title":"x","timeout":1e99)");
    ASSERT_TRUE(waitForAnswer("timeout: must be"));
    call(R"("id":"e","call":"show","title":"x","expires":1704067200001)");
    ASSERT_TRUE(waitForAnswer(R"("error":"too late","id":"e")"));
    EXPECT_EQ(count(s_answers), 4);
    EXPECT_TRUE(openMessages().isEmpty());
}

TEST_F(DeviceCallTest, ARetainedCallIsIgnored)
{
    constexpr auto topic = "tavo/v1/porch/call";
    const QByteArray retained = R"({"id":"a","from":"desk","call":"show","title":"x"})";
    ASSERT_TRUE(publish(topic, retained, true));
    startDevice();
    call(R"("id":"b","call":"ping")");
    ASSERT_TRUE(waitForAnswer(R"("id":"b")"));
    constexpr auto record = "a retained call at tavo/v1/porch/call is ignored";
    ASSERT_TRUE(waitForError(record));
    const std::size_t first = m_device->error().find(record);
    // The same while the device is connected.
    ASSERT_TRUE(publish(topic, retained, true));
    ASSERT_TRUE(publish(topic, {}, true)); // removes it
    call(R"("id":"c","call":"ping")");
    ASSERT_TRUE(waitForAnswer(R"("id":"c")"));
    EXPECT_EQ(count(s_answers), 2);
    EXPECT_TRUE(waitFor(
        [&] { return m_device->error().find(record, first + 1) != std::string::npos; }, s_timeout));
    EXPECT_THAT(m_device->error(), testing::Not(testing::HasSubstr("not a call")));
}

TEST_F(DeviceCallTest, WhatIsTooLargeDoesNotReachTheDevice)
{
    startDevice();
    call(R"("id":"a","call":"show","title":")" + QByteArray(300000, 'x') + '"');
    ASSERT_TRUE(waitForAnswer(R"("error":"the call is too large","id":"a")"));
    // More than the controller's own connection would send.
    Program publisher("mosquitto_pub");
    const QString port = QString::number(m_broker->port());
    ASSERT_EQ(publisher.run({"-V", "5", "-p", port, "-q", "1", "-t", "tavo/v1/porch/call", "-s"},
                            QByteArray(5 << 20, 'x')),
              0);
    call(R"("id":"b","call":"ping")");
    ASSERT_TRUE(waitForAnswer(R"("id":"b")"));
    EXPECT_THAT(m_device->error(), testing::Not(testing::HasSubstr("no connection")));
    EXPECT_THAT(m_device->error(), testing::Not(testing::HasSubstr("not a call")));
}

/// On a bus that lets a client have few calls without replies.
class DeviceSmallBusTest : public DeviceTest
{
protected:
    DeviceSmallBusTest()
        : DeviceTest(std::make_unique<Broker>(),
                     R"(<limit name="max_replies_per_connection">16</limit>)")
    {
    }
};

TEST_F(DeviceSmallBusTest, ManyCallsAreCarriedOut)
{
    constexpr int many = 40;
    startHost();
    startDevice();
    m_host->sendSignal(SIGSTOP);
    for (int i = 0; i < many; ++i) {
        call("\"id\":\"" + QByteArray::number(i) + R"(","call":"show","title":"x","timeout":0)");
    }
    call(R"("id":"last","call":"nonsense")");
    ASSERT_TRUE(waitForAnswer(R"("id":"last")")) << "it has them";
    m_host->sendSignal(SIGCONT);
    EXPECT_TRUE(waitForMessage(s_answers, R"("shown":true)", many));
}
