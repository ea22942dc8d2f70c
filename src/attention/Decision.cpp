// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/Decision.h"

#include <utility>

namespace {
QString reasonOf(DoNotDisturbSettings::Silence silence)
{
    using Silence = DoNotDisturbSettings::Silence;
    const QString reason = QStringLiteral("do-not-disturb is on");
    switch (silence) {
    case Silence::Sound:
        return reason + QStringLiteral(" and silences sounds and speech");
    case Silence::Message:
        return reason + QStringLiteral(" and hides messages");
    case Silence::Both:
        break;
    }
    return reason;
}
} // namespace

Decision Decision::of(const AttentionInput &input, const Rules &rules,
                      const DoNotDisturb &doNotDisturb)
{
    return by(rules.matching(input), input, rules, doNotDisturb);
}

std::optional<Decision> Decision::atOnce(const AttentionInput &input, const Rules &rules,
                                         const DoNotDisturb &doNotDisturb)
{
    auto matching = rules.matchingAtOnce(input);
    return matching ? std::optional(by(std::move(*matching), input, rules, doNotDisturb))
                    : std::nullopt;
}

Decision Decision::by(std::vector<std::size_t> matching, AttentionInput input, const Rules &rules,
                      const DoNotDisturb &doNotDisturb)
{
    Decision decision;
    decision.treatment = rules.treatment(matching);
    decision.rules = std::move(matching);
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
    const auto silence = doNotDisturb.settings().silence;
    decision.silence(silence);
    decision.isQuiet = true;
    decision.reason = reasonOf(silence);
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
