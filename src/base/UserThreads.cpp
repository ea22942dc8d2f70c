// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/UserThreads.h"

#include <deque>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

struct UserThreads::Tasks
{
    std::mutex mutex;
    std::map<uid_t, std::deque<Task>> ofUser; ///< none is empty; the first one of a user may run
    std::deque<uid_t> waiting;                ///< users with tasks and without a thread
    std::size_t threads = 0;
};

UserThreads::UserThreads(std::size_t maxTasks, std::size_t maxThreads)
    : m_maxTasks(maxTasks)
    , m_maxThreads(maxThreads)
    , m_tasks(std::make_shared<Tasks>())
{
}

bool UserThreads::run(uid_t user, Task task) const
{
    const std::lock_guard lock(m_tasks->mutex);
    auto &tasks = m_tasks->ofUser[user];
    if (tasks.size() >= m_maxTasks) {
        return false;
    }
    tasks.push_back(std::move(task));
    if (tasks.size() > 1) {
        return true;
    }
    m_tasks->waiting.push_back(user);
    if (m_tasks->threads >= m_maxThreads) {
        return true;
    }
    try {
        std::thread([tasks = m_tasks] { work(tasks); }).detach();
        ++m_tasks->threads;
        return true;
    } catch (const std::system_error &) {
        if (m_tasks->threads > 0) {
            return true; // until one of them has ended
        }
        m_tasks->waiting.pop_back();
        m_tasks->ofUser.erase(user);
        return false;
    }
}

std::size_t UserThreads::count(uid_t user) const
{
    const std::lock_guard lock(m_tasks->mutex);
    const auto tasks = m_tasks->ofUser.find(user);
    return tasks == m_tasks->ofUser.end() ? 0 : tasks->second.size();
}

/// Takes up one user after the other.
void UserThreads::work(const std::shared_ptr<Tasks> &tasks)
{
    std::unique_lock lock(tasks->mutex);
    while (!tasks->waiting.empty()) {
        const auto user = tasks->ofUser.find(tasks->waiting.front());
        tasks->waiting.pop_front();
        while (!user->second.empty()) {
            {
                const Task task = std::move(user->second.front());
                lock.unlock();
                task();
            }
            lock.lock();
            user->second.pop_front();
        }
        tasks->ofUser.erase(user);
    }
    --tasks->threads;
}
