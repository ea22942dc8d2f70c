// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// What one look of the doctor's found.
struct Finding
{
    enum class State {
        Good,
        Notice, ///< works, but not all that could
        Missing
    };

    State state;
    QString subject; ///< "bus", "host", ...
    QString text;
    QString remedy; ///< what to do; empty where all is good
};
