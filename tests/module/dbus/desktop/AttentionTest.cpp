// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"
#include "support/Request.h"
#include "support/scripted/ScriptedPlayers.h"
#include "support/scripted/ScriptedService.h"

#include <QFile>
#include <QTemporaryDir>

namespace {
using testing::IsEmpty;

/// Desktop notifications with the module that decides about them, which remembers nothing here.
class DesktopAttentionTest : public DesktopTest
{
protected:
    DesktopAttentionTest()
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

private:
    QString soundFile() const { return m_folder.filePath("sound.wav"_s); }

    void load()
    {
        m_attention.reset();
        m_attention = std::make_unique<LoadedModule>(
            QStringLiteral(ATTENTION_MODULE_FILE), "attention",
            QVariantHash{{"settings", m_folder.filePath("attention.json"_s)},
                         {"history", QVariantHash{{"file", QString("")}}}});
    }

    QTemporaryDir m_folder;
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
} // namespace
