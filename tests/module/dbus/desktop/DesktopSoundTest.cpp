// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"
#include "support/bus/BusClient.h"
#include "support/bus/NotifyArguments.h"
#include "support/LockedFolder.h"
#include "support/scripted/ScriptedPlayers.h"
#include "support/scripted/ScriptedService.h"
#include <simpleplayer/OpenedSound.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <vector>

namespace {
/// A theme and an allowed folder, in front of players that the test plays.
class SoundFolders
{
public:
    SoundFolders()
    {
        ScriptedPlayers::instance().reset();
        make("data/sounds/freedesktop/index.theme"_s,
             "[Sound Theme]\nDirectories=stereo\n[stereo]\nOutputProfile=stereo\n");
        make("data/sounds/freedesktop/stereo/bell.oga"_s);
        make("data/sounds/special/index.theme"_s, "[Sound Theme]\nInherits=freedesktop\n");
        make("allowed/sound.wav"_s);
        make("secret/sound.wav"_s);
        qputenv("XDG_DATA_HOME", QFile::encodeName(path("data"_s)));
        qputenv("XDG_DATA_DIRS", QFile::encodeName(path("none"_s)));
    }
    ~SoundFolders()
    {
        qunsetenv("XDG_DATA_HOME");
        qunsetenv("XDG_DATA_DIRS");
        ScriptedPlayers::instance().reset();
    }
    Q_DISABLE_COPY_MOVE(SoundFolders)

    QString path(const QString &name) const
    {
        return QFileInfo(m_folder.path()).canonicalFilePath() + '/' + name;
    }

private:
    void make(const QString &name, const QByteArray &content = {}) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    QTemporaryDir m_folder;
};

class DesktopSoundTest : private SoundFolders, public DesktopTest
{
protected:
    explicit DesktopSoundTest(const QVariantHash &limits = {})
        : DesktopTest({{"sounds"_s, QVariantHash{{"folders"_s, QVariantList{path("allowed"_s)}},
                                                 {"theme"_s, "special"_s}}},
                       {"limits"_s, limits}})
    {
        m_services.take(TavoPlayerMainAudioDuckingPath(), ScriptedService::accept());
        m_services.take(TavoPowerManagerResourceRequestPath(), ScriptedService::accept());
    }

    using SoundFolders::path;

    static const std::vector<ScriptedPlayer *> &players()
    {
        return ScriptedPlayers::instance().all();
    }

    bool plays(std::size_t count)
    {
        return waitFor([&] { return players().size() == count && players().back()->plays > 0; });
    }

    /// Whether the player has got no request after everything has been handled.
    bool isSilent()
    {
        waitFor([] { return false; }, std::chrono::milliseconds(100));
        return players().empty();
    }

    quint32 notifyWith(const QString &hint)
    {
        return notifySend({"-t"_s, "0"_s, "-h"_s, hint, "Title"_s});
    }

private:
    ScriptedService m_services{"Services"_s};
};

TEST_F(DesktopSoundTest, PlaysTheNamedFile)
{
    notifyWith("string:sound-file:"_s + path("allowed/sound.wav"_s));
    ASSERT_TRUE(plays(1));
    EXPECT_EQ(players()[0]->kind, "UriSimplePlayer"_s);
    EXPECT_EQ(players()[0]->content, path("allowed/sound.wav"_s));
    EXPECT_FALSE(players()[0]->loop);
}

TEST_F(DesktopSoundTest, PlaysTheNamedFileEvenIfItIsNotInTheSystemsMemory)
{
    QFile file(path("allowed/sound.wav"_s));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    // The system follows such a link only for those who can wait.
    const QString slowPath =
        "/proc/%1/fd/%2"_s.arg(QCoreApplication::applicationPid()).arg(file.handle());
    ASSERT_FALSE(OpenedSound::openAtOnce(slowPath));
    EXPECT_TRUE(isOpen(notifyWith("string:sound-file:"_s + slowPath)));
    ASSERT_TRUE(plays(1));
    EXPECT_EQ(players()[0]->content, path("allowed/sound.wav"_s));
}

TEST_F(DesktopSoundTest, KeepsNobodyWaitingWhileItsThemeHangs)
{
    const LockedFolder locked(path("data/sounds/freedesktop/stereo"_s));
    if (!locked.isLocked()) {
        GTEST_SKIP() << "not permitted";
    }
    const char *name = "org.freedesktop.Notifications";
    BusClient slow(bus().address());
    BusClient other(bus().address());
    const BusCall notified = slow.setTarget(name, "/org/freedesktop/Notifications", name)
                                 .call("Notify", [](BusWriter &writer) {
                                     NotifyArguments arguments;
                                     arguments.soundName = "unheard"_s;
                                     arguments.writeTo(writer);
                                 });
    EXPECT_TRUE(other.setTarget(name, "/org/freedesktop/Notifications", name)
                    .call("GetCapabilities")
                    .succeeds());
    EXPECT_FALSE(notified.isAnswered());
    EXPECT_TRUE(notified.succeeds());
    EXPECT_TRUE(
        log().contains("A notification's sound is not played: The file can't be opened in time"));
}

TEST_F(DesktopSoundTest, PlaysTheNamedSoundOfTheTheme)
{
    notifyWith("string:sound-name:bell-urgent"_s);
    ASSERT_TRUE(plays(1));
    EXPECT_EQ(players()[0]->content, path("data/sounds/freedesktop/stereo/bell.oga"_s));
}

TEST_F(DesktopSoundTest, ShowsANotificationWithAForbiddenSoundAndLogsThatOnce)
{
    const QString hint = "string:sound-file:"_s + path("secret/sound.wav"_s);
    EXPECT_TRUE(isOpen(notifyWith(hint)));
    EXPECT_TRUE(isOpen(notifyWith(hint)));
    EXPECT_TRUE(isSilent());
    EXPECT_EQ(log().count(log4cplus::WARN_LOG_LEVEL, "A notification's sound is not played: \"" +
                                                         path("secret/sound.wav"_s).toStdString() +
                                                         "\" is not a file in an allowed folder"),
              1);
}

TEST_F(DesktopSoundTest, ShowsANotificationWithASoundOfAHugeNameAndLogsThatOnce)
{
    EXPECT_EQ(python("for i in range(5): last = Notify(hints={'sound-file': '/%d' % i * 500000})\n"
                     "print(last)"_s),
              "5"_s);
    EXPECT_TRUE(isSilent());
    EXPECT_EQ(log().count("A notification's sound is not played: The path or URI of a "
                          "sound may have no more than 4096 characters"),
              1);
}

TEST_F(DesktopSoundTest, PlaysNothingWhenThereIsNoSuchSound)
{
    notifyWith("string:sound-name:nothing"_s);
    EXPECT_TRUE(isSilent());
}

TEST_F(DesktopSoundTest, PlaysNothingWhenTheSoundIsSuppressed)
{
    notifySend(
        {"-h"_s, "boolean:suppress-sound:true"_s, "-h"_s, "string:sound-name:bell"_s, "Title"_s});
    EXPECT_TRUE(isSilent());
}

TEST_F(DesktopSoundTest, IsSilentByDefault)
{
    notifySend({"Title"_s});
    EXPECT_TRUE(isSilent());
}

TEST_F(DesktopSoundTest, StopsTheSoundOfAClosedNotification)
{
    const quint32 id = notifyWith("string:sound-name:bell"_s);
    ASSERT_TRUE(plays(1));
    EXPECT_EQ(result("CloseNotification"_s, {QString::number(id)}), "()"_s);
    EXPECT_TRUE(waitFor([&] { return players()[0]->stops == 1; }));
}

TEST_F(DesktopSoundTest, StopsTheSoundOfADismissedNotification)
{
    const quint32 id = notifyWith("string:sound-name:bell"_s);
    ASSERT_TRUE(plays(1));
    CMSubscribe::closeNode(pathOf(id));
    EXPECT_TRUE(waitFor([&] { return players()[0]->stops == 1; }));
}

TEST_F(DesktopSoundTest, LetsTheSoundOfAnExpiredNotificationEnd)
{
    const quint32 id = notifySend({"-t"_s, "200"_s, "-h"_s, "string:sound-name:bell"_s, "Title"_s});
    ASSERT_TRUE(plays(1));
    ASSERT_TRUE(waitFor([&] { return !isOpen(id); }));
    settle();
    EXPECT_EQ(players()[0]->stops, 0);
}

TEST_F(DesktopSoundTest, PlaysTheNewSoundInPlaceOfTheOld)
{
    const quint32 id = notifyWith("string:sound-name:bell"_s);
    ASSERT_TRUE(plays(1));
    notifySend({"-t"_s, "0"_s, "-r"_s, QString::number(id), "-h"_s,
                "string:sound-file:"_s + path("allowed/sound.wav"_s), "Title"_s});
    ASSERT_TRUE(waitFor([&] { return players()[0]->stops == 1; }));
    players()[0]->reportStopped();
    ASSERT_TRUE(plays(2));
    EXPECT_EQ(players()[1]->content, path("allowed/sound.wav"_s));
}

/// Another client that knows how ids of sounds are made.
class SoundThief
{
public:
    explicit SoundThief(const QString &address)
        : m_client(address)
    {
        m_client.setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1");
    }

    /// Takes the ids that come next, with sounds that never end.
    void takeIds()
    {
        forEachId([this](const QString &id) {
            const auto item = TavoNotificationPlayerItem()
                                  .setId(id)
                                  .setType(TavoNotificationPlayerItemType::Fake)
                                  .setPriority(TavoNotificationItemPriority::Low);
            return call(TavoNotificationPlayerEnqueuePath(),
                        TavoValue().setNotificationPlayerItem(item));
        });
    }
    void cancel()
    {
        forEachId([this](const QString &id) {
            return call(TavoNotificationPlayerCancelPath(), TavoValue().setString_(id));
        });
    }

private:
    template <typename Call>
    void forEachId(const Call &call)
    {
        constexpr int guesses = 4;
        std::vector<BusCall> calls;
        for (int notification = 1; notification <= guesses; ++notification) {
            for (int sound = 1; sound <= guesses; ++sound) {
                calls.push_back(call("dbus-notification-%1-%2"_s.arg(notification).arg(sound)));
            }
        }
        EXPECT_TRUE(calls.back().waitForAnswer());
    }
    BusCall call(const CMPath &path, const TavoHash &value)
    {
        return m_client.call("Call", [&](BusWriter &writer) {
            writer.writeString(path.toString());
            writer.writeVariant(value.__variant());
        });
    }

    BusClient m_client;
};

TEST_F(DesktopSoundTest, PlaysASoundWhoseIdNobodyCouldTake)
{
    SoundThief(bus().address()).takeIds();
    notifyWith("string:sound-name:bell"_s);
    EXPECT_TRUE(waitFor([] {
        return std::any_of(players().begin(), players().end(), [](const ScriptedPlayer *player) {
            return player->kind == "UriSimplePlayer"_s && player->plays > 0;
        });
    }));
}

TEST_F(DesktopSoundTest, GoesOnWithASoundThatAnotherClientTriesToCancel)
{
    notifyWith("string:sound-name:bell"_s);
    ASSERT_TRUE(plays(1));
    SoundThief(bus().address()).cancel();
    settle();
    EXPECT_EQ(players()[0]->stops, 0);
}

TEST_F(DesktopSoundTest, PlaysMoreUrgentSoundsFirst)
{
    notifyWith("string:sound-name:bell"_s);
    ASSERT_TRUE(plays(1));
    notifySend({"-u"_s, "critical"_s, "-h"_s, "string:sound-name:bell"_s, "Title"_s});
    ASSERT_TRUE(plays(2));
    EXPECT_EQ(players()[0]->pauses, 1);
}

class DesktopSoundLimitTest : public DesktopSoundTest
{
protected:
    DesktopSoundLimitTest()
        : DesktopSoundTest({{"totalSounds"_s, 1}})
    {
    }
};

TEST_F(DesktopSoundLimitTest, StopsASoundThatAClientHasLeftBehindEvenWithoutItsNotification)
{
    const QString sound = "string:sound-name:bell"_s;
    const quint32 expiring = notifySend({"-t"_s, "200"_s, "-h"_s, sound, "Title"_s});
    ASSERT_TRUE(plays(1));
    ASSERT_TRUE(waitFor([&] { return !isOpen(expiring); }));
    EXPECT_TRUE(isOpen(notifyWith(sound)));
    ASSERT_TRUE(waitFor([&] { return players()[0]->stops == 1; }));
    players()[0]->reportStopped();
    EXPECT_TRUE(plays(2));
}

TEST_F(DesktopSoundLimitTest, HoldsForAClientThatStays)
{
    python("for i in range(2): Notify(hints={'sound-name': 'bell'})"_s);
    EXPECT_EQ(log().count(log4cplus::WARN_LOG_LEVEL,
                          "A notification's sound is not played: All clients together may have no "
                          "more than 1 sounds"),
              1);
}
} // namespace
