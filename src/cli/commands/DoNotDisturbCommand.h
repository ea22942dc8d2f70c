// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"

/// Sets whether people want to be disturbed, or prints whether they do.
class DoNotDisturbCommand : public Command
{
    Q_OBJECT

public:
    using Command::Command;

    void start() override;

private:
    void choose(const TavoAttentionDoNotDisturb &choice);
    void read();
};
