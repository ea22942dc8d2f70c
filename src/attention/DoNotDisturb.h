// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "attention/AttentionInput.h"
#include "attention/NamePatterns.h"
#include "attention/WeeklyTimes.h"

#include <QMap>

#include <optional>

/// When people do not want to be disturbed, and what reaches them all the same.
struct DoNotDisturbSettings
{
    enum class Silence { Both, Sound, Message };

    WeeklyTimes times;
    Silence silence = Silence::Both;
    TavoNotificationItemPriority::Enum passingPriority = TavoNotificationItemPriority::Urgent;
    NamePatterns passingSources;
    int repeatMs =
        180000; ///< a second one of the same source and title within this time passes; 0: never
    bool hasSummary = true;

    /// Reads the keys of the section. Throws as TavoConfiguration does.
    static DoNotDisturbSettings read(TavoConfiguration configuration, const QTimeZone &zone);
};

/// Whether people want to be disturbed now: by the schedule, unless somebody has said otherwise.
///
/// All times are milliseconds since the epoch in UTC. The clock may jump.
class DoNotDisturb
{
public:
    /// What a person has chosen.
    struct Choice
    {
        bool isOn;
        qint64 until; ///< 0: until the next choice
    };

    explicit DoNotDisturb(const DoNotDisturbSettings &settings = {})
        : m_settings(settings)
    {
    }

    const DoNotDisturbSettings &settings() const { return m_settings; }

    /// The choice stays.
    void setSettings(const DoNotDisturbSettings &settings) { m_settings = settings; }

    /// To switch it off during the times of the schedule counts until these times are over.
    void choose(const Choice &choice, qint64 now);

    /// A choice of before a restart.
    void restore(const Choice &choice) { m_choice = choice; }

    std::optional<Choice> choice(qint64 now) const;

    /// It is on as long as programs inhibit notifications, whatever schedule and choice say.
    void setInhibited(bool inhibited) { m_isInhibited = inhibited; }

    bool isOn(qint64 now) const;

    /// When schedule or choice may change by themselves; nothing if never.
    std::optional<qint64> nextChange(qint64 now) const;

    /// Why the notification passes although it is on, such as "it is urgent"; empty if it doesn't.
    QString passes(const AttentionInput &input) const;

    /// Remembers the notification, so that the next one like it may pass.
    void remember(const AttentionInput &input);

private:
    DoNotDisturbSettings m_settings;
    std::optional<Choice> m_choice;
    bool m_isInhibited = false;

    using Times = QMap<QString, qint64>;  // by title
    using Sources = QMap<QString, Times>; // by source
    void forgetTooMany();

    QMap<QString, Sources> m_lastTimes; ///< of those that may be repeated, by user
};
