// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "system/host/DatagramSocket.h"
#include "system/host/HostTest.h"

namespace {
/// A host whose standard error is the stream to a journal.
class JournalTest : public HostTest
{
protected:
    void SetUp() override
    {
        // The journal's stream is named by its device and inode.
        const QByteArray script = "#!/bin/sh\n"
                                  "JOURNAL_STREAM=$(stat -L -c %d:%i /proc/self/fd/2)\n"
                                  "export JOURNAL_STREAM\n"
                                  "LD_PRELOAD=" TAVO_JOURNAL_LIBRARY " exec " +
                                  QFile::encodeName(m_host.program()) + " \"$@\"\n";
        const QString file = m_host.writeFile("to_journal", script);
        ASSERT_EQ(chmod(QFile::encodeName(file).constData(), 0700), 0);
        m_host.setProgram(file);
        m_host.setConfiguration(configurationOf({scripted("one", {{"say", "two\nlines"}})}));
    }
};

class JournalSocketTest : public JournalTest
{
protected:
    JournalSocketTest() { m_host.setEnvironment("TAVO_TEST_JOURNAL", m_socket.path()); }

    /// The first record with this text, between line breaks; empty after the timeout.
    std::string record(const std::string &text)
    {
        const std::string message = "\nMESSAGE=" + text + '\n';
        while (m_received.find(message) == std::string::npos) {
            const std::string next = m_socket.next();
            if (next.empty()) {
                return {};
            }
            m_received += '\n' + next + '\0';
        }
        const size_t inside = m_received.find(message);
        const size_t begin = m_received.rfind('\0', inside) + 1;
        return m_received.substr(begin, m_received.find('\0', inside) - begin);
    }

private:
    const DatagramSocket m_socket{m_host.folder() + "/journal"};
    std::string m_received; ///< with a null character behind each record
};
} // namespace

TEST_F(JournalSocketTest, GetsTheFieldsOfEachRecord)
{
    ASSERT_TRUE(m_host.start());
    const std::string warning = record("Qt [one] warning two\\nlines");
    for (const char *field :
         {"PRIORITY=4", "TAVO_LOGGER=Qt", "TAVO_MODULE=one", "TAVO_THREAD=one"}) {
        EXPECT_THAT(warning, testing::HasSubstr('\n' + std::string(field) + '\n'));
    }
    const std::string ready = record("Host [main] Host ready, 1 modules");
    for (const std::string &field :
         {std::string("PRIORITY=6"), std::string("TAVO_LOGGER=Host"),
          std::string("TAVO_THREAD=main"), "TID=" + std::to_string(m_host.processId())}) {
        EXPECT_THAT(ready, testing::HasSubstr('\n' + field + '\n'));
    }
    EXPECT_THAT(ready, testing::ContainsRegex("\nCODE_FILE=.*src/host/main.cpp\n"));
    EXPECT_THAT(ready, testing::ContainsRegex("\nCODE_LINE=[1-9][0-9]*\n"));
    EXPECT_THAT(ready, testing::HasSubstr("\nCODE_FUNC="));
    EXPECT_THAT(ready, testing::Not(testing::HasSubstr("TAVO_MODULE")));
    EXPECT_EQ(m_host.log(), QString());
}

TEST_F(JournalTest, GetsLinesWithLevelsAndWithoutTimesIfItsSocketCannotBeReached)
{
    ASSERT_TRUE(m_host.startReady());
    ASSERT_TRUE(m_host.waitForLog("one working"));
    EXPECT_EQ(m_host.stop(), 0);
    EXPECT_THAT(m_host.log().toStdString(), testing::StartsWith("<6>Scripted [one] one creating"));
    EXPECT_TRUE(m_host.log().contains("\n<6>Host [main] Host ready, 1 modules\n"));
    EXPECT_TRUE(m_host.log().contains("\n<4>Qt [one] warning two\\nlines\n"));
    EXPECT_TRUE(m_host.log().contains("\n<3>Qt [one] critical two\\nlines\n"));
}

TEST_F(HostTest, LogsToOtherStreamsThanTheJournalAsUsual)
{
    m_host.setEnvironment("JOURNAL_STREAM", "1:1");
    m_host.setConfiguration(configurationOf({scripted("one")}));
    ASSERT_TRUE(m_host.startReady());
    EXPECT_EQ(m_host.stop(), 0);
    EXPECT_TRUE(m_host.log().contains(" INFO  Host [main] Host ready, 1 modules\n"));
}
