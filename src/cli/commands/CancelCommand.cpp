// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/CancelCommand.h"

#include "cli/commands/ErrorText.h"

namespace {
/// Whether the player has no such sound: it refuses a cancel only for that reason.
bool isUnknownSound(const CMError &error)
{
    return error.name() == QLatin1String("Notifications");
}

bool isNumber(const QString &text)
{
    bool isOne = false;
    text.toUInt(&isOne);
    return isOne;
}
} // namespace

void CancelCommand::start()
{
    if (id().startsWith(QLatin1Char('/'))) {
        cancelMessage(CMPath(id()));
    } else if (isNumber(id())) {
        cancelByNumber(id().toUInt());
    } else {
        cancelSound();
    }
}

void CancelCommand::cancelMessage(const CMPath &path)
{
    // Checked first: the host logs a warning when there is nothing to cancel.
    const CMPath queue = TavoNotificationDisplayQueuePath();
    onAnswer<int>(client().matchRow(queue, path.toQVariant()), queue, [this, path](const int &row) {
        if (row < 0) {
            fail(ExitCode::Refused,
                 QStringLiteral("no message is open at %1. tavo list shows the open ones")
                     .arg(id()));
            return;
        }
        onAnswer<QVariant>(client().cancelMessage(path), TavoNotificationDisplayCancelNotifyPath(),
                           [this](const QVariant &) { succeed(QStringLiteral("message")); });
    });
}

void CancelCommand::cancelByNumber(uint number)
{
    m_messages.close(number).onFinished(this, [this](const CMReply<bool> &answer) {
        if (!answer.error().isError()) {
            succeed(QStringLiteral("message"));
        } else if (exitCodeOf(answer.error()) == ExitCode::Refused) {
            cancelSound();
        } else {
            fail(answer.error());
        }
    });
}

void CancelCommand::cancelSound()
{
    client().cancelSound(id()).onFinished(this, [this](const CMReply<QVariant> &answer) {
        if (!answer.error().isError()) {
            succeed(QStringLiteral("sound"));
        } else if (!isUnknownSound(answer.error())) {
            fail(answer.error(), TavoNotificationPlayerCancelPath());
        } else if (isNumber(id())) {
            fail(ExitCode::Refused,
                 QStringLiteral("there is neither a message nor a sound %1").arg(id()));
        } else {
            fail(ExitCode::Refused,
                 QStringLiteral(
                     "no sound that plays or waits has the id %1. To close a message, use "
                     "its number or path, which tavo list shows")
                     .arg(id()));
        }
    });
}

void CancelCommand::succeed(const QString &kind)
{
    if (options().json) {
        terminal().printJson(
            toJson(QVariantHash{{QStringLiteral("cancelled"), kind}, {QStringLiteral("id"), id()}},
                   JsonForm::Indented));
    }
    finish(ExitCode::Ok);
}
