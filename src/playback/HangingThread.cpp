// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/HangingThread.h"

#include <algorithm>
#include <mutex>
#include <unistd.h>
#include <vector>

namespace {

// A process may have only so many threads. Others may keep a file busy that they can only read, so each file counts
// by itself, too.
constexpr int maxOfFile = 2;
constexpr int maxOfOwner = 8;
constexpr int maxOfNobody = 32;

// In all. Then only files of the system and of the process's own user are played.
constexpr int maxOfAll = 256;

struct Hanging
{
    std::mutex mutex;
    std::vector<HangingThread::File> files;
};

// Never destroyed, because a thread that hangs may end after everything else.
Hanging &hanging()
{
    static auto *s_hanging = new Hanging;
    return *s_hanging;
}

bool isOfSystem(const OpenedSound::FileId &file)
{
    return file.owner == 0 || file.owner == geteuid();
}

} // namespace

HangingThread::HangingThread(const File &file)
    : m_file(file)
{
    const std::lock_guard lock(hanging().mutex);
    hanging().files.push_back(m_file);
}

HangingThread::~HangingThread()
{
    const std::lock_guard lock(hanging().mutex);
    auto &files = hanging().files;
    files.erase(std::find_if(files.begin(), files.end(), [this](const File &other) {
        return m_file ? other && m_file->isSameFile(*other) : !other;
    }));
}

int HangingThread::count()
{
    const std::lock_guard lock(hanging().mutex);
    return int(hanging().files.size());
}

bool HangingThread::areTooMany(const File &file)
{
    const std::lock_guard lock(hanging().mutex);
    const auto &files = hanging().files;
    const auto count = [&files](const auto &isMeant) {
        return std::count_if(files.begin(), files.end(), isMeant);
    };
    if (count([](const File &other) { return !other; }) >= maxOfNobody) {
        return true;
    }
    if (!file) {
        return false;
    }
    const auto isThisFile = [&file](const File &other) {
        return other && file->isSameFile(*other);
    };
    const auto isOfOwner = [&file](const File &other) {
        return other && other->owner == file->owner && other->device == file->device;
    };
    return count(isThisFile) >= maxOfFile ||
           (!isOfSystem(*file) &&
            (count(isOfOwner) >= maxOfOwner || int(files.size()) >= maxOfAll));
}
