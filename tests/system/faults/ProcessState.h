// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <ostream>

/// What a process uses, from /proc.
struct ProcessState
{
    int descriptors = 0;
    int threads = 0;
    long residentKiB = 0;
    long processorTicks = 0; ///< of all threads so far

    static ProcessState of(qint64 process);
};

/// Waits until the process has no more descriptors and threads than before.
bool waitForSettled(qint64 process, const ProcessState &before);

std::ostream &operator<<(std::ostream &stream, const ProcessState &state);
