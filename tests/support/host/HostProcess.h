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

/// Runs a tavo-host as a process, by default that of the build tree. Waits for events with a
/// timeout and never polls. The environment is that of the test, without the variables of the host.
///
/// Lives in the test's thread, which needs a QCoreApplication. The destructor kills a host that
/// still runs.
class HostProcess
{
public:
    /// The timeout of all waits.
    static constexpr std::chrono::seconds s_timeout{20};

    HostProcess();
    ~HostProcess();
    HostProcess(const HostProcess &) = delete;
    HostProcess &operator=(const HostProcess &) = delete;

    /// A folder that is removed with this object.
    QString folder() const { return m_folder.path(); }
    QString writeFile(const QString &name, const QByteArray &content);

    /// Writes the host's configuration file and returns its name.
    QString setConfiguration(const QJsonObject &configuration);
    QString setConfigurationText(const QByteArray &json);

    /// Uses another program than the tavo-host of the build tree.
    void setProgram(const QString &program) { m_program = program; }
    QString program() const { return m_program; }

    void addArguments(const QStringList &arguments) { m_arguments += arguments; }
    void setEnvironment(const QString &variable, const QString &value);

    /// Starts the host. Returns false if it can't be started.
    bool start();

    /// Starts the host and waits until all modules run. Returns false if it ends before.
    bool startReady();

    /// Starts the host, waits for its end and returns its exit code, or -1 after a crash or the
    /// timeout.
    int run();

    bool waitReady();
    /// Waits until the host has written the text to standard error.
    bool waitForLog(const QString &text);
    /// Returns the exit code, or -1 after a crash or the timeout.
    int waitForExit();

    void sendSignal(int signal);
    /// Sends SIGTERM, waits for the host's end and returns the exit code as waitForExit() does.
    int stop();

    /// Whether the host has reported that it is ready.
    bool isReady() const;
    bool isRunning() const;
    bool crashed() const;
    qint64 processId() const;

    /// The standard error so far: log and messages.
    QString log() const { return QString::fromUtf8(m_log); }
    QStringList logLines() const;
    /// The standard output so far.
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
    /// Last, since its destructor may still use the members above.
    std::unique_ptr<Process> m_process;
};
