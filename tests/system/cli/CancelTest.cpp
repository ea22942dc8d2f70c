// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"

using testing::HasSubstr;

class CliCancelTest : public CliTest
{
protected:
    void SetUp() override { startHost(); }

    /// Opens a message by the model; gives its path.
    QString openMessage()
    {
        EXPECT_EQ(run({"--json", "call", "/notifications/display/open",
                       R"({"notificationDisplayItem": {"message": "Hello", "title": "Door"}})"}),
                  s_good);
        return json().toObject().value("path").toString();
    }
};

TEST_F(CliCancelTest, TakesAMessageAwayByItsPath)
{
    const QString path = openMessage();
    EXPECT_EQ(run({"cancel", path}), s_good);
    EXPECT_EQ(m_tavo.output(), "");
    EXPECT_EQ(run({"rows", "/notifications/display/queue"}), s_good);
    EXPECT_EQ(m_tavo.output(), "");
}

TEST_F(CliCancelTest, TellsThatThereIsNoSuchSound)
{
    EXPECT_EQ(run({"cancel", "bell"}), s_refused);
    EXPECT_THAT(m_tavo.error(), HasSubstr("Invalid notification sound id to stop"));
}

TEST_F(CliCancelTest, TellsThatANumberIsNeither)
{
    EXPECT_EQ(run({"cancel", "4711"}), s_refused);
    EXPECT_EQ(m_tavo.error(), "tavo: there is neither a sound nor a message 4711\n");
}

TEST_F(CliCancelTest, TellsThatThereIsNoSuchMessage)
{
    EXPECT_EQ(run({"cancel", "/notifications/display/simpleMessageNode/none"}), s_refused);
    EXPECT_THAT(m_tavo.error(), HasSubstr("Node already closed or non-existent"));
}

TEST_F(CliCancelTest, TellsInJsonWhatItWas)
{
    const QString path = openMessage();
    EXPECT_EQ(run({"cancel", "--json", path}), s_good);
    EXPECT_EQ(json().toObject(), (QJsonObject{{"cancelled", "message"}, {"id", path}}));
}
