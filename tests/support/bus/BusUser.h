// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

/// A user of a bus. Only root can make connections of other users.
struct BusUser
{
    uid_t uid;
    gid_t gid;

    static bool canBeAnyone();

    /// A user in no group but this one.
    static BusUser find(const char *user, const char *group = "nogroup");
};

/// While it exists, this thread connects to buses as another user. Other threads are not affected.
class ActAs
{
public:
    explicit ActAs(const BusUser &user);
    ~ActAs();
    ActAs(const ActAs &) = delete;
    ActAs &operator=(const ActAs &) = delete;
};
