// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HostTest.h"

class HostLogTest : public HostTest
{
protected:
    /// Runs and stops a host with one scripted worker and this "log" in its configuration.
    void runOnce(const QJsonObject &log)
    {
        start(log, {});
        ASSERT_EQ(m_host.stop(), 0) << m_host.log().toStdString();
    }

    /// The same, after the worker has logged something in its event loop.
    void runSaying(const QString &text, const QJsonObject &log)
    {
        start(log, {{"say", text}});
        ASSERT_TRUE(m_host.waitForLog("one working"));
        ASSERT_EQ(m_host.stop(), 0) << m_host.log().toStdString();
    }

    bool logged(const QString &text) const { return m_host.log().contains(text); }

private:
    void start(const QJsonObject &log, const QJsonObject &workerConfig)
    {
        auto configuration = configurationOf({scripted("one", workerConfig)});
        configuration.insert("log", log);
        m_host.setConfiguration(configuration);
        ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
    }
};

TEST_F(HostLogTest, LogsFromInfoUpWithTimeLevelLoggerThreadAndMessage)
{
    runOnce({});
    static const QRegularExpression s_record("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} "
                                             "INFO  Scripted \\[one\\] one created in",
                                             QRegularExpression::MultilineOption);
    EXPECT_TRUE(s_record.match(m_host.log()).hasMatch()) << m_host.log().toStdString();
    EXPECT_FALSE(logged("traces"));
}

TEST_F(HostLogTest, TakesTheLevelFromTheConfiguration)
{
    runOnce({{"level", "WARN"}});
    EXPECT_EQ(m_host.log(), QString());
}

TEST_F(HostLogTest, TakesTheLevelOfOneLoggerFromTheConfiguration)
{
    runOnce({{"level", "ERROR"}, {"levels", QJsonObject{{"Scripted", "TRACE"}}}});
    EXPECT_TRUE(logged("one traces created"));
    EXPECT_FALSE(logged("Host ready"));
}

TEST_F(HostLogTest, LetsTheEnvironmentOverrideTheConfiguration)
{
    m_host.setEnvironment("TAVO_LOG_LEVEL", "INFO,Scripted=TRACE");
    runOnce({{"level", "ERROR"}});
    EXPECT_TRUE(logged("one traces created"));
    EXPECT_TRUE(logged("Host ready"));
}

TEST_F(HostLogTest, LetsTheCommandLineOverrideTheEnvironment)
{
    m_host.setEnvironment("TAVO_LOG_LEVEL", "Scripted=OFF");
    m_host.addArguments({"--log-level", "Scripted=TRACE", "--log-level", "error"});
    runOnce({{"level", "INFO"}});
    EXPECT_TRUE(logged("one traces created"));
    EXPECT_FALSE(logged("Host ready"));
}

TEST_F(HostLogTest, LogsAsAPropertiesFileSays)
{
    const QString target = m_host.folder() + "/out.log";
    m_host.writeFile("log.properties",
                     "log4cplus.rootLogger=INFO, F\n"
                     "log4cplus.appender.F=log4cplus::FileAppender\n"
                     "log4cplus.appender.F.File=" +
                         target.toLocal8Bit() +
                         "\nlog4cplus.appender.F.layout=log4cplus::SimpleLayout\n");
    runOnce({{"file", "log.properties"}});
    EXPECT_EQ(m_host.log(), QString());
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_THAT(file.readAll().toStdString(), testing::HasSubstr("INFO - Host ready, 1 modules\n"));
}

TEST_F(HostLogTest, RefusesAPropertiesFileWhoseLogCannotBeWritten)
{
    m_host.writeFile("log.properties", "log4cplus.rootLogger=INFO, F\n"
                                       "log4cplus.appender.F=log4cplus::FileAppender\n"
                                       "log4cplus.appender.F.File=/nonexistent/out.log\n");
    auto configuration = configurationOf({scripted("one")});
    configuration.insert("log", QJsonObject{{"file", "log.properties"}});
    const QString file = m_host.setConfiguration(configuration);
    EXPECT_EQ(m_host.run(), 78);
    EXPECT_TRUE(m_host.log().startsWith(file + ": log.file: ")) << m_host.log().toStdString();
    EXPECT_TRUE(logged("/nonexistent/out.log"));
    EXPECT_TRUE(events().empty());
}

TEST_F(HostLogTest, RefusesAPropertiesFileWithoutAnAppender)
{
    const QString log = m_host.writeFile("log.properties", "# nothing\n");
    auto configuration = configurationOf({scripted("one")});
    configuration.insert("log", QJsonObject{{"file", "log.properties"}});
    EXPECT_EQ((m_host.setConfiguration(configuration), m_host.run()), 78);
    EXPECT_TRUE(logged(": log.file: " + log)) << m_host.log().toStdString();
}

TEST_F(HostLogTest, LogsQtsMessagesUnderTheLoggerQt)
{
    runSaying("hello", {{"level", "DEBUG"}});
    EXPECT_TRUE(logged("DEBUG Qt [one] debug hello\n"));
    EXPECT_TRUE(logged("INFO  Qt [one] info hello\n"));
    EXPECT_TRUE(logged("WARN  Qt [one] warning hello\n"));
    EXPECT_TRUE(logged("ERROR Qt [one] critical hello\n"));
}

TEST_F(HostLogTest, LogsACategoryOfQtUnderALoggerOfItsOwn)
{
    runSaying("hello", {{"levels", QJsonObject{{"Qt", "OFF"}, {"Qt.scripted.category", "WARN"}}}});
    EXPECT_TRUE(logged("WARN  Qt.scripted.category [one] category hello\n"));
    EXPECT_FALSE(logged("warning hello"));
}

TEST_F(HostLogTest, PrintsAFatalMessageOfQtAndAborts)
{
    auto configuration = configurationOf({scripted("one", {{"fatal", "no way on"}})});
    configuration.insert("log", QJsonObject{{"level", "OFF"}});
    m_host.setConfiguration(configuration);
    EXPECT_EQ(m_host.run(), -1);
    EXPECT_TRUE(m_host.crashed());
    EXPECT_TRUE(m_host.log().startsWith("no way on\n")) << m_host.log().toStdString();
}
