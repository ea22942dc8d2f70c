// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CrowdTest.h"
#include "support/EventLoop.h"

#include <QFile>

namespace {

// The process's limit is the default stack size of its threads. Sanitizers make stack frames
// several times as large.
constexpr int stackKiB = 256;
constexpr int instrumentedStackKiB = threadSanitized ? 8192 : 1024;

constexpr int count = 10'000;

constexpr std::chrono::seconds endTimeout{30};

} // namespace

/// A host whose threads have small stacks.
class SmallStackTest : public CrowdTest
{
protected:
    SmallStackTest()
    {
        const QByteArray size = QByteArray::number(sanitized ? instrumentedStackKiB : stackKiB);
        const QString wrapper =
            m_host.writeFile("wrapper", "#!/bin/sh\nulimit -s " + size + " || exit 1\nexec \"" +
                                            QFile::encodeName(m_host.program()) + "\" \"$@\"\n");
        QFile::setPermissions(wrapper, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_host.setProgram(wrapper);
    }
};

TEST_F(SmallStackTest, HoldsTenThousandInvalidItemsBehindOneDuckReply)
{
    startModules({"powermanager",
                  standIn({{"player", true}, {"device", "plain"}, {"keep", QJsonArray{"duck"}}}),
                  "notifications", m_requester.module()});
    std::vector<std::string> expected;
    for (int i = 0; i < count; ++i) {
        m_requester.enqueue({{"id", QString::number(i)}, {"type", 7}});
        expected.push_back("failed " + std::to_string(i));
    }
    EXPECT_EQ(m_requester.answer(), "");
    EXPECT_EQ(m_host.log().count("keeping duck"), 1);
    letAnswer("duck");
    EXPECT_TRUE(
        waitFor([&] { return m_requester.responseCount() >= expected.size(); }, endTimeout));
    EXPECT_EQ(m_requester.responses(), expected);
    expectAsGoodAsNew();
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(SmallStackTest, PlaysEveryKindOfSound)
{
    start();
    expectPlays("file");
    m_requester.enqueue(
        {{"id", "data"},
         {"type", 1},
         {"content", QString::fromLatin1(readFile(soundFile("data.wav", 50)).toBase64())}});
    EXPECT_TRUE(m_requester.waitFor("finished data"));
    expectAsGoodAsNew();
}
