// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/ClientProgram.h"

ClientProgram::ClientProgram(const PrivateBus &bus, const QString &program,
                             const QStringList &arguments)
    : m_program(program)
{
    m_program.setEnvironment(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    m_program.setEnvironment(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    m_program.start(arguments);
}
