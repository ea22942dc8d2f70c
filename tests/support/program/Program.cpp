// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/program/Program.h"

#include "support/EventLoop.h"
#include "support/program/BoundProcess.h"

#include <chrono>
#include <csignal>

namespace {
/// Reached only by failures; a program that must be read from disk takes its time.
constexpr std::chrono::seconds s_timeout(30);
} // namespace

Program::Program(const QString &file)
    : m_file(file)
    , m_process(std::make_unique<BoundProcess>())
{
    m_process->setProcessEnvironment(QProcessEnvironment::systemEnvironment());
    QObject::connect(m_process.get(), &QProcess::readyReadStandardOutput, [this] { collect(); });
    QObject::connect(m_process.get(), &QProcess::readyReadStandardError, [this] { collect(); });
}

Program::~Program()
{
    m_process->disconnect();
    kill();
}

void Program::setEnvironment(const QString &variable, const QString &value)
{
    QProcessEnvironment environment = m_process->processEnvironment();
    environment.insert(variable, value);
    m_process->setProcessEnvironment(environment);
}

void Program::setFolder(const QString &folder)
{
    m_process->setWorkingDirectory(folder);
}

void Program::start(const QStringList &arguments, const QByteArray &input)
{
    m_output.clear();
    m_error.clear();
    m_process->start(m_file, arguments);
    m_process->write(input);
    m_process->closeWriteChannel();
}

int Program::waitForExit()
{
    if (!waitFor([this] { return m_process->state() == QProcess::NotRunning; }, s_timeout)) {
        return -1;
    }
    collect();
    const bool hasRun = m_process->error() != QProcess::FailedToStart &&
                        m_process->exitStatus() == QProcess::NormalExit;
    return hasRun ? m_process->exitCode() : -1;
}

int Program::run(const QStringList &arguments, const QByteArray &input)
{
    start(arguments, input);
    return waitForExit();
}

bool Program::waitForOutput(const std::string &text)
{
    return waitFor([&] { return output().find(text) != std::string::npos || !isRunning(); },
                   s_timeout) &&
           output().find(text) != std::string::npos;
}

void Program::sendSignal(int signal)
{
    ::kill(pid_t(m_process->processId()), signal);
}

void Program::kill()
{
    if (isRunning()) {
        m_process->kill();
        m_process->waitForFinished();
    }
}

bool Program::isRunning() const
{
    return m_process->state() != QProcess::NotRunning;
}

std::vector<std::string> Program::lines() const
{
    std::vector<std::string> lines;
    for (const QByteArray &line : m_output.split('\n')) {
        lines.push_back(line.toStdString());
    }
    if (lines.back().empty()) {
        lines.pop_back();
    }
    return lines;
}

void Program::collect()
{
    m_output += m_process->readAllStandardOutput();
    m_error += m_process->readAllStandardError();
}
