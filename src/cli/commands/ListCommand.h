// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"
#include "cli/commands/MessageReader.h"

/// Lists the messages of the display.
class ListCommand : public Command
{
    Q_OBJECT

public:
    using Command::Command;

    void start() override;

private:
    void printLines(const ShownMessages &messages);
    QString lineOf(const ShownMessage &message, int index);
};
