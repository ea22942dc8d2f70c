// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/support/Fuzz.h"

#include <QCoreApplication>

#include <log4cplus/appender.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <cstdlib>
#include <iostream>

namespace {
/// Nothing that a client sends may lead to a record at FATAL.
class FatalIsAFinding : public log4cplus::Appender
{
public:
    FatalIsAFinding() = default;
    ~FatalIsAFinding() override { destructorImpl(); }
    FatalIsAFinding(const FatalIsAFinding &) = delete;
    FatalIsAFinding &operator=(const FatalIsAFinding &) = delete;

    void close() override {}

protected:
    void append(const log4cplus::spi::InternalLoggingEvent &event) override
    {
        if (event.getLogLevel() >= log4cplus::FATAL_LOG_LEVEL) {
            fuzzFinding(event.getFile().c_str(), event.getLine(),
                        "logged at FATAL: " + event.getMessage());
        }
    }
};
} // namespace

void fuzzFinding(const char *file, int line, const std::string &text)
{
    std::cerr << "FINDING at " << file << ':' << line << ": " << text << std::endl;
    std::abort();
}

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // Never destroyed, since libFuzzer ends the process by _exit().
    static auto *logging = new log4cplus::Initializer;
    static auto *application = new QCoreApplication(*argc, *argv);
    static_cast<void>(logging);
    static_cast<void>(application);
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.removeAllAppenders();
    root.addAppender(log4cplus::SharedAppenderPtr(new FatalIsAFinding));
    // Rendered because texts from outside go into log lines.
    root.setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    ByteReader input(data, size);
    fuzzOne(input);
    return 0;
}
