// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/BusUser.h"

#include <grp.h>
#include <pwd.h>
#include <stdexcept>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace {
// The functions of the C library change all threads of the process, the system's calls only this one.

constexpr unsigned unchanged = unsigned(-1);

void check(long result)
{
    if (result != 0) {
        throw std::runtime_error("the user can't be changed");
    }
}

void setGroups(gid_t group)
{
    check(::syscall(SYS_setgroups, 1, &group));
    check(::syscall(SYS_setresgid, unchanged, group, unchanged));
}

void setUser(uid_t user)
{
    check(::syscall(SYS_setresuid, unchanged, user, unchanged));
}
} // namespace

bool BusUser::canBeAnyone()
{
    return ::geteuid() == 0;
}

BusUser BusUser::find(const char *user, const char *group)
{
    const passwd *userEntry = ::getpwnam(user);
    const ::group *groupEntry = ::getgrnam(group);
    if (userEntry == nullptr || groupEntry == nullptr) {
        throw std::runtime_error(std::string("no such user or group: ") + user + ", " + group);
    }
    return {userEntry->pw_uid, groupEntry->gr_gid};
}

ActAs::ActAs(const BusUser &user)
{
    setGroups(user.gid);
    setUser(user.uid);
}

ActAs::~ActAs()
{
    setUser(0);
    setGroups(0);
}
