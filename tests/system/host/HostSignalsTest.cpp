// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HostTest.h"

#include <csignal>

using testing::ElementsAre;

class HostSignalsTest : public HostTest
{
};

TEST_F(HostSignalsTest, EndsInOrderOnSigterm)
{
    m_host.setConfiguration(configurationOf({scripted("one")}));
    ASSERT_TRUE(m_host.startReady());
    m_host.sendSignal(SIGTERM);
    EXPECT_EQ(m_host.waitForExit(), 0);
    EXPECT_THAT(eventNames({"deleted"}), ElementsAre("one deleted"));
}

TEST_F(HostSignalsTest, EndsInOrderOnSigint)
{
    m_host.setConfiguration(configurationOf({scripted("one")}));
    ASSERT_TRUE(m_host.startReady());
    m_host.sendSignal(SIGINT);
    EXPECT_EQ(m_host.waitForExit(), 0);
    EXPECT_THAT(eventNames({"deleted"}), ElementsAre("one deleted"));
}

TEST_F(HostSignalsTest, EndsAtOnceOnASecondSigtermWhileStopping)
{
    m_host.setConfiguration(
        configurationOf({scripted("stuck", {{"deleteWaits", makeFifo("never")}})}));
    ASSERT_TRUE(m_host.startReady());
    m_host.sendSignal(SIGINT);
    ASSERT_TRUE(m_host.waitForLog("stuck deleting"));
    m_host.sendSignal(SIGTERM);
    EXPECT_EQ(m_host.waitForExit(), 143);
}

TEST_F(HostSignalsTest, EndsAtOnceOnASecondSigintWhileStopping)
{
    m_host.setConfiguration(
        configurationOf({scripted("stuck", {{"deleteWaits", makeFifo("never")}})}));
    ASSERT_TRUE(m_host.startReady());
    m_host.sendSignal(SIGTERM);
    ASSERT_TRUE(m_host.waitForLog("stuck deleting"));
    m_host.sendSignal(SIGINT);
    EXPECT_EQ(m_host.waitForExit(), 130);
}

TEST_F(HostSignalsTest, CreatesNoFurtherWorkerAfterASignalDuringTheStart)
{
    const QString fifo = makeFifo("slow");
    m_host.setConfiguration(
        configurationOf({scripted("slow", {{"createWaits", fifo}}), scripted("never")}));
    ASSERT_TRUE(m_host.start());
    ASSERT_TRUE(m_host.waitForLog("slow creating"));
    m_host.sendSignal(SIGTERM);
    releaseFifo(fifo);
    EXPECT_EQ(m_host.waitForExit(), 0);
    EXPECT_FALSE(m_host.isReady());
    EXPECT_THAT(eventNames({"creating", "created", "deleted"}),
                ElementsAre("slow creating", "slow created", "slow deleted"));
}
