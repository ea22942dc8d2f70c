// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <sys/types.h>

/// Does what may hang in a file system: one thing after the other for each user, in a thread that exists
/// only while there is something to do. So nobody waits for another user's files, and hanging ones hold no
/// more than a thread of each user. If very many users' hang, other users wait for a thread.
///
/// Used from any thread. Threads that hang are left behind when this is destroyed.
class UserThreads
{
public:
    using Task = std::function<void()>;

    /// At most so many tasks of a user wait or run, in so many threads in all.
    UserThreads(std::size_t maxTasks, std::size_t maxThreads);

    /// Has the task run after those of the user that were given before; it throws nothing. False if too many
    /// wait already, or if there can be no thread.
    bool run(uid_t user, Task task) const;

    /// How many tasks of the user have not ended yet.
    std::size_t count(uid_t user) const;

private:
    struct Tasks;

    static void work(const std::shared_ptr<Tasks> &tasks);

    const std::size_t m_maxTasks;
    const std::size_t m_maxThreads;
    const std::shared_ptr<Tasks> m_tasks;
};
