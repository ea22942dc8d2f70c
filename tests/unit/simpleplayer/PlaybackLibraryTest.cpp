// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// How libtavo_playback is loaded: this program has a dlopen() of its own, whose first load of it takes
// long and fails.

#include <gtest/gtest.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <atomic>
#include <cstring>
#include <future>
#include <thread>

#include <dlfcn.h>

namespace {
std::atomic<int> loads{0};
std::promise<void> firstHasBegun;
std::promise<void> firstMayFail;

void makePlayer()
{
    const UriSimplePlayer player(QStringLiteral("chime.wav"), QStringLiteral("id"),
                                 QStringLiteral("plain"), nullptr);
}
} // namespace

extern "C" void *dlopen(const char *file, int mode) noexcept
{
    static const auto original = reinterpret_cast<decltype(&dlopen)>(dlsym(RTLD_NEXT, "dlopen"));
    const bool isPlayback = file != nullptr && std::strstr(file, "/libtavo_playback.so") != nullptr;
    if (isPlayback && loads++ == 0) {
        firstHasBegun.set_value();
        firstMayFail.get_future().wait();
        return nullptr;
    }
    return original(file, mode);
}

TEST(PlaybackLibraryTest, IsKeptByAThreadThatHasItWhenAnotherFailsToLoadIt)
{
    std::thread failing(makePlayer);
    firstHasBegun.get_future().wait();
    makePlayer();
    firstMayFail.set_value();
    failing.join();

    makePlayer();
    EXPECT_EQ(loads, 2);
}
