// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/layout.h>
#include <log4cplus/spi/loggingevent.h>

#include <cerrno>
#include <memory>
#include <string>
#include <unistd.h>
#include <utility>

/// Writes records on standard error. Not by way of its stream, which is locked while a write hangs: the process could
/// not end then.
class StandardErrorAppender : public log4cplus::Appender
{
public:
    explicit StandardErrorAppender(std::unique_ptr<log4cplus::Layout> layout)
    {
        setLayout(std::move(layout));
    }
    ~StandardErrorAppender() override { destructorImpl(); }

    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent &event) override
    {
        const std::string line = formatEvent(event);
        for (std::size_t written = 0; written < line.size();) {
            const ssize_t count =
                ::write(STDERR_FILENO, line.data() + written, line.size() - written);
            if (count > 0) {
                written += std::size_t(count);
            } else if (errno != EINTR) {
                return; // the rest is dropped
            }
        }
    }
};
