// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/HangingThread.h"

#include <map>
#include <mutex>

namespace {

struct Counts
{
    std::mutex mutex;
    std::map<HangingThread::Owner, int> ofOwners;
    int all = 0;
};

// Never destroyed, because a thread that hangs may end after everything else.
Counts &counts()
{
    static auto *s_counts = new Counts;
    return *s_counts;
}

} // namespace

HangingThread::HangingThread(Owner owner)
    : m_owner(owner)
{
    const std::lock_guard lock(counts().mutex);
    ++counts().ofOwners[m_owner];
    ++counts().all;
}

HangingThread::~HangingThread()
{
    const std::lock_guard lock(counts().mutex);
    if (--counts().ofOwners[m_owner] == 0) {
        counts().ofOwners.erase(m_owner);
    }
    --counts().all;
}

int HangingThread::count()
{
    const std::lock_guard lock(counts().mutex);
    return counts().all;
}

int HangingThread::count(Owner owner)
{
    const std::lock_guard lock(counts().mutex);
    const auto found = counts().ofOwners.find(owner);
    return found == counts().ofOwners.end() ? 0 : found->second;
}
