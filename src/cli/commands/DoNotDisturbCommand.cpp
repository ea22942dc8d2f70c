// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/DoNotDisturbCommand.h"

#include "cli/commands/AttentionState.h"
#include "cli/Moment.h"

void DoNotDisturbCommand::start()
{
    const bool isUntil = options().state == "until";
    const QString text = QString::fromStdString(options().until);
    if (isUntil == text.isEmpty()) {
        fail(ExitCode::Usage, isUntil ? QStringLiteral("until needs a time, such as 07:00 or 2h")
                                      : QStringLiteral("only until takes a time"));
        return;
    }
    if (options().state.empty()) {
        read();
        return;
    }
    TavoAttentionDoNotDisturb choice;
    choice.setOn(options().state != "off");
    if (isUntil) {
        const auto moment = momentFromText(text, QDateTime::currentDateTime());
        if (const auto *failure = std::get_if<Failure>(&moment)) {
            fail(ExitCode::Usage, failure->reason);
            return;
        }
        choice.setUntil(std::get<QDateTime>(moment).toMSecsSinceEpoch());
    }
    choose(choice);
}

void DoNotDisturbCommand::choose(const TavoAttentionDoNotDisturb &choice)
{
    const CMPath path = TavoAttentionSetDoNotDisturbPath();
    onAnswer<QVariant>(client().call(path, TavoValue().setAttentionDoNotDisturb(choice)), path,
                       [this](const QVariant &) { read(); });
}

void DoNotDisturbCommand::read()
{
    const CMPath path = TavoAttentionDoNotDisturbPath();
    onAnswer<QVariant>(client().getValue(path), path, [this](const QVariant &value) {
        const auto state = TavoValue(value.toHash()).attentionDoNotDisturb();
        print(state.fields(), doNotDisturbText(state));
        finish(ExitCode::Ok);
    });
}
