// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/AttentionState.h"

#include "base/Printable.h"
#include "cli/Moment.h"

#include <memory>

namespace {
constexpr int maxTextLength = 100;

QString inhibitionText(const TavoAttentionInhibition &inhibition)
{
    const QString application = printable(shortened(inhibition.application(), maxTextLength));
    const QString reason = printable(shortened(inhibition.reason(), maxTextLength));
    return QStringLiteral("for ") +
           (reason.isEmpty() ? application : application + QStringLiteral(": ") + reason);
}

/// What is still read.
struct Reading
{
    AttentionState state;
    CMError error;
    int pending = 0;
};
} // namespace

QVariantHash AttentionState::toHash() const
{
    return {
        {QStringLiteral("doNotDisturb"), doNotDisturb.__variant()},
        {QStringLiteral("rules"), QVariantHash{{QStringLiteral("file"), rules.file()},
                                               {QStringLiteral("read"), rules.isRead()},
                                               {QStringLiteral("error"), rules.error()},
                                               {QStringLiteral("count"), rules.rules().size()}}},
        {QStringLiteral("history"), history.__variant()},
        {QStringLiteral("missed"), missed}};
}

void readAttention(TavoClient &client, QObject *context, const AttentionReceiver &receiver)
{
    using Take = void (*)(AttentionState &, const TavoValue &);
    static const std::pair<CMPath, Take> s_parts[] = {
        {TavoAttentionDoNotDisturbPath(),
         [](AttentionState &state, const TavoValue &value) {
             state.doNotDisturb = value.attentionDoNotDisturb();
         }},
        {TavoAttentionRulesPath(),
         [](AttentionState &state, const TavoValue &value) {
             state.rules = value.attentionRules();
         }},
        {TavoAttentionHistoryStatePath(),
         [](AttentionState &state, const TavoValue &value) {
             state.history = value.attentionHistory();
         }},
        {TavoAttentionMissedPath(),
         [](AttentionState &state, const TavoValue &value) { state.missed = value.int_(); }}};
    const auto reading = std::make_shared<Reading>();
    for (const auto &[path, take] : s_parts) {
        ++reading->pending;
        client.getValue(path).onFinished(
            context, [reading, take = take, receiver](const CMReply<QVariant> &answer) {
                if (answer.error().isError()) {
                    reading->error = answer.error();
                } else {
                    take(reading->state, TavoValue(answer.value().toHash()));
                }
                if (--reading->pending == 0) {
                    receiver(reading->state, reading->error);
                }
            });
    }
}

QString doNotDisturbText(const TavoAttentionDoNotDisturb &state)
{
    QString text = state.on() ? QStringLiteral("on") : QStringLiteral("off");
    if (state.until() != 0) {
        const auto until = QDateTime::fromMSecsSinceEpoch(state.until());
        text += QStringLiteral(" until ") + momentText(until, QDateTime::currentDateTime());
    }
    QStringList reasons;
    if (state.chosen()) {
        reasons.append(QStringLiteral("chosen"));
    }
    for (int index = 0; index < state.inhibitions().size(); ++index) {
        reasons.append(inhibitionText(state.inhibitions().at(index)));
    }
    if (reasons.isEmpty() && (state.on() || state.until() != 0)) {
        reasons.append(QStringLiteral("by the schedule"));
    }
    return reasons.isEmpty()
               ? text
               : QStringLiteral("%1 (%2)").arg(text, reasons.join(QStringLiteral("; ")));
}
