// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/DoNotDisturb.h"

#include "attention/PriorityKey.h"

#include <algorithm>
#include <numeric>

namespace {
/// Of remembered notifications. A source does not push out those of others, nor a user those of other users.
constexpr int maxRememberedTitles = 32;
constexpr int maxRememberedSources = 256;

constexpr int maxRepeatSeconds = 86400;
constexpr int msOfSecond = 1000;

DoNotDisturbSettings::Silence readSilence(TavoConfiguration &configuration)
{
    using Silence = DoNotDisturbSettings::Silence;
    const QString key = QStringLiteral("silence");
    const QString name = configuration.string(key, QStringLiteral("both"));
    if (name == QLatin1String("both")) {
        return Silence::Both;
    }
    if (name == QLatin1String("sound")) {
        return Silence::Sound;
    }
    if (name == QLatin1String("message")) {
        return Silence::Message;
    }
    configuration.fail(key, QStringLiteral("must be \"sound\", \"message\" or \"both\""));
}
} // namespace

DoNotDisturbSettings DoNotDisturbSettings::read(TavoConfiguration configuration,
                                                const QTimeZone &zone)
{
    DoNotDisturbSettings settings;
    settings.times = WeeklyTimes::read(configuration, QStringLiteral("times"), zone);
    settings.silence = readSilence(configuration);
    settings.passingPriority = readPriority(configuration, QStringLiteral("passPriority"))
                                   .value_or(settings.passingPriority);
    settings.passingSources = NamePatterns::read(configuration, QStringLiteral("passSources"));
    settings.repeatMs =
        msOfSecond * configuration.integer(QStringLiteral("passRepeatedWithin"),
                                           settings.repeatMs / msOfSecond, 0, maxRepeatSeconds);
    settings.hasSummary = configuration.boolean(QStringLiteral("summary"), settings.hasSummary);
    configuration.finish();
    return settings;
}

void DoNotDisturb::choose(const Choice &choice, qint64 now)
{
    m_choice = choice;
    if (!choice.isOn && choice.until == 0) {
        if (m_settings.times.contains(now)) {
            m_choice->until = m_settings.times.nextChange(now).value_or(0);
        } else {
            m_choice.reset();
        }
    }
}

std::optional<DoNotDisturb::Choice> DoNotDisturb::choice(qint64 now) const
{
    const bool isOver = m_choice && m_choice->until != 0 && m_choice->until <= now;
    return isOver ? std::nullopt : m_choice;
}

bool DoNotDisturb::isOn(qint64 now) const
{
    const auto chosen = choice(now);
    return m_isInhibited || (chosen ? chosen->isOn : m_settings.times.contains(now));
}

std::optional<qint64> DoNotDisturb::nextChange(qint64 now) const
{
    const auto chosen = choice(now);
    if (!chosen) {
        return m_settings.times.nextChange(now);
    }
    return chosen->until != 0 ? std::optional(chosen->until) : std::nullopt;
}

QString DoNotDisturb::passes(const AttentionInput &input) const
{
    if (input.priority >= m_settings.passingPriority) {
        return QStringLiteral("its priority passes");
    }
    if (m_settings.passingSources.match(input.source)) {
        return QStringLiteral("its source passes");
    }
    const bool isRepeated =
        std::any_of(m_lastTimes.cbegin(), m_lastTimes.cend(), [&](const Sources &sources) {
            const Times times = sources.value(input.source);
            const auto last = times.find(input.title);
            return last != times.end() && *last <= input.time &&
                   input.time - *last <= m_settings.repeatMs;
        });
    return isRepeated ? QStringLiteral("it came a second time") : QString();
}

void DoNotDisturb::remember(const AttentionInput &input)
{
    // What has no title can't be told from others of its source.
    if (m_settings.repeatMs == 0 || input.title.isEmpty()) {
        return;
    }
    Times &times = m_lastTimes[input.user][input.source];
    if (times.size() >= maxRememberedTitles && !times.contains(input.title)) {
        times.erase(std::min_element(times.begin(), times.end()));
    }
    times.insert(input.title, input.time);
    forgetTooMany();
}

void DoNotDisturb::forgetTooMany()
{
    const auto bySize = [](const Sources &left, const Sources &right) {
        return left.size() < right.size();
    };
    const auto byTime = [](const Times &left, const Times &right) {
        return *std::max_element(left.begin(), left.end()) <
               *std::max_element(right.begin(), right.end());
    };
    const int all =
        std::accumulate(m_lastTimes.begin(), m_lastTimes.end(), 0,
                        [](int sum, const Sources &sources) { return sum + sources.size(); });
    if (all <= maxRememberedSources) {
        return;
    }
    const auto most = std::max_element(m_lastTimes.begin(), m_lastTimes.end(), bySize);
    most->erase(std::min_element(most->begin(), most->end(), byTime));
    if (most->isEmpty()) {
        m_lastTimes.erase(most);
    }
}
