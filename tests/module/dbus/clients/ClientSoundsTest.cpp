// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <limits>
#include <map>
#include <sys/stat.h>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

/// A client's sounds. The test stands in for the player.
class DbusClientSoundsTest : public ModelTest
{
protected:
    explicit DbusClientSoundsTest(const QVariantHash &limits = {{"sounds", 2}, {"totalSounds", 3}})
        : ModelTest({{"limits", limits}})
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
        if (repliesAtOnce) {
            request.reply().setValue({});
        } else {
            m_held.push_back(request.reply());
        }
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

    /// A sound as it reached the player.
    const TavoNotificationPlayerItem &playing(const QString &id) const { return m_playing.at(id); }

    /// The number of sounds that are still watched.
    static int watched() { return int(CMCatalog::children(CMPath("/dbus/sounds"_s)).size()); }

    CMActivateNode *player = nullptr;
    std::vector<std::string> cancelled;
    bool repliesAtOnce = true;

private:
    std::map<QString, TavoNotificationPlayerItem> m_playing;
    std::vector<CMReply<QVariant>> m_held;
};

TEST_F(DbusClientSoundsTest, ReachThePlayerWhoseResponsesReachTheClient)
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

TEST_F(DbusClientSoundsTest, ReplaceSoundsOfClientsThatHaveLeft)
{
    ASSERT_TRUE(enqueue(sound("a"_s)).succeeds());
    ASSERT_TRUE(enqueue(sound("b"_s)).succeeds());
    client->leave();
    ModelClient other(bus().address());
    ASSERT_TRUE(enqueue(other, sound("c"_s)).succeeds());
    EXPECT_THAT(cancelled, IsEmpty());
    ASSERT_TRUE(enqueue(other, sound("d"_s)).succeeds());
    ASSERT_TRUE(waitFor([] { return watched() == 3; }));
    EXPECT_THAT(cancelled, ElementsAre("a"));
}

TEST_F(DbusClientSoundsTest, ThatWaitForTheirTurnAreForgottenAtOnceWhenTheyMakeRoom)
{
    repliesAtOnce = false;
    enqueue(sound("a"_s));
    enqueue(sound("b"_s));
    ASSERT_TRUE(waitFor([] { return watched() == 2; }));
    client->leave();
    ModelClient other(bus().address());
    enqueue(other, sound("c"_s));
    enqueue(other, sound("d"_s));
    ASSERT_TRUE(waitFor([] { return watched() == 4; })) << "the player has the first one";
    ModelClient another(bus().address());
    enqueue(another, sound("e"_s));
    ASSERT_TRUE(waitFor([] { return CMCatalog::entry(CMPath("/dbus/sounds/5"_s)).has_value(); }));
    EXPECT_EQ(watched(), 4);
}

TEST_F(DbusClientSoundsTest, EndWithThePlayer)
{
    ASSERT_TRUE(enqueue(sound("a"_s)).succeeds());
    player->dispose();
    EXPECT_TRUE(waitFor([] { return watched() == 0; }));
}

/// Many clients with as many sounds as they may have.
class DbusSoundCrowdTest : public DbusClientSoundsTest
{
protected:
    DbusSoundCrowdTest()
        : DbusClientSoundsTest({{"sounds", 10}, {"totalSounds", 50}})
    {
        for (int i = 0; i < 6; ++i) {
            m_crowd.push_back(std::make_unique<ModelClient>(bus().address()));
            for (int j = 0; j < 10; ++j) {
                const auto item = sound("attack-%1-%2"_s.arg(i).arg(j)).setPriority(maxPriority);
                m_taken += enqueue(*m_crowd.back(), item).succeeds() ? 1 : 0;
            }
        }
    }

    static constexpr auto maxPriority =
        TavoNotificationItemPriority::Enum(std::numeric_limits<int>::max());

    void leave() { m_crowd.clear(); }

    /// Whether just enough of the crowd's sounds are cancelled for this many sounds of others.
    bool makeRoom(int others)
    {
        return waitFor([&] { return int(cancelled.size()) == m_taken + others - 50; });
    }

private:
    std::vector<std::unique_ptr<ModelClient>> m_crowd;
    int m_taken = 0;
};

TEST_F(DbusSoundCrowdTest, LeavesRoomForTheSoundsOfOthers)
{
    EXPECT_TRUE(enqueue(sound("ordinary"_s)).succeeds());
    EXPECT_TRUE(
        enqueue(sound("alarm"_s).setPriority(TavoNotificationItemPriority::Urgent)).succeeds());
    EXPECT_TRUE(makeRoom(2));
}

TEST_F(DbusSoundCrowdTest, MakesRoomWithWhatItHasLeftBehind)
{
    leave();
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(enqueue(sound(QString::number(i))).succeeds());
    }
    EXPECT_TRUE(makeRoom(10));
}

TEST_F(DbusSoundCrowdTest, GetsNoPriorityAboveUrgent)
{
    EXPECT_EQ(playing("attack-5-0"_s).priority(), TavoNotificationItemPriority::Urgent);
}

TEST_F(DbusClientSoundsTest, HaveFewPrioritiesBecauseEachMayHaveAPausedSound)
{
    for (const int priority : {-1, std::numeric_limits<int>::min()}) {
        const QString id = QString::number(priority);
        ASSERT_TRUE(enqueue(sound(id).setPriority(TavoNotificationItemPriority::Enum(priority)))
                        .succeeds());
        EXPECT_EQ(playing(id).priority(), TavoNotificationItemPriority::Low);
    }
}

TEST_F(DbusClientSoundsTest, PassOnOnlyTheFieldsOfTheRecord)
{
    TavoHash item = sound("a"_s).setContent("AAAA"_s).setType(TavoNotificationPlayerItemType::Data);
    QVariantHash fields = item.fields();
    fields.insert("attack"_s, QString(100'000, 'x'));
    ASSERT_TRUE(client
                    ->send(TavoNotificationPlayerEnqueuePath().toString(),
                           QVariantHash{{"notificationPlayerItem"_s, fields}})
                    .succeeds());
    EXPECT_EQ(playing("a"_s).content(), "AAAA"_s);
    EXPECT_FALSE(playing("a"_s).fields().contains("attack"_s));
}

class DbusSoundBytesTest : public DbusClientSoundsTest
{
protected:
    DbusSoundBytesTest()
        : DbusClientSoundsTest({{"storedBytes", 1 << 22}, {"totalStoredBytes", 1 << 23}})
    {
    }
};

TEST_F(DbusSoundBytesTest, AreBoundedForAClientAndForAll)
{
    const auto large = [](int i) {
        return sound(QString::number(i))
            .setType(TavoNotificationPlayerItemType::Data)
            .setContent(QString(1'000'000, 'A'));
    };
    EXPECT_TRUE(enqueue(large(0)).succeeds());
    EXPECT_TRUE(enqueue(large(1)).succeeds());
    EXPECT_EQ(enqueue(large(2)).errorMessage(),
              "A client may have no more than 4194304 bytes stored");
    std::vector<std::unique_ptr<ModelClient>> others;
    for (int i = 3; i < 6; ++i) {
        others.push_back(std::make_unique<ModelClient>(bus().address()));
        EXPECT_TRUE(enqueue(*others.back(), large(i)).succeeds());
    }
    EXPECT_TRUE(waitFor([this] { return cancelled == std::vector<std::string>{"0"}; }));
}
} // namespace
