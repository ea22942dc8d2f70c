// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ActionLog.h"
#include "Dice.h"
#include <core/tavo.h>

#include <QJsonObject>
#include <QStringList>

#include <array>
#include <mutex>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// What a request is about; what it is called in the table is in Ledger.cpp.
enum class RequestKind {
    EnqueueSound,
    CancelSound,
    OpenDisplay,
    CancelDisplay,
    Acquire,
    Release,
    Register,
    Standby,
    Resume,
    Revoke,
    Duck,
    PlayMusic,
    StopMusic,
    SetVolume,
    Echo,
    ReadRows,
    Garbage,
    Count
};

/// Books on everything that the load has asked for, so that at any moment it is known what is still
/// owed, and that nothing came twice or without having been asked for. Any thread.
///
/// What is settled is forgotten: the books don't grow with the time.
class Ledger
{
public:
    explicit Ledger(ActionLog *actions)
        : m_actions(actions)
    {
    }

    // Requests.
    void requestRaised(RequestKind kind);
    void requestAnswered(RequestKind kind, bool accepted, double seconds);
    int unanswered() const;
    QString unansweredText() const;

    // Sounds. One whose responses nobody takes is known to have ended only by its refused cancel.
    void soundAsked(const QString &id, bool observed);
    void soundAnswered(const QString &id, bool accepted);
    void soundResponded(const QString &id, TavoNotificationPlayerResponseType::Enum type);
    /// A cancel of it was refused: if nobody takes its responses, that is how its end shows.
    void soundIsGone(const QString &id);
    QStringList liveSounds() const;
    int liveCount() const;
    /// One that may be live; empty for none.
    QString anySound(Dice &dice) const;
    /// The one that started last, which may sound still.
    QString lastStarted() const;

    // Messages on display.
    void messageOpened(const CMPath &path);
    void rowsChanged(const QStringList &changes);
    /// A message whose node is still there and is to be taken away by naming it; empty for none.
    CMPath takeMessageToClean();
    CMPath anyDisplay(Dice &dice) const;
    int displaysOpen() const;
    /// Every display that was opened has come and gone in the queue's rows, no message is to be
    /// cleaned.
    bool displaysAreGone() const;
    /// The messages that were named since the last call.
    std::vector<CMPath> takeCleaned();

    /// Whatever must not be: becomes a finding.
    void violation(const QString &what);

    /// Rises with whatever happens: while it stands still and something is owed, something is stuck.
    qint64 progress() const;

    QJsonObject figures() const;
    QStringList takeViolations();

    /// Nothing is owed; what differs all the same is a violation.
    void checkSettled();

    void count(const QString &what, int by = 1);

private:
    struct Sound
    {
        bool observed = true;
        int asked = 0;
        int accepted = 0;
        int refused = 0;
        int ended = 0;
        bool started = false;
    };
    struct Answers
    {
        qint64 raised = 0;
        qint64 accepted = 0;
        qint64 refused = 0;
        double slowest = 0;
    };

    void forgetIfSettled(const QString &id);
    void violationLocked(const QString &what);

    ActionLog *const m_actions;
    mutable std::mutex m_mutex;
    qint64 m_progress = 0;
    std::array<Answers, std::size_t(RequestKind::Count)> m_answers;
    struct Hash
    {
        std::size_t operator()(const QString &text) const { return qHash(text); }
        std::size_t operator()(const CMPath &path) const { return path.hash(); }
    };
    std::unordered_map<QString, Sound, Hash> m_sounds;
    QString m_lastStarted;
    int m_sounding = 0;             // started and not ended, playing or paused
    std::vector<CMPath> m_messages; // to be cleaned
    std::vector<CMPath> m_cleaned;
    std::array<qint64, 5> m_ends{}; // by response type
    qint64 m_rowsInserted = 0;
    qint64 m_rowsRemoved = 0;
    qint64 m_displaysAccepted = 0;
    std::unordered_map<QString, qint64, Hash> m_counts;
    QStringList m_violations;
};
