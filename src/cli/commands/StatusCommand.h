// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/AttentionState.h"
#include "cli/commands/Command.h"
#include "cli/commands/MessageReader.h"

#include <optional>

/// Prints the state of sounds, main audio, display, attention and power.
class StatusCommand : public Command
{
    Q_OBJECT

public:
    using Command::Command;

    void start() override;

private:
    void read(const CMPath &path, std::function<void(const TavoValue &)> use);
    void answered();

    QVariantHash toHash() const;
    QString toText();
    QString soundText();
    QString audioText();
    QString displayText();
    QString attentionText();
    QString powerText();
    QString line(const char *what, const QString &text);

    int m_pending = 0;
    QString m_version; ///< of the host
    // Empty if the module is not loaded.
    std::optional<bool> m_sounds;
    std::optional<TavoPlayerMainAudioState> m_audio;
    std::optional<TavoPowerManagerState> m_power;
    std::optional<ShownMessages> m_messages;
    std::optional<AttentionState> m_attention;
};
