// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundOpener.h"

#include <core/tavo.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace {
constexpr std::chrono::seconds maxTime(1);

/// Of a user; those that are too late count, too, as long as the system hangs.
constexpr std::size_t maxOpenings = 128;
constexpr std::size_t maxThreads = 96;

/// Threads of users that the bus has not told.
constexpr uid_t unknownUser = uid_t(-1);
} // namespace

/// Where the threads leave what they have opened; they may live longer than the opener.
struct SoundOpener::Mailbox
{
    std::mutex mutex;
    SoundOpener *receiver;
};

SoundOpener::SoundOpener()
    : m_threads(maxOpenings, maxThreads)
    , m_mailbox(std::make_shared<Mailbox>())
{
    m_mailbox->receiver = this;
    m_timer.setSingleShot(true);
    tavoConnect(&m_timer, &QTimer::timeout, this, &SoundOpener::on_timer_timeout);
}

SoundOpener::~SoundOpener()
{
    const std::lock_guard lock(m_mailbox->mutex);
    m_mailbox->receiver = nullptr;
}

void SoundOpener::run(Quotas::UserId user, const Check &check, Done done)
{
    const std::uint64_t number = ++m_lastNumber;
    m_openings.emplace(number, Opening{std::move(done), Clock::now() + maxTime});
    if (!m_timer.isActive()) {
        m_timer.start(maxTime);
    }
    const auto task = [mailbox = m_mailbox, number, check] {
        const Outcome outcome = check();
        const std::lock_guard lock(mailbox->mutex);
        if (SoundOpener *receiver = mailbox->receiver) {
            QMetaObject::invokeMethod(
                receiver, [receiver, number, outcome] { receiver->finish(number, outcome); },
                Qt::QueuedConnection);
        }
    };
    // If too many wait already, this one will be too late as well.
    m_threads.run(user.value_or(unknownUser), task);
}

void SoundOpener::finish(std::uint64_t number, const Outcome &outcome)
{
    const auto opening = m_openings.extract(number);
    if (!opening.empty()) {
        opening.mapped().done(outcome);
    }
}

void SoundOpener::on_timer_timeout()
{
    while (!m_openings.empty() && m_openings.begin()->second.tooLate <= Clock::now()) {
        finish(m_openings.begin()->first,
               Failure{QStringLiteral("The file can't be opened in time")});
    }
    if (!m_openings.empty()) {
        const auto left = m_openings.begin()->second.tooLate - Clock::now();
        m_timer.start(std::max(std::chrono::ceil<std::chrono::milliseconds>(left),
                               std::chrono::milliseconds::zero()));
    }
}
