// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "attention/AttentionInput.h"
#include "attention/NamePatterns.h"

#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <bitset>
#include <set>
#include <unordered_map>
#include <vector>

class Rule;

/// Finds the few of many rules that a notification may match. One condition of each rule is in the index,
/// so that a notification is compared with the conditions of all rules at the same time. A value.
class RuleIndex
{
public:
    using Indexes = std::vector<std::size_t>;

    /// Adds the next rule.
    void add(const Rule &rule);

    /// To be called once, after the last rule.
    void finish();

    /// Whether the text counts for any rule.
    bool looksAtText() const { return m_looksAtText; }

    /// Whether a pattern may take long to search the text.
    bool isLong(const QString &text) const;

    /// The rules that may match, in their order. Every rule that matches is among them.
    Indexes candidates(const AttentionInput &input, const QString &text) const;

private:
    static constexpr std::size_t maxAscii = 128;

    /// Rules by the hash of a name or a word, in any case. Others may have the same hash.
    using Table = std::unordered_multimap<quint32, std::size_t>;

    struct Names
    {
        Table whole;
        Table beginnings;
        std::set<int> lengths; ///< of the beginnings

        void add(const QStringList &patterns, std::size_t rule);
        void find(const QString &name, Indexes &found) const;
    };

    static void find(const Table &table, quint32 hash, Indexes &found);
    bool addWords(const QStringList &words, std::size_t rule);
    void findWords(const QString &text, Indexes &found) const;
    void findPatterns(const QString &text, Indexes &found) const;

    /// Whether a pattern may match a text that begins like this one.
    bool mayPatternsMatch(const QString &text) const;
    bool mayPatternsMatchAfter(const QString &beginning) const;
    void findBeginnings();

    std::size_t m_size = 0;
    bool m_looksAtText = false;
    Names m_sources;
    Names m_categories;
    Table m_words;
    Indexes m_rulesOfWords;          ///< those in m_words
    Indexes m_rulesOfPatterns;       ///< those whose patterns are in m_anyPattern
    QStringList m_patterns;          ///< theirs
    QRegularExpression m_anyPattern; ///< matches if one of them does
    bool m_areAnchored = true;       ///< they match only at the beginning of a text
    /// With which two ASCII characters such a text may begin, the first one in the higher bits.
    std::bitset<maxAscii * maxAscii> m_beginnings;
    Indexes m_others; ///< candidates always
};
