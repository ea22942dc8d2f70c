// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/ExitCode.h"
#include "cli/Options.h"
#include "cli/output/Json.h"
#include "cli/output/Terminal.h"
#include <client/TavoClient.h>

#include <QObject>

#include <functional>
#include <memory>

/// One command at work: asks the host, prints, and says with which code the program is to end.
///
/// Thread: the main thread, with its event loop. What it uses outlives it.
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

    /// The command that the options name.
    static std::unique_ptr<Command> create(const Options &options, TavoClient &client,
                                           Terminal &terminal);

    virtual void start() = 0;

    /// A signal asks the program to end; comes once.
    virtual void interrupt(int signal) { finishBySignal(signal); }

Q_SIGNALS:
    /// Once; nothing is printed after it.
    void finished(int code);

protected:
    const Options &options() const { return m_options; }
    TavoClient &client() { return m_client; }
    Terminal &terminal() { return m_terminal; }

    /// Prints the value as JSON where that was asked for, and as the text for people elsewhere.
    void print(const QVariant &json, const QString &text);

    bool isFinished() const { return m_isFinished; }
    void finish(ExitCode code);
    void finishBySignal(int signal);

    /// Prints one line about what went wrong and finishes.
    void fail(ExitCode code, const QString &text);
    /// The same for an error; the path is what was asked for, if anything.
    void fail(const CMError &error, const CMPath &path = {});

    /// Calls the function with the good answer; any error ends the program.
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

    /// The path that was typed; finishes and gives the empty one when it is none.
    CMPath typedPath();

private:
    const Options &m_options;
    TavoClient &m_client;
    Terminal &m_terminal;
    bool m_isFinished = false;
};
