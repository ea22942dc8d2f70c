// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/attention/PlainAttention.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {
using Priority = TavoNotificationItemPriority;

const QStringList sources = {"mail", "chat", "door"};
const QStringList words = {"alarm", "parcel", "ring"};

bool isAttendedTo(TavoAttentionEnd::Enum end)
{
    return end == TavoAttentionEnd::Closed || end == TavoAttentionEnd::Dismissed;
}

TavoAttentionState::Enum stateOf(TavoAttentionEnd::Enum end)
{
    switch (end) {
    case TavoAttentionEnd::Silenced:
        return TavoAttentionState::Silenced;
    case TavoAttentionEnd::Expired:
        return TavoAttentionState::Seen; // only sounds end by themselves here
    default:
        return TavoAttentionState::Dismissed;
    }
}
} // namespace

PlainAttention::PlainAttention(std::mt19937 &random)
    : m_random(random)
    , m_isRepeatPassing(isOneIn(2))
    , m_rate(5 + upTo(60))
{
}

QByteArray PlainAttention::chooseSettings()
{
    m_settings = Settings();
    for (int count = upTo(4); count > 0; --count) {
        m_settings.rules.push_back(chooseRule());
    }
    m_settings.isOnlyFirst = isOneIn(3);
    m_settings.silence = QStringList{"both", "sound", "message"}.at(upTo(2));
    m_settings.passPriority = Priority::Enum(1 + upTo(2));
    m_settings.passSource = isOneIn(2) ? sources.at(upTo(2)) : QString();
    m_settings.groupFrom = QVector<int>{0, 2, 3, 4}.at(upTo(3));
    return json();
}

PlainAttention::Rule PlainAttention::chooseRule()
{
    Rule rule;
    rule.source = isOneIn(2) ? sources.at(upTo(2)) : QString();
    rule.word = isOneIn(3) ? words.at(upTo(2)) : QString();
    if (isOneIn(3)) {
        rule.minPriority = Priority::Enum(upTo(3));
    }
    if (isOneIn(3)) {
        rule.priority = Priority::Enum(upTo(3));
    }
    rule.group = isOneIn(3) ? "Home" : QString();
    for (auto *choice : {&rule.mute, &rule.hide, &rule.drop, &rule.pass, &rule.mustSee}) {
        if (isOneIn(5)) {
            *choice = !isOneIn(4);
        }
    }
    return rule;
}

QByteArray PlainAttention::json() const
{
    QJsonArray rules;
    for (std::size_t index = 0; index < m_settings.rules.size(); ++index) {
        const Rule &rule = m_settings.rules[index];
        QJsonObject when;
        QJsonObject then;
        if (!rule.source.isEmpty()) {
            when.insert("source", QJsonArray{rule.source});
        }
        if (!rule.word.isEmpty()) {
            when.insert("words", QJsonArray{rule.word});
        }
        if (rule.minPriority) {
            when.insert("minPriority", Priority::toString(*rule.minPriority));
        }
        if (rule.priority) {
            then.insert("priority", Priority::toString(*rule.priority));
        }
        if (!rule.group.isEmpty()) {
            then.insert("group", rule.group);
        }
        const auto insert = [&then](const char *key, const std::optional<bool> &value) {
            if (value) {
                then.insert(key, *value);
            }
        };
        insert("mute", rule.mute);
        insert("hide", rule.hide);
        insert("drop", rule.drop);
        insert("pass", rule.pass);
        insert("mustSee", rule.mustSee);
        rules.append(QJsonObject{{"name", QString::number(index)}, {"when", when}, {"then", then}});
    }
    QJsonObject quiet{{"silence", m_settings.silence},
                      {"passPriority", Priority::toString(m_settings.passPriority)},
                      {"passRepeatedWithin", m_isRepeatPassing ? 86400 : 0},
                      {"summary", false}};
    if (!m_settings.passSource.isEmpty()) {
        quiet.insert("passSources", QJsonArray{m_settings.passSource});
    }
    const QJsonObject all{{"rules", rules},
                          {"apply", m_settings.isOnlyFirst ? "first" : "all"},
                          {"doNotDisturb", quiet},
                          {"groupFrom", m_settings.groupFrom},
                          {"eachSource", QJsonObject{{"messages", m_rate}, {"seconds", 86400}}}};
    return QJsonDocument(all).toJson();
}

bool PlainAttention::matches(const Rule &rule, const Item &item)
{
    return (rule.source.isEmpty() || rule.source == item.source) &&
           (rule.word.isEmpty() || item.title.split(' ').contains(rule.word)) &&
           (!rule.minPriority || item.priority >= *rule.minPriority);
}

PlainAttention::Verdict PlainAttention::decide(const Item &item)
{
    Verdict verdict;
    verdict.priority = item.priority;
    bool isDropped = false;
    bool isPassing = false;
    for (std::size_t index = 0; index < m_settings.rules.size(); ++index) {
        const Rule &rule = m_settings.rules[index];
        if (!matches(rule, item) || (m_settings.isOnlyFirst && !verdict.rules.isEmpty())) {
            continue;
        }
        verdict.rules.append(QString::number(index));
        verdict.priority = rule.priority.value_or(verdict.priority);
        verdict.isHeard = !rule.mute.value_or(!verdict.isHeard);
        verdict.isShown = !rule.hide.value_or(!verdict.isShown);
        verdict.isAlone = rule.mustSee.value_or(verdict.isAlone);
        verdict.group = rule.group.isEmpty() ? verdict.group : rule.group;
        isDropped = rule.drop.value_or(isDropped);
        isPassing = rule.pass.value_or(isPassing);
    }
    const QString likeness = item.source + '/' + item.title;
    isPassing = isPassing || verdict.priority >= m_settings.passPriority ||
                item.source == m_settings.passSource ||
                (m_isRepeatPassing && m_before.contains(likeness));
    m_before.insert(likeness);
    const bool isSilenced = m_isQuiet && !isPassing;
    if (isDropped || (isSilenced && m_settings.silence != "sound")) {
        verdict.isShown = false;
        verdict.isQuietlyHidden = !isDropped;
    }
    if (isDropped || (isSilenced && m_settings.silence != "message")) {
        verdict.isHeard = false;
    }
    return verdict;
}

PlainAttention::Outcome PlainAttention::notify(const Item &item)
{
    Entry entry;
    entry.item = item;
    entry.verdict = decide(item);
    if (entry.verdict.priority < Priority::Urgent && ++m_sent[item.source] > m_rate) {
        entry.verdict.isShown = false;
        entry.verdict.isHeard = false;
    }
    entry.isSounding = entry.verdict.isHeard && item.hasSound;
    m_open.insert(item.id, entry);
    m_states.insert(item.id, State::Shown);
    if (entry.verdict.isShown) {
        show(item.id);
    }
    finish(item.id);
    return {entry.verdict.isShown, entry.isSounding, entry.verdict.rules};
}

PlainAttention::Outcome PlainAttention::replace(const Item &item)
{
    Entry &entry = m_open[item.id];
    const auto previous = entry.verdict.priority;
    entry.item = item;
    entry.verdict = decide(item);
    const Verdict verdict = entry.verdict;
    if (entry.isShown && verdict.isShown) {
        changeShown(entry, previous != verdict.priority);
    } else if (entry.isShown) {
        messageEnded(item.id, End::Silenced);
    } else if (verdict.isShown) {
        show(item.id);
    }
    const Outcome outcome{entry.isShown, entry.isSounding, verdict.rules};
    finish(item.id);
    return outcome;
}

void PlainAttention::changeShown(Entry &entry, bool isQueuedAnew)
{
    const auto place = placeOf(entry.item.id);
    const bool isSamePile = pileOf(entry) == entry.pile;
    if (!place->pile.isEmpty()) {
        if (isSamePile) {
            adapt(place);
        } else {
            leavePlace(entry.item.id);
            show(entry.item.id);
        }
        return;
    }
    entry.pile = isSamePile ? entry.pile : QString();
    if (isQueuedAnew) {
        m_queue.erase(place);
        enqueue({priorityOf({entry.item.id}), {}, {entry.item.id}});
    }
}

QString PlainAttention::pileOf(const Entry &entry) const
{
    if (m_settings.groupFrom == 0 || entry.openedPriority || entry.verdict.isAlone ||
        entry.verdict.priority >= Priority::Urgent) {
        return {};
    }
    return entry.verdict.group.isEmpty() ? "by " + entry.item.source
                                         : "rule " + entry.verdict.group;
}

void PlainAttention::show(const QString &id)
{
    Entry &entry = m_open[id];
    entry.isShown = true;
    entry.shown = ++m_shown;
    entry.pile = pileOf(entry);
    if (entry.pile.isEmpty()) {
        enqueue({priorityOf({id}), {}, {id}});
        return;
    }
    const auto group = groupOf(entry.pile);
    if (group != m_queue.end()) {
        group->ids.push_back(id);
        adapt(group);
        return;
    }
    std::vector<QString> pile;
    for (const Entry &other : qAsConst(m_open)) {
        if (other.isShown && other.pile == entry.pile) {
            pile.push_back(other.item.id);
        }
    }
    if (int(pile.size()) < m_settings.groupFrom) {
        enqueue({priorityOf({id}), {}, {id}});
        return;
    }
    std::sort(pile.begin(), pile.end(), [this](const QString &left, const QString &right) {
        return m_open[left].shown < m_open[right].shown;
    });
    for (const QString &other : pile) {
        if (other != id) {
            m_queue.erase(placeOf(other));
        }
    }
    enqueue({priorityOf(pile), entry.pile, pile});
}

int PlainAttention::priorityOf(const std::vector<QString> &ids) const
{
    int most = std::numeric_limits<int>::min();
    for (const QString &id : ids) {
        const Entry entry = m_open.value(id);
        const int own = entry.verdict.priority;
        most = std::max({most, own, entry.openedPriority.value_or(own)});
    }
    return most;
}

void PlainAttention::enqueue(const Place &place)
{
    m_queue.insert(
        std::find_if(m_queue.begin(), m_queue.end(),
                     [&place](const Place &other) { return other.priority < place.priority; }),
        place);
}

std::vector<PlainAttention::Place>::iterator PlainAttention::placeOf(const QString &id)
{
    return std::find_if(m_queue.begin(), m_queue.end(), [&id](const Place &place) {
        return std::find(place.ids.begin(), place.ids.end(), id) != place.ids.end();
    });
}

std::vector<PlainAttention::Place>::iterator PlainAttention::groupOf(const QString &pile)
{
    return std::find_if(m_queue.begin(), m_queue.end(),
                        [&pile](const Place &place) { return place.pile == pile; });
}

void PlainAttention::adapt(std::vector<Place>::iterator group)
{
    Place adapted = *group;
    adapted.priority = priorityOf(group->ids);
    if (adapted.priority != group->priority) {
        m_queue.erase(group);
        enqueue(adapted);
    }
}

void PlainAttention::leavePlace(const QString &id)
{
    m_open[id].pile.clear();
    const auto place = placeOf(id);
    if (place->pile.isEmpty()) {
        m_queue.erase(place);
        return;
    }
    place->ids.erase(std::find(place->ids.begin(), place->ids.end(), id));
    if (place->ids.size() == 1) {
        const QString last = place->ids.front();
        m_queue.erase(place);
        enqueue({priorityOf({last}), {}, {last}});
    }
}

void PlainAttention::messageEnded(const QString &id, End::Enum end)
{
    Entry &entry = m_open[id];
    if (entry.isShown) {
        leavePlace(id);
        entry.isShown = false;
    }
    entry.end = end;
    entry.isSounding = entry.isSounding && !isAttendedTo(end);
}

void PlainAttention::finish(const QString &id)
{
    const Entry entry = m_open.value(id);
    if (!entry.isShown && !entry.isSounding) {
        const auto end = entry.end == End::Unknown ? End::Silenced : entry.end;
        m_open.remove(id);
        m_ends.insert(id, end);
        const bool isMissed = end == End::Expired && entry.verdict.isQuietlyHidden;
        m_states.insert(id, isMissed ? State::Silenced : stateOf(end));
    }
}

void PlainAttention::close(const QString &id)
{
    messageEnded(id, End::Closed);
    finish(id);
}

void PlainAttention::closeFirst()
{
    const Place first = m_queue.front();
    m_queue.erase(m_queue.begin());
    for (const QString &id : first.ids) {
        m_open[id].isShown = false;
        messageEnded(id, End::Dismissed);
        finish(id);
    }
}

void PlainAttention::openNewest()
{
    const Place group = m_queue[std::size_t(*firstGroup())];
    const QString id = group.ids.back();
    leavePlace(id);
    m_open[id].openedPriority = group.priority + 1;
    enqueue({priorityOf({id}), {}, {id}});
}

void PlainAttention::soundEnded(const QString &id)
{
    Entry &entry = m_open[id];
    entry.isSounding = false;
    if (!entry.isShown && entry.end == End::Unknown) {
        entry.end = End::Expired;
    }
    finish(id);
}

std::vector<QString> PlainAttention::displayed() const
{
    std::vector<QString> titles;
    for (const Place &place : m_queue) {
        titles.push_back(place.pile.isEmpty() ? m_open.value(place.ids.front()).item.title
                                              : QString("%1 messages of %2")
                                                    .arg(place.ids.size())
                                                    .arg(place.pile.section(' ', 1)));
    }
    return titles;
}

std::optional<int> PlainAttention::firstGroup() const
{
    const auto group = std::find_if(m_queue.begin(), m_queue.end(),
                                    [](const Place &place) { return !place.pile.isEmpty(); });
    return group == m_queue.end() ? std::nullopt : std::optional(int(group - m_queue.begin()));
}
