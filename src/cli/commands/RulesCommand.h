// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"

struct AttentionSettings;

/// Lists the rules of the host, checks a file of rules, or tries what becomes of a notification.
class RulesCommand : public Command
{
    Q_OBJECT

public:
    using Command::Command;

    void start() override;

private:
    void list();
    void check();
    void check(const AttentionSettings &settings, const QByteArray &json, const QString &file);
    void test();

    void printRules(const TavoAttentionRules &rules);
    void printTrial(const TavoAttentionTrial &trial);
    void printVerdict(const TavoAttentionVerdict &verdict, int nameWidth);
    void printOutcome(const char *what, const QString &text);
};
