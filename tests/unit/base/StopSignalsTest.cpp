// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/StopSignals.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <limits>
#include <pthread.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace {
constexpr int sigtermExitCode = 128 + SIGTERM;

/// Sends the first signal and waits until it is no longer pending: another would be lost until then.
void sendFirst(int signal)
{
    kill(getpid(), signal);
    sigset_t pending;
    do {
        std::this_thread::yield();
        sigpending(&pending);
    } while (sigismember(&pending, signal) == 1);
}

/// Each test has a process of its own, as signals stay blocked and a thread stays behind.
class StopSignalsTest : public testing::Test
{
protected:
    StopSignalsTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};
} // namespace

TEST_F(StopSignalsTest, EmitsTheFirstSignalFromTheEventLoop)
{
    const auto run = [] {
        const auto signals = StopSignals::install();
        int received = 0;
        QObject::connect(signals.get(), &StopSignals::received, [&received](int signal) {
            received = signal;
            QCoreApplication::quit();
        });
        sendFirst(SIGINT);
        if (received == 0) {
            QCoreApplication::exec();
        }
        _exit(received);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(SIGINT), "");
}

TEST_F(StopSignalsTest, TakesNoOtherSignalForTheSecondOne)
{
    const auto run = [] {
        const auto signals = StopSignals::install();
        struct sigaction action = {};
        action.sa_handler = [](int) {}; // without SA_RESTART, as some libraries do
        sigaction(SIGCHLD, &action, nullptr);
        sigset_t child;
        sigemptyset(&child);
        sigaddset(&child, SIGCHLD);
        pthread_sigmask(SIG_BLOCK, &child, nullptr); // so that the waiting thread gets it
        sendFirst(SIGINT);
        for (int time = 0; time < 20; ++time) {
            kill(getpid(), SIGCHLD);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        _exit(0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(StopSignalsTest, EndsTheProcessOnTheSecondSignalWhileTheEventLoopIsStuck)
{
    const auto run = [] {
        const auto signals = StopSignals::install();
        sendFirst(SIGINT);
        kill(getpid(), SIGTERM);
        pause();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(sigtermExitCode), "");
}

TEST_F(StopSignalsTest, EndsTheProcessOnTheSecondSignalWhenTheObjectIsGone)
{
    const auto run = [] {
        auto signals = StopSignals::install();
        sendFirst(SIGTERM);
        signals.reset();
        QCoreApplication::processEvents();
        kill(getpid(), SIGTERM);
        pause();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(sigtermExitCode), "");
}

TEST_F(StopSignalsTest, ReportsASignalAsSoonAsItIsSent)
{
    const auto run = [] {
        const auto signals = StopSignals::install();
        const bool before = StopSignals::isReceived();
        kill(getpid(), SIGTERM);
        _exit(!before && StopSignals::isReceived() ? 0 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(StopSignalsTest, DoesNotBlockSignalsWhenThereIsNoDescriptor)
{
    const auto run = [] {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_NOFILE, &none);
        if (StopSignals::install() == nullptr) {
            kill(getpid(), SIGTERM);
        }
    };
    EXPECT_EXIT(run(), testing::KilledBySignal(SIGTERM), "");
}

TEST_F(StopSignalsTest, DoesNotBlockSignalsWhenThereIsNoThread)
{
    const auto run = [] {
        // Threads get a stack of this size, which no address space holds.
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::numeric_limits<std::size_t>::max() / 4 * 3);
        pthread_setattr_default_np(&attributes);
        if (StopSignals::install() == nullptr) {
            kill(getpid(), SIGTERM);
        }
    };
    EXPECT_EXIT(run(), testing::KilledBySignal(SIGTERM), "");
}
