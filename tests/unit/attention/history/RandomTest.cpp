// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Random sequences on a history and on a plain list, which must always say the same.

#include "HistoryTest.h"
#include "support/FullDisk.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

namespace {
using State = HistoryEntry::State;

const QStringList words = {"alarm"_s, "also"_s,  "back"_s, "door"_s,  "Dörr"_s,
                           "mail"_s,  "mails"_s, "ring"_s, "water"_s, "x1"_s};

/// What a history is to have, as plainly as possible.
class PlainHistory
{
public:
    void add(const HistoryEntry &entry) { m_entries.prepend(entry); }

    void change(const QString &id, State state, const QString &action, qint64 endTime)
    {
        for (HistoryEntry &entry : m_entries) {
            if (entry.id == id) {
                entry.state = state;
                entry.action = action;
                entry.endTime = endTime;
            }
        }
    }

    void markSeen(int from)
    {
        for (int i = from; i < m_entries.size(); ++i) {
            if (m_entries[i].isMissed()) {
                m_entries[i].state = State::Seen;
            }
        }
    }

    QVector<HistoryEntry> find(const HistoryQuery &query) const
    {
        QVector<HistoryEntry> found;
        std::copy_if(m_entries.begin(), m_entries.end(), std::back_inserter(found),
                     [&](const HistoryEntry &entry) { return matches(entry, query); });
        return found;
    }

    int missed() const
    {
        HistoryQuery query;
        query.onlyMissed = true;
        return find(query).size();
    }

    int size() const { return m_entries.size(); }

private:
    static QString plain(const QString &text)
    {
        return text.toLower().replace(QStringLiteral("ö"), QStringLiteral("o"));
    }

    static bool matches(const HistoryEntry &entry, const HistoryQuery &query)
    {
        const QStringList all =
            plain(entry.title + ' ' + entry.text + ' ' + entry.application).split(' ');
        const QStringList beginnings = plain(query.text).split(' ', Qt::SkipEmptyParts);
        return (query.source.isEmpty() || entry.source == query.source) &&
               (!query.onlyMissed || entry.isMissed()) &&
               std::all_of(beginnings.begin(), beginnings.end(), [&](const QString &beginning) {
                   return std::any_of(all.begin(), all.end(), [&](const QString &word) {
                       return word.startsWith(beginning);
                   });
               });
    }

    QVector<HistoryEntry> m_entries; ///< newest first
};

QStringList idsOf(const QVector<HistoryEntry> &entries)
{
    QStringList ids;
    for (const HistoryEntry &entry : entries) {
        ids.append("%1:%2:%3:%4"_s.arg(entry.id)
                       .arg(int(entry.state))
                       .arg(entry.action)
                       .arg(entry.endTime));
    }
    return ids;
}

/// The parameter makes each run another one.
class RandomTest : public HistoryTest, public testing::WithParamInterface<unsigned>
{
protected:
    RandomTest()
        : m_random(GetParam())
    {
        settings.betweenTries = std::chrono::milliseconds(1);
        settings.maxBytes = 60'000; // more than is added; the index has several blocks then
        settings.file = folder.filePath("state/history.db"_s);
    }

    int upTo(int limit) { return std::uniform_int_distribution<int>(0, limit)(m_random); }
    QString word() { return words[upTo(words.size() - 1)]; }

    void addOne()
    {
        HistoryEntry added = entry(word() + ' ' + word(), word());
        added.id = QString::number(m_plain.size());
        added.source = "org.example."_s + QString::number(upTo(2));
        added.application = word();
        added.state = State(1 + upTo(6));
        added.endTime = 1 + upTo(5);
        history->add(added);
        m_plain.add(added);
    }

    /// The numbers are known from a page.
    void changeOne()
    {
        const HistoryPage read = page();
        if (!read.entries.isEmpty()) {
            const HistoryEntry &changed = read.entries[upTo(read.entries.size() - 1)];
            const auto state = State(1 + upTo(6));
            const qint64 endTime = 1 + upTo(99);
            const QString action = word();
            history->change(changed.number, state, action, endTime);
            m_plain.change(changed.id, state, action, endTime);
        }
    }

    void markSeen()
    {
        const HistoryPage read = page();
        if (!read.entries.isEmpty()) {
            const int index = upTo(read.entries.size() - 1);
            history->markSeen(read.entries[index].number);
            m_plain.markSeen(index);
        }
    }

    void readSome()
    {
        HistoryQuery query;
        query.limit = 1 + upTo(7);
        query.onlyMissed = upTo(3) == 0;
        query.source = upTo(2) == 0 ? "org.example."_s + QString::number(upTo(3)) : QString();
        for (int left = upTo(2); left > 0; --left) {
            query.text += word().left(1 + upTo(4)) + ' ';
        }
        QVector<HistoryEntry> read;
        do {
            const HistoryPage part = page(query);
            EXPECT_LE(part.entries.size(), query.limit);
            read += part.entries;
            query.before = part.next;
        } while (query.before != 0);
        EXPECT_EQ(idsOf(read), idsOf(m_plain.find(query)));
    }

    /// Makes the disk full, or free again.
    void changeDisk()
    {
        if (m_fullDisk) {
            m_fullDisk.reset();
        } else {
            m_fullDisk.emplace();
        }
    }

    void restart()
    {
        m_fullDisk.reset();
        start();
    }

    std::mt19937 m_random;
    PlainHistory m_plain;
    std::optional<FullDisk> m_fullDisk;
};
} // namespace

TEST_P(RandomTest, AHistorySaysTheSameAsAPlainList)
{
    constexpr int steps = 150;
    start();
    for (int i = 0; i < steps; ++i) {
        const int choice = upTo(99);
        if (choice < 50) {
            addOne();
        } else if (choice < 65) {
            changeOne();
        } else if (choice < 70) {
            markSeen();
        } else if (choice < 93) {
            readSome();
        } else if (choice < 97) {
            changeDisk();
        } else {
            restart();
        }
    }
    readSome();
    EXPECT_TRUE(waitFor([&] { return history->missed() == m_plain.missed(); }));
    restart();
    readSome();
    EXPECT_TRUE(waitFor([&] { return history->missed() == m_plain.missed(); }));
    EXPECT_TRUE(damaged->isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Runs, RandomTest, testing::Range(0U, 6U));
