// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmreply.h"

#include <chrono>

template class CMReplyData<QVariant>;

namespace {
/// The context of callbacks that were added without one; each thread has its own.
QObject *threadContext()
{
    static thread_local QObject context;
    return &context;
}
} // namespace

CMReplyWatcher::~CMReplyWatcher() = default;
CMAnswering::~CMAnswering() = default;
CMReplyAbstractData::~CMReplyAbstractData() = default;

bool CMReplyAbstractData::waitForFinished(unsigned long ms) const
{
    std::unique_lock lock(m_mutex);
    const auto finished = [this] { return isFinished(); };
    // Longer than any process runs. The clock's arithmetic would overflow with a much longer time.
    constexpr std::chrono::hours hundredYears(24 * 365 * 100);
    constexpr std::chrono::milliseconds maxTime(hundredYears);
    if (ms >= static_cast<unsigned long>(maxTime.count())) {
        m_done.wait(lock, finished);
        return true;
    }
    return m_done.wait_for(lock, std::chrono::milliseconds(ms), finished);
}

void CMReplyAbstractData::setError(const CMError &error)
{
    finish([this, &error] { m_error = error; });
}

CMError CMReplyAbstractData::error() const
{
    const std::lock_guard lock(m_mutex);
    return m_error;
}

void CMReplyAbstractData::addWatcher(CMReplyWatcher *watcher)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_finished) {
            m_watchers.push_back(watcher);
            return;
        }
    }
    tell({watcher});
}

void CMReplyAbstractData::abandon(CMReplyAbstractData *standIn)
{
    const CMVoidReply reply{CMVoidReply::DataPointer(standIn)};
    reply.setError(CMError(CMErrors::noAnswer(), "The reply was dropped without an answer"));
    for (CMReplyWatcher *watcher : m_watchers) {
        watcher->replyFinished(reply);
    }
}

void CMReplyAbstractData::tell(const Watchers &watchers)
{
    const CMVoidReply reply{CMVoidReply::DataPointer(this)};
    for (CMReplyWatcher *watcher : watchers) {
        watcher->replyFinished(reply);
    }
}

void CMVoidReply::setError(const CMError &error) const
{
    if (m_data) {
        m_data->setError(error);
    }
}

void CMVoidReply::addWatcher(QObject *context, const Callback &callback,
                             Qt::ConnectionType type) const
{
    auto *watcher = new CMReplyWatcherObject;
    tavoConnect(watcher, &CMReplyWatcherObject::finishedSignal,
                context != nullptr ? context : threadContext(), callback, type);
    addWatcher(watcher);
}

void CMVoidReply::addWatcher(CMReplyWatcher *watcher) const
{
    Q_ASSERT(m_data);
    m_data->addWatcher(watcher);
}

void CMReplyWatcherObject::replyFinished(const CMVoidReply &reply)
{
    Q_EMIT finishedSignal(reply);
    delete this;
}
