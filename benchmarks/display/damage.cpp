// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Prints the monotonic time, in nanoseconds, whenever something on the screen of DISPLAY changes.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <xcb/damage.h>
#include <xcb/xcb.h>

int main()
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        return EXIT_FAILURE;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    std::free(xcb_damage_query_version_reply(connection, xcb_damage_query_version(connection, 1, 1),
                                             nullptr));
    xcb_damage_create(connection, xcb_generate_id(connection), root,
                      XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    xcb_flush(connection);
    std::puts("ready");
    std::fflush(stdout);
    while (xcb_generic_event_t *event = xcb_wait_for_event(connection)) {
        std::free(event);
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        std::printf("%lld\n",
                    static_cast<long long>(
                        std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()));
        std::fflush(stdout);
    }
    xcb_disconnect(connection);
    return EXIT_SUCCESS;
}
