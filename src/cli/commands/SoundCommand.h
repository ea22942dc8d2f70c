// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"
#include "cli/commands/LiveClock.h"
#include <client/TavoInbox.h>

#include <vector>

/// Queues a sound. With --wait or --loop, waits for its end: a loop ends with this program.
class SoundCommand : public Command
{
    Q_OBJECT

public:
    SoundCommand(const Options &options, TavoClient &client, Terminal &terminal);

    void start() override;
    void interrupt(int signal) override;

private Q_SLOTS:
    void on_inbox_opened(const CMPath &path);
    void on_inbox_failed(const CMError &error);
    void on_inbox_lost();
    void on_inbox_requestsDropped();
    void on_inbox_responded(const TavoNotificationPlayerResponse &response);

private:
    /// Whether the sound ends with the program.
    bool endsWithProgram() const { return options().loop || !options().streamFormat.empty(); }
    bool isToWait() const { return options().wait || endsWithProgram(); }
    void enqueue();
    void on_item_queued();
    void on_item_refused(const CMError &error);
    void handle(const TavoNotificationPlayerResponse &response);
    void report(const char *event);

    TavoNotificationPlayerItem m_item;
    std::unique_ptr<TavoInbox> m_inbox; ///< receives the sound's events
    LiveClock m_clock;
    bool m_isSent = false;
    bool m_isQueued = false;
    /// Events that came before the reply to the request; printed after it.
    std::vector<TavoNotificationPlayerResponse> m_early;
    int m_signal = 0; ///< the signal that interrupted the command, or 0
};
