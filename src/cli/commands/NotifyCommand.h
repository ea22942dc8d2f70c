// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"
#include "cli/commands/LiveClock.h"

#include <optional>

/// Notifies people by a message, a sound or both; with --wait, waits for the end of it.
class NotifyCommand : public Command
{
    Q_OBJECT

public:
    NotifyCommand(const Options &options, TavoClient &client, Terminal &terminal);

    void start() override;
    void interrupt(int signal) override;

private Q_SLOTS:
    void on_client_availableChanged(bool available);
    void on_client_valueChanged(const CMPath &path, const QVariant &value);
    void on_client_changesDropped();
    void on_client_subscriptionFailed(const CMPath &path, const CMError &error);

private:
    void send();
    void on_notify_finished(const TavoAttentionOutcome &outcome);
    void printOutcome(const TavoAttentionOutcome &outcome);
    void handle(const TavoAttentionEnded &ended);
    void printEnd(const char *event, const QString &action);

    TavoAttentionItem m_item;
    LiveClock m_clock;
    bool m_isOpen = false;
    /// The end, if it came before the reply to the request; printed after it.
    std::optional<TavoAttentionEnded> m_early;
    int m_signal = 0; ///< the signal that interrupted the command, or 0
};
