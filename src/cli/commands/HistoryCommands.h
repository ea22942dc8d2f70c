// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"
#include "cli/commands/HistoryReader.h"

/// Lists notifications of the past.
class HistoryCommand : public Command
{
    Q_OBJECT

public:
    using Command::Command;

    void start() override;

protected:
    /// Reads those that the options and the query ask for.
    void read(TavoAttentionQuery query, const std::function<void(const PastNotifications &)> &use);

    static QVariantHash toHash(const PastNotifications &past);
    void printLines(const PastNotifications &past);

private:
    QString lineOf(const TavoAttentionRecord &record);
};

/// Lists the notifications that nobody has seen, and counts them; with --seen, marks them as seen.
class MissedCommand : public HistoryCommand
{
    Q_OBJECT

public:
    using HistoryCommand::HistoryCommand;

    void start() override;

private:
    void report(const PastNotifications &past, int count);
    void markSeen(const PastNotifications &past);
};
