// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Ledger.h"

#include <algorithm>

namespace {
constexpr std::array<const char *, std::size_t(RequestKind::Count)> kindNames{
    "enqueue sound", "cancel sound", "open display", "cancel display", "acquire", "release",
    "register",      "standby",      "resume",       "revoke",         "duck",    "play music",
    "stop music",    "set volume",   "echo",         "read rows",      "garbage"};

constexpr std::array<const char *, 5> responseNames{"unknown", "started", "finished", "cancelled",
                                                    "failed"};

// Enough to understand the first one.
constexpr int maxViolations = 20;

constexpr double msPerSecond = 1000;
} // namespace

void Ledger::requestSent(RequestKind kind)
{
    const std::lock_guard lock(m_mutex);
    ++m_answers[std::size_t(kind)].sent;
}

void Ledger::requestAnswered(RequestKind kind, bool accepted, double seconds)
{
    const std::lock_guard lock(m_mutex);
    Answers &answers = m_answers[std::size_t(kind)];
    ++(accepted ? answers.accepted : answers.refused);
    answers.slowest = std::max(answers.slowest, seconds);
    if (kind == RequestKind::OpenDisplay && accepted) {
        ++m_displaysAccepted;
    }
    // Reading changes nothing, and neither does a refused request.
    if (accepted && kind != RequestKind::ReadRows) {
        ++m_progress;
    }
}

int Ledger::unanswered() const
{
    const std::lock_guard lock(m_mutex);
    qint64 sum = 0;
    for (const Answers &answers : m_answers) {
        sum += answers.sent - answers.accepted - answers.refused;
    }
    return int(sum);
}

QString Ledger::unansweredText() const
{
    const std::lock_guard lock(m_mutex);
    QStringList texts;
    for (std::size_t kind = 0; kind < m_answers.size(); ++kind) {
        const Answers &answers = m_answers[kind];
        const qint64 open = answers.sent - answers.accepted - answers.refused;
        if (open != 0) {
            texts.append(QStringLiteral("%1 %2").arg(open).arg(QLatin1String(kindNames[kind])));
        }
    }
    return texts.join(QStringLiteral(", "));
}

void Ledger::soundRequested(const QString &id, bool observed)
{
    const std::lock_guard lock(m_mutex);
    Sound &sound = m_sounds[id];
    sound.observed = observed;
    ++sound.requested;
}

void Ledger::soundAnswered(const QString &id, bool accepted)
{
    const std::lock_guard lock(m_mutex);
    Sound &sound = m_sounds[id];
    ++(accepted ? sound.accepted : sound.refused);
    if (accepted && id.isEmpty()) {
        violationLocked(QStringLiteral("a sound without an id was accepted"));
    }
    if (!accepted && !id.isEmpty() && sound.requested == 1) {
        violationLocked(QStringLiteral("the sound %1 was refused without cause").arg(id));
    }
    forgetIfSettled(id);
}

void Ledger::soundResponded(const QString &id, TavoNotificationPlayerResponseType::Enum type)
{
    const std::lock_guard lock(m_mutex);
    ++m_progress;
    if (type < 1 || std::size_t(type) >= m_ends.size()) {
        violationLocked(QStringLiteral("a response of type %1 for %2").arg(int(type)).arg(id));
        return;
    }
    ++m_ends[std::size_t(type)];
    const auto found = m_sounds.find(id);
    if (found == m_sounds.end() || !found->second.observed) {
        violationLocked(
            QStringLiteral("%1 was reported for %2, which had ended or was not requested")
                .arg(QLatin1String(responseNames[std::size_t(type)]), id));
        return;
    }
    Sound &sound = found->second;
    if (type == TavoNotificationPlayerResponseType::Started) {
        if (sound.started) {
            violationLocked(QStringLiteral("%1 started twice").arg(id));
        }
        sound.started = true;
        m_lastStarted = id;
        // Only a more urgent sound may start while another has started and not ended.
        if (m_sounding++ > 0) {
            ++m_counts[QStringLiteral("sounds started over a paused one")];
        }
        return;
    }
    m_sounding -= sound.started ? 1 : 0;
    sound.started = false;
    ++sound.ended;
    if (sound.ended > sound.requested) {
        violationLocked(QStringLiteral("%1 ended twice").arg(id));
    }
    forgetIfSettled(id);
}

void Ledger::forgetIfSettled(const QString &id)
{
    const Sound &sound = m_sounds[id];
    const bool isAnswered = sound.requested == sound.accepted + sound.refused;
    const bool hasEnded = sound.accepted == 0 || (sound.observed && sound.accepted == sound.ended);
    if (isAnswered && hasEnded) {
        m_sounds.erase(id);
    }
}

void Ledger::soundIsGone(const QString &id)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_sounds.find(id);
    if (found == m_sounds.end() || found->second.observed) {
        return;
    }
    // A sound whose request is unanswered may still be queued after the cancel.
    const Sound &sound = found->second;
    if (sound.requested == sound.accepted + sound.refused) {
        m_sounds.erase(found);
        ++m_progress;
    }
}

QStringList Ledger::liveSounds() const
{
    const std::lock_guard lock(m_mutex);
    QStringList ids;
    for (const auto &[id, sound] : m_sounds) {
        ids.append(id);
    }
    return ids;
}

int Ledger::liveCount() const
{
    const std::lock_guard lock(m_mutex);
    return int(m_sounds.size());
}

QString Ledger::anySound(Dice &dice) const
{
    const std::lock_guard lock(m_mutex);
    if (m_sounds.empty()) {
        return {};
    }
    return std::next(m_sounds.begin(), dice.number(0, int(m_sounds.size()) - 1))->first;
}

QString Ledger::lastStarted() const
{
    const std::lock_guard lock(m_mutex);
    return m_lastStarted;
}

void Ledger::messageOpened(const CMPath &path)
{
    const std::lock_guard lock(m_mutex);
    m_messages.push_back(path);
}

void Ledger::rowsChanged(const QStringList &changes)
{
    const std::lock_guard lock(m_mutex);
    m_rowsInserted += changes.count(CMSubscribe::RowsChangeInserted());
    m_rowsRemoved += changes.count(CMSubscribe::RowsChangeRemoved());
    ++m_progress;
}

CMPath Ledger::takeMessageToClean()
{
    const std::lock_guard lock(m_mutex);
    if (m_messages.empty()) {
        return {};
    }
    CMPath path = m_messages.front();
    m_messages.erase(m_messages.begin());
    m_cleaned.push_back(path);
    return path;
}

CMPath Ledger::anyDisplay(Dice &dice) const
{
    const std::lock_guard lock(m_mutex);
    return m_messages.empty() ? CMPath() : dice.oneOf(m_messages);
}

int Ledger::displaysOpen() const
{
    const std::lock_guard lock(m_mutex);
    return int(m_rowsInserted - m_rowsRemoved);
}

bool Ledger::displaysAreGone() const
{
    const std::lock_guard lock(m_mutex);
    return m_messages.empty() && m_rowsInserted >= m_displaysAccepted &&
           m_rowsRemoved >= m_rowsInserted;
}

std::vector<CMPath> Ledger::takeCleaned()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_cleaned, {});
}

void Ledger::violation(const QString &what)
{
    const std::lock_guard lock(m_mutex);
    violationLocked(what);
}

void Ledger::violationLocked(const QString &what)
{
    m_actions->note(QStringLiteral("VIOLATION ") + what);
    if (m_violations.size() < maxViolations) {
        m_violations.append(what);
    }
}

qint64 Ledger::progress() const
{
    const std::lock_guard lock(m_mutex);
    return m_progress;
}

QStringList Ledger::takeViolations()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_violations, {});
}

void Ledger::checkSettled()
{
    const std::lock_guard lock(m_mutex);
    if (m_rowsInserted != m_displaysAccepted || m_rowsRemoved != m_rowsInserted) {
        violationLocked(QStringLiteral("of %1 displays that were opened, the queue showed %2 come "
                                       "and %3 go")
                            .arg(m_displaysAccepted)
                            .arg(m_rowsInserted)
                            .arg(m_rowsRemoved));
    }
    m_sounds = {};
    m_lastStarted.clear();
    m_messages = {};
}

void Ledger::count(const QString &what, int by)
{
    const std::lock_guard lock(m_mutex);
    m_counts[what] += by;
}

QJsonObject Ledger::figures() const
{
    const std::lock_guard lock(m_mutex);
    QJsonObject requests;
    for (std::size_t kind = 0; kind < m_answers.size(); ++kind) {
        const Answers &answers = m_answers[kind];
        requests.insert(QLatin1String(kindNames[kind]),
                        QJsonObject{{QStringLiteral("sent"), answers.sent},
                                    {QStringLiteral("accepted"), answers.accepted},
                                    {QStringLiteral("refused"), answers.refused},
                                    {QStringLiteral("slowestMs"), answers.slowest * msPerSecond}});
    }
    QJsonObject responses;
    for (std::size_t type = 1; type < m_ends.size(); ++type) {
        responses.insert(QLatin1String(responseNames[type]), m_ends[type]);
    }
    QJsonObject counts;
    for (const auto &[what, number] : m_counts) {
        counts.insert(what, number);
    }
    return {{QStringLiteral("requests"), requests},
            {QStringLiteral("responses"), responses},
            {QStringLiteral("displaysShown"), m_rowsInserted},
            {QStringLiteral("displaysGone"), m_rowsRemoved},
            {QStringLiteral("counts"), counts}};
}
