// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>

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
        for (const QString &name : {"allowed"_s, "secret"_s}) {
            QDir(m_folder.path()).mkdir(name);
            QFile file(path(name + "/sound.wav"_s));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        }
        EXPECT_EQ(mkfifo(QFile::encodeName(path("allowed/pipe"_s)).constData(), 0600), 0);
    }

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
                           request.reply().setValue({});
                       });
    }

    using SoundPlaces::path;

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
} // namespace
