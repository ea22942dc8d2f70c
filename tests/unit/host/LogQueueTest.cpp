// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/LogQueue.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <string>
#include <utility>
#include <vector>

namespace {
using log4cplus::spi::InternalLoggingEvent;
using testing::ElementsAre;

/// What a log has got; it takes the first record when it is released.
class SlowLog : public log4cplus::Appender
{
public:
    SlowLog(std::promise<void> &begun, std::shared_future<void> released,
            std::vector<std::string> &written)
        : m_begun(begun)
        , m_released(std::move(released))
        , m_written(written)
    {
    }
    ~SlowLog() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const InternalLoggingEvent &event) override
    {
        if (!std::exchange(m_hasBegun, true)) {
            m_begun.set_value();
        }
        m_released.wait();
        m_written.push_back(event.getMessage() + " in " + event.getThread());
    }

private:
    std::promise<void> &m_begun;
    bool m_hasBegun = false;
    const std::shared_future<void> m_released;
    std::vector<std::string> &m_written;
};

class LogQueueTest : public testing::Test
{
protected:
    LogQueueTest()
        : m_queue(std::make_unique<LogQueue>(std::vector{
              log4cplus::SharedAppenderPtr(new SlowLog(begun, m_released.get_future(), written))}))
    {
        log4cplus::thread::setCurrentThreadName("writer");
    }

    void add(const std::string &text, log4cplus::LogLevel level = log4cplus::INFO_LOG_LEVEL)
    {
        m_queue->add(InternalLoggingEvent("Test", level, text, "file.cpp", 1));
    }
    void release() { m_released.set_value(); }
    void end() { m_queue.reset(); }

    std::promise<void> begun; ///< to write the first record
    std::vector<std::string> written;

private:
    std::promise<void> m_released;
    std::unique_ptr<LogQueue> m_queue;
};

TEST_F(LogQueueTest, KeepsNobodyWaitingForTheLog)
{
    add("first");
    add("second");
    release();
    end();
    EXPECT_THAT(written, ElementsAre("first in writer", "second in writer"));
}

TEST_F(LogQueueTest, TellsHowManyRecordsWereTooMany)
{
    constexpr int count = 5000;
    add("record");
    begun.get_future().wait();
    for (int i = 1; i < count; ++i) {
        add("record");
    }
    release();
    end();
    const auto took = written.size() - 1;
    EXPECT_LT(took, std::size_t(count));
    EXPECT_THAT(written.back(),
                testing::StartsWith(std::to_string(count - took) + " records left out"));
}

TEST_F(LogQueueTest, LetsARecordBelowInfoWaitForRoom)
{
    add("record");
    begun.get_future().wait();
    for (int i = 0; i < 1000; ++i) {
        add("record");
    }
    const auto adding =
        std::async(std::launch::async, [this] { add("detail", log4cplus::DEBUG_LOG_LEVEL); });
    EXPECT_EQ(adding.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    release();
    adding.wait();
    end();
    EXPECT_THAT(written.back(), testing::StartsWith("detail"));
}

TEST_F(LogQueueTest, HasWrittenAFatalRecordWhenItReturns)
{
    release();
    add("first");
    add("fatal", log4cplus::FATAL_LOG_LEVEL);
    EXPECT_THAT(written, ElementsAre("first in writer", "fatal in writer"));
}
} // namespace
