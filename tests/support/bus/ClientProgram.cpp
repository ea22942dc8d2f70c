// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/ClientProgram.h"

#include "support/bus/BoundProcess.h"
#include "support/EventLoop.h"

namespace {
/// For failures alone; a program that is read from disk takes its time.
constexpr std::chrono::seconds patience(30);
} // namespace

ClientProgram::ClientProgram(const PrivateBus &bus, const QString &program,
                             const QStringList &arguments)
    : m_process(std::make_unique<BoundProcess>())
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    m_process->setProcessEnvironment(environment);
    m_process->start(program, arguments);
}

ClientProgram::~ClientProgram()
{
    kill();
}

bool ClientProgram::ends()
{
    return waitFor([this] { return m_process->state() == QProcess::NotRunning; }, patience);
}

bool ClientProgram::succeeds()
{
    return ends() && m_process->error() == QProcess::UnknownError &&
           m_process->exitStatus() == QProcess::NormalExit && m_process->exitCode() == 0;
}

bool ClientProgram::writes(const QString &text)
{
    return waitFor([&] { return output().contains(text); }, patience);
}

void ClientProgram::kill()
{
    m_process->kill();
    m_process->waitForFinished();
}

QString ClientProgram::output()
{
    return m_output += QString::fromUtf8(m_process->readAllStandardOutput());
}

QString ClientProgram::errors()
{
    return m_errors += QString::fromUtf8(m_process->readAllStandardError());
}
