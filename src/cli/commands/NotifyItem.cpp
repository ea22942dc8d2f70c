// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/NotifyItem.h"

#include "cli/commands/SoundSource.h"
#include "cli/Priority.h"

namespace {
constexpr int defaultTimeoutMs = 5000;

TavoList<TavoAttentionAction> actionsOf(const Options &options)
{
    TavoList<TavoAttentionAction> actions;
    for (const std::string &text : options.actions) {
        const QString action = QString::fromStdString(text);
        actions.append(TavoAttentionAction()
                           .setKey(action.section(QLatin1Char('='), 0, 0))
                           .setLabel(action.section(QLatin1Char('='), 1)));
    }
    return actions;
}
} // namespace

Result<TavoAttentionItem, ExitFailure> notifyItem(const Options &options)
{
    auto item = TavoAttentionItem()
                    .setId(QString::fromStdString(options.id))
                    .setTitle(QString::fromStdString(options.title))
                    .setText(QString::fromStdString(options.message))
                    .setApplication(QString::fromStdString(options.application))
                    .setSource(QString::fromStdString(options.source))
                    .setIcon(QString::fromStdString(options.icon))
                    .setCategory(QString::fromStdString(options.category))
                    .setGroup(QString::fromStdString(options.group))
                    .setPriority(*priorityFromText(options.priority))
                    .setTimeout(options.timeout < 0 ? defaultTimeoutMs : options.timeout)
                    .setSpeech(QString::fromStdString(options.speech))
                    .setLanguage(QString::fromStdString(options.language))
                    .setActions(actionsOf(options))
                    .setTransient(options.isTransient);
    if (options.file.empty()) {
        return item;
    }
    const auto source = soundSource(options);
    if (const auto *failure = std::get_if<ExitFailure>(&source)) {
        return *failure;
    }
    return item.setSound(TavoNotificationPlayerItem()
                             .setType(std::get<SoundSource>(source).type)
                             .setContent(std::get<SoundSource>(source).content));
}
