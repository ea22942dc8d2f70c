// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <map>
#include <sys/stat.h>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

/// A client's sounds. The test stands in for the player.
class DbusClientSoundsTest : public ModelTest
{
protected:
    DbusClientSoundsTest()
        : ModelTest({{"limits", QVariantHash{{"sounds", 2}, {"totalSounds", 3}}}})
    {
        player = publishRequest(TavoNotificationPlayerEnqueuePath().toString(),
                                [this](const CMSetDataRequest &request) { play(request); });
        publishRequest(TavoNotificationPlayerCancelPath().toString(),
                       [this](const CMSetDataRequest &request) {
                           const QString id = TavoValue(request.value().toHash()).string_();
                           request.reply().setValue({});
                           cancelled.push_back(id.toStdString());
                           respond(id, TavoNotificationPlayerResponseType::Cancelled);
                       });
    }

    void play(const CMSetDataRequest &request)
    {
        const TavoNotificationPlayerItem item =
            TavoValue(request.value().toHash()).notificationPlayerItem();
        if (item.id().isEmpty()) {
            request.reply().setError(CMError("Player"_s, "Refused"_s));
            return;
        }
        m_playing[item.id()] = item;
        request.reply().setValue({});
    }

    BusCall enqueue(const TavoNotificationPlayerItem &item) { return enqueue(*client, item); }
    static BusCall enqueue(ModelClient &by, const TavoNotificationPlayerItem &item)
    {
        return by.send(TavoNotificationPlayerEnqueuePath().toString(),
                       TavoValue().setNotificationPlayerItem(item).__variant());
    }
    static TavoNotificationPlayerItem sound(const QString &id)
    {
        return TavoNotificationPlayerItem(TavoHash()).setId(id);
    }

    /// Has the player report about a sound.
    void respond(const QString &id, TavoNotificationPlayerResponseType::Enum type)
    {
        CMRoot()->invoke(m_playing.at(id).playbackResponsePath(),
                         TavoValue().setNotificationPlayerResponse(
                             TavoNotificationPlayerResponse(TavoHash()).setId(id).setType(type)),
                         {});
    }

    /// The number of sounds that are still watched.
    static int watched() { return int(CMCatalog::children(CMPath("/dbus/sounds"_s)).size()); }

    CMActivateNode *player = nullptr;
    std::vector<std::string> cancelled;

private:
    std::map<QString, TavoNotificationPlayerItem> m_playing;
};

TEST_F(DbusClientSoundsTest, ReachThePlayerAndTheirResponsesTheClient)
{
    const QString inbox = client->ask("OpenInbox").text();
    ASSERT_TRUE(enqueue(sound("a"_s).setPlaybackResponsePath(CMPath(inbox))).succeeds());
    respond("a"_s, TavoNotificationPlayerResponseType::Started);
    respond("a"_s, TavoNotificationPlayerResponseType::Finished);
    EXPECT_TRUE(client->waitForSignals(2));
    const std::string start = "Received " + inbox.toStdString();
    EXPECT_THAT(client->received,
                ElementsAre(start + " {notificationPlayerResponse: {id: \"a\", type: 1}}",
                            start + " {notificationPlayerResponse: {id: \"a\", type: 2}}"));
    EXPECT_EQ(watched(), 0);
}

TEST_F(DbusClientSoundsTest, NeedNoResponsePath)
{
    ASSERT_TRUE(enqueue(sound("a"_s)).succeeds());
    EXPECT_EQ(watched(), 1);
    respond("a"_s, TavoNotificationPlayerResponseType::Failed);
    EXPECT_TRUE(waitFor([] { return watched() == 0; }));
}

TEST_F(DbusClientSoundsTest, ThatAreRefusedLeaveNothingBehind)
{
    EXPECT_EQ(enqueue(sound(""_s)).errorMessage(), "Refused");
    EXPECT_TRUE(waitFor([] { return watched() == 0; }));
}

TEST_F(DbusClientSoundsTest, FromAStreamEndWithTheirClient)
{
    QTemporaryDir folder;
    const QString fifo = QDir(folder.path()).canonicalPath() + "/fifo";
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    ASSERT_TRUE(
        enqueue(sound("stream"_s).setType(TavoNotificationPlayerItemType::Stream).setContent(fifo))
            .succeeds());
    client->leave();
    EXPECT_TRUE(waitFor([] { return watched() == 0; }));
    EXPECT_THAT(cancelled, ElementsAre("stream"));
}

TEST_F(DbusClientSoundsTest, ThatLoopEndWithTheirClient)
{
    ASSERT_TRUE(enqueue(sound("once"_s)).succeeds());
    ASSERT_TRUE(enqueue(sound("loop"_s).setLoop(true)).succeeds());
    client->leave();
    EXPECT_TRUE(waitFor([] { return watched() == 1; }));
    EXPECT_THAT(cancelled, ElementsAre("loop"));
}

TEST_F(DbusClientSoundsTest, ThatHaveEndedAreNotCancelledWhenTheirClientLeaves)
{
    ASSERT_TRUE(enqueue(sound("loop"_s).setLoop(true)).succeeds());
    respond("loop"_s, TavoNotificationPlayerResponseType::Cancelled);
    ASSERT_TRUE(waitFor([] { return watched() == 0; }));
    const std::string inbox = client->ask("OpenInbox").text().toStdString();
    client->leave();
    EXPECT_TRUE(waitFor([&] { return CMCatalog::tree(CMPath("/dbus"_s)).empty(); }));
    EXPECT_THAT(cancelled, IsEmpty());
}

TEST_F(DbusClientSoundsTest, AreReportedOnlyByThePlayer)
{
    ASSERT_TRUE(enqueue(sound("loop"_s).setLoop(true)).succeeds());
    const CMPath watch = CMCatalog::children(CMPath("/dbus/sounds"_s)).at(0).path;
    const auto end = TavoNotificationPlayerResponse(TavoHash())
                         .setId("loop"_s)
                         .setType(TavoNotificationPlayerResponseType::Finished);
    const BusCall report =
        client->send(watch.toString(), TavoValue().setNotificationPlayerResponse(end).__variant());
    EXPECT_EQ(report.errorName(), "org.freedesktop.DBus.Error.AccessDenied");
    EXPECT_EQ(report.errorMessage(), "Only the player may report how a sound ends");
    EXPECT_EQ(enqueue(sound("b"_s).setPlaybackResponsePath(watch)).errorName(),
              "org.freedesktop.DBus.Error.AccessDenied");
    client->leave();
    EXPECT_TRUE(waitFor([] { return watched() == 0; }));
    EXPECT_THAT(cancelled, ElementsAre("loop"));
}

TEST_F(DbusClientSoundsTest, AreLimitedUntilSomeEnd)
{
    ASSERT_TRUE(enqueue(sound("a"_s)).succeeds());
    ASSERT_TRUE(enqueue(sound("b"_s)).succeeds());
    const BusCall call = enqueue(sound("c"_s));
    EXPECT_EQ(call.errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_EQ(call.errorMessage(), "A client may have no more than 2 sounds");
    respond("a"_s, TavoNotificationPlayerResponseType::Finished);
    ASSERT_TRUE(waitFor([] { return watched() == 1; }));
    EXPECT_TRUE(enqueue(sound("c"_s)).succeeds());
}

TEST_F(DbusClientSoundsTest, AreLimitedTogetherWithThoseOfClientsThatHaveLeft)
{
    ASSERT_TRUE(enqueue(sound("a"_s)).succeeds());
    ASSERT_TRUE(enqueue(sound("b"_s)).succeeds());
    client->leave();
    ModelClient other(bus().address());
    ASSERT_TRUE(enqueue(other, sound("c"_s)).succeeds());
    const BusCall call = enqueue(other, sound("d"_s));
    EXPECT_EQ(call.errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_EQ(call.errorMessage(), "All clients together may have no more than 3 sounds");
    respond("a"_s, TavoNotificationPlayerResponseType::Finished);
    ASSERT_TRUE(waitFor([] { return watched() == 2; }));
    EXPECT_TRUE(enqueue(other, sound("d"_s)).succeeds());
}

TEST_F(DbusClientSoundsTest, EndWithThePlayer)
{
    ASSERT_TRUE(enqueue(sound("a"_s)).succeeds());
    player->dispose();
    EXPECT_TRUE(waitFor([] { return watched() == 0; }));
}
} // namespace
