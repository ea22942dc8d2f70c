// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"
#include <client/TavoMessages.h>

/// Cancels a sound, or closes a message.
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
    /// Cancels a sound if no open message has the number.
    void cancelByNumber(uint number);
    void cancelSound();
    void succeed(const QString &kind);

    TavoMessages m_messages;
};
