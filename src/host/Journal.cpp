// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The place in the source is that of the record, not of the call in this file.
#define SD_JOURNAL_SUPPRESS_LOCATION

#include "host/Journal.h"

#include "host/StandardErrorAppender.h"

#include <QString>

#include <log4cplus/layout.h>
#include <log4cplus/spi/loggingevent.h>
#include <systemd/sd-journal.h>

#include <memory>
#include <ostream>
#include <string>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {
constexpr const char *journalSocket = "/run/systemd/journal/socket";
/// The journal has the time and the level of each record itself.
constexpr const char *journalPattern = "%c [%t] %m";

int syslogLevel(log4cplus::LogLevel level)
{
    if (level >= log4cplus::FATAL_LOG_LEVEL) {
        return LOG_CRIT;
    }
    if (level >= log4cplus::ERROR_LOG_LEVEL) {
        return LOG_ERR;
    }
    if (level >= log4cplus::WARN_LOG_LEVEL) {
        return LOG_WARNING;
    }
    return level >= log4cplus::INFO_LOG_LEVEL ? LOG_INFO : LOG_DEBUG;
}

/// A line for the stream to the journal.
class JournalLayout : public log4cplus::PatternLayout
{
public:
    JournalLayout()
        : log4cplus::PatternLayout(journalPattern)
    {
    }

    void formatAndAppend(log4cplus::tostream &output,
                         const log4cplus::spi::InternalLoggingEvent &event) override
    {
        output << '<' << syslogLevel(event.getLogLevel()) << '>';
        log4cplus::PatternLayout::formatAndAppend(output, event);
        output << '\n';
    }
};

class JournalAppender : public log4cplus::Appender
{
public:
    JournalAppender() { setLayout(std::make_unique<log4cplus::PatternLayout>(journalPattern)); }
    ~JournalAppender() override { destructorImpl(); }

    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent &event) override
    {
        const std::pair<const char *, std::string> all[] = {
            {"MESSAGE", formatEvent(event)},
            {"PRIORITY", std::to_string(syslogLevel(event.getLogLevel()))},
            {"TAVO_LOGGER", event.getLoggerName()},
            {"TAVO_MODULE", event.getMDC("module")},
            {"TAVO_THREAD", event.getThread()},
            {"TID", event.getThread2()},
            {"CODE_FILE", event.getFile()},
            {"CODE_LINE", event.getLine() > 0 ? std::to_string(event.getLine()) : std::string()},
            {"CODE_FUNC", event.getFunction()}};
        std::vector<std::string> fields;
        for (const auto &[name, value] : all) {
            if (!value.empty()) {
                fields.push_back(name + ('=' + value));
            }
        }
        std::vector<iovec> parts;
        for (std::string &field : fields) {
            parts.push_back({field.data(), field.size()});
        }
        sd_journal_sendv(parts.data(), static_cast<int>(parts.size()));
    }
};
} // namespace

bool goesToJournal()
{
    struct stat status = {};
    return fstat(STDERR_FILENO, &status) == 0 &&
           qEnvironmentVariable("JOURNAL_STREAM") ==
               QStringLiteral("%1:%2").arg(status.st_dev).arg(status.st_ino);
}

log4cplus::SharedAppenderPtr makeJournalAppender()
{
    // libsystemd drops records without a word if there is no socket.
    if (access(journalSocket, W_OK) == 0) {
        return log4cplus::SharedAppenderPtr(new JournalAppender);
    }
    return log4cplus::SharedAppenderPtr(
        new StandardErrorAppender(std::make_unique<JournalLayout>()));
}
