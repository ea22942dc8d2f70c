// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <memory>

/// A tavo-host of its own for a test, run as a process, from the build tree unless told otherwise. What it does is waited
/// for, with a limit, and never polled. Its environment is the test's without the host's own
/// variables.
///
/// Thread: the test's, which needs a QCoreApplication. A host that still runs when this is
/// destroyed is killed.
class HostProcess
{
public:
    /// How long a test waits for anything.
    static constexpr std::chrono::seconds s_timeout{20};

    HostProcess();
    ~HostProcess();
    HostProcess(const HostProcess &) = delete;
    HostProcess &operator=(const HostProcess &) = delete;

    /// A folder that lasts as long as this does.
    QString folder() const { return m_folder.path(); }
    QString writeFile(const QString &name, const QByteArray &content);

    /// Writes the configuration file that the host is to be started with; gives its name.
    QString setConfiguration(const QJsonObject &configuration);
    QString setConfigurationText(const QByteArray &json);

    /// Another program than the build tree's tavo-host.
    void setProgram(const QString &program) { m_program = program; }
    QString program() const { return m_program; }

    void addArguments(const QStringList &arguments) { m_arguments += arguments; }
    void setEnvironment(const QString &variable, const QString &value);

    /// Starts the host; false where it can't be.
    bool start();

    /// Starts it and waits until it says that all modules run; false when it ends before that.
    bool startReady();

    /// Starts it and waits for its end; gives its exit code, or -1 when it crashed or went on.
    int run();

    bool waitReady();
    /// Waits until the text stands in what the host wrote on standard error.
    bool waitForLog(const QString &text);
    /// Gives the exit code, or -1 when the host crashed or went on.
    int waitForExit();

    void sendSignal(int signal);
    /// Asks the host to end and waits for it; gives its exit code as waitForExit() does.
    int stop();

    /// Whether the host has said so by now.
    bool isReady() const;
    bool isRunning() const;
    bool crashed() const;
    qint64 processId() const;

    /// What came so far on standard error: the log and messages for people.
    QString log() const { return QString::fromUtf8(m_log); }
    QStringList logLines() const;
    /// What came so far on standard output.
    QString output() const { return QString::fromUtf8(m_output); }

private:
    class Process;

    bool waitUntil(const std::function<bool()> &condition);

    QTemporaryDir m_folder;
    QString m_program;
    QStringList m_arguments;
    QProcessEnvironment m_environment;
    QByteArray m_log;
    QByteArray m_output;
    /// Last, as what it reports at its end goes into the members above.
    std::unique_ptr<Process> m_process;
};
