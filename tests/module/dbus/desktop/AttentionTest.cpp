// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"
#include "support/bus/BusClient.h"
#include "support/Request.h"
#include "support/scripted/ScriptedPlayers.h"
#include "support/scripted/ScriptedService.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <optional>

namespace {
using testing::IsEmpty;

/// Desktop notifications with the module that decides about them, which remembers nothing here.
class DesktopAttentionTest : public DesktopTest
{
protected:
    explicit DesktopAttentionTest(const QVariantHash &config = {})
        : DesktopTest(config)
    {
        ScriptedPlayers::instance().reset();
        m_services.take(TavoPlayerMainAudioDuckingPath(), ScriptedService::accept());
        m_services.take(TavoPowerManagerResourceRequestPath(), ScriptedService::accept());
        QFile sound(soundFile());
        EXPECT_TRUE(sound.open(QIODevice::WriteOnly));
        load();
        settle();
    }

    void setSettings(const QByteArray &json)
    {
        QFile file(m_folder.filePath("attention.json"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(json);
        file.close();
        load();
        settle();
    }

    void unloadAttention() { m_attention.reset(); }
    void reloadAttention(const QString &historyFile = {}) { load(historyFile); }
    QString historyFile() const { return m_folder.filePath("history.db"_s); }

    /// Ends both modules, and loads the one that decides again.
    void restart()
    {
        unloadAttention();
        unload();
        ASSERT_TRUE(waitFor([] { return displayed().empty(); }));
        reloadAttention(historyFile());
    }
    ScriptedService &services() { return m_services; }

    quint32 notifyWithSound(const QStringList &arguments)
    {
        return notifySend(arguments + QStringList{"-h"_s, "string:sound-file:"_s + soundFile()});
    }

    static bool plays()
    {
        return waitFor([] {
            const auto &players = ScriptedPlayers::instance().all();
            return players.size() == 1 && players.front()->plays > 0;
        });
    }

    bool isShown(quint32 id)
    {
        return waitFor([id] { return displayed().contains(pathOf(id)); });
    }

    QString soundFile() const { return m_folder.filePath("sound.wav"_s); }

private:
    void load(const QString &historyFile = {})
    {
        m_attention.reset();
        m_attention = std::make_unique<LoadedModule>(
            QStringLiteral(ATTENTION_MODULE_FILE), "attention",
            QVariantHash{{"settings", m_folder.filePath("attention.json"_s)},
                         {"history", QVariantHash{{"file", historyFile}}}});
    }

    QTemporaryDir m_folder; ///< outlives the module, which writes to it
    ScriptedService m_services{"Services"_s};
    std::unique_ptr<LoadedModule> m_attention;
};

TEST_F(DesktopAttentionTest, ShowsANotificationAndPlaysItsSound)
{
    const quint32 id = notifyWithSound({"-t"_s, "0"_s, "Title"_s});
    EXPECT_TRUE(isShown(id));
    EXPECT_TRUE(plays());
}

TEST_F(DesktopAttentionTest, AppliesRules)
{
    setSettings(R"({"rules": [{"name": "door", "when": {"source": ["door"]},
                               "then": {"priority": "Urgent", "timeout": 0}}]})");
    notifySend({"-t"_s, "0"_s, "First"_s});
    const quint32 door = notifySend({"-a"_s, "door"_s, "-t"_s, "10"_s, "Door"_s});
    ASSERT_TRUE(isShown(door));
    EXPECT_TRUE(waitFor([door] { return displayed().first() == pathOf(door); }));
    const auto current = valueAt(TavoNotificationDisplayCurrentPath()).displayCurrent();
    EXPECT_EQ(current.timeout(), 0);
}

TEST_F(DesktopAttentionTest, ClosesWhatRulesKeepFromPeople)
{
    setSettings(R"({"rules": [{"name": "nothing", "then": {"drop": true}}]})");
    const auto told = monitor();
    const quint32 id = notifyWithSound({"Title"_s});
    EXPECT_TRUE(told->writes(closedSignal(id, 4)));
    EXPECT_THAT(displayed(), IsEmpty());
    EXPECT_THAT(ScriptedPlayers::instance().all(), IsEmpty());
}

TEST_F(DesktopAttentionTest, PlaysTheSoundOfAHiddenMessage)
{
    setSettings(R"({"rules": [{"name": "hidden", "then": {"hide": true}}]})");
    notifyWithSound({"Title"_s});
    EXPECT_TRUE(plays());
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(DesktopAttentionTest, ShowsAMutedMessageInSilence)
{
    setSettings(R"({"rules": [{"name": "muted", "then": {"mute": true}}]})");
    const quint32 id = notifyWithSound({"-t"_s, "0"_s, "Title"_s});
    EXPECT_TRUE(isShown(id));
    EXPECT_THAT(ScriptedPlayers::instance().all(), IsEmpty());
}

TEST_F(DesktopAttentionTest, TellsWhyANotificationEnded)
{
    const auto told = monitor();
    const quint32 expired = notifySend({"-t"_s, "1"_s, "Expired"_s});
    EXPECT_TRUE(told->writes(closedSignal(expired, 1)));
    const quint32 dismissed = notifySend({"-t"_s, "0"_s, "Dismissed"_s});
    ASSERT_TRUE(isShown(dismissed));
    CMSubscribe::closeNode(pathOf(dismissed));
    EXPECT_TRUE(told->writes(closedSignal(dismissed, 2)));
    const quint32 closed = notifySend({"-t"_s, "0"_s, "Closed"_s});
    result("CloseNotification"_s, {QString::number(closed)});
    EXPECT_TRUE(told->writes(closedSignal(closed, 3)));
    EXPECT_TRUE(waitFor([] { return displayed().empty(); }));
}

TEST_F(DesktopAttentionTest, ReportsTheChosenActionToTheModule)
{
    const quint32 id = python("print(Notify('Door', actions=('open', 'Open')))"_s).toUInt();
    ASSERT_TRUE(isShown(id));
    EXPECT_TRUE(Request(rowOf(id, 1).path(), QVariant()).succeeds());
    ASSERT_TRUE(
        waitFor([] { return valueAt(TavoAttentionEndedPath()).attentionEnded().number() == 1; }));
    const auto ended = valueAt(TavoAttentionEndedPath()).attentionEnded();
    EXPECT_EQ(ended.end(), TavoAttentionEnd::ActedOn);
    EXPECT_EQ(ended.action(), "open"_s);
}

TEST_F(DesktopAttentionTest, ChangesAMessageInItsPlace)
{
    const quint32 id = notifySend({"-t"_s, "0"_s, "Title"_s});
    ASSERT_TRUE(isShown(id));
    EXPECT_EQ(notifySend({"-r"_s, QString::number(id), "-t"_s, "0"_s, "Other"_s}), id);
    EXPECT_EQ(titleOf(id), "Other"_s);
    notifySend({"-r"_s, QString::number(id), "-u"_s, "critical"_s, "-t"_s, "0"_s, "Urgent"_s});
    EXPECT_TRUE(waitFor([id] {
        const auto current = valueAt(TavoNotificationDisplayCurrentPath()).displayCurrent();
        return current.path() == pathOf(id) &&
               current.priority() == TavoNotificationItemPriority::Urgent;
    }));
    EXPECT_EQ(displayed().size(), 1);
}

TEST_F(DesktopAttentionTest, TellsTheEndOfEachMessageOfAGroup)
{
    setSettings(R"({"groupFrom": 3})");
    const auto told = monitor();
    QVector<quint32> ids;
    for (const char *title : {"First", "Second", "Third", "Fourth"}) {
        ids.append(notifySend({"-t"_s, "0"_s, QString(title)}));
    }
    const auto titleIs = [](const QString &title) {
        return waitFor([&title] {
            const auto head = CMCatalog::entry(displayed().value(0));
            return displayed().size() == 1 && head && head->title.toString() == title;
        });
    };
    ASSERT_TRUE(titleIs("4 messages of notify-send"_s));
    result("CloseNotification"_s, {QString::number(ids[0])});
    EXPECT_TRUE(told->writes(closedSignal(ids[0], 3)));
    ASSERT_TRUE(titleIs("3 messages of notify-send"_s));
    // The newest one is opened, and closed by a person.
    const CMReply<QVariant> rows;
    CMRoot()->getRowsRequest(CMGetRowsRequest(displayed().first(), 1, 1, rows));
    const TavoRoles newest(rows.value().toList().value(0).toHash());
    EXPECT_TRUE(Request(newest.path(), QVariant()).succeeds());
    ASSERT_TRUE(waitFor([&ids] { return displayed().first() == pathOf(ids[3]); }));
    CMSubscribe::closeNode(pathOf(ids[3]));
    EXPECT_TRUE(told->writes(closedSignal(ids[3], 2)));
    ASSERT_TRUE(titleIs("2 messages of notify-send"_s));
    CMSubscribe::closeNode(displayed().first());
    EXPECT_TRUE(told->writes(closedSignal(ids[1], 2)));
    EXPECT_TRUE(told->writes(closedSignal(ids[2], 2)));
    EXPECT_TRUE(waitFor([] { return displayed().empty(); }));
}

TEST_F(DesktopAttentionTest, KeepsAnUrgentMessageThatGivesWay)
{
    const auto urgent = [this](const QString &title) {
        return notifySend({"-u"_s, "critical"_s, "-t"_s, "0"_s, title});
    };
    const quint32 left = urgent("Left"_s);
    ASSERT_TRUE(isShown(left));
    // Its client must have been seen to leave.
    ASSERT_TRUE(waitFor([&] {
        urgent("Next"_s);
        return displayed().first() != pathOf(left);
    }));
    EXPECT_TRUE(isShown(left));
    EXPECT_EQ(valueAt(TavoAttentionEndedPath()).attentionEnded().id(), "");
}

TEST_F(DesktopAttentionTest, EndsWhatIsOpenWhenTheModuleGoes)
{
    const auto told = monitor();
    const quint32 id = notifySend({"-t"_s, "0"_s, "Title"_s});
    ASSERT_TRUE(isShown(id));
    unloadAttention();
    EXPECT_TRUE(told->writes(closedSignal(id, 4)));
    EXPECT_THAT(displayed(), IsEmpty());
    EXPECT_TRUE(isShown(notifySend({"-t"_s, "0"_s, "Again"_s})));
}

TEST_F(DesktopAttentionTest, ClosesAMessageThatTheDisplayDoesNotHaveYet)
{
    unloadAttention();
    QStringList closed;
    std::optional<CMReply<QVariant>> held;
    services().take(TavoAttentionNotifyPath(),
                    [&held](const CMSetDataRequest &request) { held = request.reply(); });
    services().take(TavoAttentionClosePath(), [&closed](const CMSetDataRequest &request) {
        closed.append(TavoValue(request.value().toHash()).attentionEnded().id());
        request.reply().setValue({});
    });
    settle();
    const quint32 id = notifySend({"-t"_s, "0"_s, "Title"_s});
    ASSERT_TRUE(waitFor([&held] { return held.has_value(); }));
    BusClient client(bus().address());
    client.setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1");
    const BusCall cancel = client.call("Call", [id](BusWriter &writer) {
        writer.writeString(TavoNotificationDisplayCancelNotifyPath().toString());
        writer.writeVariant(TavoValue().setPath(pathOf(id)).__variant());
    });
    EXPECT_TRUE(cancel.succeeds()) << cancel.errorMessage();
    EXPECT_TRUE(waitFor([&closed] { return closed.size() == 1; }));
    EXPECT_FALSE(isOpen(id));
}

TEST_F(DesktopAttentionTest, ClaimsPersistenceOnlyWithAHistory)
{
    EXPECT_EQ(result("GetCapabilities"_s),
              "(['action-icons', 'actions', 'body', 'body-markup', 'icon-static', 'sound', "
              "'inhibitions'],)"_s);
    reloadAttention(historyFile());
    EXPECT_TRUE(result("GetCapabilities"_s).contains("'persistence'"_s));
    unloadAttention();
    EXPECT_FALSE(result("GetCapabilities"_s).contains("persistence"_s));
}

TEST_F(DesktopAttentionTest, ShowsNotificationsBesideThoseThatAreRestored)
{
    setSettings(R"({"rules": [{"name": "leak", "then": {"mustSee": true}}]})");
    reloadAttention(historyFile());
    ASSERT_TRUE(isShown(notifySend({"Leak"_s})));
    restart();
    ASSERT_TRUE(waitFor([] { return displayed().size() == 1; }));
    shareBus();
    EXPECT_TRUE(isShown(notifySend({"Fire"_s})));
    EXPECT_EQ(displayed().size(), 2);
}

TEST_F(DesktopAttentionTest, RestoresANotificationAsItWasChanged)
{
    setSettings(R"({"rules": [{"name": "leak", "then": {"mustSee": true}}]})");
    reloadAttention(historyFile());
    const quint32 id = notifySend({"Leak"_s});
    ASSERT_TRUE(isShown(id));
    notifySend({"-r"_s, QString::number(id), "Leak everywhere"_s});
    // The module handles its requests in turn.
    EXPECT_TRUE(Request(TavoAttentionTryPath(), QVariant()).succeeds());
    restart();
    EXPECT_TRUE(waitFor([] {
        const auto head = CMCatalog::entry(displayed().value(0));
        return head && head->title.toString() == "Leak everywhere"_s;
    }));
}

TEST_F(DesktopAttentionTest, TellsTheModuleOfOneChangeAtATime)
{
    unloadAttention();
    std::vector<QString> told;
    std::optional<CMReply<QVariant>> held;
    services().take(TavoAttentionNotifyPath(), [](const CMSetDataRequest &request) {
        request.reply().setValue(
            TavoValue().setAttentionOutcome(TavoAttentionOutcome().setShown(true)).__variant());
    });
    services().take(TavoAttentionReplacePath(), [&](const CMSetDataRequest &request) {
        told.push_back(TavoValue(request.value().toHash()).attentionItem().title().toString());
        held = request.reply();
    });
    settle();
    const QString id = QString::number(notifySend({"Title"_s}));
    for (const char *title : {"First", "Second", "Third"}) {
        notifySend({"-r"_s, id, QString(title)});
    }
    ASSERT_TRUE(waitFor([&held] { return held.has_value(); }));
    EXPECT_EQ(told, std::vector{"First"_s});
    held->setValue({});
    EXPECT_TRUE(waitFor([&told] { return told == std::vector{"First"_s, "Third"_s}; }));
}

class InhibitionTest : public DesktopAttentionTest
{
protected:
    std::unique_ptr<BusClient> connect()
    {
        auto client = std::make_unique<BusClient>(bus().address());
        client->setTarget("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                          "org.freedesktop.Notifications");
        return client;
    }
    static BusCall inhibit(BusClient &client, const QString &reason = "Showing slides"_s)
    {
        return client.call("Inhibit", [&reason](BusWriter &writer) {
            writer.writeString("presenter"_s);
            writer.writeString(reason);
            writer.openArray("{sv}");
            writer.close();
        });
    }
    static BusCall endInhibition(BusClient &client, quint32 cookie)
    {
        return client.call("UnInhibit",
                           [cookie](BusWriter &writer) { writer.writeUInt32(cookie); });
    }
    static TavoAttentionDoNotDisturb doNotDisturb()
    {
        return valueAt(TavoAttentionDoNotDisturbPath()).attentionDoNotDisturb();
    }
    static bool becomes(bool isOn)
    {
        return waitFor([isOn] { return doNotDisturb().on() == isOn; });
    }
    static Request setDoNotDisturb(bool isOn)
    {
        return {TavoAttentionSetDoNotDisturbPath(),
                TavoValue().setAttentionDoNotDisturb(TavoAttentionDoNotDisturb().setOn(isOn))};
    }
    QString inhibited()
    {
        ClientProgram program(bus(), "gdbus"_s,
                              {"call"_s, "--session"_s, "--dest"_s,
                               "org.freedesktop.Notifications"_s, "--object-path"_s,
                               "/org/freedesktop/Notifications"_s, "--method"_s,
                               "org.freedesktop.DBus.Properties.Get"_s,
                               "org.freedesktop.Notifications"_s, "Inhibited"_s});
        return program.succeeds() ? program.output().trimmed() : program.errors();
    }
};

TEST_F(InhibitionTest, KeepsPeopleFromBeingDisturbedUntilItsClientEndsIt)
{
    const auto client = connect();
    const quint32 cookie = inhibit(*client).reader().readUInt32();
    ASSERT_TRUE(becomes(true));
    ASSERT_EQ(doNotDisturb().inhibitions().size(), 1);
    EXPECT_EQ(doNotDisturb().inhibitions().at(0).application(), "presenter"_s);
    EXPECT_EQ(doNotDisturb().inhibitions().at(0).reason(), "Showing slides"_s);
    const auto told = monitor();
    EXPECT_TRUE(told->writes(closedSignal(notifySend({"Mail"_s}), 4)));
    EXPECT_TRUE(isShown(notifySend({"-u"_s, "critical"_s, "Fire"_s})));
    EXPECT_TRUE(endInhibition(*client, cookie).succeeds());
    EXPECT_TRUE(becomes(false));
    EXPECT_EQ(endInhibition(*client, cookie).errorName(), "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(InhibitionTest, EndsWithItsClientAndByNoOther)
{
    auto client = connect();
    const auto other = connect();
    const quint32 cookie = inhibit(*client).reader().readUInt32();
    ASSERT_TRUE(becomes(true));
    EXPECT_EQ(endInhibition(*other, cookie).errorName(), "org.freedesktop.DBus.Error.InvalidArgs");
    ASSERT_TRUE(inhibit(*other).succeeds());
    ASSERT_TRUE(waitFor([] { return doNotDisturb().inhibitions().size() == 2; }));
    client.reset();
    ASSERT_TRUE(waitFor([] { return doNotDisturb().inhibitions().size() == 1; }));
    EXPECT_TRUE(doNotDisturb().on());
}

TEST_F(InhibitionTest, IsEndedByAPerson)
{
    const auto client = connect();
    const quint32 cookie = inhibit(*client).reader().readUInt32();
    ASSERT_TRUE(becomes(true));
    ASSERT_TRUE(setDoNotDisturb(false).succeeds());
    EXPECT_FALSE(doNotDisturb().on());
    EXPECT_TRUE(endInhibition(*client, cookie).succeeds());
}

TEST_F(InhibitionTest, IsAPropertyWhoseChangesAreTold)
{
    const auto told = monitor();
    EXPECT_EQ(inhibited(), "(<false>,)"_s);
    ASSERT_TRUE(setDoNotDisturb(true).succeeds());
    EXPECT_TRUE(told->writes("{'Inhibited': <true>}"_s));
    EXPECT_EQ(inhibited(), "(<true>,)"_s);
    unloadAttention();
    EXPECT_TRUE(told->writes("{'Inhibited': <false>}"_s));
}

TEST_F(InhibitionTest, IsLimitedForEachClient)
{
    const auto client = connect();
    constexpr int limit = 16;
    for (int number = 0; number < limit; ++number) {
        ASSERT_TRUE(inhibit(*client).succeeds());
    }
    EXPECT_EQ(inhibit(*client).errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_TRUE(inhibit(*connect()).succeeds());
}

TEST_F(InhibitionTest, IsGrantedHoweverManyOthersHave)
{
    constexpr int ofClient = 16;
    constexpr int most = 1000; // that the module for attention accepts
    std::vector<std::unique_ptr<BusClient>> others;
    for (int number = 0; number <= most; ++number) {
        if (number % ofClient == 0) {
            others.push_back(connect());
        }
        inhibit(*others.back(), "Other"_s).succeeds(); // or is refused
    }
    const auto client = connect();
    ASSERT_TRUE(inhibit(*client).succeeds());
    others.clear();
    EXPECT_TRUE(waitFor([] { return doNotDisturb().inhibitions().size() == 1; }));
    EXPECT_EQ(doNotDisturb().inhibitions().at(0).reason(), "Showing slides"_s);
}

TEST_F(InhibitionTest, IsGrantedWhenTheModuleHasIt)
{
    unloadAttention();
    std::optional<CMReply<QVariant>> held;
    services().take(TavoAttentionInhibitPath(),
                    [&held](const CMSetDataRequest &request) { held = request.reply(); });
    settle();
    const auto client = connect();
    const BusCall call = inhibit(*client);
    ASSERT_TRUE(waitFor([&held] { return held.has_value(); }));
    held->setError({"Attention"_s, TrString("Too many"_s)});
    EXPECT_EQ(call.errorName(), "org.tavo.Error.Attention");
}

TEST_F(InhibitionTest, OutlastsTheModuleForAttention)
{
    const auto client = connect();
    ASSERT_TRUE(inhibit(*client).succeeds());
    ASSERT_TRUE(becomes(true));
    unloadAttention();
    settle();
    EXPECT_EQ(inhibit(*client).errorName(), "org.tavo.Error.NoSuchNode");
    reloadAttention();
    EXPECT_TRUE(becomes(true));
    EXPECT_EQ(doNotDisturb().inhibitions().size(), 1);
}

TEST_F(InhibitionTest, EndsWithTheModuleForTheBus)
{
    const auto client = connect();
    ASSERT_TRUE(inhibit(*client).succeeds());
    ASSERT_TRUE(becomes(true));
    unload();
    EXPECT_TRUE(becomes(false));
}

/// Clients that send requests to the module themselves.
class ClientAttentionTest : public DesktopAttentionTest
{
protected:
    explicit ClientAttentionTest(int maxOpen = 2, int maxTotal = 1000, int maxBytes = 1 << 20)
        : DesktopAttentionTest(
              {{"sounds"_s, QVariantHash{{"folders"_s, QVariantList{QDir::tempPath()}}}},
               {"limits"_s, QVariantHash{{"openNotifications"_s, maxOpen},
                                         {"totalOpenNotifications"_s, maxTotal},
                                         {"sounds"_s, 1},
                                         {"storedBytes"_s, maxBytes},
                                         {"totalStoredBytes"_s, 1 << 20}}}})
    {
    }

    std::unique_ptr<BusClient> connect()
    {
        auto client = std::make_unique<BusClient>(bus().address());
        client->setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1");
        return client;
    }

    BusCall send(const CMPath &path, const TavoValue &value) const
    {
        return m_client->call("Call", [&](BusWriter &writer) {
            writer.writeString(path.toString());
            writer.writeVariant(value.__variant());
        });
    }
    BusCall request(const TavoAttentionItem &item) const
    {
        return send(TavoAttentionNotifyPath(), TavoValue().setAttentionItem(item));
    }
    static TavoAttentionItem message(const QString &id)
    {
        return TavoAttentionItem().setId(id).setTitle(id);
    }
    TavoAttentionItem sounding(const QString &id, const QString &file) const
    {
        return message(id).setSound(TavoNotificationPlayerItem().setContent(file));
    }
    static std::size_t shown() { return std::size_t(displayed().size()); }

    void leave() { m_client.reset(); }

private:
    std::unique_ptr<BusClient> m_client = connect();
};

TEST_F(ClientAttentionTest, ShowAndPlay)
{
    const BusCall call = request(sounding("Door"_s, soundFile()));
    ASSERT_TRUE(call.succeeds()) << call.errorMessage();
    EXPECT_TRUE(TavoValue(call.variant().toHash()).attentionOutcome().shown());
    EXPECT_TRUE(plays());
    EXPECT_EQ(shown(), 1U);
}

TEST_F(ClientAttentionTest, GetNoPriorityAboveUrgent)
{
    ASSERT_TRUE(request(message("Door"_s).setPriority(TavoNotificationItemPriority::Enum(1000)))
                    .succeeds());
    EXPECT_TRUE(waitFor([] {
        return valueAt(TavoNotificationDisplayCurrentPath()).displayCurrent().priority() ==
               TavoNotificationItemPriority::Urgent;
    }));
}

TEST_F(ClientAttentionTest, MayPlayOnlyAllowedFiles)
{
    const BusCall call = request(sounding("Door"_s, "/etc/passwd"_s));
    EXPECT_EQ(call.errorName(), "org.freedesktop.DBus.Error.AccessDenied");
    EXPECT_EQ(shown(), 0U);
    // Nor without a notification.
    EXPECT_EQ(
        send(TavoAttentionSoundPath(), TavoValue().setString_("x"_s).setNotificationPlayerItem(
                                           TavoNotificationPlayerItem().setContent("/x"_s)))
            .errorName(),
        "org.freedesktop.DBus.Error.AccessDenied");
}

TEST_F(ClientAttentionTest, MayNotTakeTheIdsOfDesktopNotifications)
{
    EXPECT_EQ(request(message("dbus-notification-1"_s)).errorName(),
              "org.freedesktop.DBus.Error.AccessDenied");
}

TEST_F(ClientAttentionTest, MayNotSayHowANotificationEnded)
{
    ASSERT_TRUE(request(message("Door"_s)).succeeds());
    const auto forged = TavoAttentionEnded().setId("Door"_s).setEnd(TavoAttentionEnd::ActedOn);
    EXPECT_EQ(send(TavoAttentionClosePath(), TavoValue().setAttentionEnded(forged)).errorName(),
              "org.tavo.Error.Attention");
    EXPECT_EQ(shown(), 1U);
}

TEST_F(ClientAttentionTest, MayNotReportTheEndsOfSounds)
{
    EXPECT_EQ(send(TavoAttentionPath() + "soundResponse"_s, TavoValue()).errorName(),
              "org.freedesktop.DBus.Error.AccessDenied");
}

TEST_F(ClientAttentionTest, ReadOnePageOfTheHistoryAtATime)
{
    unloadAttention();
    std::optional<CMReply<QVariant>> held;
    services().take(TavoAttentionHistoryPath(),
                    [&held](const CMSetDataRequest &request) { held = request.reply(); });
    const BusCall first = send(TavoAttentionHistoryPath(), TavoValue());
    ASSERT_TRUE(waitFor([&held] { return held.has_value(); }));
    EXPECT_EQ(send(TavoAttentionHistoryPath(), TavoValue()).errorName(),
              "org.freedesktop.DBus.Error.LimitsExceeded");
    held->setValue({});
    EXPECT_TRUE(first.succeeds());
    held.reset();
    const BusCall third = send(TavoAttentionHistoryPath(), TavoValue());
    EXPECT_TRUE(waitFor([&held] { return held.has_value(); }));
}

TEST_F(ClientAttentionTest, OfAUserReadTheHistoryOneAfterTheOther)
{
    unloadAttention();
    std::vector<CMReply<QVariant>> held;
    services().take(TavoAttentionHistoryPath(),
                    [&held](const CMSetDataRequest &request) { held.push_back(request.reply()); });
    const auto read = [](BusClient &client) {
        return client.call("Call", [](BusWriter &writer) {
            writer.writeString(TavoAttentionHistoryPath().toString());
            writer.writeVariant(TavoValue().__variant());
        });
    };
    const auto first = connect();
    auto leaves = connect();
    const auto last = connect();
    // So that their user is known.
    const auto openInbox = [](BusClient &client) {
        const BusCall call = client.call("OpenInbox", [](BusWriter &) {});
        EXPECT_TRUE(call.succeeds());
        return CMPath(call.text());
    };
    openInbox(*first);
    openInbox(*last);
    const CMPath inbox = openInbox(*leaves);
    const BusCall firstPage = read(*first);
    ASSERT_TRUE(waitFor([&held] { return held.size() == 1; }));
    read(*leaves);
    const BusCall lastPage = read(*last);
    leaves.reset();
    ASSERT_TRUE(waitFor([&inbox] { return !CMCatalog::entry(inbox); }));
    EXPECT_EQ(held.size(), 1U);
    held[0].setValue({});
    EXPECT_TRUE(firstPage.succeeds());
    ASSERT_TRUE(waitFor([&held] { return held.size() == 2; }));
    held[1].setValue({});
    EXPECT_TRUE(lastPage.succeeds());
}

TEST_F(ClientAttentionTest, MayNotShowNodesThatFollowTheMessages)
{
    for (const CMPath &path : {TavoAttentionEndedPath(), TavoNotificationDisplayCurrentPath()}) {
        EXPECT_EQ(request(message("x"_s).setPath(path)).errorName(),
                  "org.freedesktop.DBus.Error.AccessDenied");
    }
}

TEST_F(ClientAttentionTest, AreLimitedUntilSomeEnd)
{
    ASSERT_TRUE(request(message("1"_s)).succeeds());
    ASSERT_TRUE(request(message("2"_s)).succeeds());
    EXPECT_EQ(request(message("3"_s)).errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    ASSERT_TRUE(send(TavoAttentionClosePath(), TavoValue().setString_("1"_s)).succeeds());
    ASSERT_TRUE(waitFor([] { return shown() == 1; }));
    EXPECT_TRUE(request(message("3"_s)).succeeds());
}

TEST_F(ClientAttentionTest, DoNotCountIfTheyAreRefused)
{
    ASSERT_TRUE(request(message("1"_s)).succeeds());
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ(request(message("1"_s)).errorName(), "org.tavo.Error.Attention");
        EXPECT_EQ(request(TavoAttentionItem()).errorName(), "org.tavo.Error.Attention");
    }
    EXPECT_TRUE(request(message("2"_s)).succeeds());
}

TEST_F(ClientAttentionTest, PlayNoSoundForAReplacementThatIsTooLarge)
{
    ASSERT_TRUE(request(message("1"_s)).succeeds());
    const auto large = sounding("1"_s, soundFile()).setText(QString(1'100'000, QLatin1Char('x')));
    EXPECT_EQ(send(TavoAttentionReplacePath(), TavoValue().setAttentionItem(large)).errorName(),
              "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_TRUE(request(sounding("2"_s, soundFile())).succeeds()) << "no sound counts";
}

TEST_F(ClientAttentionTest, KeepTheirIdsUntilTheEndIsKnown)
{
    unloadAttention();
    int opened = 0;
    services().take(TavoAttentionNotifyPath(), [&opened](const CMSetDataRequest &request) {
        ++opened;
        request.reply().setValue({});
    });
    services().take(TavoAttentionClosePath(),
                    [](const CMSetDataRequest &request) { request.reply().setValue({}); });
    ASSERT_TRUE(request(message("1"_s)).succeeds());
    ASSERT_TRUE(send(TavoAttentionClosePath(), TavoValue().setString_("1"_s)).succeeds());
    EXPECT_EQ(request(message("1"_s)).errorName(), "org.tavo.Error.Attention");
    EXPECT_EQ(opened, 1);
}

TEST_F(ClientAttentionTest, HaveLimitedSounds)
{
    ASSERT_TRUE(request(sounding("1"_s, soundFile())).succeeds());
    EXPECT_EQ(request(sounding("2"_s, soundFile())).errorName(),
              "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_EQ(shown(), 1U) << "nothing is half done";
    ASSERT_TRUE(plays());
    ScriptedPlayers::instance().all().front()->reportEnded();
    settle();
    EXPECT_TRUE(request(sounding("2"_s, soundFile())).succeeds());
}

TEST_F(ClientAttentionTest, GiveBackTheSoundThatRulesKeepFromPeople)
{
    setSettings(R"({"rules": [{"name": "muted", "then": {"mute": true}}]})");
    for (int number = 0; number < 2; ++number) {
        const QString id = QString::number(number);
        ASSERT_TRUE(request(sounding(id, soundFile())).succeeds());
        settle();
    }
}

class ManyClientAttentionTest : public ClientAttentionTest
{
protected:
    ManyClientAttentionTest()
        : ClientAttentionTest(s_max)
    {
    }
    static constexpr int s_max = 100;
};

TEST_F(ManyClientAttentionTest, CountAsTheyWereWhenAReplacementIsRefused)
{
    const QString text(60'000, QLatin1Char('x'));
    int opened = 0;
    for (; opened < s_max; ++opened) {
        const QString id = QString::number(opened);
        const BusCall call = request(message(id).setText(text));
        if (!call.succeeds()) {
            EXPECT_EQ(call.errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
            break;
        }
        const auto replacement = TavoValue().setAttentionItem(sounding(id, "/etc/passwd"_s));
        EXPECT_EQ(send(TavoAttentionReplacePath(), replacement).errorName(),
                  "org.freedesktop.DBus.Error.AccessDenied");
    }
    EXPECT_LT(opened, (1 << 20) / text.size());
}

TEST_F(ManyClientAttentionTest, CountTheNodesOfTheirActions)
{
    TavoList<TavoAttentionAction> actions;
    for (int number = 0; number < 64; ++number) {
        actions.append(TavoAttentionAction().setKey(QString::number(number)));
    }
    int opened = 0;
    while (opened < s_max &&
           request(message(QString::number(opened)).setActions(actions)).succeeds()) {
        ++opened;
    }
    EXPECT_THAT(opened, testing::AllOf(testing::Gt(5), testing::Lt(15)));
}

class TotalClientAttentionTest : public ClientAttentionTest
{
protected:
    TotalClientAttentionTest()
        : ClientAttentionTest(3, 2)
    {
    }
};

TEST_F(TotalClientAttentionTest, AreNotReplacedOnceTheyHaveMadeRoomForOthers)
{
    unloadAttention();
    services().take(TavoAttentionNotifyPath(),
                    [](const CMSetDataRequest &request) { request.reply().setValue({}); });
    bool isClosed = false;
    services().take(TavoAttentionClosePath(),
                    [&isClosed](const CMSetDataRequest & /*request*/) { isClosed = true; });
    ASSERT_TRUE(request(message("1"_s)).succeeds());
    ASSERT_TRUE(request(message("2"_s)).succeeds());
    ASSERT_TRUE(
        request(message("3"_s).setPriority(TavoNotificationItemPriority::Urgent)).succeeds());
    ASSERT_TRUE(waitFor([&isClosed] { return isClosed; }));
    const BusCall replaced =
        send(TavoAttentionReplacePath(), TavoValue().setAttentionItem(message("1"_s)));
    EXPECT_EQ(replaced.errorName(), "org.tavo.Error.Attention");
    EXPECT_EQ(replaced.errorMessage(), "There is no such notification");
}

/// Clients that have filled nearly all room with urgent notifications.
class FullClientAttentionTest : public ClientAttentionTest
{
protected:
    FullClientAttentionTest()
        : ClientAttentionTest(100, 100, 2 << 20)
    {
        unloadAttention();
        services().take(TavoAttentionNotifyPath(), [this](const CMSetDataRequest &request) {
            ++opened;
            request.reply().setValue({});
        });
        services().take(TavoAttentionClosePath(),
                        [](const CMSetDataRequest &request) { request.reply().setValue({}); });
    }

    /// What it counts for is a little more than twice as much.
    TavoAttentionItem large(const QString &id, int kibibytes) const
    {
        return message(id).setText(QString(kibibytes << 10, QLatin1Char('x')));
    }
    /// Leaves room for one of 40 KiB, but not for two.
    void fill()
    {
        for (int number = 0; number < 7; ++number) {
            const auto item = large("urgent"_s + QString::number(number), 62);
            ASSERT_TRUE(
                request(TavoAttentionItem(item).setPriority(TavoNotificationItemPriority::Urgent))
                    .succeeds());
        }
    }
    TavoAttentionItem withUrgentSound(TavoAttentionItem item) const
    {
        return item.setSound(TavoNotificationPlayerItem()
                                 .setType(TavoNotificationPlayerItemType::Fake)
                                 .setPriority(TavoNotificationItemPriority::Urgent));
    }

    int opened = 0;
};

TEST_F(FullClientAttentionTest, AreNotReplacedOnceTheyHaveMadeRoomForTheirOwnSound)
{
    const auto first = large("1"_s, 10).setPriority(TavoNotificationItemPriority::Low);
    ASSERT_TRUE(request(first).succeeds());
    fill();
    const auto replacement = TavoValue().setAttentionItem(withUrgentSound(large("1"_s, 62)));
    EXPECT_EQ(send(TavoAttentionReplacePath(), replacement).errorMessage(),
              "There is no such notification");
}

TEST_F(FullClientAttentionTest, AreNotOpenedUncountedIfTheirSoundNeedsTheRoom)
{
    fill();
    const auto item = large("1"_s, 40).setPriority(TavoNotificationItemPriority::Low);
    EXPECT_EQ(request(withUrgentSound(item)).errorName(),
              "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_EQ(opened, 7);
}

TEST_F(ClientAttentionTest, AreTheHostsOwnUserOnTheBusOfASession)
{
    unloadAttention();
    std::optional<QString> user;
    services().take(TavoAttentionNotifyPath(), [&user](const CMSetDataRequest &request) {
        user = TavoValue(request.value().toHash()).attentionItem().user();
        request.reply().setValue({});
    });
    ASSERT_TRUE(request(message("Door"_s)).succeeds());
    EXPECT_EQ(user, ""_s);
}

TEST_F(ClientAttentionTest, InhibitUntilTheyLeave)
{
    const auto inhibition = TavoAttentionInhibition().setId("x"_s).setOn(true);
    ASSERT_TRUE(send(TavoAttentionInhibitPath(), TavoValue().setAttentionInhibition(inhibition))
                    .succeeds());
    EXPECT_TRUE(valueAt(TavoAttentionDoNotDisturbPath()).attentionDoNotDisturb().on());
    leave();
    EXPECT_TRUE(waitFor(
        [] { return !valueAt(TavoAttentionDoNotDisturbPath()).attentionDoNotDisturb().on(); }));
}

TEST_F(ClientAttentionTest, InhibitUntilTheyLeaveAlsoWhenAChangeIsRefused)
{
    const auto inhibition = TavoAttentionInhibition().setId("x"_s).setOn(true);
    const auto inhibit = [this](const TavoAttentionInhibition &item) {
        return send(TavoAttentionInhibitPath(), TavoValue().setAttentionInhibition(item));
    };
    ASSERT_TRUE(inhibit(inhibition).succeeds());
    const auto large =
        TavoAttentionInhibition(inhibition).setReason(QString(1'100'000, QLatin1Char('x')));
    EXPECT_EQ(inhibit(large).errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    const auto isOn = [] {
        return valueAt(TavoAttentionDoNotDisturbPath()).attentionDoNotDisturb().on();
    };
    EXPECT_TRUE(isOn());
    leave();
    EXPECT_TRUE(waitFor([&isOn] { return !isOn(); }));
}

TEST_F(ClientAttentionTest, GiveWayWhenTheyAreUrgentAndLeftBehind)
{
    const auto urgent = [this](const QString &id) {
        return request(message(id).setPriority(TavoNotificationItemPriority::Urgent));
    };
    ASSERT_TRUE(urgent("left"_s).succeeds());
    leave();
    const auto other = connect();
    ASSERT_TRUE(waitFor([&] {
        notifySend({"-u"_s, "critical"_s, "-t"_s, "0"_s, "Next"_s});
        const auto head = CMCatalog::entry(displayed().first());
        return head && head->title.toString() == "Next"_s;
    }));
}
} // namespace
