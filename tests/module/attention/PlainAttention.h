// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QSet>
#include <QString>

#include <optional>
#include <random>
#include <vector>

/// What the module is to do, as plainly as possible, for settings that it makes up. Knows nothing of how the
/// module is built. Nothing expires, and nothing outlasts the run.
class PlainAttention
{
public:
    using Priority = TavoNotificationItemPriority;
    using End = TavoAttentionEnd;
    using State = TavoAttentionState;

    struct Item
    {
        QString id;
        QString source;
        QString title;
        Priority::Enum priority = Priority::Normal;
        bool hasSound = false;
    };

    struct Outcome
    {
        bool isShown;
        bool isSounding;
        QStringList rules;
    };

    explicit PlainAttention(std::mt19937 &random);

    /// Other settings, as a file.
    QByteArray chooseSettings();

    void setQuiet(bool isOn) { m_isQuiet = isOn; }

    Outcome notify(const Item &item);
    Outcome replace(const Item &item);
    void close(const QString &id);

    /// A person closes what is first on display.
    void closeFirst();

    /// A person opens the newest one of the first group on display.
    void openNewest();

    void soundEnded(const QString &id);

    /// The titles on display, in their order.
    std::vector<QString> displayed() const;

    /// The place of the first group on display.
    std::optional<int> firstGroup() const;

    QStringList open() const { return m_open.keys(); }
    const QMap<QString, End::Enum> &ends() const { return m_ends; }

    /// By id; of those that are open, too.
    const QMap<QString, State::Enum> &states() const { return m_states; }

private:
    struct Rule
    {
        QString source; ///< empty: any
        std::optional<Priority::Enum> minPriority;
        QString word; ///< empty: any
        std::optional<Priority::Enum> priority;
        QString group; ///< empty: not set
        std::optional<bool> mute, hide, drop, pass, mustSee;
    };

    struct Settings
    {
        std::vector<Rule> rules;
        bool isOnlyFirst = false;
        QString silence;
        Priority::Enum passPriority = Priority::Urgent;
        QString passSource;
        int groupFrom = 0;
    };

    /// What is decided about a notification.
    struct Verdict
    {
        Priority::Enum priority = Priority::Normal;
        bool isShown = true;
        bool isHeard = true;
        bool isQuietlyHidden = false; ///< do-not-disturb keeps the message from people
        bool isAlone = false;         ///< never in a group
        QString group;
        QStringList rules;
    };

    struct Entry
    {
        Item item;
        Verdict verdict;
        bool isShown = false;
        bool isSounding = false;
        std::optional<int> openedPriority{}; ///< once a person has opened it in a group
        int shown = 0;                       ///< the how manieth message it was
        End::Enum end = End::Unknown;
        QString pile{}; ///< of those that may be shown as one with it
    };

    /// On display: a message, or a group of them.
    struct Place
    {
        int priority;
        QString pile; ///< of a group; otherwise empty
        std::vector<QString> ids;
    };

    int upTo(int limit) { return std::uniform_int_distribution<int>(0, limit)(m_random); }
    bool isOneIn(int count) { return upTo(count - 1) == 0; }
    Rule chooseRule();
    QByteArray json() const;

    static bool matches(const Rule &rule, const Item &item);
    Verdict decide(const Item &item);
    QString pileOf(const Entry &entry) const;

    void show(const QString &id);
    void enqueue(const Place &place);
    std::vector<Place>::iterator placeOf(const QString &id);
    std::vector<Place>::iterator groupOf(const QString &pile);
    void leavePlace(const QString &id);
    void changeShown(Entry &entry, bool isQueuedAnew);

    /// Queues a group anew if its most urgent message is another one.
    void adapt(std::vector<Place>::iterator group);
    int priorityOf(const std::vector<QString> &ids) const;
    void messageEnded(const QString &id, End::Enum end);
    void finish(const QString &id);

    std::mt19937 &m_random;
    // Not changed with the settings, because they count what came before.
    const bool m_isRepeatPassing;
    const int m_rate;
    Settings m_settings;
    bool m_isQuiet = false;
    QMap<QString, Entry> m_open;
    std::vector<Place> m_queue;
    int m_shown = 0;
    QHash<QString, int> m_sent;
    QSet<QString> m_before; ///< source and title of all that has come
    QMap<QString, End::Enum> m_ends;
    QMap<QString, State::Enum> m_states;
};
