// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HostTest.h"

#include <algorithm>
#include <sys/resource.h>

using testing::ElementsAre;
using testing::IsEmpty;

/// Modules that can't run. Each is the third of three, so two others must be stopped.
class HostFailuresTest : public HostTest
{
protected:
    int runWithThird(const QJsonValue &third)
    {
        m_file =
            m_host.setConfiguration(configurationOf({scripted("one"), scripted("two"), third}));
        return m_host.run();
    }

    QString m_file;
};

TEST_F(HostFailuresTest, DeletesTheWorkersBeforeOneThatThrows)
{
    EXPECT_EQ(runWithThird(scripted("bad", {{"create", "throw"}})), 70);
    EXPECT_TRUE(m_host.log().contains(
        m_file + ": modules[2]: worker_create threw an exception: the script says so\n"))
        << m_host.log().toStdString();
    EXPECT_THAT(eventNames({"created", "deleted"}),
                ElementsAre("one created", "two created", "two deleted", "one deleted"));
    EXPECT_FALSE(m_host.isReady());
}

TEST_F(HostFailuresTest, ReportsAThrownObjectThatIsNotAnException)
{
    EXPECT_EQ(runWithThird(scripted("bad", {{"create", "throwNumber"}})), 70);
    EXPECT_TRUE(m_host.log().contains(
        m_file + ": modules[2]: worker_create threw something that is no std::exception\n"));
}

TEST_F(HostFailuresTest, ReportsAModuleThatCreatesNoWorker)
{
    EXPECT_EQ(runWithThird(scripted("bad", {{"create", "null"}})), 70);
    EXPECT_TRUE(m_host.log().contains(m_file + ": modules[2]: worker_create returned no worker\n"));
    EXPECT_THAT(eventNames({"deleted"}), ElementsAre("two deleted", "one deleted"));
}

TEST_F(HostFailuresTest, NamesTheModuleThatCrashes)
{
    EXPECT_EQ(runWithThird(scripted("bad", {{"create", "crash"}})), -1);
    EXPECT_TRUE(m_host.crashed());
    EXPECT_TRUE(m_host.log().endsWith("tavo-host: the thread bad has crashed. If it is a module's, "
                                      "take the module out of the configuration, or install "
                                      "another version of it.\n"))
        << m_host.log().toStdString();
}

TEST_F(HostFailuresTest, StartsNothingWhenALibraryHasNoEntryPoint)
{
    EXPECT_EQ(runWithThird("without_entry"), 69);
    EXPECT_TRUE(m_host.log().contains(m_file + ": modules[2]: " + moduleFile("without_entry") +
                                      " exports no worker_create\n"))
        << m_host.log().toStdString();
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(HostFailuresTest, StartsNothingWhenALibraryLacksASymbol)
{
    EXPECT_EQ(runWithThird("unresolved"), 69);
    EXPECT_TRUE(m_host.log().contains(m_file + ": modules[2]: "));
    EXPECT_TRUE(m_host.log().contains("tavo_test_defined_nowhere"));
    EXPECT_TRUE(m_host.log().endsWith("; build the module again with this version of Tavo\n"));
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(HostFailuresTest, StartsNothingWhenAFileIsNotALibrary)
{
    const QString file = m_host.writeFile("libtavo_text.so", "This is text.\n");
    EXPECT_EQ(runWithThird(QJsonObject{{"name", "text"}, {"library", file}}), 69);
    EXPECT_TRUE(m_host.log().contains(m_file + ": modules[2]: "));
    EXPECT_TRUE(m_host.log().contains(file));
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(HostFailuresTest, StartsNothingWhenAModuleIsMissing)
{
    EXPECT_EQ(runWithThird("absent"), 69);
    EXPECT_TRUE(m_host.log().startsWith(m_file + ": modules[2]: there is no libtavo_absent.so in " +
                                        modulesFolder()))
        << m_host.log().toStdString();
    EXPECT_TRUE(m_host.log().endsWith("; install it, or name its folder in modulePath\n"));
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(HostFailuresTest, StartsNothingWhenTheFileOfAModuleIsMissing)
{
    EXPECT_EQ(runWithThird(QJsonObject{{"name", "absent"}, {"library", "./absent.so"}}), 69);
    EXPECT_EQ(m_host.log(),
              m_file + ": modules[2]: there is no file " + m_host.folder() + "/absent.so\n");
}

TEST_F(HostFailuresTest, RaisesItsLimitOfFileDescriptors)
{
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit low{256, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &low);
    m_host.setConfiguration(configurationOf({scripted("one")}));
    const bool isReady = m_host.startReady();
    setrlimit(RLIMIT_NOFILE, &before);
    ASSERT_TRUE(isReady) << m_host.log().toStdString();
    rlimit raised{};
    ASSERT_EQ(prlimit(pid_t(m_host.processId()), RLIMIT_NOFILE, nullptr, &raised), 0);
    EXPECT_EQ(raised.rlim_cur, std::min<rlim_t>(before.rlim_max, 65536));
}

TEST_F(HostFailuresTest, SurvivesAHandlerThatThrows)
{
    m_host.setConfiguration(configurationOf(
        {scripted("bad", {{"throw", "a request was too much"}}), scripted("good")}));
    ASSERT_TRUE(m_host.startReady());
    ASSERT_TRUE(m_host.waitForLog("threw an exception: a request was too much"));
    ASSERT_TRUE(m_host.waitForLog("good working"));
    EXPECT_EQ(m_host.stop(), 0);
    EXPECT_THAT(eventNames({"deleted"}), ElementsAre("good deleted", "bad deleted"));
}
