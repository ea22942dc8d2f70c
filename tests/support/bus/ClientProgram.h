// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/PrivateBus.h"
#include "support/program/Program.h"

#include <QString>
#include <QStringList>

/// A foreign program on a test's bus, started by the constructor. The test's event loop runs while a test
/// waits for the program, so the test's process can serve the program's calls.
class ClientProgram
{
public:
    ClientProgram(const PrivateBus &bus, const QString &program, const QStringList &arguments);

    /// Waits for the program's end. True for the exit code 0.
    bool succeeds() { return m_program.waitForExit() == 0; }

    /// Waits until the program has written the text.
    bool writes(const QString &text) { return m_program.waitForOutput(text.toStdString()); }

    void sendSignal(int signal) { m_program.sendSignal(signal); }

    /// Kills the program.
    void kill() { m_program.kill(); }

    QString output() const { return QString::fromStdString(m_program.output()); } ///< so far
    QString errors() const { return QString::fromStdString(m_program.error()); }  ///< so far

private:
    Program m_program;
};
