// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/LogCapture.h"

#include <log4cplus/spi/loggingevent.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <ostream>

class LogCapture::Sink : public log4cplus::Appender
{
public:
    ~Sink() override { destructorImpl(); }

    void close() override { closed = true; }

    Records records() const
    {
        const std::lock_guard lock(m_mutex);
        return m_records;
    }

    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_records.clear();
    }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent &event) override
    {
        const std::lock_guard lock(m_mutex);
        m_records.push_back({event.getLogLevel(), event.getMessage(), event.getFile(),
                             event.getFunction(), event.getLine()});
    }

private:
    // Needed because readers can't take the appender's own lock.
    mutable std::mutex m_mutex;
    Records m_records;
};

std::string LogCapture::Record::fileName() const
{
    return file.substr(file.find_last_of('/') + 1);
}

LogCapture::LogCapture(const std::string &loggerName, log4cplus::LogLevel level)
    : m_logger(log4cplus::Logger::getInstance(loggerName))
    , m_oldLevel(m_logger.getLogLevel()) // NOT_SET_LOG_LEVEL when the logger inherits its level
    , m_oldAdditivity(m_logger.getAdditivity())
    , m_oldAppenders(m_logger.getAllAppenders())
    , m_sink(new Sink)
{
    m_logger.removeAllAppenders();
    m_logger.addAppender(log4cplus::SharedAppenderPtr(m_sink.get()));
    m_logger.setAdditivity(false);
    m_logger.setLogLevel(level);
}

LogCapture::~LogCapture()
{
    m_logger.removeAllAppenders();
    for (const log4cplus::SharedAppenderPtr &appender : m_oldAppenders) {
        m_logger.addAppender(appender);
    }
    m_logger.setAdditivity(m_oldAdditivity);
    m_logger.setLogLevel(m_oldLevel);
}

void LogCapture::setLevel(log4cplus::LogLevel level)
{
    m_logger.setLogLevel(level);
}

LogCapture::Records LogCapture::records() const
{
    return m_sink->records();
}

template <typename Predicate>
LogCapture::Records LogCapture::select(Predicate predicate) const
{
    const Records all = records();
    Records result;
    std::copy_if(all.begin(), all.end(), std::back_inserter(result), predicate);
    return result;
}

std::vector<std::string> LogCapture::messages() const
{
    std::vector<std::string> result;
    for (const Record &record : records()) {
        result.push_back(record.message);
    }
    return result;
}

std::vector<std::string> LogCapture::messages(log4cplus::LogLevel level) const
{
    std::vector<std::string> result;
    for (const Record &record : select([=](const Record &r) { return r.level == level; })) {
        result.push_back(record.message);
    }
    return result;
}

int LogCapture::count(const std::string &message) const
{
    return int(select([&](const Record &record) { return record.message == message; }).size());
}

int LogCapture::count(log4cplus::LogLevel level, const std::string &message) const
{
    return int(select([&](const Record &record) {
                   return record.level == level && record.message == message;
               }).size());
}

int LogCapture::countAt(log4cplus::LogLevel level) const
{
    return int(select([=](const Record &record) { return record.level == level; }).size());
}

LogCapture::Records LogCapture::find(const std::string &part) const
{
    return select(
        [&](const Record &record) { return record.message.find(part) != std::string::npos; });
}

void LogCapture::clear()
{
    m_sink->clear();
}

void PrintTo(const LogCapture::Record &record, std::ostream *stream)
{
    *stream << log4cplus::getLogLevelManager().toString(record.level) << ' ' << record.fileName()
            << ':' << record.line << ' ' << record.function << ": " << record.message;
}
