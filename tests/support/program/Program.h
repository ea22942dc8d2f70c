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

/// A program that a test runs as a process, and what it writes.
///
/// Thread: the test's, which needs a QCoreApplication. One that still runs when this is destroyed is
/// killed, and when the test's process ends as well.
class Program
{
public:
    explicit Program(const QString &file);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    void setEnvironment(const QString &variable, const QString &value);
    void setFolder(const QString &folder);

    /// Starts it; what is written to its input is followed by the input's end.
    void start(const QStringList &arguments, const QByteArray &input = {});

    /// Waits until it ends; gives the exit code, or -1 when it crashed, went on or was not there.
    int waitForExit();

    /// Starts it and waits for its end.
    int run(const QStringList &arguments, const QByteArray &input = {});

    /// Waits until the text stands in what it wrote on standard output.
    bool waitForOutput(const std::string &text);

    void sendSignal(int signal);
    /// Ends it at once, whatever it is doing.
    void kill();
    bool isRunning() const;

    std::string output() const { return m_output.toStdString(); }
    std::string error() const { return m_error.toStdString(); }
    /// The lines of its output.
    std::vector<std::string> lines() const;

private:
    void collect();

    const QString m_file;
    const std::unique_ptr<QProcess> m_process;
    QByteArray m_output;
    QByteArray m_error;
};
