// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/HostLog.h"

#include "core/base/connect.h"
#include "host/Journal.h"
#include "host/QtLog.h"
#include "host/StandardErrorAppender.h"

#include <QFileInfo>

#include <log4cplus/configurator.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/thread/threads.h>

#include <chrono>
#include <iostream>
#include <optional>
#include <sstream>

namespace {
constexpr const char *consolePattern = "%D{%Y-%m-%d %H:%M:%S.%q} %-5p %c [%t] %m%n";

/// Collects output to std::cerr, where log4cplus reports errors in a properties file and log files that
/// can't be written. It has no other way to report them.
class StandardErrorCapture
{
public:
    StandardErrorCapture()
        : m_saved(std::cerr.rdbuf(m_text.rdbuf()))
    {
    }
    ~StandardErrorCapture() { std::cerr.rdbuf(m_saved); }
    StandardErrorCapture(const StandardErrorCapture &) = delete;
    StandardErrorCapture &operator=(const StandardErrorCapture &) = delete;

    QString text() const { return QString::fromStdString(m_text.str()).trimmed(); }

private:
    std::ostringstream m_text;
    std::streambuf *m_saved;
};

log4cplus::SharedAppenderPtr makeConsoleAppender()
{
    return log4cplus::SharedAppenderPtr(
        new StandardErrorAppender(std::make_unique<log4cplus::PatternLayout>(consolePattern)));
}

void logToStandardError()
{
    auto root = log4cplus::Logger::getRoot();
    root.addAppender(goesToJournal() ? makeJournalAppender() : makeConsoleAppender());
    root.setLogLevel(log4cplus::INFO_LOG_LEVEL);
}

std::optional<Failure> configureFromFile(const QString &file)
{
    const QFileInfo info(file);
    if (!info.isFile() || !info.isReadable()) {
        return Failure{QStringLiteral("%1 is not a readable file").arg(file)};
    }
    QString complaint;
    {
        const StandardErrorCapture capture;
        log4cplus::PropertyConfigurator(QFile::encodeName(file).toStdString()).configure();
        complaint = capture.text();
    }
    if (!complaint.isEmpty()) {
        return Failure{QStringLiteral("%1 can't be used: %2").arg(file, complaint)};
    }
    if (log4cplus::Logger::getRoot().getAllAppenders().empty()) {
        return Failure{QStringLiteral("%1 gives the root logger no appender").arg(file)};
    }
    return std::nullopt;
}

/// The root logger has no name.
log4cplus::Logger loggerOf(const std::string &name)
{
    return name.empty() ? log4cplus::Logger::getRoot() : log4cplus::Logger::getInstance(name);
}
} // namespace

Result<std::unique_ptr<HostLog>> HostLog::open(const LogConfiguration &configuration)
{
    std::unique_ptr<HostLog> log(new HostLog);
    log4cplus::thread::setCurrentThreadName("main");
    // One thread for the asynchronous appenders of a properties file; the default is four.
    log4cplus::setThreadPoolSize(1);
    if (configuration.file.isEmpty()) {
        logToStandardError();
    } else if (const auto failure = configureFromFile(configuration.file)) {
        return Failure{
            QStringLiteral("%1: log.file: %2").arg(configuration.origin, failure->reason)};
    }
    log->guardAppenders();
    log->setLevels(configuration.levels);
    qInstallMessageHandler(logQtMessage);
    return log;
}

HostLog::HostLog()
{
    m_leftOutTimer.setSingleShot(true);
    m_leftOutTimer.setInterval(std::chrono::seconds(1));
    tavoConnect(&m_leftOutTimer, &QTimer::timeout, &m_leftOutTimer, [this] {
        for (const auto &gate : m_gates) {
            gate->writeLeftOut();
        }
    });
}

HostLog::~HostLog()
{
    qInstallMessageHandler(nullptr);
}

void HostLog::setLevels(const QVector<LogLevel> &levels)
{
    for (const auto &[name, level] : m_levelsBefore) {
        loggerOf(name).setLogLevel(level);
    }
    m_levelsBefore.clear();
    for (const LogLevel &level : levels) {
        log4cplus::Logger logger = loggerOf(level.logger.toStdString());
        m_levelsBefore.emplace(level.logger.toStdString(), logger.getLogLevel());
        logger.setLogLevel(level.level);
    }
}

void HostLog::guardAppenders()
{
    std::vector<log4cplus::Logger> loggers = log4cplus::Logger::getCurrentLoggers();
    loggers.push_back(log4cplus::Logger::getRoot());
    for (log4cplus::Logger &logger : loggers) {
        if (!logger.getAllAppenders().empty()) {
            m_gates.push_back(LogGate::guard(logger, [this] {
                QMetaObject::invokeMethod(&m_leftOutTimer, qOverload<>(&QTimer::start),
                                          Qt::QueuedConnection);
            }));
        }
    }
}
