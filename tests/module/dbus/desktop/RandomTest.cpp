// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Random calls of clients that come and go, where a few things use up all room. Nothing may be left in the end.
// TAVO_DESKTOP_RUNS sets how many runs there are, each with another seed.

#include "DesktopTest.h"
#include "support/bus/BusClient.h"
#include "support/bus/BusUser.h"
#include "support/bus/NotifyArguments.h"
#include "support/Request.h"
#include "support/scripted/ScriptedPlayers.h"
#include "support/scripted/ScriptedService.h"
#include <core/records/attention.h>
#include <core/records/player.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <random>
#include <sys/stat.h>

namespace {
constexpr int steps = 1000;
constexpr int usersCount = 3;

class DesktopRandomTest : public DesktopTest, public testing::WithParamInterface<unsigned>
{
protected:
    DesktopRandomTest()
        : DesktopTest({},
                      QStringLiteral("<policy context=\"default\"><allow user=\"*\"/></policy>"))
        , m_random(GetParam())
    {
        ScriptedPlayers::instance().reset();
        ScriptedPlayers::instance().onCall = [this](const QString &call, const QString &id) {
            m_playing = call == "play"_s                       ? id
                        : call == "pause"_s && id == m_playing ? QString()
                                                               : m_playing;
        };
        m_services.take(TavoPlayerMainAudioDuckingPath(), ScriptedService::accept());
        m_services.take(TavoPowerManagerResourceRequestPath(), ScriptedService::accept());
        QFile sound(soundFile());
        EXPECT_TRUE(sound.open(QIODevice::WriteOnly));
        QFile settings(m_folder.filePath("attention.json"_s));
        EXPECT_TRUE(settings.open(QIODevice::WriteOnly));
        settings.write(R"({"groupFrom": 2})");
        settings.close();
        ::chmod(QFile::encodeName(bus().folder()).constData(), 0755);
        m_attention = std::make_unique<LoadedModule>(
            QStringLiteral(ATTENTION_MODULE_FILE), "attention",
            QVariantHash{{"settings", settings.fileName()},
                         {"history", QVariantHash{{"file", m_folder.filePath("history.db"_s)}}}});
        shareBus({{"sounds"_s, QVariantHash{{"folders"_s, QVariantList{QDir::tempPath()}}}},
                  {"limits"_s, QVariantHash{{"openNotifications"_s, 8},
                                            {"totalOpenNotifications"_s, 10},
                                            {"sounds"_s, 5},
                                            {"totalSounds"_s, 9}}}});
    }

    int upTo(int limit) { return std::uniform_int_distribution<int>(0, limit)(m_random); }
    QString id(const char *kind, int count) { return kind + QString::number(upTo(count)); }
    QString soundFile() const { return m_folder.filePath("sound.wav"_s); }

    BusClient &client()
    {
        auto &client = m_clients.at(std::size_t(upTo(usersCount - 1)));
        if (!client) {
            static const std::array<const char *, usersCount> names{"daemon", "mail", "bin"};
            const std::size_t user = std::size_t(&client - m_clients.data());
            std::optional<ActAs> other;
            if (BusUser::canBeAnyone()) {
                other.emplace(BusUser::find(names.at(user)));
            }
            client = std::make_unique<BusClient>(bus().address());
        }
        return *client;
    }

    BusCall send(const CMPath &path, const TavoValue &value)
    {
        return client()
            .setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1")
            .call("Call", [&](BusWriter &writer) {
                writer.writeString(path.toString());
                writer.writeVariant(value.__variant());
            });
    }

    TavoNotificationPlayerItem sound()
    {
        return TavoNotificationPlayerItem()
            .setId(id("sound", 5))
            .setContent(soundFile())
            .setLoop(upTo(3) == 0)
            .setPriority(TavoNotificationItemPriority::Enum(upTo(4) - 1));
    }

    TavoValue notification()
    {
        auto item = TavoAttentionItem()
                        .setId(id("note", 11))
                        .setTitle("Title"_s)
                        .setSource(id("source", 2))
                        .setPriority(TavoNotificationItemPriority::Enum(upTo(4) - 1))
                        .setTimeout(upTo(3) == 0 ? 1 : 0);
        if (upTo(2) == 0) {
            item.setSound(sound());
        }
        if (upTo(4) == 0) {
            item.setPath(CMPath(id("/own/node", 3)));
        }
        return TavoValue().setAttentionItem(item);
    }

    BusCall notify()
    {
        return client()
            .setTarget("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                       "org.freedesktop.Notifications")
            .call("Notify", [this](BusWriter &writer) {
                const QString program = id("program", 2);
                const quint32 replacedId = upTo(1) == 0 ? 0 : quint32(upTo(40));
                NotifyArguments{replacedId, upTo(3) == 0 ? 1 : 0, program}.writeTo(writer);
            });
    }

    BusCall act()
    {
        switch (upTo(12)) {
        case 0:
        case 1:
            return send(TavoAttentionNotifyPath(), notification());
        case 2:
        case 9:
        case 10:
            return send(TavoAttentionReplacePath(), notification());
        case 3:
            return send(TavoAttentionClosePath(), TavoValue().setString_(id("note", 11)));
        case 4:
            return send(TavoNotificationDisplayOpenPath(),
                        TavoValue().setNotificationDisplayItem(
                            TavoNotificationDisplayItem().setMessage("Title"_s).setPriority(
                                TavoNotificationItemPriority::Enum(upTo(3)))));
        case 5:
            return send(TavoNotificationDisplayCancelNotifyPath(),
                        TavoValue().setPath(displayed().value(upTo(3))));
        case 6:
            return send(TavoNotificationPlayerEnqueuePath(),
                        TavoValue().setNotificationPlayerItem(sound()));
        case 7:
            return send(TavoNotificationPlayerCancelPath(), TavoValue().setString_(id("sound", 5)));
        case 8:
            return send(TavoAttentionInhibitPath(),
                        TavoValue().setAttentionInhibition(
                            TavoAttentionInhibition().setId(id("i", 1)).setOn(upTo(1) == 0)));
        default:
            return notify();
        }
    }

    /// Those that are to stop do, and one that plays ends.
    void play()
    {
        bool isOneOver = false;
        const std::vector<ScriptedPlayer *> players = ScriptedPlayers::instance().all();
        for (const ScriptedPlayer *player : players) {
            if (!player->isAlive()) {
                continue;
            }
            if (player->stops > 0) {
                player->reportStopped();
            } else if (player->id == m_playing && !std::exchange(isOneOver, true)) {
                player->reportEnded();
            }
        }
    }

    void step()
    {
        m_calls.push_back(act());
        if (upTo(30) == 0) {
            m_clients.at(std::size_t(upTo(usersCount - 1))).reset();
        } else if (upTo(20) == 0) {
            m_calls.back().waitForAnswer();
        }
        if (upTo(5) == 0) {
            play();
        }
        if (const auto shown = displayed(); !shown.isEmpty() && upTo(20) == 0) {
            CMSubscribe::closeNode(shown.first());
        }
    }

    static int countAt(const char *path) { return int(CMCatalog::children(CMPath(path)).size()); }

    /// People close what is on display, and all sounds end.
    bool isAllOver()
    {
        play();
        for (const CMPath &path : displayed()) {
            CMSubscribe::closeNode(path);
        }
        return displayed().isEmpty() && countAt("/dbus/sounds") == 0 &&
               countAt("/dbus/notifications") == 0 && countAt("/attention/messages") == 0;
    }

    void leave()
    {
        for (const BusCall &call : m_calls) {
            call.waitForAnswer(); // unless its client has left already
        }
        for (auto &client : m_clients) {
            client.reset();
        }
    }

private:
    QTemporaryDir m_folder;
    std::mt19937 m_random;
    QString m_playing; ///< the id of the sound
    ScriptedService m_services{"Services"_s};
    std::unique_ptr<LoadedModule> m_attention;
    std::array<std::unique_ptr<BusClient>, usersCount> m_clients;
    std::vector<BusCall> m_calls;
};

TEST_P(DesktopRandomTest, LeavesNothingBehind)
{
    for (int number = 0; number < steps; ++number) {
        step();
    }
    leave();
    EXPECT_TRUE(waitFor([this] { return isAllOver(); }))
        << displayed().size() << " on display, sounds: " << countAt("/dbus/sounds")
        << ", notifications: " << countAt("/dbus/notifications")
        << ", messages: " << countAt("/attention/messages");
    // No notification is left that nobody sees: all ids can be used again.
    for (int number = 0; number <= 11; ++number) {
        const auto item = TavoAttentionItem()
                              .setId("note"_s + QString::number(number))
                              .setTitle("Title"_s)
                              .setPriority(TavoNotificationItemPriority::Urgent);
        EXPECT_EQ(
            Request(TavoAttentionNotifyPath(), TavoValue().setAttentionItem(item)).errorText(), "");
    }
    EXPECT_TRUE(waitFor([this] { return isAllOver(); }));
}

unsigned runs()
{
    const unsigned chosen = qEnvironmentVariableIntValue("TAVO_DESKTOP_RUNS");
    return chosen > 0 ? chosen : 10;
}

INSTANTIATE_TEST_SUITE_P(Seeds, DesktopRandomTest, testing::Range(1U, runs() + 1));
} // namespace
