// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QProcess>

#include <csignal>
#include <sys/prctl.h>

/// A process that ends with the test program, even if that crashes.
class BoundProcess : public QProcess
{
protected:
    void setupChildProcess() override { prctl(PR_SET_PDEATHSIG, SIGKILL); }
};
