// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/Rule.h"

#include "attention/GroupFromKey.h"
#include "attention/PriorityKey.h"

#include <algorithm>

namespace {
/// Of a title and text together. What comes later does not count for conditions.
constexpr int maxExaminedLength = 4096;

constexpr int maxPatternLength = 1000;
constexpr int maxTimeoutMs = 86400000;
constexpr int maxAttenuation = 96; // dB; with 16 bits a sample, nothing is left

/// Stops a search that tries too many ways to match.
const QString patternLimit = QStringLiteral("(*LIMIT_MATCH=10000)");

bool isLetterAt(const QString &text, int index)
{
    return index >= 0 && index < text.size() && text.at(index).isLetterOrNumber();
}

bool hasWord(const QString &text, const QString &word)
{
    int index = text.indexOf(word, 0, Qt::CaseInsensitive);
    while (index >= 0) {
        if (!isLetterAt(text, index - 1) && !isLetterAt(text, index + word.size())) {
            return true;
        }
        index = text.indexOf(word, index + 1, Qt::CaseInsensitive);
    }
    return false;
}

bool hasWords(const QString &text, const QStringList &words)
{
    return std::all_of(words.begin(), words.end(),
                       [&text](const QString &word) { return hasWord(text, word); });
}

std::optional<QRegularExpression> readPattern(TavoConfiguration &configuration, const QString &key,
                                              const QString &text)
{
    if (text.isEmpty()) {
        return std::nullopt;
    }
    if (text.size() > maxPatternLength) {
        configuration.fail(key,
                           QStringLiteral("must have at most %1 characters").arg(maxPatternLength));
    }
    QRegularExpression pattern = Rule::expression(patternLimit, text);
    if (!pattern.isValid()) {
        configuration.fail(key, QStringLiteral("%1 at character %2")
                                    .arg(pattern.errorString())
                                    .arg(pattern.patternErrorOffset() - patternLimit.size() + 1));
    }
    pattern.optimize();
    return pattern;
}

std::optional<QString> readString(TavoConfiguration &configuration, const QString &key)
{
    const QString text = configuration.string(key, QString());
    return text.isNull() ? std::nullopt : std::optional(text);
}

std::optional<int> readInteger(TavoConfiguration &configuration, const QString &key, int max)
{
    const int number = configuration.integer(key, -1, 0, max);
    return number < 0 ? std::nullopt : std::optional(number);
}

std::optional<bool> readBoolean(TavoConfiguration &configuration, const QString &key)
{
    return configuration.keys().contains(key) ? std::optional(configuration.boolean(key, false))
                                              : std::nullopt;
}
} // namespace

Rule Rule::read(TavoConfiguration &configuration, const QTimeZone &zone)
{
    Rule rule;
    const QString nameKey = QStringLiteral("name");
    rule.m_name = configuration.string(nameKey, QString());
    if (rule.m_name.isEmpty()) {
        configuration.fail(nameKey, QStringLiteral("must name the rule"));
    }
    rule.readConditions(configuration.section(QStringLiteral("when")), zone);
    rule.readTreatment(configuration.section(QStringLiteral("then")));
    configuration.finish();
    return rule;
}

void Rule::readConditions(TavoConfiguration configuration, const QTimeZone &zone)
{
    m_sources = NamePatterns::read(configuration, QStringLiteral("source"));
    m_categories = NamePatterns::read(configuration, QStringLiteral("category"));
    m_minPriority = readPriority(configuration, QStringLiteral("minPriority"));
    const QString maxPriorityKey = QStringLiteral("maxPriority");
    m_maxPriority = readPriority(configuration, maxPriorityKey);
    if (m_minPriority && m_maxPriority && *m_maxPriority < *m_minPriority) {
        configuration.fail(maxPriorityKey, QStringLiteral("must not be below minPriority"));
    }
    m_words = configuration.stringList(QStringLiteral("words"), {});
    m_words.removeAll(QString());
    const QString patternKey = QStringLiteral("pattern");
    m_patternText = configuration.string(patternKey, QString());
    m_pattern = readPattern(configuration, patternKey, m_patternText);
    m_times = WeeklyTimes::read(configuration, QStringLiteral("times"), zone);
    configuration.finish();
}

void Rule::readTreatment(TavoConfiguration configuration)
{
    m_treatment.priority = readPriority(configuration, QStringLiteral("priority"));
    m_treatment.timeout = readInteger(configuration, QStringLiteral("timeout"), maxTimeoutMs);
    m_treatment.sound = readString(configuration, QStringLiteral("sound"));
    m_treatment.attenuation =
        readInteger(configuration, QStringLiteral("attenuation"), maxAttenuation);
    m_treatment.group = readString(configuration, QStringLiteral("group"));
    m_treatment.groupFrom = readGroupFrom(configuration);
    m_treatment.chime = readString(configuration, QStringLiteral("chime"));
    m_treatment.mute = readBoolean(configuration, QStringLiteral("mute"));
    m_treatment.hide = readBoolean(configuration, QStringLiteral("hide"));
    m_treatment.drop = readBoolean(configuration, QStringLiteral("drop"));
    m_treatment.speak = readBoolean(configuration, QStringLiteral("speak"));
    m_treatment.pass = readBoolean(configuration, QStringLiteral("pass"));
    m_treatment.isPrivate = readBoolean(configuration, QStringLiteral("private"));
    m_treatment.mustSee = readBoolean(configuration, QStringLiteral("mustSee"));
    configuration.finish();
}

QRegularExpression Rule::expression(const QString &limit, const QString &pattern)
{
    return QRegularExpression(limit + pattern, QRegularExpression::CaseInsensitiveOption |
                                                   QRegularExpression::UseUnicodePropertiesOption);
}

QString Rule::examinedText(const AttentionInput &input)
{
    QString text;
    text.reserve(std::min(input.title.size() + 1 + input.text.size(), maxExaminedLength));
    text.append(input.title.leftRef(maxExaminedLength));
    if (text.size() < maxExaminedLength) {
        text.append(QLatin1Char('\n'));
        text.append(input.text.leftRef(maxExaminedLength - text.size()));
    }
    return text;
}

std::optional<Rule::Condition> Rule::unmetCondition(const AttentionInput &input,
                                                    const QString &examined) const
{
    if (m_minPriority && input.priority < *m_minPriority) {
        return Condition::Priority;
    }
    if (m_maxPriority && input.priority > *m_maxPriority) {
        return Condition::Priority;
    }
    if (!m_sources.isEmpty() && !m_sources.match(input.source)) {
        return Condition::Source;
    }
    if (!m_categories.isEmpty() && !m_categories.match(input.category)) {
        return Condition::Category;
    }
    if (!m_times.isEmpty() && !m_times.contains(input.time)) {
        return Condition::Times;
    }
    if (!m_words.isEmpty() && !hasWords(examined, m_words)) {
        return Condition::Words;
    }
    if (m_pattern && !m_pattern->match(examined).hasMatch()) {
        return Condition::Pattern;
    }
    return std::nullopt;
}

QString Rule::mismatch(const AttentionInput &input) const
{
    const auto condition = unmetCondition(input, examinedText(input));
    if (!condition) {
        return {};
    }
    switch (*condition) {
    case Condition::Source:
        return QStringLiteral("source \"%1\" is not in %2").arg(input.source, m_sources.toString());
    case Condition::Category:
        return QStringLiteral("category \"%1\" is not in %2")
            .arg(input.category, m_categories.toString());
    case Condition::Priority:
        return QStringLiteral("priority %1 is out of range")
            .arg(TavoNotificationItemPriority::toString(input.priority));
    case Condition::Words:
        return QStringLiteral("not all words are in it: %1").arg(m_words.join(QLatin1String(", ")));
    case Condition::Pattern:
        return QStringLiteral("the pattern does not match, or takes too long");
    case Condition::Times:
        return QStringLiteral("it is another time");
    }
    return {};
}
