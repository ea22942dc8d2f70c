// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/Command.h"

#include "cli/commands/ErrorText.h"

void Command::print(const QVariant &json, const QString &text)
{
    if (m_options.json) {
        m_terminal.printJson(toJson(json, JsonForm::Indented));
    } else {
        m_terminal.print(text);
    }
}

void Command::finish(ExitCode code)
{
    if (m_isFinished) {
        return;
    }
    m_isFinished = true;
    m_terminal.endLive();
    Q_EMIT finished(static_cast<int>(code));
}

void Command::finishBySignal(int signal)
{
    finish(ExitCode(static_cast<int>(ExitCode::SignalBase) + signal));
}

void Command::fail(ExitCode code, const QString &text)
{
    if (!m_isFinished) {
        m_terminal.printError(text);
        finish(code);
    }
}

void Command::fail(const CMError &error, const CMPath &path)
{
    fail(exitCodeOf(error), errorText(error, path, QString::fromStdString(m_options.bus)));
}

CMPath Command::typedPath()
{
    const QString text = QString::fromStdString(m_options.path);
    if (!text.startsWith(QLatin1Char('/'))) {
        fail(ExitCode::Usage, QStringLiteral("%1 is not a path: it must begin with a slash, like "
                                             "those that tavo tree lists")
                                  .arg(text));
        return {};
    }
    return CMPath(text);
}
