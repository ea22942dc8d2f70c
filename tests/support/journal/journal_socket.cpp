// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0
//
// Preloaded into a program, puts the socket in TAVO_TEST_JOURNAL in the place of the journal's. There is none if the
// variable is not set. So the program's records never reach the journal of this machine.

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {
constexpr const char *journalSocket = "/run/systemd/journal/socket";

const char *standIn()
{
    const char *path = std::getenv("TAVO_TEST_JOURNAL");
    return path != nullptr ? path : "/nonexistent";
}
} // namespace

extern "C" int access(const char *path, int mode)
{
    static const auto s_access =
        reinterpret_cast<int (*)(const char *, int)>(dlsym(RTLD_NEXT, "access"));
    return s_access(std::strcmp(path, journalSocket) == 0 ? standIn() : path, mode);
}

extern "C" ssize_t sendmsg(int descriptor, const msghdr *message, int flags)
{
    static const auto s_sendmsg =
        reinterpret_cast<ssize_t (*)(int, const msghdr *, int)>(dlsym(RTLD_NEXT, "sendmsg"));
    const auto *address = static_cast<const sockaddr_un *>(message->msg_name);
    if (address == nullptr || address->sun_family != AF_UNIX ||
        std::strcmp(address->sun_path, journalSocket) != 0) {
        return s_sendmsg(descriptor, message, flags);
    }
    sockaddr_un replaced = {};
    replaced.sun_family = AF_UNIX;
    std::strncpy(replaced.sun_path, standIn(), sizeof replaced.sun_path - 1);
    msghdr redirected = *message;
    redirected.msg_name = &replaced;
    redirected.msg_namelen = sizeof replaced;
    return s_sendmsg(descriptor, &redirected, flags);
}
