// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "history/HistoryEntry.h"
#include "speech/Speech.h"

#include <QStringList>
#include <QVariantHash>

/// The module's entry in the host's configuration.
struct AttentionConfiguration
{
    QStringList settingsFiles; ///< the first one that is there counts
    HistorySettings history;
    QString quietFile; ///< beside the history; empty without one
    Speech::Settings speech;

    /// Throws the errors of TavoConfiguration.
    explicit AttentionConfiguration(const QVariantHash &config);
};
