// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The file with people's rules and do-not-disturb: any text. The result is an error that names file and
// line, or settings whose decisions agree with each other.

#include "core/base/stream.h"
#include "fuzz/support/Fuzz.h"

#include <QDateTime>
#include <QJsonDocument>

#include <attention/AttentionSettings.h>
#include <attention/Decision.h>
#include <stdexcept>

namespace {
using Priority = TavoNotificationItemPriority;

const QString file = QStringLiteral("/etc/tavo/attention.json");

// 2026-03-28 and 2026-10-24, 12:00 UTC: clocks change in the following night.
constexpr qint64 beforeSummer = 1774699200000;
constexpr qint64 beforeWinter = 1792843200000;
constexpr qint64 msOfHour = 3600000;

/// Names file and line, and has a reason.
void checkError(const QString &text)
{
    FUZZ_CHECK(text.startsWith(file + QLatin1Char(':')), text);
    const QString line = text.mid(file.size() + 1).section(QLatin1Char(':'), 0, 0);
    FUZZ_CHECK(line.toInt() > 0, text);
    FUZZ_CHECK(!text.section(QLatin1String(": "), 1).trimmed().isEmpty(), text);
}

/// Nothing changes before the time of the next change, and it does change then.
void checkChanges(const DoNotDisturb &quiet, qint64 now)
{
    const bool isOn = quiet.isOn(now);
    const auto next = quiet.nextChange(now);
    if (!next) {
        FUZZ_CHECK(quiet.isOn(now + 24 * 7 * msOfHour) == isOn, now);
        return;
    }
    FUZZ_CHECK(*next > now, *next - now);
    FUZZ_CHECK(quiet.isOn(*next) != isOn, *next);
    FUZZ_CHECK(quiet.isOn(*next - 1) == isOn, *next);
    FUZZ_CHECK(quiet.isOn(now + (*next - now) / 2) == isOn, *next);
}

void checkTreatment(const Treatment &treatment)
{
    FUZZ_CHECK(treatment.timeout.value_or(0) >= 0, *treatment.timeout);
    FUZZ_CHECK(treatment.groupFrom.value_or(0) >= 0 && treatment.groupFrom.value_or(0) != 1,
               *treatment.groupFrom);
}

void checkDecision(const AttentionInput &input, const AttentionSettings &settings,
                   const DoNotDisturb &quiet)
{
    const Decision decision = Decision::of(input, settings.rules, quiet);
    std::size_t applied = 0;
    for (std::size_t index = 0; index < settings.rules.list().size(); ++index) {
        const Rule &rule = settings.rules.list()[index];
        const bool matches = rule.matches(input);
        FUZZ_CHECK(rule.mismatch(input).isEmpty() == matches, rule.name());
        const bool counts = matches && !(settings.rules.isOnlyFirst() && applied > 0);
        if (counts) {
            FUZZ_CHECK(decision.rules.at(applied) == index, rule.name());
            ++applied;
        }
    }
    FUZZ_CHECK(decision.rules.size() == applied, applied);
    checkTreatment(decision.treatment);
    FUZZ_CHECK(!decision.treatment.drop.value_or(false) || decision.isKept(), "dropped and shown");
    FUZZ_CHECK(!decision.isQuiet || quiet.isOn(input.time), "quiet when it is not on");
    FUZZ_CHECK(decision.timeout(1000) >= 0, decision.timeout(1000));
    FUZZ_CHECK(!decision.isKept() || !decision.reason.isEmpty(), "kept without a reason");
}

void use(const AttentionSettings &settings, const QString &text)
{
    FUZZ_CHECK(settings.rate.count > 0 && settings.rate.periodMs > 0, settings.rate.count);
    FUZZ_CHECK(settings.groupFrom >= 0, settings.groupFrom);
    DoNotDisturb quiet(settings.doNotDisturb);
    AttentionInput input;
    input.source = QStringLiteral("mail");
    input.category = QStringLiteral("email.arrived");
    input.title = text.left(40);
    input.text = text;
    for (const qint64 begin : {beforeSummer, beforeWinter}) {
        for (int hour = 0; hour < 24; hour += 5) {
            input.time = begin + hour * msOfHour;
            checkChanges(quiet, input.time);
        }
        checkDecision(input, settings, quiet);
        input.priority = Priority::Urgent;
        quiet.remember(input);
    }
}
} // namespace

// As in fuzz_host_configuration: Qt's JSON parser leaks objects of broken texts.
extern "C" int __lsan_is_turned_off() // NOLINT(bugprone-reserved-identifier)
{
    return 1;
}

void fuzzOne(ByteReader &input)
{
    const QByteArray json = input.rest();
    try {
        use(AttentionSettings::fromJson(json, file), QString::fromUtf8(json));
    } catch (const std::runtime_error &error) {
        checkError(QString::fromStdString(error.what()));
    }
}
