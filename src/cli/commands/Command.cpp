// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/Command.h"

#include "cli/commands/ErrorText.h"
#include <core/records/attention.h>

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
    // A path that a person has typed may be wrong; the module has those that the commands use.
    const bool isAttentionMissing = error.name() == CMErrors::noSuchNode() &&
                                    path.isBelow(TavoAttentionPath()) && m_options.path.empty();
    fail(exitCodeOf(error),
         isAttentionMissing
             ? QStringLiteral("this host does not run the module attention. Add \"attention\" to "
                              "\"modules\" in its configuration, and start it again")
             : errorText(error, path, QString::fromStdString(m_options.bus)));
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
