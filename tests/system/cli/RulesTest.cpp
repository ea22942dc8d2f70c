// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AttentionTest.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

class CliRulesTest : public CliAttentionTest
{
protected:
    CliRulesTest()
        : CliAttentionTest(R"({
            "rules": [
                {"name": "door", "when": {"source": ["door"]},
                 "then": {"priority": "Urgent", "timeout": 2500}},
                {"name": "leak", "when": {"source": ["leak"]}, "then": {"mustSee": true}},
                {"name": "no spam", "when": {"words": ["spam"]}, "then": {"drop": true}}]})")
    {
    }

    /// Checks a file with this text.
    int check(const QByteArray &text)
    {
        return run({"rules", "check", m_host->writeFile("rules.json", text)});
    }
};

TEST_F(CliRulesTest, ListsThemWithTheirCounts)
{
    notify({"Ring", "--source", "door"});
    notify({"Ring", "--source", "door"});
    EXPECT_EQ(run({"rules", "list"}), s_good);
    EXPECT_THAT(m_tavo.lines(), ElementsAre("2\tdoor", "0\tleak", "0\tno spam"));
    EXPECT_EQ(m_tavo.error(), "3 rules, from " + m_file.toStdString() + "\n");
    EXPECT_EQ(run({"rules", "list", "--json"}), s_good);
    EXPECT_EQ(json().toObject().value("rules").toArray().size(), 3);
}

TEST_F(CliRulesTest, ListSaysThatTheirFileIsWrong)
{
    QFile file(m_file);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"rules\": 5}");
    file.close();
    EXPECT_TRUE(m_host->waitForLog("the previous settings stay"));
    EXPECT_EQ(run({"rules", "list"}), s_refused);
    EXPECT_EQ(m_tavo.lines().size(), 3U);
    EXPECT_THAT(m_tavo.error(),
                EndsWith(":1: rules: must be a list. The previous rules stay in use\n"));
}

TEST_F(CliRulesTest, TestSaysWhichRuleDoesWhatAndWhyNot)
{
    setDoNotDisturb("on");
    EXPECT_EQ(run({"rules", "test", "Ring", "--source", "door"}), s_good);
    EXPECT_THAT(m_tavo.lines(),
                ElementsAre("applies\tdoor\tpriority Urgent, timeout 2500",
                            "no\tleak\tsource \"door\" is not in leak",
                            "no\tno spam\tnot all words are in it: spam",
                            "Message\tshown for 2.5 s", "Sound\tplayed, if it has one",
                            "Speech\tnot read aloud", "Priority\tUrgent",
                            "Why\tdo-not-disturb is on, but its priority passes"));
    EXPECT_EQ(run({"rules", "test", "Offer", "spam", "--json"}), s_good);
    EXPECT_EQ(json().toObject().value("shown"), false);
    EXPECT_EQ(run({"rules", "list"}), s_good);
    EXPECT_THAT(m_tavo.lines(), ElementsAre("0\tdoor", "0\tleak", "0\tno spam"))
        << "a test is not counted";
}

TEST_F(CliRulesTest, TestSaysThatAMessageStaysUntilItIsClosed)
{
    EXPECT_EQ(run({"rules", "test", "Water", "--source", "leak", "--speech", "Water"}), s_good);
    EXPECT_THAT(m_tavo.lines(), Contains("Message\tshown until it is closed"));
    EXPECT_THAT(m_tavo.lines(), Contains("Speech\tread aloud"));
}

TEST_F(CliRulesTest, TestNeedsATitle)
{
    EXPECT_EQ(run({"rules", "test"}), s_usage);
    EXPECT_EQ(m_tavo.error(), "tavo: rules test needs the title of a notification\n");
}

TEST_F(CliRulesTest, CheckTellsGoodFilesFromWrongOnes)
{
    EXPECT_EQ(check(m_settings), s_good);
    EXPECT_THAT(m_tavo.output(), EndsWith("rules.json: good, rules: 3\n"));
    EXPECT_EQ(check("{\"rules\": [\n{\"name\": \"door\",\n\"then\": {\"loud\": true}}]}"),
              s_refused);
    EXPECT_THAT(m_tavo.error(), EndsWith("rules.json:3: rules[0].then.loud: unknown key\n"));
    EXPECT_EQ(check("{\"speech\": {\"command\": [\"/nowhere/speaker\"]},\n\"rules\": [\n"
                    "{\"name\": \"door\",\n\"then\": {\"sound\": \"/nowhere/gong.wav\"}}]}"),
              s_refused);
    EXPECT_THAT(m_tavo.error(),
                AllOf(HasSubstr("rules.json:1: speech.command: there is no program "
                                "/nowhere/speaker\n"),
                      EndsWith("rules.json:4: rules[0].then.sound: there is no file "
                               "/nowhere/gong.wav\n")));
    EXPECT_EQ(check("{\"rules\": ["), s_refused);
    EXPECT_THAT(m_tavo.error(), HasSubstr("rules.json:1:"));
}

TEST_F(CliTest, RulesCheckNeedsNoHost)
{
    m_tavo.setEnvironment("TAVO_BUS", "unix:path=/nowhere");
    EXPECT_EQ(run({"rules", "check", "/nowhere/attention.json"}), s_noInput);
    EXPECT_EQ(m_tavo.error(),
              "tavo: /nowhere/attention.json can't be read: No such file or directory\n");
    m_tavo.setEnvironment("HOME", "/");
    EXPECT_EQ(run({"rules", "check"}), s_good);
    EXPECT_EQ(m_tavo.output(), "No settings, and so no rules: none of these files is there: "
                               "/etc/tavo/attention.json\n");
}
