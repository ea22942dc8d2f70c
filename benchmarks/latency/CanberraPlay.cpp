// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// canberra_play DEVICE FILE [COUNT]: does the same as tavo_play, with libcanberra's ALSA driver.

#include "../Moment.h"

#include <canberra.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace {

/// The end of a sound. The library may report it again while it is destroyed.
struct Ending
{
    std::mutex mutex;
    std::condition_variable changed;
    std::uint32_t last = 0;
    int result = CA_SUCCESS;
};

Ending ending;

void finish(ca_context *, std::uint32_t id, int result, void *)
{
    const std::lock_guard lock(ending.mutex);
    if (id == ending.last) {
        return;
    }
    ending.last = id;
    ending.result = result;
    ending.changed.notify_one();
}

int playOnce(ca_context *context, ca_proplist *sound, std::uint32_t id)
{
    const std::int64_t requested = momentNow();
    const int result = ca_context_play_full(context, id, sound, finish, nullptr);
    std::printf("%lld\n", static_cast<long long>(requested));
    if (result < 0) {
        return result;
    }
    std::unique_lock lock(ending.mutex);
    ending.changed.wait(lock, [id] { return ending.last == id; });
    return ending.result;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        return EXIT_FAILURE;
    }
    ca_context *context = nullptr;
    ca_proplist *sound = nullptr;
    int result = ca_context_create(&context);
    if (result >= 0) {
        result = ca_context_set_driver(context, "alsa");
    }
    if (result >= 0) {
        result = ca_context_change_device(context, argv[1]);
    }
    if (result >= 0) {
        result = ca_proplist_create(&sound);
    }
    if (result >= 0) {
        result = ca_proplist_sets(sound, CA_PROP_MEDIA_FILENAME, argv[2]);
    }
    const int count = argc > 3 ? std::atoi(argv[3]) : 1;
    for (int id = 1; id <= count && result >= 0; ++id) {
        result = playOnce(context, sound, std::uint32_t(id));
    }
    if (result < 0) {
        std::fprintf(stderr, "%s\n", ca_strerror(result));
    }
    if (sound) {
        ca_proplist_destroy(sound);
    }
    if (context) {
        ca_context_destroy(context);
    }
    return result < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}
