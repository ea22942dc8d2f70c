// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/PrivateBus.h"
#include "support/program/Program.h"

#include <QString>
#include <QStringList>

/// Somebody else's program on a bus of a test's own, running from the start. While a test waits for it,
/// the test's event loop turns, so that what the program asks for can be served in the test's process.
class ClientProgram
{
public:
    ClientProgram(const PrivateBus &bus, const QString &program, const QStringList &arguments);

    /// Waits for its end; whether it came, with the exit code 0.
    bool succeeds() { return m_program.waitForExit() == 0; }

    /// Waits until it has written the text.
    bool writes(const QString &text) { return m_program.waitForOutput(text.toStdString()); }

    void sendSignal(int signal) { m_program.sendSignal(signal); }

    /// Ends it at once, whatever it is doing.
    void kill() { m_program.kill(); }

    QString output() const { return QString::fromStdString(m_program.output()); } ///< so far
    QString errors() const { return QString::fromStdString(m_program.error()); }  ///< so far

private:
    Program m_program;
};
