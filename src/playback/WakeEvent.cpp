// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/WakeEvent.h"

#include <array>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

WakeEvent::WakeEvent()
    : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

WakeEvent::~WakeEvent()
{
    close(m_descriptor);
}

void WakeEvent::set()
{
    const std::uint64_t one = 1;
    // Can only fail if the counter is full; then the event is set already.
    [[maybe_unused]] const auto written = write(m_descriptor, &one, sizeof one);
}

void WakeEvent::clear()
{
    std::uint64_t count = 0;
    [[maybe_unused]] const auto taken = read(m_descriptor, &count, sizeof count);
}

bool WakeEvent::wait(int timeoutMs) const
{
    pollfd event{m_descriptor, POLLIN, 0};
    return poll(&event, 1, timeoutMs) > 0;
}

void WakeEvent::waitForInput(int descriptor, int timeoutMs) const
{
    std::array<pollfd, 2> events{pollfd{m_descriptor, POLLIN, 0}, pollfd{descriptor, POLLIN, 0}};
    poll(events.data(), events.size(), timeoutMs);
}
