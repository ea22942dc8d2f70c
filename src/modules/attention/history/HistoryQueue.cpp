// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryQueue.h"

#include <algorithm>
#include <iterator>

namespace {
// A power cut loses at most the last 250 ms; the rest of that is for the writing.
constexpr std::chrono::milliseconds maxDelay(200);

// So that no write takes long. Small ones are expensive: an entry in a write of twenty takes more than twice the
// time of one in a thousand, and six times the bytes on the disk.
constexpr std::size_t stepsPerWrite = 1000;

constexpr std::size_t maxWaitingBytes = 4 << 20;

// Numbers that are given before the file is open are certainly higher than those in it.
constexpr qint64 firstWithoutFile = qint64(1) << 40;
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
    appendStep(m_work.steps, m_bytes, std::move(step));
    m_work.lost += dropOldest(m_work.steps, m_bytes);
    const std::size_t size = m_work.steps.size();
    lock.unlock();
    if (isFirst || size == stepsPerWrite) {
        m_changed.notify_one();
    }
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
    while (m_work.requests.empty() && !m_work.isStopping && m_work.steps.size() < stepsPerWrite) {
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
    std::optional<std::size_t> dropped;
    if (const auto *replacement = std::get_if<HistoryReplacement>(&step)) {
        const auto previous =
            std::find_if(steps.rbegin(), steps.rend(), [replacement](const HistoryStep &waiting) {
                const auto *other = std::get_if<HistoryReplacement>(&waiting);
                return other != nullptr && other->entry.number == replacement->entry.number;
            });
        if (previous != steps.rend()) {
            dropped = std::size_t(steps.rend() - previous) - 1;
            bytes -= memoryOf(*previous);
            steps.erase(std::next(previous).base());
        }
    }
    bytes += memoryOf(step);
    steps.push_back(std::move(step));
    return dropped;
}

int dropOldest(std::deque<HistoryStep> &steps, std::size_t &bytes)
{
    int lost = 0;
    if (bytes > maxWaitingBytes) {
        while (bytes > maxWaitingBytes / 2) {
            bytes -= memoryOf(steps.front());
            lost += std::holds_alternative<HistoryEntry>(steps.front());
            steps.pop_front();
        }
    }
    return lost;
}

std::size_t memoryOf(const HistoryStep &step)
{
    std::size_t characters = 0;
    const auto *entry = std::get_if<HistoryEntry>(&step);
    if (const auto *replacement = std::get_if<HistoryReplacement>(&step)) {
        entry = &replacement->entry;
    }
    if (entry != nullptr) {
        for (const QString *string :
             {&entry->id, &entry->source, &entry->application, &entry->category, &entry->group,
              &entry->title, &entry->text, &entry->action}) {
            characters += std::size_t(string->size());
        }
    }
    constexpr std::size_t perString = 32; // what the allocation of a QString adds
    return sizeof(HistoryStep) + 8 * perString + sizeof(QChar) * characters;
}
