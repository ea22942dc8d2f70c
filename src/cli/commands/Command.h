// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Json.h"
#include "cli/ExitCode.h"
#include "cli/Options.h"
#include "cli/output/Terminal.h"
#include <client/TavoClient.h>

#include <QObject>

#include <functional>
#include <memory>

/// Carries out a command: sends requests to the host, prints, and finishes with an exit code.
///
/// Thread: the main thread. The constructor's arguments must outlive the command.
class Command : public QObject
{
    Q_OBJECT

public:
    Command(const Options &options, TavoClient &client, Terminal &terminal)
        : m_options(options)
        , m_client(client)
        , m_terminal(terminal)
    {
    }

    static std::unique_ptr<Command> create(const Options &options, TavoClient &client,
                                           Terminal &terminal);

    virtual void start() = 0;

    /// Called once, for the first SIGINT or SIGTERM.
    virtual void interrupt(int signal) { finishBySignal(signal); }

Q_SIGNALS:
    /// Emitted once; nothing is printed afterwards.
    void finished(int code);

protected:
    const Options &options() const { return m_options; }
    TavoClient &client() { return m_client; }
    Terminal &terminal() { return m_terminal; }

    /// Prints the value with --json, else the text.
    void print(const QVariant &json, const QString &text);

    bool isFinished() const { return m_isFinished; }
    void finish(ExitCode code);
    void finishBySignal(int signal);

    /// Prints an error, and finishes.
    void fail(ExitCode code, const QString &text);
    /// The same for an error of the client. The path is the request's, if it has one.
    void fail(const CMError &error, const CMPath &path = {});

    /// Calls the function with the reply's value; fails on an error.
    template <typename T>
    void onAnswer(const CMReply<T> &reply, const CMPath &path, std::function<void(const T &)> use)
    {
        reply.onFinished(this, [this, path, use](const CMReply<T> &answer) {
            if (answer.error().isError()) {
                fail(answer.error(), path);
            } else {
                use(answer.value());
            }
        });
    }

    /// The path argument. If it is not a valid path, fails and returns an empty one.
    CMPath typedPath();

private:
    const Options &m_options;
    TavoClient &m_client;
    Terminal &m_terminal;
    bool m_isFinished = false;
};
