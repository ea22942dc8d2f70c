// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"
#include <client/TavoMessages.h>

/// Ends a sound or takes a message away, by whichever name it is known.
class CancelCommand : public Command
{
    Q_OBJECT

public:
    CancelCommand(const Options &options, TavoClient &client, Terminal &terminal)
        : Command(options, client, terminal)
        , m_messages(&client)
    {
    }

    void start() override;

private:
    QString id() const { return QString::fromStdString(options().id); }
    void cancelMessage(const CMPath &path);
    /// A sound, where no message that is open has the number.
    void cancelByNumber(uint number);
    void cancelSound();
    void succeed(const QString &kind);

    TavoMessages m_messages;
};
