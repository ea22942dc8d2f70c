// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/RawMessage.h"

namespace {
/// Written to a message, it notes the interface by which that message calls sd-bus.
struct CallerProbe
{
    sdbus::internal::ISdBus **caller;
};
} // namespace

template <>
struct sdbus::signature_of<CallerProbe> : sdbus::signature_of<bool>
{
};

namespace {
sdbus::Message &operator<<(sdbus::Message &message, const CallerProbe &probe)
{
    struct Opened : sdbus::Message
    {
        static auto callerOf(const sdbus::Message &closed) { return closed.*(&Opened::sdbus_); }
    };
    *probe.caller = Opened::callerOf(message);
    return message << true;
}

sdbus::internal::ISdBus *findCaller()
{
    // A variant is the one message that there is without a connection.
    sdbus::internal::ISdBus *caller = nullptr;
    const sdbus::Variant probed(CallerProbe{&caller});
    return caller;
}
} // namespace

sdbus::internal::ISdBus *messageCaller()
{
    static sdbus::internal::ISdBus *const caller = findCaller();
    return caller;
}
