// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/UserThreads.h"
#include "Quotas.h"
#include "SoundAccess.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>

/// Looks for sounds of clients in threads, one for each user: a folder or a file system may hang for as long
/// as somebody else likes.
///
/// Used in the worker's thread.
class SoundOpener : public QObject
{
    Q_OBJECT

public:
    using Outcome = Result<AllowedSound>;
    using Check = std::function<Outcome()>;
    using Done = std::function<void(const Outcome &outcome)>;

    SoundOpener();
    ~SoundOpener() override;

    /// Has the check made in the user's thread. Calls the other function later: after a second with a refusal, if
    /// the check takes longer.
    void run(Quotas::UserId user, const Check &check, Done done);

private Q_SLOTS:
    void on_timer_timeout();

private:
    using Clock = std::chrono::steady_clock;
    struct Mailbox;
    struct Opening
    {
        Done done;
        Clock::time_point tooLate;
    };

    void finish(std::uint64_t number, const Outcome &outcome);

    std::map<std::uint64_t, Opening> m_openings; ///< by number, the first one is too late first
    std::uint64_t m_lastNumber = 0;
    UserThreads m_threads;
    std::shared_ptr<Mailbox> m_mailbox;
    QTimer m_timer;
};
