// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/CancelCommand.h"

#include "cli/commands/ErrorText.h"

void CancelCommand::start()
{
    const QString id = QString::fromStdString(options().id);
    if (!id.startsWith(QLatin1Char('/'))) {
        cancelSound(id);
        return;
    }
    onAnswer<QVariant>(client().cancelMessage(CMPath(id)),
                       TavoNotificationDisplayCancelNotifyPath(),
                       [this](const QVariant &) { succeed(QStringLiteral("message")); });
}

void CancelCommand::cancelSound(const QString &id)
{
    client().cancelSound(id).onFinished(this, [this, id](const CMReply<QVariant> &answer) {
        if (!answer.error().isError()) {
            succeed(QStringLiteral("sound"));
            return;
        }
        bool isNumber = false;
        const uint number = id.toUInt(&isNumber);
        if (isNumber && exitCodeOf(answer.error()) == ExitCode::Refused) {
            closeMessage(number);
        } else {
            fail(answer.error(), TavoNotificationPlayerCancelPath());
        }
    });
}

void CancelCommand::closeMessage(uint number)
{
    m_messages.close(number).onFinished(this, [this, number](const CMReply<bool> &answer) {
        if (!answer.error().isError()) {
            succeed(QStringLiteral("message"));
        } else if (exitCodeOf(answer.error()) != ExitCode::Refused) {
            fail(answer.error());
        } else {
            fail(ExitCode::Refused,
                 QStringLiteral("there is neither a sound nor a message %1").arg(number));
        }
    });
}

void CancelCommand::succeed(const QString &kind)
{
    if (options().json) {
        terminal().printJson(
            toJson(QVariantHash{{QStringLiteral("cancelled"), kind},
                                {QStringLiteral("id"), QString::fromStdString(options().id)}},
                   JsonForm::Indented));
    }
    finish(ExitCode::Ok);
}
