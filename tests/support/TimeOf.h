// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QElapsedTimer>

/// The milliseconds that a function takes.
template <typename Function>
qint64 timeOf(Function function)
{
    QElapsedTimer elapsed;
    elapsed.start();
    function();
    return elapsed.elapsed();
}
