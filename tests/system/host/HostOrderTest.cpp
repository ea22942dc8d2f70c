// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HostTest.h"

using testing::ElementsAre;

class HostOrderTest : public HostTest
{
};

TEST_F(HostOrderTest, CreatesAWorkerOnlyAfterTheOneBeforeIt)
{
    m_host.setConfiguration(configurationOf({scripted("one"), scripted("two"), scripted("three")}));
    ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
    EXPECT_EQ(m_host.stop(), 0);
    EXPECT_THAT(eventNames({"creating", "created"}),
                ElementsAre("one creating", "one created", "two creating", "two created",
                            "three creating", "three created"));
}

TEST_F(HostOrderTest, DeletesWorkersInTheReverseOrderOfTheirCreation)
{
    m_host.setConfiguration(configurationOf({scripted("one"), scripted("two"), scripted("three")}));
    ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
    EXPECT_EQ(m_host.stop(), 0);
    EXPECT_THAT(eventNames({"deleting", "deleted"}),
                ElementsAre("three deleting", "three deleted", "two deleting", "two deleted",
                            "one deleting", "one deleted"));
}

TEST_F(HostOrderTest, CreatesRunsAndDeletesAWorkerInOneThread)
{
    m_host.setConfiguration(configurationOf({scripted("one")}));
    ASSERT_TRUE(m_host.startReady());
    ASSERT_TRUE(m_host.waitForLog("one working"));
    ASSERT_EQ(m_host.stop(), 0);
    const QString thread = threadOf("one creating");
    EXPECT_FALSE(thread.isEmpty());
    EXPECT_EQ(threadOf("one working"), thread);
    EXPECT_EQ(threadOf("one deleted"), thread);
}

TEST_F(HostOrderTest, GivesEachWorkerAThreadOfItsOwn)
{
    m_host.setConfiguration(configurationOf({scripted("one"), scripted("two")}));
    ASSERT_TRUE(m_host.startReady());
    ASSERT_TRUE(m_host.waitForLog("two created"));
    const QString mainThread = QString::number(m_host.processId());
    EXPECT_NE(threadOf("one created"), threadOf("two created"));
    EXPECT_NE(threadOf("one created"), mainThread);
    EXPECT_NE(threadOf("two created"), mainThread);
}

TEST_F(HostOrderTest, RunsAWorkersEventLoopWhileALaterOneIsCreated)
{
    const QString fifo = makeFifo("later");
    m_host.setConfiguration(
        configurationOf({scripted("one"), scripted("two", {{"createWaits", fifo}})}));
    ASSERT_TRUE(m_host.start());
    EXPECT_TRUE(m_host.waitForLog("two creating"));
    EXPECT_TRUE(m_host.waitForLog("one working"));
    releaseFifo(fifo);
    EXPECT_TRUE(m_host.waitReady());
}

TEST_F(HostOrderTest, PassesEachWorkerItsOwnConfiguration)
{
    m_host.setConfiguration(configurationOf(
        {scripted("one", {{"echo", "first"}}), scripted("two", {{"echo", "second"}})}));
    ASSERT_TRUE(m_host.startReady());
    EXPECT_TRUE(m_host.waitForLog("one echo first"));
    EXPECT_TRUE(m_host.waitForLog("two echo second"));
}

TEST_F(HostOrderTest, ReportsOnADescriptorThatAllModulesRun)
{
    const QString fifo = makeFifo("last");
    m_host.setConfiguration(
        configurationOf({scripted("one"), scripted("last", {{"createWaits", fifo}})}));
    ASSERT_TRUE(m_host.start());
    ASSERT_TRUE(m_host.waitForLog("last creating"));
    EXPECT_FALSE(m_host.isReady());
    releaseFifo(fifo);
    EXPECT_TRUE(m_host.waitReady());
}

TEST_F(HostOrderTest, LogsThatAllModulesRun)
{
    m_host.setConfiguration(configurationOf({scripted("one"), scripted("two")}));
    ASSERT_TRUE(m_host.startReady());
    EXPECT_TRUE(m_host.waitForLog("INFO  Host [main] Host ready, 2 modules"));
}

TEST_F(HostOrderTest, RunsItsBuiltInConfigurationWithoutAFile)
{
    ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
    EXPECT_EQ(m_host.stop(), 0);
    QStringList started;
    for (const QString &line : m_host.logLines()) {
        const int name = line.indexOf("Module started: ");
        if (name >= 0) {
            started << line.mid(name);
        }
    }
    EXPECT_EQ(started, QStringList({"Module started: powermanager", "Module started: player",
                                    "Module started: notifications", "Module started: attention",
                                    "Module started: dbus"}));
}

TEST_F(HostOrderTest, EndsInOrderWhenAModuleQuitsTheProgram)
{
    m_host.setConfiguration(configurationOf({scripted("one"), scripted("two", {{"quit", true}})}));
    EXPECT_EQ(m_host.run(), 0);
    EXPECT_THAT(eventNames({"deleted"}), ElementsAre("two deleted", "one deleted"));
}
