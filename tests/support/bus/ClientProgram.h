// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/PrivateBus.h"

#include <memory>

#include <QProcess>
#include <QString>
#include <QStringList>

/// Somebody else's program on a bus of a test's own. While a test waits for it, the test's event loop
/// turns, so that what the program asks for can be served in the test's process.
class ClientProgram
{
public:
    ClientProgram(const PrivateBus &bus, const QString &program, const QStringList &arguments);
    ~ClientProgram();
    ClientProgram(const ClientProgram &) = delete;
    ClientProgram &operator=(const ClientProgram &) = delete;

    /// Waits for its end; whether it came, with the exit code 0.
    bool succeeds();

    /// Waits for its end.
    bool ends();

    /// Waits until it has written the text.
    bool writes(const QString &text);

    /// Ends it at once, whatever it is doing.
    void kill();

    QString output(); ///< so far
    QString errors(); ///< so far

private:
    const std::unique_ptr<QProcess> m_process;
    QString m_output;
    QString m_errors;
};
