// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"
#include "cli/commands/LiveClock.h"
#include <client/TavoMessages.h>

#include <optional>

/// Shows a message; with --wait, waits for its end.
class ShowCommand : public Command
{
    Q_OBJECT

public:
    ShowCommand(const Options &options, TavoClient &client, Terminal &terminal);

    void start() override;
    void interrupt(int signal) override;

private Q_SLOTS:
    void on_client_availableChanged(bool available);
    void on_messages_closed(uint id, TavoMessages::End end);

private:
    void on_message_shown(uint id);
    void on_message_refused(const CMError &error);
    void report(const char *event);

    TavoMessages m_messages;
    LiveClock m_clock;
    std::optional<uint> m_id; ///< empty until the message is shown
    int m_signal = 0;         ///< the signal that interrupted the command, or 0
};
