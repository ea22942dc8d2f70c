// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/Decision.h"

Decision Decision::of(AttentionInput input, const Rules &rules, const DoNotDisturb &doNotDisturb)
{
    Decision decision;
    decision.treatment =
        rules.apply(input, [&decision](std::size_t index) { decision.rules.push_back(index); });
    const Treatment &treatment = decision.treatment;
    // From here on, the priority that the rules give it counts.
    input.priority = treatment.priority.value_or(input.priority);
    decision.priority = input.priority;
    decision.isShown = !treatment.hide.value_or(false);
    decision.isHeard = !treatment.mute.value_or(false);
    decision.isSpoken = treatment.speak.value_or(false);
    if (!decision.isShown || !decision.isHeard) {
        decision.reason = QStringLiteral("a rule");
    }
    if (treatment.drop.value_or(false)) {
        decision.silence(QStringLiteral("a rule"));
        return decision;
    }
    if (!doNotDisturb.isOn(input.time)) {
        return decision;
    }
    const QString passing = treatment.pass.value_or(false) ? QStringLiteral("a rule lets it pass")
                                                           : doNotDisturb.passes(input);
    if (!passing.isEmpty()) {
        decision.reason = QStringLiteral("do-not-disturb is on, but ") + passing;
        return decision;
    }
    decision.silence(doNotDisturb.settings().silence);
    decision.isQuiet = true;
    decision.reason = QStringLiteral("do-not-disturb is on");
    return decision;
}

int Decision::timeout(int requested) const
{
    return treatment.mustSee.value_or(false) ? 0 : treatment.timeout.value_or(requested);
}

void Decision::silence(const QString &why)
{
    silence(DoNotDisturbSettings::Silence::Both);
    reason = why;
}

void Decision::silence(DoNotDisturbSettings::Silence silence)
{
    using Silence = DoNotDisturbSettings::Silence;
    if (silence != Silence::Sound) {
        isShown = false;
    }
    if (silence != Silence::Message) {
        isHeard = false;
        isSpoken = false;
    }
}
