// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/LogGate.h"

#include "base/Printable.h"
#include "base/SoundLocation.h"

#include <log4cplus/spi/loggingevent.h>
#include <log4cplus/thread/syncprims.h>

#include <algorithm>
#include <mutex>
#include <utility>

using log4cplus::spi::InternalLoggingEvent;

namespace {
/// Whether the text can be written as it is. This is true for most texts, which cost nothing else.
bool isPlain(const std::string &text)
{
    const bool isAscii = std::all_of(text.begin(), text.end(),
                                     [](char byte) { return byte >= 0x20 && byte < 0x7F; });
    return isAscii && text.size() <= LogGate::maxTextSize && text.find("://") == std::string::npos;
}

std::string guardedText(const std::string &text)
{
    const QString decoded = withoutUserInfo(QString::fromStdString(text));
    return printable(shortened(decoded, LogGate::maxTextSize)).toStdString();
}
} // namespace

log4cplus::helpers::SharedObjectPtr<LogGate> LogGate::guard(log4cplus::Logger logger,
                                                            std::function<void()> onLeavingOut)
{
    log4cplus::helpers::SharedObjectPtr<LogGate> gate(
        new LogGate(logger.getAllAppenders(), std::move(onLeavingOut)));
    logger.removeAllAppenders();
    logger.addAppender(log4cplus::SharedAppenderPtr(gate.get()));
    return gate;
}

LogGate::LogGate(log4cplus::SharedAppenderPtrList appenders, std::function<void()> onLeavingOut)
    : m_queue(std::make_unique<LogQueue>(std::move(appenders)))
    , m_onLeavingOut(std::move(onLeavingOut))
{
}

LogGate::~LogGate()
{
    destructorImpl(); // calls close(), which the base class's destructor can't call
}

void LogGate::close()
{
    endSeconds(Clock::time_point::max());
    m_queue.reset();
    closed = true;
}

void LogGate::writeLeftOut()
{
    const std::lock_guard lock(access_mutex);
    endSeconds(Clock::time_point::max());
}

// Called by log4cplus, which holds the mutex.
void LogGate::append(const InternalLoggingEvent &event)
{
    if (m_placesLeavingOut > 0) {
        endSeconds(Clock::now() - std::chrono::seconds(1));
    }
    if (event.getLogLevel() < log4cplus::INFO_LOG_LEVEL || !isLeftOut(event)) {
        write(event);
    }
}

bool LogGate::isLeftOut(const InternalLoggingEvent &event)
{
    const int line = event.getLine();
    const auto place = std::tie(event.getFile(), line, event.getLoggerName());
    auto found = m_seconds.find(place);
    if (found == m_seconds.end()) {
        found = m_seconds.emplace(place, Second()).first;
    }
    Second &second = found->second;
    const Clock::time_point now = Clock::now();
    if (now - second.start >= std::chrono::seconds(1)) {
        second = Second();
        second.start = now;
    }
    if (++second.records <= maxRecordsPerSecond) {
        return false;
    }
    if (++second.leftOut == 1) {
        second.level = event.getLogLevel();
        second.example = event.getMessage();
        if (++m_placesLeavingOut == 1) {
            m_onLeavingOut();
        }
    }
    return true;
}

void LogGate::endSeconds(Clock::time_point startedBefore)
{
    for (auto &[place, second] : m_seconds) {
        if (second.leftOut > 0 && second.start <= startedBefore) {
            const auto &[file, line, logger] = place;
            --m_placesLeavingOut;
            write(InternalLoggingEvent(logger, second.level,
                                       std::to_string(second.leftOut) +
                                           " more like this left out: " + second.example,
                                       file.c_str(), line));
            second.leftOut = 0;
        }
    }
}

void LogGate::write(const InternalLoggingEvent &event)
{
    if (!m_queue) {
        return; // closed
    }
    if (isPlain(event.getMessage())) {
        m_queue->add(event);
        return;
    }
    m_queue->add(InternalLoggingEvent(event.getLoggerName(), event.getLogLevel(), event.getNDC(),
                                      event.getMDCCopy(), guardedText(event.getMessage()),
                                      event.getThread(), event.getThread2(), event.getTimestamp(),
                                      event.getFile(), event.getLine(), event.getFunction()));
}
