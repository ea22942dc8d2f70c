// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// The result of one check.
struct Finding
{
    enum class State {
        Good,
        Notice, ///< works, but something optional is missing
        Missing
    };

    State state;
    QString subject; ///< "bus", "host", ...
    QString text;
    QString remedy; ///< what to do; empty when good
};
