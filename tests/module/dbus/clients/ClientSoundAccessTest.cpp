// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"
#include "support/LockedFolder.h"
#include "support/sound/ScriptedDevices.h"
#include "support/sound/SoundFiles.h"
#include <simpleplayer/OpenedSound.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>

#include <sndfile.h>

#include <atomic>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;
using Type = TavoNotificationPlayerItemType;

/// An allowed folder and another one, both with a file, made before the module is loaded.
class SoundPlaces
{
public:
    SoundPlaces()
    {
        for (const QString &name : {"allowed"_s, "allowed/folder"_s, "secret"_s}) {
            QDir(m_folder.path()).mkdir(name);
            writeSound(path(name + "/sound.wav"_s), SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate,
                       name == "secret"_s ? secretSamples() : allowedSamples());
        }
        QFile::link(path("secret"_s), path("link"_s));
        EXPECT_EQ(mkfifo(QFile::encodeName(path("allowed/pipe"_s)).constData(), 0600), 0);
    }

    /// Puts a link to the other folder in the place of allowed/folder, or back.
    void swap() const
    {
        EXPECT_EQ(renameat2(AT_FDCWD, QFile::encodeName(path("allowed/folder"_s)).constData(),
                            AT_FDCWD, QFile::encodeName(path("link"_s)).constData(),
                            RENAME_EXCHANGE),
                  0);
    }

    static constexpr int rate = 48000;
    static std::vector<short> allowedSamples() { return countingSamples(2000); }
    static std::vector<short> secretSamples() { return std::vector<short>(2000, 77); }

    QString path(const QString &name) const
    {
        return QDir(m_folder.path()).canonicalPath() + '/' + name;
    }

private:
    QTemporaryDir m_folder;
};

class DbusClientSoundAccessTest : private SoundPlaces, public ModelTest
{
protected:
    explicit DbusClientSoundAccessTest(const QString &scheme = "file"_s)
        : ModelTest({{"sounds", QVariantHash{{"folders", QVariantList{path("allowed"_s)}},
                                             {"schemes", QVariantList{scheme}}}}})
    {
        publishRequest(TavoNotificationPlayerEnqueuePath().toString(),
                       [this](const CMSetDataRequest &request) {
                           const TavoNotificationPlayerItem item =
                               TavoValue(request.value().toHash()).notificationPlayerItem();
                           played.push_back(item.content());
                           m_responsePath = item.playbackResponsePath();
                           request.reply().setValue({});
                       });
    }

    using SoundPlaces::allowedSamples;
    using SoundPlaces::path;
    using SoundPlaces::swap;

    /// Plays a sound that the module has passed on, as the notifications module does.
    std::vector<float> heardOf(const QString &content)
    {
        m_devices.forget();
        UriSimplePlayer player(content, "id"_s, "plain"_s, nullptr);
        QSignalSpy ended(&player, &SimplePlayer::playbackEnded);
        EXPECT_TRUE(player.play());
        EXPECT_TRUE(waitFor([&] { return !ended.isEmpty(); }));
        std::vector<float> samples = m_devices.heard();
        samples.resize(std::min(samples.size(), allowedSamples().size()));
        return samples;
    }

    /// Has the player report the end of the last sound.
    void endLast()
    {
        CMRoot()->invoke(m_responsePath,
                         TavoValue().setNotificationPlayerResponse(
                             TavoNotificationPlayerResponse().setId("id"_s).setType(
                                 TavoNotificationPlayerResponseType::Finished)),
                         {});
    }

    static int descriptors()
    {
        return int(QDir("/proc/self/fd").entryList(QDir::Files | QDir::System).size());
    }

    std::string errorFor(Type::Enum type, const QString &content)
    {
        const auto item =
            TavoNotificationPlayerItem().setId("id"_s).setType(type).setContent(content);
        return client
            ->send(TavoNotificationPlayerEnqueuePath().toString(),
                   TavoValue().setNotificationPlayerItem(item).__variant())
            .errorName();
    }

    const std::string denied = "org.freedesktop.DBus.Error.AccessDenied";
    std::vector<QString> played;
    CMPath m_responsePath;
    ScriptedDevices &m_devices = ScriptedDevices::instance();
};

TEST_F(DbusClientSoundAccessTest, AllowsFilesInAllowedFolders)
{
    EXPECT_EQ(errorFor(Type::Uri, path("allowed/../allowed/sound.wav"_s)), "");
    EXPECT_EQ(errorFor(Type::Uri, "file://"_s + path("allowed/sound.wav"_s)), "");
    EXPECT_THAT(played, ElementsAre(path("allowed/sound.wav"_s), path("allowed/sound.wav"_s)));
}

TEST_F(DbusClientSoundAccessTest, AllowsOnlyPipesAsStreams)
{
    EXPECT_EQ(errorFor(Type::Uri, path("allowed/pipe"_s)), denied);
    EXPECT_EQ(errorFor(Type::Stream, path("allowed/sound.wav"_s)), denied);
    EXPECT_EQ(errorFor(Type::Stream, path("allowed/pipe"_s)), "");
    EXPECT_THAT(played, ElementsAre(path("allowed/pipe"_s)));
}

TEST_F(DbusClientSoundAccessTest, RefusesAllOtherLocations)
{
    for (const Type::Enum type : {Type::Uri, Type::Stream}) {
        EXPECT_EQ(errorFor(type, path("secret/sound.wav"_s)), denied);
        EXPECT_EQ(errorFor(type, "https://example.org/sound.wav"_s), denied);
        EXPECT_EQ(errorFor(type, "sound.wav"_s), denied);
    }
    EXPECT_THAT(played, IsEmpty());
}

TEST_F(DbusClientSoundAccessTest, PlaysWhatWasCheckedEvenIfItsFolderIsSwapped)
{
    const QString file = path("allowed/folder/sound.wav"_s);
    ASSERT_EQ(errorFor(Type::Uri, file), "");
    ASSERT_THAT(played, ElementsAre(file));
    swap();
    EXPECT_EQ(heardOf(file), asFloats(allowedSamples()));
    EXPECT_EQ(errorFor(Type::Uri, file), denied);
    swap();
}

TEST_F(DbusClientSoundAccessTest, AllowsNoOtherFolderWhileItsFolderIsSwapped)
{
    const QString file = path("allowed/folder/sound.wav"_s);
    const QByteArray allowed = readFile(file);
    std::atomic<bool> goesOn{true};
    std::thread attacker([&] {
        while (goesOn) {
            swap();
        }
    });
    constexpr int attempts = 300;
    for (int i = 0; i < attempts; ++i) {
        if (errorFor(Type::Uri, file).empty()) {
            QFile played;
            EXPECT_TRUE(played.open(OpenedSound::openForReading(file), QIODevice::ReadOnly,
                                    QFileDevice::AutoCloseHandle));
            EXPECT_EQ(played.readAll(), allowed);
            endLast();
        }
    }
    goesOn = false;
    attacker.join();
}

TEST_F(DbusClientSoundAccessTest, KeepsASoundOpenUntilItsEnd)
{
    const QString file = path("allowed/sound.wav"_s);
    const int before = descriptors();
    ASSERT_EQ(errorFor(Type::Uri, file), "");
    EXPECT_EQ(descriptors(), before + 1);
    endLast();
    EXPECT_TRUE(waitFor([&] { return descriptors() == before; }));
}

TEST_F(DbusClientSoundAccessTest, AllowsSoundsWithoutALocation)
{
    EXPECT_EQ(errorFor(Type::Data, "U291bmQ="_s), "");
    EXPECT_EQ(errorFor(Type::Fake, {}), "");
    EXPECT_THAT(played, ElementsAre("U291bmQ="_s, QString()));
}

TEST_F(DbusClientSoundAccessTest, AppliesToMusicToo)
{
    std::vector<QVariant> music;
    publishRequest(TavoPlayerMainAudioPlayPath().toString(),
                   [&music](const CMSetDataRequest &request) {
                       music.push_back(request.value());
                       request.reply().setValue({});
                   });
    const auto errorForMusic = [this](const QVariant &value) {
        return client->send(TavoPlayerMainAudioPlayPath().toString(), value).errorName();
    };
    const QString secret = path("secret/sound.wav"_s);
    EXPECT_EQ(errorForMusic(secret), denied);
    EXPECT_EQ(errorForMusic(TavoValue().setString_(secret).__variant()), denied);
    const QString file = path("allowed/sound.wav"_s);
    EXPECT_EQ(errorForMusic(file), "");
    EXPECT_EQ(errorForMusic(TavoValue().setString_(file).__variant()), "");
    EXPECT_EQ(errorForMusic({}), "");
    EXPECT_THAT(music, ElementsAre(file, file, QVariant()));
}

/// A sound that is not in the system's memory, or whose folder hangs.
class DbusSlowSoundTest : public DbusClientSoundAccessTest
{
protected:
    DbusSlowSoundTest()
        : m_file(::open(QFile::encodeName(path("allowed/sound.wav"_s)).constData(),
                        O_RDONLY | O_CLOEXEC))
    {
        publishValue("/test/value"_s, 1);
        publishRequest(TavoNotificationPlayerCancelPath().toString(),
                       [this](const CMSetDataRequest &request) {
                           played.push_back("cancelled"_s);
                           request.reply().setValue({});
                       });
    }
    ~DbusSlowSoundTest() override { ::close(m_file); }
    Q_DISABLE_COPY_MOVE(DbusSlowSoundTest)

    /// A link to the sound that the system follows only for those who can wait.
    QString slowPath() const { return "/proc/%1/fd/%2"_s.arg(::getpid()).arg(m_file); }

    static BusCall enqueue(ModelClient &by, const QString &content)
    {
        const auto item = TavoNotificationPlayerItem().setId("id"_s).setContent(content);
        return by.send(TavoNotificationPlayerEnqueuePath().toString(),
                       TavoValue().setNotificationPlayerItem(item).__variant());
    }

private:
    const int m_file;
};

TEST_F(DbusSlowSoundTest, IsPlayed)
{
    ASSERT_FALSE(OpenedSound::openAtOnce(slowPath()));
    EXPECT_TRUE(enqueue(*client, slowPath()).succeeds());
    EXPECT_THAT(played, ElementsAre(path("allowed/sound.wav"_s)));
}

TEST_F(DbusSlowSoundTest, IsPlayedBeforeItsClientCancelsIt)
{
    const BusCall enqueued = enqueue(*client, slowPath());
    const BusCall cancelled = client->send(TavoNotificationPlayerCancelPath().toString(), "id"_s);
    EXPECT_TRUE(enqueued.succeeds());
    EXPECT_TRUE(cancelled.succeeds());
    EXPECT_THAT(played, ElementsAre(path("allowed/sound.wav"_s), "cancelled"));
}

TEST_F(DbusSlowSoundTest, IsPlayedEvenIfItsClientHasLeft)
{
    {
        ModelClient leaving(bus().address());
        enqueue(leaving, slowPath());
    }
    EXPECT_TRUE(waitFor([this] { return !played.empty(); }));
    EXPECT_THAT(played, ElementsAre(path("allowed/sound.wav"_s)));
}

TEST_F(DbusSlowSoundTest, IsPlayedAsMusic)
{
    publishRequest(TavoPlayerMainAudioPlayPath().toString(),
                   [this](const CMSetDataRequest &request) {
                       played.push_back(request.value().toString());
                       request.reply().setValue({});
                   });
    EXPECT_TRUE(client->send(TavoPlayerMainAudioPlayPath().toString(), slowPath()).succeeds());
    EXPECT_THAT(played, ElementsAre(path("allowed/sound.wav"_s)));
}

TEST_F(DbusSlowSoundTest, KeepsNoOtherClientWaitingAndIsRefusedAfterASecond)
{
    const LockedFolder locked(path("allowed/folder"_s));
    if (!locked.isLocked()) {
        GTEST_SKIP() << "not permitted";
    }
    ModelClient other(bus().address());
    const BusCall slow = enqueue(*client, path("allowed/folder/new.wav"_s));
    const BusCall next = client->getValue("/test/value"_s);
    EXPECT_TRUE(enqueue(other, path("allowed/sound.wav"_s)).succeeds());
    EXPECT_FALSE(slow.isAnswered());
    EXPECT_FALSE(next.isAnswered());
    EXPECT_EQ(slow.errorName(), denied);
    EXPECT_THAT(slow.errorMessage(), testing::HasSubstr("can't be opened in time"));
    EXPECT_TRUE(next.succeeds());
}

TEST_F(DbusSlowSoundTest, IsLookedUpOnceItsFolderResponds)
{
    auto locked = std::make_unique<LockedFolder>(path("allowed/folder"_s));
    if (!locked->isLocked()) {
        GTEST_SKIP() << "not permitted";
    }
    const BusCall slow = enqueue(*client, path("allowed/folder/new.wav"_s));
    ModelClient other(bus().address());
    EXPECT_TRUE(other.getValue("/test/value"_s).succeeds());
    EXPECT_FALSE(slow.isAnswered());
    locked.reset();
    EXPECT_THAT(slow.errorMessage(), testing::HasSubstr("is not a file in an allowed folder"));
}

class DbusClientSoundSchemeTest : public DbusClientSoundAccessTest
{
protected:
    DbusClientSoundSchemeTest()
        : DbusClientSoundAccessTest("File"_s)
    {
    }
};

TEST_F(DbusClientSoundSchemeTest, IsNotCaseSensitive)
{
    EXPECT_EQ(errorFor(Type::Uri, "file://"_s + path("allowed/sound.wav"_s)), "");
    EXPECT_EQ(errorFor(Type::Uri, "FILE://"_s + path("allowed/sound.wav"_s)), "");
}

class DbusClientSoundServerTest : public DbusClientSoundAccessTest
{
protected:
    DbusClientSoundServerTest()
        : DbusClientSoundAccessTest("http"_s)
    {
    }
};

TEST_F(DbusClientSoundServerTest, IsNotAskedUnlessItIsNamed)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    const QString open = "http://127.0.0.1:%1/a.wav"_s.arg(server.serverPort());
    const QString closed = "http://127.0.0.1:1/a.wav"_s;
    for (const Type::Enum type : {Type::Uri, Type::Stream}) {
        EXPECT_EQ(errorFor(type, open), denied);
        EXPECT_EQ(errorFor(type, closed), denied);
        EXPECT_EQ(errorFor(type, "http:/../../"_s + path("allowed/sound.wav"_s)), denied);
    }
    EXPECT_THAT(played, IsEmpty());
}
} // namespace
