// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/attention/AttentionModuleTest.h"

#include <QFile>
#include <QTemporaryDir>

#include <string>
#include <tuple>
#include <vector>

namespace {
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AttentionSpeechTest : public AttentionModuleTest
{
protected:
    /// Writes the text that it is to say in place of a sound, and some more.
    static QString speaker() { return "cat; printf '%100s' x"_s; }

    void loadWith(const QString &script)
    {
        setSpeechScript(script);
        load();
    }

    /// Waits for letSpeak(), then notes which text it says.
    QString heldSpeaker() const
    {
        return "cd '%1'; until [ -e go ]; do sleep 0.01; done; text=$(cat); echo \"$text\" >>said;"
               " printf '%100s' x"_s.arg(m_folder.path());
    }

    void letSpeak() const
    {
        QFile go(m_folder.filePath("go"_s));
        EXPECT_TRUE(go.open(QIODevice::WriteOnly));
    }

    /// Waits until so many texts have been said.
    std::vector<std::string> saidInOrder(int count) const
    {
        QStringList lines;
        EXPECT_TRUE(waitFor([&] {
            QFile said(m_folder.filePath("said"_s));
            lines = said.open(QIODevice::ReadOnly)
                        ? QString::fromUtf8(said.readAll()).split('\n', Qt::SkipEmptyParts)
                        : QStringList();
            return lines.size() == count;
        })) << lines.size();
        std::vector<std::string> texts;
        for (const QString &line : lines) {
            texts.push_back(line.toStdString());
        }
        return texts;
    }

    static TavoAttentionItem spokenBy(const QString &user, const QString &id)
    {
        return spoken(id).setId(id).setUser(user);
    }

    static TavoAttentionItem spoken(const QString &text)
    {
        return TavoAttentionItem().setId("spoken"_s).setSpeech(text);
    }

    /// Waits until so many sounds have been started, and returns their files.
    static std::vector<QString> playedFiles(std::size_t count)
    {
        const auto &players = ScriptedPlayers::instance().all();
        EXPECT_TRUE(waitFor([&] { return players.size() == count; })) << players.size();
        std::vector<QString> files;
        for (const ScriptedPlayer *player : players) {
            files.push_back(player->content);
        }
        return files;
    }

    static void requestSound(const QString &id, Priority::Enum priority)
    {
        const Request request(
            TavoNotificationPlayerEnqueuePath(),
            TavoValue().setNotificationPlayerItem(TavoNotificationPlayerItem()
                                                      .setId(id)
                                                      .setType(TavoNotificationPlayerItemType::Uri)
                                                      .setContent("/sounds/%1.wav"_s.arg(id))
                                                      .setPriority(priority)));
        EXPECT_TRUE(request.succeeds()) << request.errorText();
    }

    static std::string textIn(const QString &file)
    {
        QFile opened(file);
        EXPECT_TRUE(opened.open(QIODevice::ReadOnly)) << file.toStdString();
        return opened.readAll().toStdString();
    }

    bool isLogged(const std::string &part)
    {
        return waitFor([this, &part] { return !log().find(part).empty(); });
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(AttentionSpeechTest, IsPlayedAsASoundOfTheQueue)
{
    loadWith(speaker());
    EXPECT_TRUE(notify(spoken("The door is open"_s)).sounding());
    const auto files = playedFiles(1);
    ASSERT_EQ(files.size(), 1U);
    EXPECT_THAT(textIn(files[0]), HasSubstr("The door is open"));
    ScriptedPlayers::instance().all().front()->reportEnded();
    EXPECT_EQ(endOf("spoken"_s).end(), End::Expired);
}

TEST_F(AttentionSpeechTest, ReadsTitleAndTextAloudWhereARuleSaysSo)
{
    setSettings(R"({"rules": [{"name": "alarms", "when": {"minPriority": "Urgent"},
                               "then": {"speak": true, "chime": "/sounds/chime.wav"}}]})");
    loadWith(speaker());
    notify(message("Fire"_s).setPriority(Priority::Urgent));
    EXPECT_EQ(playedFiles(1)[0], "/sounds/chime.wav"_s);
    // The speech comes behind the chime.
    ScriptedPlayers::instance().all().front()->reportEnded();
    EXPECT_THAT(textIn(playedFiles(2)[1]), HasSubstr("Fire.\ntext"));
}

TEST_F(AttentionSpeechTest, IsInTheLanguageOfTheText)
{
    setSettings(R"({"speech": {"command": ["sh", "-c", "echo default; printf '%100s' x"],
        "languages": {"de": ["sh", "-c", "echo German; printf '%100s' x"],
                      "ru": ["sh", "-c", "echo Russian; printf '%100s' x"]}}})");
    load();
    const std::vector<std::tuple<QString, QString, std::string>> texts{
        {"The door is open"_s, QString(), "default"},
        {"Die Tür ist offen"_s, "de_AT"_s, "German"},
        {QString::fromUtf8("Дверь открыта"), QString(), "Russian"},
        {QString::fromUtf8("Η πόρτα"), QString(), "default"},
    };
    std::size_t count = 0;
    for (const auto &[text, language, expected] : texts) {
        notify(spoken(text).setId({}).setLanguage(language));
        EXPECT_THAT(textIn(playedFiles(++count).back()), HasSubstr(expected));
        ScriptedPlayers::instance().all().back()->reportEnded();
    }
}

TEST_F(AttentionSpeechTest, IsMadeOnceForTheSameText)
{
    loadWith(speaker());
    notify(spoken("Again"_s));
    const QString first = playedFiles(1)[0];
    ScriptedPlayers::instance().all().front()->reportEnded();
    endOf("spoken"_s);
    QFile kept(first);
    ASSERT_TRUE(kept.open(QIODevice::Append));
    kept.write("kept");
    kept.close();
    notify(spoken("Again"_s).setId("second"_s));
    EXPECT_EQ(playedFiles(2)[1], first);
    EXPECT_THAT(textIn(first), HasSubstr("kept"));
}

TEST_F(AttentionSpeechTest, IsMadeForTheUsersInTurn)
{
    loadWith(heldSpeaker());
    for (const char *id : {"a1", "a2", "a3"}) {
        notify(spokenBy("a"_s, QString::fromLatin1(id)));
    }
    notify(spokenBy("b"_s, "b1"_s));
    letSpeak();
    EXPECT_THAT(saidInOrder(4), ElementsAre("a1", "b1", "a2", "a3"));
}

TEST_F(AttentionSpeechTest, IsMadeForTheMostUrgentFirst)
{
    loadWith(heldSpeaker());
    notify(spokenBy("a"_s, "begun"_s));
    notify(spokenBy("a"_s, "second"_s));
    notify(spokenBy("b"_s, "urgent"_s).setPriority(Priority::Urgent));
    letSpeak();
    EXPECT_THAT(saidInOrder(3), ElementsAre("urgent", "begun", "second"));
}

TEST_F(AttentionSpeechTest, IsRefusedOnlyForTheUserWhoHasTooManyTexts)
{
    constexpr int maxWaiting = 16;
    loadWith(heldSpeaker());
    for (int i = 0; i < maxWaiting + 2; ++i) { // one of them is being made
        notify(spokenBy("a"_s, "a%1"_s.arg(i)));
    }
    EXPECT_TRUE(isLogged("Notification a17 is not read aloud: Too many texts wait to be spoken"));
    notify(spokenBy("a"_s, "urgent"_s).setPriority(Priority::Urgent));
    EXPECT_TRUE(isLogged("Notification a1 is not read aloud: Too many texts wait to be spoken"));
    notify(spokenBy("b"_s, "b"_s));
    letSpeak();
    EXPECT_THAT(saidInOrder(maxWaiting + 2), AllOf(Contains("urgent"), Contains("b")));
}

TEST_F(AttentionSpeechTest, IsKeptUntilItHasBeenHeard)
{
    setSpeechSounds(1);
    loadWith(heldSpeaker());
    letSpeak();
    for (const char *id : {"first", "second", "third"}) {
        notify(spokenBy("a"_s, QString::fromLatin1(id)));
    }
    saidInOrder(3);
    const auto &players = ScriptedPlayers::instance().all();
    for (std::size_t count = 1; count <= 3; ++count) {
        EXPECT_TRUE(QFile::exists(playedFiles(count).back()));
        players.back()->reportEnded();
    }
}

TEST_F(AttentionSpeechTest, OfAClientGivesWayToUrgentSounds)
{
    loadWith(speaker());
    notify(spoken("A long story"_s).setUser("1001"_s).setPriority(Priority::Urgent));
    playedFiles(1);
    requestSound("alarm"_s, Priority::Urgent);
    EXPECT_EQ(playedFiles(2).back(), "/sounds/alarm.wav"_s);
}

TEST_F(AttentionSpeechTest, IsNotKeptIfItIsPrivate)
{
    loadWith(speaker());
    notify(spoken("Secret"_s).setTransient(true));
    const QString file = playedFiles(1)[0];
    EXPECT_EQ(QFile::permissions(file) & ~(QFile::ReadUser | QFile::WriteUser),
              QFile::ReadOwner | QFile::WriteOwner);
    ScriptedPlayers::instance().all().front()->reportEnded();
    endOf("spoken"_s);
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(AttentionSpeechTest, IsNotTakenAwayByAPrivateOneOfTheSameText)
{
    loadWith(heldSpeaker());
    notify(spokenBy("a"_s, "private"_s).setSpeech("Fire"_s).setTransient(true));
    notify(spokenBy("b"_s, "alarm"_s).setSpeech("Fire"_s));
    letSpeak();
    EXPECT_THAT(saidInOrder(2), ElementsAre("Fire", "Fire"));
    playedFiles(1);
    ScriptedPlayers::instance().all().front()->reportEnded();
    endOf("private"_s);
    EXPECT_TRUE(QFile::exists(playedFiles(2).at(1)));
}

TEST_F(AttentionSpeechTest, IsNotMadeWhilePeopleAreNotToBeDisturbed)
{
    loadWith(speaker());
    setDoNotDisturb(true);
    EXPECT_FALSE(notify(spoken("Hush"_s)).sounding());
    EXPECT_EQ(endOf("spoken"_s).end(), End::Silenced);
}

TEST_F(AttentionSpeechTest, IsLeftOutWhenTheMessageIsClosedBefore)
{
    loadWith("sleep 0.2; "_s + speaker());
    notify(message("Door"_s).setSpeech("The door"_s));
    requestClose("Door"_s).succeeds();
    EXPECT_EQ(endOf("Door"_s).end(), End::Closed);
    EXPECT_THAT(ScriptedPlayers::instance().all(), IsEmpty());
}

TEST_F(AttentionSpeechTest, FailsIfTheProgramHangs)
{
    setSpeechTimeout(500);
    loadWith("sleep 100"_s);
    notify(spoken("Late"_s));
    EXPECT_TRUE(isLogged("takes too long"));
    EXPECT_EQ(endOf("spoken"_s).end(), End::Failed);
}

TEST_F(AttentionSpeechTest, FailsIfTheProgramDiesOrSaysNothing)
{
    for (const char *script : {"kill -9 $$", "exit 1", "true"}) {
        loadWith(QString::fromLatin1(script));
        log().clear();
        notify(spoken("Nothing"_s).setId(QString::fromLatin1(script)));
        EXPECT_TRUE(isLogged("wrote no sound")) << script;
    }
}

TEST_F(AttentionSpeechTest, FailsIfTheProgramFloods)
{
    loadWith("cat /dev/zero"_s);
    notify(spoken("Flood"_s));
    EXPECT_EQ(endOf("spoken"_s).end(), End::Failed);
}

TEST_F(AttentionSpeechTest, FailsIfTheProgramIsNotThere)
{
    setSpeechCommand({"/nowhere/speaker"_s});
    load();
    notify(spoken("Nothing"_s));
    EXPECT_TRUE(isLogged("/nowhere/speaker can't be started"));
    EXPECT_EQ(endOf("spoken"_s).end(), End::Failed);
}

TEST_F(AttentionSpeechTest, IsMadeByTheProgramOfTheSettings)
{
    setSpeechCommand({"/nowhere/speaker"_s});
    load();
    setSettings(R"({"speech": {"command": ["/nowhere/other", "-v", "de"]}})");
    notify(spoken("Nothing"_s));
    EXPECT_TRUE(isLogged("/nowhere/other can't be started"));
    setSettings("{}");
    notify(spoken("Again"_s).setId("again"_s));
    EXPECT_TRUE(isLogged("/nowhere/speaker can't be started"));
}

TEST_F(AttentionSpeechTest, FailsWithoutAProgram)
{
    load();
    notify(spoken("Nobody"_s));
    EXPECT_TRUE(isLogged("No program for speech is configured"));
    EXPECT_EQ(endOf("spoken"_s).end(), End::Failed);
}

TEST_F(AttentionSpeechTest, IsShownAllTheSameIfItCanNotBeSpoken)
{
    load();
    EXPECT_TRUE(notify(message("Door"_s).setSpeech("The door"_s)).shown());
    EXPECT_TRUE(isLogged("is not read aloud"));
    EXPECT_THAT(displayed(), Contains("Door"_s));
}
} // namespace
