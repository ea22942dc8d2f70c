// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The two request nodes for sounds: their values and their replies.

#include "NotificationsTest.h"

#include <QThread>

namespace {
using log4cplus::DEBUG_LOG_LEVEL;

class SoundRequestsTest : public NotificationsTest
{
protected:
    SoundRequestsTest() { load(); }

    static void expectFailure(const CMReply<QVariant> &reply, const char *text)
    {
        EXPECT_EQ(reply.error().name(), "Notifications"_s);
        EXPECT_EQ(message(reply), QString::fromLatin1(text));
        EXPECT_EQ(reply.error().title(), CMError::DefaultTitle());
    }
};
} // namespace

TEST_F(SoundRequestsTest, AnswersAnAcceptedSoundWithAnEmptyValue)
{
    const CMReply<QVariant> reply = enqueue("a"_s);
    EXPECT_FALSE(reply.error().isError());
    EXPECT_FALSE(reply.value().isValid());
}

TEST_F(SoundRequestsTest, HandsEveryFieldToThePlayer)
{
    enqueue(item("a"_s)
                .setType(TavoNotificationPlayerItemType::Stream)
                .setContent("/run/stream"_s)
                .setContentStreamFormat("audio/L16;rate=8000"_s)
                .setLoop(true));
    ASSERT_NE(scripted("a"_s), nullptr);
    EXPECT_EQ(scripted("a"_s)->content, "/run/stream"_s);
    EXPECT_EQ(scripted("a"_s)->format, "audio/L16;rate=8000"_s);
    EXPECT_TRUE(scripted("a"_s)->loop);
}

TEST_F(SoundRequestsTest, AnswersARefusedSoundWithATranslatableError)
{
    const CMReply<QVariant> reply = enqueue(QString());
    expectFailure(reply, "Failed to enqueue sound notification");
    EXPECT_EQ(reply.error().message(),
              TrString(TrCharData{"NotificationsWorker", "Failed to enqueue sound notification",
                                  nullptr, -1},
                       {}));
}

TEST_F(SoundRequestsTest, RefusesAnIdThatIsInTheQueue)
{
    enqueue("a"_s);
    expectFailure(enqueue("a"_s), "Failed to enqueue sound notification");
}

TEST_F(SoundRequestsTest, LogsAnEnqueueAtDebugWithTheValue)
{
    const QVariant value = TavoValue().setNotificationPlayerItem(item("a"_s)).__variant();
    request(TavoNotificationPlayerEnqueuePath(), value);
    std::ostringstream text;
    text << value;
    EXPECT_EQ(
        entered(DEBUG_LOG_LEVEL, "on_notificationPlayerEnqueue_activated", "item: " + text.str()),
        1);
}

TEST_F(SoundRequestsTest, AnswersACancelWithAnEmptyValue)
{
    enqueue("a"_s);
    const CMReply<QVariant> reply = cancel("a"_s);
    EXPECT_FALSE(reply.error().isError());
    EXPECT_FALSE(reply.value().isValid());
}

TEST_F(SoundRequestsTest, AnswersACancelOfAnUnknownIdWithAPlainError)
{
    const CMReply<QVariant> reply = cancel("nobody"_s);
    expectFailure(reply, "Invalid notification sound id to stop");
    EXPECT_FALSE(reply.error().message().isTranslatable());
}

TEST_F(SoundRequestsTest, LogsNothingInTheHandlerOfACancel)
{
    enqueue("a"_s);
    log().clear();
    cancel("a"_s);
    cancel("nobody"_s);
    EXPECT_FALSE(log().records().empty());
    for (const auto &record : log().records()) {
        EXPECT_EQ(record.fileName(), "NotificationPlayer.cpp") << record.message;
    }
}

TEST_F(SoundRequestsTest, LogsNothingOfItsOwnForARefusedSound)
{
    log().clear();
    enqueue(QString());
    EXPECT_THAT(
        log().messages(),
        testing::ElementsAre(testing::StartsWith("Enter void NotificationsWorker::"
                                                 "on_notificationPlayerEnqueue_activated(const "
                                                 "CMSetDataRequest&): item: "),
                             testing::StartsWith("Enter bool NotificationPlayer::enqueue("),
                             "Notification item id is empty",
                             testing::StartsWith("Leave bool NotificationPlayer::enqueue(")));
}

TEST_F(SoundRequestsTest, ReportsTheEndToTheResponsePath)
{
    play("a"_s)->reportEnded();
    settle();
    EXPECT_EQ(journal().count("a finished"_s), 1);
}

class UnsuitableValuesTest : public SoundRequestsTest, public testing::WithParamInterface<QVariant>
{
};

TEST_P(UnsuitableValuesTest, AreAnsweredWithTheFailureTexts)
{
    expectFailure(request(TavoNotificationPlayerEnqueuePath(), GetParam()),
                  "Failed to enqueue sound notification");
    expectFailure(request(TavoNotificationPlayerCancelPath(), GetParam()),
                  "Invalid notification sound id to stop");
    EXPECT_EQ(journal(), QStringList{"register"_s});
}

INSTANTIATE_TEST_SUITE_P(
    Values, UnsuitableValuesTest,
    testing::Values(QVariant(), QVariant(7), QVariant("a"_s), QVariant(QVariantList{1}),
                    QVariant(QVariantHash()), QVariant(QByteArray("\0\1", 2)),
                    QVariant(QVariantHash{{"notificationPlayerItem"_s, 3}, {"string"_s, 4}}),
                    QVariant(QVariantHash{
                        {"notificationPlayerItem"_s, QVariantHash{{"id"_s, QVariantList{1, 2}}}},
                        {"string"_s, QVariantHash()}})));

TEST_F(SoundRequestsTest, UsesDefaultsForUnsuitableFields)
{
    const QVariantHash record{{"id"_s, "a"_s},      {"content"_s, 5},
                              {"type"_s, "loud"_s}, {"priority"_s, QVariantList()},
                              {"loop"_s, "yes"_s},  {"playbackResponsePath"_s, 1.5}};
    request(TavoNotificationPlayerEnqueuePath(),
            QVariantHash{{"notificationPlayerItem"_s, record}});
    ASSERT_NE(scripted("a"_s), nullptr);
    EXPECT_EQ(scripted("a"_s)->kind, "UriSimplePlayer"_s);
    EXPECT_TRUE(scripted("a"_s)->content.isEmpty());
    EXPECT_FALSE(scripted("a"_s)->loop);
}

TEST_F(SoundRequestsTest, AcceptsRequestsFromOtherThreads)
{
    const CMReply<QVariant> reply;
    const std::unique_ptr<QThread> requester(QThread::create([&reply] {
        CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(),
                         TavoValue().setNotificationPlayerItem(item("a"_s)), reply);
    }));
    requester->start();
    const QThread *handlingThread = nullptr;
    ScriptedPlayers::instance().onCall = [&](const QString &, const QString &) {
        handlingThread = QThread::currentThread();
    };
    ASSERT_TRUE(waitFor([&] { return reply.isFinished() && handlingThread != nullptr; }));
    requester->wait();
    EXPECT_FALSE(reply.error().isError());
    EXPECT_EQ(handlingThread, worker()->thread());
}

TEST(SoundRequestsDeathTest, ARequestWithoutDataIsAProgrammingError)
{
    EXPECT_DEATH(CMSetDataRequest().value(), "\"d\\(\\)\"");
    EXPECT_DEATH(CMSetDataRequest().reply(), "\"d\\(\\)\"");
}

TEST_F(SoundRequestsTest, RefusesDisplayRequestsWithTheirTexts)
{
    expectFailure(request(TavoNotificationDisplayOpenPath(), QVariant()),
                  "Failed to enqueue notification");
    expectFailure(request(TavoNotificationDisplayCancelNotifyPath(), QVariant()),
                  "Path to close empty");
    expectFailure(request(TavoNotificationDisplayCancelNotifyPath(), "/nowhere"_s),
                  "Node already closed or non-existent");
}
