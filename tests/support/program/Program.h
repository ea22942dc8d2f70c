// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

#include <memory>
#include <string>
#include <vector>

/// A program that a test runs as a process, and its output.
///
/// Lives in the test's thread, which needs a QCoreApplication. The destructor kills a program that
/// still runs, which also ends with the test's process.
class Program
{
public:
    explicit Program(const QString &file);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    void setEnvironment(const QString &variable, const QString &value);
    void setFolder(const QString &folder);

    /// Starts the program with this input, and closes the input.
    void start(const QStringList &arguments, const QByteArray &input = {});

    /// Waits for the end. Returns the exit code, or -1 after a crash, the timeout or a failed
    /// start.
    int waitForExit();

    /// Starts the program and waits for its end.
    int run(const QStringList &arguments, const QByteArray &input = {});

    /// Waits until the program has written the text to standard output.
    bool waitForOutput(const std::string &text);

    void sendSignal(int signal);
    /// Kills the program.
    void kill();
    bool isRunning() const;
    qint64 processId() const { return m_process->processId(); }

    std::string output() const { return m_output.toStdString(); }
    std::string error() const { return m_error.toStdString(); }
    /// The lines of standard output.
    std::vector<std::string> lines() const;

private:
    void collect();

    const QString m_file;
    const std::unique_ptr<QProcess> m_process;
    QByteArray m_output;
    QByteArray m_error;
};
