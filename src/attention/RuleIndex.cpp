// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/RuleIndex.h"

#include "attention/Rule.h"

#include <algorithm>

namespace {
/// Of a text that all patterns together search in some milliseconds, however bad they are.
constexpr int maxQuickLength = 1024;

/// Fewer than for a rule alone: where this search is given up, the rules are looked at one by one.
const QString searchLimit = QStringLiteral("(*LIMIT_MATCH=1000)");

/// That need no more memory.
constexpr std::size_t usualCandidates = 8;

/// Not a letter, but in any case the same as one.
constexpr ushort iotaBelow = 0x345;

/// The hash of what has been added, in any case.
class FoldedHash
{
public:
    void add(QChar character)
    {
        constexpr quint32 prime = 16777619;
        m_hash = (m_hash ^ folded(character)) * prime;
    }

    quint32 value() const { return m_hash; }

    static quint32 of(const QString &text)
    {
        FoldedHash hash;
        for (const QChar character : text) {
            hash.add(character);
        }
        return hash.value();
    }

private:
    static ushort folded(QChar character)
    {
        const ushort code = character.unicode();
        if (code < 128) { // as below, but quicker
            return code >= 'A' && code <= 'Z' ? code + ('a' - 'A') : code;
        }
        // Case is a property of both halves together.
        return character.isSurrogate() ? 0 : character.toCaseFolded().unicode();
    }

    static constexpr quint32 emptyHash = 2166136261;
    quint32 m_hash = emptyHash;
};

/// Whether the pattern means the same as one of several alternatives: it does not refer to its groups by
/// number or name, and nothing in it reaches beyond its end.
bool isIndependent(const QString &pattern)
{
    for (int i = 0; i < pattern.size(); ++i) {
        const QChar next = i + 1 < pattern.size() ? pattern.at(i + 1) : QChar();
        if (pattern.at(i) == QLatin1Char('\\')) {
            if (next.isLetterOrNumber() && !QStringLiteral("bBdDsSwWnrt").contains(next)) {
                return false;
            }
            ++i;
        } else if (pattern.at(i) == QLatin1Char('(') && next == QLatin1Char('*')) {
            return false;
        } else if (pattern.at(i) == QLatin1Char('(') && next == QLatin1Char('?')) {
            const QChar kind = i + 2 < pattern.size() ? pattern.at(i + 2) : QChar();
            if (!QStringLiteral(":=!m").contains(kind)) {
                return false;
            }
        }
    }
    return true;
}

/// Whether the pattern matches only at the beginning of a text. False if that is hard to tell.
bool isAnchored(const QString &pattern)
{
    const bool isPlain =
        !pattern.contains(QLatin1Char('\\')) && !pattern.contains(QLatin1Char('['));
    int depth = 0;
    for (const QChar character : pattern) {
        depth += int(character == QLatin1Char('(')) - int(character == QLatin1Char(')'));
        if (character == QLatin1Char('|') && (depth == 0 || !isPlain)) {
            return false;
        }
    }
    return pattern.startsWith(QLatin1Char('^')) && !pattern.contains(QLatin1String("(?m"));
}
} // namespace

void RuleIndex::Names::add(const QStringList &patterns, std::size_t rule)
{
    for (const QString &pattern : patterns) {
        if (pattern.endsWith(QLatin1Char('*'))) {
            const QString beginning = pattern.left(pattern.size() - 1);
            beginnings.emplace(FoldedHash::of(beginning), rule);
            lengths.insert(beginning.size());
        } else {
            whole.emplace(FoldedHash::of(pattern), rule);
        }
    }
}

void RuleIndex::Names::find(const QString &name, Indexes &found) const
{
    if (whole.empty() && beginnings.empty()) {
        return;
    }
    FoldedHash hash;
    int length = 0;
    for (const int next : lengths) {
        if (next > name.size()) {
            break;
        }
        for (; length < next; ++length) {
            hash.add(name.at(length));
        }
        RuleIndex::find(beginnings, hash.value(), found);
    }
    for (; length < name.size(); ++length) {
        hash.add(name.at(length));
    }
    RuleIndex::find(whole, hash.value(), found);
}

void RuleIndex::find(const Table &table, quint32 hash, Indexes &found)
{
    const auto [begin, end] = table.equal_range(hash);
    for (auto entry = begin; entry != end; ++entry) {
        found.push_back(entry->second);
    }
}

void RuleIndex::add(const Rule &rule)
{
    const std::size_t index = m_size++;
    m_looksAtText = m_looksAtText || !rule.words().isEmpty() || rule.hasPattern();
    if (!rule.sources().isEmpty()) {
        m_sources.add(rule.sources().patterns(), index);
    } else if (!rule.categories().isEmpty()) {
        m_categories.add(rule.categories().patterns(), index);
    } else if (addWords(rule.words(), index)) {
        m_rulesOfWords.push_back(index);
    } else if (rule.hasPattern() && isIndependent(rule.pattern())) {
        m_rulesOfPatterns.push_back(index);
        m_patterns.append(QLatin1String("(?:") + rule.pattern() + QLatin1Char(')'));
        m_areAnchored = m_areAnchored && isAnchored(rule.pattern());
    } else {
        m_others.push_back(index);
    }
}

void RuleIndex::finish()
{
    if (m_patterns.isEmpty()) {
        return;
    }
    m_anyPattern = Rule::expression(searchLimit, m_patterns.join(QLatin1Char('|')));
    m_patterns.clear();
    if (m_anyPattern.isValid()) {
        m_anyPattern.optimize();
        if (m_areAnchored) {
            findBeginnings();
        }
    } else {
        // All together are too long, for example.
        m_others.insert(m_others.end(), m_rulesOfPatterns.begin(), m_rulesOfPatterns.end());
        std::sort(m_others.begin(), m_others.end());
        m_rulesOfPatterns.clear();
    }
}

/// The rule matches only texts that have the first part of a word, up to what is no letter, as a word.
bool RuleIndex::addWords(const QStringList &words, std::size_t rule)
{
    for (const QString &word : words) {
        FoldedHash hash;
        int length = 0;
        while (length < word.size() && word.at(length).isLetterOrNumber()) {
            hash.add(word.at(length++));
        }
        if (length > 0 && !word.contains(QChar(iotaBelow))) {
            m_words.emplace(hash.value(), rule);
            return true;
        }
    }
    return false;
}

void RuleIndex::findWords(const QString &text, Indexes &found) const
{
    if (m_words.empty()) {
        return;
    }
    if (text.contains(QChar(iotaBelow))) {
        found.insert(found.end(), m_rulesOfWords.begin(), m_rulesOfWords.end());
        return;
    }
    FoldedHash hash;
    bool isInWord = false;
    for (const QChar character : text) {
        if (character.isLetterOrNumber()) {
            hash.add(character);
            isInWord = true;
        } else if (isInWord) {
            find(m_words, hash.value(), found);
            hash = {};
            isInWord = false;
        }
    }
    if (isInWord) {
        find(m_words, hash.value(), found);
    }
}

void RuleIndex::findPatterns(const QString &text, Indexes &found) const
{
    if (!mayPatternsMatch(text)) {
        return;
    }
    const QRegularExpressionMatch match = m_anyPattern.match(text);
    if (match.hasMatch() || !match.isValid()) {
        found.insert(found.end(), m_rulesOfPatterns.begin(), m_rulesOfPatterns.end());
    }
}

bool RuleIndex::isLong(const QString &text) const
{
    return text.size() > maxQuickLength && mayPatternsMatch(text);
}

bool RuleIndex::mayPatternsMatch(const QString &text) const
{
    if (m_rulesOfPatterns.empty()) {
        return false;
    }
    if (!m_areAnchored || text.size() < 2) {
        return true;
    }
    const std::size_t first = text.at(0).unicode();
    const std::size_t second = text.at(1).unicode();
    return first >= maxAscii || second >= maxAscii || m_beginnings[first * maxAscii + second];
}

bool RuleIndex::mayPatternsMatchAfter(const QString &beginning) const
{
    const auto match =
        m_anyPattern.match(beginning, 0, QRegularExpression::PartialPreferCompleteMatch);
    return match.hasMatch() || match.hasPartialMatch() || !match.isValid();
}

void RuleIndex::findBeginnings()
{
    for (std::size_t first = 0; first < maxAscii; ++first) {
        const QString beginning = QChar(ushort(first));
        const bool mayMatch = mayPatternsMatchAfter(beginning);
        for (std::size_t second = 0; mayMatch && second < maxAscii; ++second) {
            m_beginnings[first * maxAscii + second] =
                mayPatternsMatchAfter(beginning + QChar(ushort(second)));
        }
    }
}

RuleIndex::Indexes RuleIndex::candidates(const AttentionInput &input, const QString &text) const
{
    Indexes found;
    found.reserve(m_others.size() + usualCandidates);
    found = m_others;
    m_sources.find(input.source, found);
    m_categories.find(input.category, found);
    findWords(text, found);
    findPatterns(text, found);
    if (found.size() > m_others.size()) {
        std::sort(found.begin(), found.end());
        found.erase(std::unique(found.begin(), found.end()), found.end());
    }
    return found;
}
