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

/// What a request is about. Ledger.cpp has the names in the table.
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

/// Records all requests of the load, so it knows at any time what is still to come, and finds what
/// comes twice or was never requested. Called from any thread.
///
/// Forgets what is complete, so it does not grow.
class Ledger
{
public:
    explicit Ledger(ActionLog *actions)
        : m_actions(actions)
    {
    }

    // Requests.
    void requestSent(RequestKind kind);
    void requestAnswered(RequestKind kind, bool accepted, double seconds);
    int unanswered() const;
    QString unansweredText() const;

    // Sounds. If nobody receives a sound's responses, only a refused cancel shows that it has
    // ended.
    void soundRequested(const QString &id, bool observed);
    void soundAnswered(const QString &id, bool accepted);
    void soundResponded(const QString &id, TavoNotificationPlayerResponseType::Enum type);
    /// A cancel was refused, so a sound whose responses nobody receives has ended.
    void soundIsGone(const QString &id);
    QStringList liveSounds() const;
    int liveCount() const;
    /// A sound that may be live, or empty.
    QString anySound(Dice &dice) const;
    /// The sound that started last, which may still play.
    QString lastStarted() const;

    // Display notifications.
    void messageOpened(const CMPath &path);
    void rowsChanged(const QStringList &changes);
    /// A message whose node is still there and can be removed by naming it, or empty.
    CMPath takeMessageToClean();
    CMPath anyDisplay(Dice &dice) const;
    int displaysOpen() const;
    /// Whether every opened display has come and gone in the queue's rows, and no node is left
    /// to be removed.
    bool displaysAreGone() const;
    /// The messages that were named since the last call.
    std::vector<CMPath> takeCleaned();

    /// Notes something that must not happen. It becomes a finding.
    void violation(const QString &what);

    /// Increases with every event. If it stays the same while something is still to come, the
    /// host is stuck.
    qint64 progress() const;

    QJsonObject figures() const;
    QStringList takeViolations();

    /// Nothing is still to come, so anything left is a violation.
    void checkSettled();

    void count(const QString &what, int by = 1);

private:
    struct Sound
    {
        bool observed = true;
        int requested = 0;
        int accepted = 0;
        int refused = 0;
        int ended = 0;
        bool started = false;
    };
    struct Answers
    {
        qint64 sent = 0;
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
    std::vector<CMPath> m_messages; // whose nodes are to be removed
    std::vector<CMPath> m_cleaned;
    std::array<qint64, 5> m_ends{}; // by response type
    qint64 m_rowsInserted = 0;
    qint64 m_rowsRemoved = 0;
    qint64 m_displaysAccepted = 0;
    std::unordered_map<QString, qint64, Hash> m_counts;
    QStringList m_violations;
};
