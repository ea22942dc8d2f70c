// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryQueue.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace {
// A power cut loses at most the last 250 ms; the rest of that is for the writing.
constexpr std::chrono::milliseconds maxDelay(200);

// So that no write takes long. Small ones are expensive: an entry in a write of twenty takes more than twice the
// time of one in a thousand, and six times the bytes on the disk.
constexpr std::size_t stepsPerWrite = 1000;

constexpr std::size_t maxWaitingBytes = 4 << 20;

// The rest is for what comes while these are written.
constexpr std::size_t bytesPerWrite = maxWaitingBytes / 4;

// Numbers that are given before the file is open are certainly higher than those in it.
constexpr qint64 firstWithoutFile = qint64(1) << 40;

using Steps = std::deque<HistoryStep>;

/// The entry in a step; null if there is none.
const HistoryEntry *entryOf(const HistoryStep &step)
{
    const auto *replacement = std::get_if<HistoryReplacement>(&step);
    return replacement != nullptr ? &replacement->entry : std::get_if<HistoryEntry>(&step);
}

QString userOf(const HistoryStep &step)
{
    if (const HistoryEntry *entry = entryOf(step)) {
        return entry->user;
    }
    if (const auto *change = std::get_if<HistoryChange>(&step)) {
        return change->user;
    }
    // It is not known who wants something marked as seen. These push out only each other.
    return std::holds_alternative<HistorySeen>(step) ? QStringLiteral("seen") : QString();
}

/// How much each user may keep at most, so that all together keep no more than the room. Who has less keeps it.
std::size_t shareOf(const std::map<QString, std::size_t> &bytesOfUsers, std::size_t room)
{
    std::vector<std::size_t> sorted;
    sorted.reserve(bytesOfUsers.size());
    for (const auto &user : bytesOfUsers) {
        sorted.push_back(user.second);
    }
    std::sort(sorted.begin(), sorted.end());
    std::size_t share = 0;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        share = room / (sorted.size() - i);
        if (sorted[i] > share) {
            break;
        }
        room -= sorted[i];
    }
    return share;
}

/// Where a replacement of the same entry waits.
std::optional<std::size_t> findSame(const Steps &steps, const HistoryReplacement &replacement)
{
    const auto same =
        std::find_if(steps.rbegin(), steps.rend(), [&replacement](const HistoryStep &waiting) {
            const auto *other = std::get_if<HistoryReplacement>(&waiting);
            return other != nullptr && other->entry.number == replacement.entry.number;
        });
    return same != steps.rend() ? std::optional(std::size_t(steps.rend() - same) - 1)
                                : std::nullopt;
}

/// Takes the range of the last step in, if both together are one. Returns where that is.
std::optional<std::size_t> takeIn(const Steps &steps, HistorySeen &seen)
{
    const auto *last = steps.empty() ? nullptr : std::get_if<HistorySeen>(&steps.back());
    if (last == nullptr || seen.from > last->upTo || last->from > seen.upTo) {
        return std::nullopt;
    }
    seen = {std::max(seen.upTo, last->upTo), std::min(seen.from, last->from)};
    return steps.size() - 1;
}
} // namespace

qint64 HistoryQueue::add(HistoryEntry entry)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_first == 0) {
        m_first = firstWithoutFile;
        m_next = m_first;
    }
    const qint64 number = m_next++;
    entry.number = number;
    push(std::move(entry), std::move(lock));
    return number;
}

void HistoryQueue::append(HistoryStep step)
{
    push(std::move(step), std::unique_lock<std::mutex>(m_mutex));
}

void HistoryQueue::push(HistoryStep &&step, std::unique_lock<std::mutex> lock)
{
    const bool isFirst = m_work.steps.empty();
    if (isFirst) {
        m_due = Clock::now() + maxDelay;
    }
    const bool wasEnough = isEnough();
    appendStep(m_work.steps, m_bytes, std::move(step));
    m_work.lost += dropExcess(m_work.steps, m_bytes);
    const bool wakes = isFirst || (isEnough() && !wasEnough);
    lock.unlock();
    if (wakes) {
        m_changed.notify_one();
    }
}

bool HistoryQueue::isEnough() const
{
    return m_work.steps.size() >= stepsPerWrite || m_bytes >= bytesPerWrite;
}

void HistoryQueue::append(Request request)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_work.requests.push_back(std::move(request));
    }
    m_changed.notify_one();
}

void HistoryQueue::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_work.isStopping = true;
    }
    m_changed.notify_one();
}

qint64 HistoryQueue::firstNumber(qint64 lastInFile)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_first == 0) {
        m_first = lastInFile + 1;
        m_next = m_first;
    }
    return m_first;
}

HistoryQueue::Work HistoryQueue::wait(std::optional<Clock::time_point> time)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (m_work.requests.empty() && !m_work.isStopping && !isEnough()) {
        std::optional<Clock::time_point> until = time;
        if (!m_work.steps.empty()) {
            until = until ? std::min(*until, m_due) : m_due;
        }
        if (!until) {
            m_changed.wait(lock);
        } else if (m_changed.wait_until(lock, *until) == std::cv_status::timeout) {
            break;
        }
    }
    const bool isStopping = m_work.isStopping;
    Work work = std::move(m_work);
    m_work = Work();
    m_work.isStopping = isStopping;
    m_bytes = 0;
    return work;
}

std::optional<std::size_t> appendStep(std::deque<HistoryStep> &steps, std::size_t &bytes,
                                      HistoryStep &&step)
{
    std::optional<std::size_t> needless;
    if (const auto *replacement = std::get_if<HistoryReplacement>(&step)) {
        needless = findSame(steps, *replacement);
    } else if (auto *seen = std::get_if<HistorySeen>(&step)) {
        needless = takeIn(steps, *seen);
    }
    if (needless) {
        bytes -= memoryOf(steps[*needless]);
        steps.erase(steps.begin() + std::ptrdiff_t(*needless));
    }
    bytes += memoryOf(step);
    steps.push_back(std::move(step));
    return needless;
}

int dropExcess(std::deque<HistoryStep> &steps, std::size_t &bytes)
{
    if (bytes <= maxWaitingBytes) {
        return 0;
    }
    std::map<QString, std::size_t> bytesOfUsers;
    for (const HistoryStep &step : steps) {
        bytesOfUsers[userOf(step)] += memoryOf(step);
    }
    const std::size_t share = shareOf(bytesOfUsers, maxWaitingBytes / 2);
    int lost = 0;
    Steps kept;
    for (HistoryStep &step : steps) {
        std::size_t &ofUser = bytesOfUsers[userOf(step)];
        if (ofUser <= share) {
            kept.push_back(std::move(step));
            continue;
        }
        ofUser -= memoryOf(step);
        bytes -= memoryOf(step);
        lost += std::holds_alternative<HistoryEntry>(step);
    }
    steps = std::move(kept);
    return lost;
}

std::size_t memoryOf(const HistoryStep &step)
{
    std::size_t characters = 0;
    if (const HistoryEntry *entry = entryOf(step)) {
        for (const QString *string :
             {&entry->id, &entry->user, &entry->source, &entry->application, &entry->category,
              &entry->group, &entry->title, &entry->text, &entry->action}) {
            characters += std::size_t(string->size());
        }
    }
    constexpr std::size_t perString = 32; // what the allocation of a QString adds
    return sizeof(HistoryStep) + 9 * perString + sizeof(QChar) * characters;
}
