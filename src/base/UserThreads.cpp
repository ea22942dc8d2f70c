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
    std::map<uid_t, std::deque<Task>>
        ofUser; ///< the first one runs; a user with tasks has a thread
};

UserThreads::UserThreads(std::size_t maxTasks)
    : m_maxTasks(maxTasks)
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
    try {
        std::thread([tasks = m_tasks, user] { work(tasks, user); }).detach();
        return true;
    } catch (const std::system_error &) {
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

void UserThreads::work(const std::shared_ptr<Tasks> &tasks, uid_t user)
{
    std::unique_lock lock(tasks->mutex);
    const auto own = tasks->ofUser.find(user);
    while (!own->second.empty()) {
        {
            const Task task = std::move(own->second.front());
            lock.unlock();
            task();
        }
        lock.lock();
        own->second.pop_front();
    }
    tasks->ofUser.erase(own);
}
