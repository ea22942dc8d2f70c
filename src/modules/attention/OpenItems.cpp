// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "OpenItems.h"

#include "AlarmClock.h"
#include "ItemRows.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Attention");

/// So many of each other user are opened again after a restart; the history returns 1,000 of all, the newest
/// of each user in turn.
constexpr int maxMustSeeOfUser = 100;

TavoAttentionEnd::Enum endOf(TavoNotificationDisplayEnd::Enum end)
{
    switch (end) {
    case TavoNotificationDisplayEnd::Expired:
    case TavoNotificationDisplayEnd::Overtaken:
        return TavoAttentionEnd::Expired;
    case TavoNotificationDisplayEnd::Cancelled:
        return TavoAttentionEnd::Closed;
    case TavoNotificationDisplayEnd::Closed:
        return TavoAttentionEnd::Dismissed;
    case TavoNotificationDisplayEnd::Unknown:
        break;
    }
    return TavoAttentionEnd::Failed;
}

HistoryEntry::State stateOf(TavoAttentionEnd::Enum end)
{
    using State = HistoryEntry::State;
    switch (end) {
    case TavoAttentionEnd::Expired:
        return State::Expired;
    case TavoAttentionEnd::Closed:
    case TavoAttentionEnd::Dismissed:
        return State::Dismissed;
    case TavoAttentionEnd::ActedOn:
        return State::ActedOn;
    case TavoAttentionEnd::Silenced:
        return State::Silenced;
    case TavoAttentionEnd::Unknown:
    case TavoAttentionEnd::Failed:
        break;
    }
    return State::Refused;
}

/// Somebody has done something about the notification, so it need not be heard to its end.
bool isAttendedTo(TavoAttentionEnd::Enum end)
{
    return end == TavoAttentionEnd::Closed || end == TavoAttentionEnd::Dismissed ||
           end == TavoAttentionEnd::ActedOn;
}

/// No message has been shown and has ended, except that rules have taken it away.
bool isUnseen(TavoAttentionEnd::Enum end)
{
    return end == TavoAttentionEnd::Unknown || end == TavoAttentionEnd::Silenced;
}

bool isEnd(TavoNotificationPlayerResponseType::Enum type)
{
    return type == TavoNotificationPlayerResponseType::Finished ||
           type == TavoNotificationPlayerResponseType::Cancelled ||
           type == TavoNotificationPlayerResponseType::Failed;
}

bool isPrivate(const AttentionItem &item, const Decision &decision)
{
    return item.isTransient || decision.treatment.isPrivate.value_or(false);
}

bool mustSee(const Decision &decision)
{
    return decision.treatment.mustSee.value_or(false);
}

AttentionItem itemOf(const HistoryEntry &entry)
{
    return TavoAttentionItem()
        .setId(entry.id)
        .setTitle(entry.title.isEmpty() ? entry.application : entry.title)
        .setText(entry.text)
        .setApplication(entry.application)
        .setSource(entry.source)
        .setUser(entry.user)
        .setCategory(entry.category)
        .setGroup(entry.group)
        .setPriority(TavoNotificationItemPriority::Enum(entry.priority));
}

bool hasMessage(const AttentionItem &item)
{
    return !item.title.isEmpty() || !item.text.isEmpty() || !item.path.isEmpty();
}

bool hasSound(const TavoNotificationPlayerItem &sound)
{
    return !sound.isEmpty();
}

bool hasSound(const AttentionItem &item)
{
    return hasSound(item.sound);
}

void cancelOnDisplay(const CMPath &path)
{
    // The reply is ignored: if the message has gone already, there is nothing to close.
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path), {});
}
} // namespace

/// Reports that the display has refused a message; other replies wake no thread.
class OpenItems::RefusalWatcher : public CMReplyWatcher
{
public:
    RefusalWatcher(OpenItems &items, const Entry &entry)
        : m_entrance(items.m_entrance.shared_from_this())
        , m_items(items)
        , m_id(entry.item.id)
        , m_request(entry.request)
    {
    }

    void replyFinished(const CMVoidReply &reply) override
    {
        const CMError error = reply.error();
        if (error.isError()) {
            m_entrance->post([&items = m_items, id = m_id, request = m_request, error] {
                items.on_show_failed(id, request, error);
            });
        }
        delete this;
    }

private:
    const std::shared_ptr<Entrance> m_entrance;
    OpenItems &m_items; ///< gone when the entrance is closed
    const QString m_id;
    const QString m_request;
};

OpenItems::OpenItems(CMNodes *nodes, Entrance &entrance, History &history, Speech &speech)
    : m_nodes(nodes)
    , m_entrance(entrance)
    , m_history(history)
    , m_speech(speech)
    , m_ended(CMValueNode::create(nodes, TavoAttentionEndedPath()))
    , m_responsePath(QStringLiteral("/attention/soundResponse"))
    , m_groups(nodes, entrance)
{
    tavoConnect(&m_groups, &MessageGroups::ended, this, &OpenItems::on_groups_ended);
    tavoConnect(&m_groups, &MessageGroups::opened, this, &OpenItems::on_groups_opened);
    m_entrance.bind(nodes, m_responsePath, this, &OpenItems::on_sound_responded);
    CMRoot()->connectValueChange(TavoNotificationDisplayEndedPath(), this,
                                 &OpenItems::on_display_ended);
    CMRoot()->connectNodeChange(TavoNotificationDisplayQueuePath(), this,
                                &OpenItems::on_queue_nodeChanged);
    CMRoot()->connectNodeChange(TavoNotificationPlayerEnqueuePath(), this,
                                &OpenItems::on_player_nodeChanged);
}

OpenItems::~OpenItems()
{
    fillPlaces(); // the call that was posted does not come any more
    // Their nodes go, or nobody is left to tell their requesters of their end.
    for (const Entry &entry : qAsConst(m_entries)) {
        if (!entry.request.isEmpty()) {
            cancelOnDisplay(entry.path);
        }
        cancelSounds(entry);
    }
}

AttentionOutcome OpenItems::open(const AttentionItem &item, const Decision &decision)
{
    Entry &entry = insert(item, decision);
    if (decision.isRemembered) {
        entry.comesBack = mustSee(decision) && freePlaces(item.user) > 0;
        entry.number = m_history.add(historyEntryOf(entry));
    }
    if (decision.isShown && hasMessage(item)) {
        show(entry);
    }
    entry.awaitsSound = decision.isHeard && item.soundFollows;
    if (decision.isHeard && !item.soundFollows && (hasSound(item) || decision.treatment.sound)) {
        startRequested(entry, item.sound, decision.priority);
    }
    speak(entry);
    AttentionOutcome outcome = outcomeOf(entry);
    finishIfOver(item.id);
    return outcome;
}

HistoryEntry OpenItems::historyEntryOf(const Entry &entry)
{
    const AttentionItem &item = entry.item;
    HistoryEntry remembered;
    remembered.number = entry.number;
    remembered.id = item.id;
    remembered.time = AlarmClock::now();
    remembered.user = item.user;
    remembered.source = item.source;
    remembered.application = item.application;
    remembered.category = item.category;
    remembered.group = entry.decision.treatment.group.value_or(item.group);
    remembered.priority = entry.decision.priority;
    remembered.title = item.title.toString();
    // What is only said has no other text.
    remembered.text = item.text.isEmpty() ? item.speech : item.text.toString();
    remembered.isPrivate = isPrivate(item, entry.decision);
    remembered.mustSee = entry.comesBack;
    return remembered;
}

int OpenItems::freePlaces(const QString &user) const
{
    if (user.isEmpty()) { // the host's own
        return maxMustSeeOfUser;
    }
    const auto isOne = [&user](const Entry &entry) {
        return entry.comesBack && entry.item.user == user;
    };
    return maxMustSeeOfUser - int(std::count_if(m_entries.begin(), m_entries.end(), isOne));
}

void OpenItems::leavePlace(const QString &user)
{
    if (user.isEmpty()) {
        return;
    }
    // Once for all that end together.
    if (m_usersWithPlaces.isEmpty()) {
        m_entrance.post([this] { fillPlaces(); });
    }
    m_usersWithPlaces.insert(user);
}

void OpenItems::fillPlaces()
{
    const QSet<QString> users = std::exchange(m_usersWithPlaces, {});
    for (const QString &user : users) {
        QMap<qint64, Entry *> waiting; // the oldest is the first
        for (Entry &entry : m_entries) {
            if (!entry.comesBack && entry.number != 0 && entry.item.user == user &&
                mustSee(entry.decision)) {
                waiting.insert(entry.number, &entry);
            }
        }
        int places = freePlaces(user);
        for (auto entry = waiting.begin(); entry != waiting.end() && places > 0; ++entry) {
            --places;
            (*entry)->comesBack = true;
            m_history.replace(historyEntryOf(**entry));
        }
    }
}

bool OpenItems::opensAtOnce(const AttentionItem &item, const Decision &decision) const
{
    const bool isSilent = item.sound.isEmpty() && !item.soundFollows && item.speech.isEmpty() &&
                          !decision.treatment.sound && !decision.isSpoken;
    return decision.isShown && isSilent && !item.path.isEmpty() &&
           !piles(pileOf(item, decision), decision);
}

void OpenItems::openAgain(const HistoryEntry &entry)
{
    Decision decision;
    decision.priority = TavoNotificationItemPriority::Enum(entry.priority);
    decision.treatment.mustSee = true;
    const AttentionItem item = itemOf(entry);
    if (isOpen(item.id)) {
        return;
    }
    Entry &opened = insert(item, decision);
    opened.number = entry.number;
    opened.comesBack = true;
    show(opened);
}

Decision OpenItems::givingWay(const AttentionItem &item) const
{
    Decision decision = m_entries.find(item.id)->decision;
    decision.priority = std::min(decision.priority, item.priority);
    // The settings may have been read since: these are indexes into rules that have gone.
    decision.rules.clear();
    return decision;
}

AttentionOutcome OpenItems::replace(const AttentionItem &item, const Decision &decision)
{
    Entry &entry = *m_entries.find(item.id);
    const AttentionItem previous = std::exchange(entry.item, item);
    // Nothing is of another program or user all of a sudden.
    entry.item.source = previous.source;
    entry.item.user = previous.user;
    const Decision decided = std::exchange(entry.decision, decision);
    const bool cameBack = entry.comesBack;
    entry.comesBack =
        entry.number != 0 && mustSee(decision) && (cameBack || freePlaces(previous.user) > 0);
    if (cameBack || entry.comesBack) {
        m_history.replace(historyEntryOf(entry));
    }
    if (cameBack && !entry.comesBack) {
        leavePlace(previous.user);
    }
    if (entry.isShown() && decision.isShown) {
        changeShown(entry,
                    decided.priority != decision.priority || previous.timeout != item.timeout);
    } else if (entry.isShown()) {
        hide(entry);
        messageEnded(entry, TavoAttentionEnd::Silenced);
    } else if (decision.isShown && hasMessage(item) && isUnseen(entry.end)) {
        show(entry);
    }
    if (decision.isHeard && hasSound(item)) {
        cancelSounds(entry);
        startRequested(entry, item.sound, decision.priority);
    }
    AttentionOutcome outcome = outcomeOf(entry);
    finishIfOver(item.id);
    return outcome;
}

void OpenItems::uncount(const AttentionItem &item)
{
    const auto count = m_counts.find(sourceOf(item));
    if (--*count == 0) {
        m_counts.erase(count);
    }
}

OpenItems::Entry &OpenItems::insert(const AttentionItem &item, const Decision &decision)
{
    ++m_counts[sourceOf(item)];
    Entry &entry = m_entries[item.id];
    entry.item = item;
    entry.decision = decision;
    return entry;
}

AttentionOutcome OpenItems::outcomeOf(const Entry &entry) const
{
    AttentionOutcome outcome;
    outcome.id = entry.item.id;
    outcome.isShown = entry.isShown();
    outcome.isSounding = !entry.sounds.isEmpty() || entry.awaitedSpeech != 0;
    outcome.reason = entry.decision.reason;
    return outcome;
}

void OpenItems::show(Entry &entry)
{
    entry.path = entry.item.path;
    if (entry.path.isEmpty()) {
        if (!entry.node) {
            entry.node.emplace(m_nodes,
                               TavoAttentionMessagesPath() + QString::number(++m_lastMessage));
        }
        fillNode(entry);
        entry.path = entry.node->path();
        m_shownNodes.insert(entry.path, entry.item.id);
    }
    showInPile(entry);
}

void OpenItems::changeShown(Entry &entry, bool isQueuedAnew)
{
    if (entry.node) {
        fillNode(entry);
    }
    const bool staysInPile = entry.pile == pileOf(entry);
    if (entry.isFolded && staysInPile) {
        m_groups.change(entry.pile, memberOf(entry));
    } else if (entry.isFolded) {
        leavePile(entry);
        showInPile(entry);
    } else {
        if (!staysInPile) {
            leavePile(entry);
        }
        if (isQueuedAnew) {
            hide(entry);
            requestDisplay(entry);
        }
    }
}

int OpenItems::groupFrom(const Decision &decision) const
{
    return decision.treatment.groupFrom.value_or(m_groupFrom);
}

bool OpenItems::piles(const QString &pile, const Decision &decision) const
{
    return !pile.isEmpty() &&
           (m_groups.contains(pile) || m_piles.value(pile).size() + 1 >= groupFrom(decision));
}

QString OpenItems::pileOf(const Entry &entry) const
{
    return entry.isOpened() ? QString() : pileOf(entry.item, entry.decision);
}

QString OpenItems::pileOf(const AttentionItem &item, const Decision &decision) const
{
    const Treatment &treatment = decision.treatment;
    if (groupFrom(decision) == 0 || mustSee(decision) ||
        decision.priority >= TavoNotificationItemPriority::Urgent) {
        return {};
    }
    // A rule may group what comes from several programs. A program can't: it would hide others' messages.
    return treatment.group
               ? QStringLiteral("rule") + QChar::Null + *treatment.group
               : QStringLiteral("source") + QChar::Null + item.source + QChar::Null + item.group;
}

void OpenItems::showInPile(Entry &entry)
{
    const QString id = entry.item.id;
    entry.pile = pileOf(entry);
    if (piles(entry.pile, entry.decision)) {
        fold(entry.pile, m_piles.take(entry.pile) << id);
        return;
    }
    if (!entry.pile.isEmpty()) {
        m_piles[entry.pile].append(id);
    }
    requestDisplay(entry);
}

void OpenItems::fold(const QString &pile, const QStringList &ids)
{
    QVector<MessageGroups::Member> members;
    for (const QString &id : ids) {
        Entry &entry = *m_entries.find(id);
        if (!entry.request.isEmpty()) {
            hide(entry);
        }
        entry.isFolded = true;
        members.append(memberOf(entry));
    }
    const Entry &first = *m_entries.find(ids.first());
    const QString &application =
        first.item.application.isEmpty() ? first.item.source : first.item.application;
    m_groups.add(pile, first.decision.treatment.group.value_or(application), members);
}

MessageGroups::Member OpenItems::memberOf(const Entry &entry)
{
    TrString title = entry.item.title;
    if (title.isEmpty()) {
        title = entry.item.text.isEmpty() ? TrString(entry.item.application) : entry.item.text;
    }
    return {entry.item.id, title, entry.decision.priority,
            entry.decision.timeout(entry.item.timeout)};
}

void OpenItems::leavePile(Entry &entry)
{
    const QString pile = std::exchange(entry.pile, {});
    const QString id = entry.item.id;
    if (pile.isEmpty()) {
        return;
    }
    if (!entry.isFolded) {
        QStringList &others = m_piles[pile];
        others.removeOne(id);
        if (others.isEmpty()) {
            m_piles.remove(pile);
        }
        return;
    }
    entry.isFolded = false;
    m_groups.remove(pile, id);
    const QStringList left = m_groups.members(pile);
    if (left.size() == 1) {
        // One message is no group.
        m_groups.remove(pile, left.first());
        Entry &last = *m_entries.find(left.first());
        last.isFolded = false;
        m_piles.insert(pile, left);
        requestDisplay(last);
    }
}

void OpenItems::on_groups_opened(const QString &id)
{
    Entry &entry = *m_entries.find(id);
    // So that it is shown at once, and the group again afterwards.
    entry.openedPriority = std::max(int(m_groups.priority(entry.pile)) + 1, 0);
    leavePile(entry);
    requestDisplay(entry);
}

void OpenItems::on_groups_ended(const QStringList &ids, TavoNotificationDisplayEnd::Enum end)
{
    for (const QString &id : ids) {
        Entry &entry = *m_entries.find(id);
        entry.isFolded = false;
        entry.pile.clear();
    }
    for (const QString &id : ids) {
        messageEnded(*m_entries.find(id), endOf(end));
        finishIfOver(id);
    }
}

void OpenItems::fillNode(Entry &entry)
{
    const AttentionItem &item = entry.item;
    const auto bind = [this](CMActivateNode *action) {
        action->setInvoke(this, &OpenItems::on_action_activated, Qt::QueuedConnection);
    };
    entry.node->show(item.title, ItemRows::text(item), ItemRows::actions(item), bind);
}

void OpenItems::requestDisplay(Entry &entry)
{
    // A requester with a node of its own knows the display's reports by its own id, to which a number is
    // added when it is displayed again. No other request has the others, not even one that this module
    // made before it was loaded again.
    do {
        ++entry.requests;
        entry.request = entry.node ? tavoGenerateUuid()
                        : entry.requests == 1
                            ? entry.item.id
                            : entry.item.id + QLatin1Char('/') + QString::number(entry.requests);
    } while (entry.request != entry.item.id && isOpen(entry.request));
    if (entry.request != entry.item.id) {
        m_requests.insert(entry.request, entry.item.id);
    }
    const auto item =
        TavoNotificationDisplayItem()
            .setId(entry.request)
            .setPath(entry.path)
            .setPriority(std::max(entry.decision.priority,
                                  TavoNotificationItemPriority::Enum(entry.openedPriority)))
            .setTimeout(entry.decision.timeout(entry.item.timeout));
    const CMReply<QVariant> reply;
    reply.CMVoidReply::addWatcher(new RefusalWatcher(*this, entry));
    CMRoot()->invoke(TavoNotificationDisplayOpenPath(),
                     TavoValue().setNotificationDisplayItem(item), reply);
}

void OpenItems::hide(Entry &entry)
{
    if (entry.isFolded) {
        return;
    }
    m_requests.remove(entry.request);
    entry.request.clear();
    cancelOnDisplay(entry.path);
}

void OpenItems::on_show_failed(const QString &id, const QString &request, const CMError &error)
{
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end() || entry->request != request) {
        return;
    }
    LOG4CPLUS_WARN(logger,
                   "Notification " << id << " is not shown: " << error.message().toString());
    messageEnded(*entry, TavoAttentionEnd::Failed);
    finishIfOver(id);
}

void OpenItems::setAwaitsSound(const QString &id, bool awaitsSound)
{
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end() || isAttendedTo(entry->end)) {
        return;
    }
    entry->awaitsSound = awaitsSound;
    if (!awaitsSound && !entry->isShown() && entry->end == TavoAttentionEnd::Unknown) {
        entry->end = TavoAttentionEnd::Closed;
    }
    finishIfOver(id);
}

void OpenItems::play(const QString &id, const TavoNotificationPlayerItem &sound, int maxPriority,
                     const CMReply<QVariant> &reply)
{
    const auto entry = m_entries.find(id);
    const bool isOver = entry == m_entries.end();
    if (!isOver) {
        entry->awaitsSound = false;
    }
    const bool isHeard = !isOver && entry->decision.isHeard;
    if (isHeard && (hasSound(sound) || entry->decision.treatment.sound)) {
        const int priority = std::min<int>(entry->decision.priority, maxPriority);
        const CMReply<QVariant> answer = startRequested(*entry, sound, priority);
        answer.onFinished(this, [reply, priority](const CMReply<QVariant> &finished) {
            if (finished.error().isError()) {
                reply.setError(finished.error());
            } else {
                reply.setValue(TavoValue().setInt_(priority).__variant());
            }
        });
        return;
    }
    reply.setValue(QVariant());
    if (!isOver) {
        finishIfOver(id);
    }
    if (!sound.playbackResponsePath().isEmpty()) {
        CMRoot()->invoke(sound.playbackResponsePath(),
                         TavoValue().setNotificationPlayerResponse(
                             TavoNotificationPlayerResponse()
                                 .setId(sound.id())
                                 .setType(TavoNotificationPlayerResponseType::Cancelled)),
                         {});
    }
}

CMReply<QVariant> OpenItems::startRequested(Entry &entry, TavoNotificationPlayerItem sound,
                                            int priority)
{
    sound.setPriority(TavoNotificationItemPriority::Enum(priority));
    if (entry.decision.treatment.sound) {
        sound.setType(TavoNotificationPlayerItemType::Uri)
            .setContent(*entry.decision.treatment.sound)
            .setContentStreamFormat({});
    }
    return startSound(entry, sound);
}

void OpenItems::startFile(Entry &entry, const QString &file, const Speech::File &speech)
{
    startSound(entry,
               TavoNotificationPlayerItem()
                   .setType(TavoNotificationPlayerItemType::Uri)
                   .setContent(file)
                   .setPriority(entry.decision.priority),
               speech);
}

QString OpenItems::spokenText(const AttentionItem &item, const Decision &decision)
{
    if (decision.isHeard && !item.speech.isEmpty()) {
        return item.speech;
    }
    return decision.isSpoken ? item.title.toString() + QLatin1String(".\n") + item.text.toString()
                             : QString();
}

void OpenItems::speak(Entry &entry)
{
    const QString text = spokenText(entry.item, entry.decision);
    if (text.isEmpty()) {
        return;
    }
    if (entry.decision.treatment.chime) {
        startFile(entry, *entry.decision.treatment.chime);
    }
    entry.awaitedSpeech = ++m_lastSpeech;
    const bool isItsOwn = isPrivate(entry.item, entry.decision);
    m_speech.say({text, entry.item.language, entry.item.user, entry.decision.priority, isItsOwn},
                 [this, id = entry.item.id, number = m_lastSpeech](
                     const Result<Speech::File> &made) { on_speech_made(id, number, made); });
}

void OpenItems::on_speech_made(const QString &id, int number, const Result<Speech::File> &made)
{
    const Entrance::Hold held = m_entrance.hold();
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end() || entry->awaitedSpeech != number) {
        return; // It has ended in the meantime.
    }
    entry->awaitedSpeech = 0;
    if (const auto *failure = std::get_if<Failure>(&made)) {
        LOG4CPLUS_WARN(logger, "Notification " << id << " is not read aloud: " << failure->reason);
        if (!entry->isShown() && entry->end == TavoAttentionEnd::Unknown) {
            entry->end = TavoAttentionEnd::Failed;
        }
        finishIfOver(id);
        return;
    }
    const auto &file = std::get<Speech::File>(made);
    startFile(*entry, *file, file);
}

CMReply<QVariant> OpenItems::startSound(Entry &entry, TavoNotificationPlayerItem sound,
                                        const Speech::File &speech)
{
    const CMPath target = sound.playbackResponsePath();
    if (sound.id().isEmpty()) {
        sound.setId(tavoGenerateUuid());
    }
    const QString id = sound.id();
    // Only sounds that clients send themselves give way to those of other users.
    if (target.isEmpty() && !entry.item.user.isEmpty()) {
        sound.setPriority(std::min(sound.priority(), TavoNotificationItemPriority::High));
    }
    // The player keeps a paused sound of each priority.
    sound.setPriority(std::max(sound.priority(), TavoNotificationItemPriority::Low));
    sound.setPlaybackResponsePath(m_responsePath);
    if (entry.decision.treatment.attenuation) {
        sound.setAttenuation(*entry.decision.treatment.attenuation);
    }
    const int number = ++m_lastSound;
    entry.sounds.insert(number, id);
    m_sounds[id].append({number, entry.item.id, target, speech});
    CMReply<QVariant> reply = CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(),
                                               TavoValue().setNotificationPlayerItem(sound), {});
    reply.addWatcher(
        this,
        [this, id, number](const CMVoidReply &answer) {
            // A refused request gets no response.
            if (answer.error().isError()) {
                LOG4CPLUS_WARN(logger, "Sound " << id << " is not played: "
                                                << answer.error().message().toString());
                const Entrance::Hold held = m_entrance.hold();
                soundEnded(id, number);
            }
        },
        Qt::QueuedConnection);
    return reply;
}

void OpenItems::on_sound_responded(const CMSetDataRequest &request)
{
    request.reply().setValue(QVariant());
    const auto response = TavoValue(request.value().toHash()).notificationPlayerResponse();
    const auto sounds = m_sounds.constFind(response.id());
    if (sounds == m_sounds.constEnd()) {
        return;
    }
    const Sound &sound = sounds->first();
    if (!sound.target.isEmpty()) {
        CMRoot()->invoke(sound.target, request.value(), {});
    }
    if (!isEnd(response.type())) {
        return;
    }
    const auto entry = m_entries.find(sound.notification);
    if (entry != m_entries.end() && entry->end == TavoAttentionEnd::Unknown && !entry->isShown() &&
        !entry->awaitsSound) {
        entry->end = response.type() == TavoNotificationPlayerResponseType::Finished
                         ? TavoAttentionEnd::Expired
                     : response.type() == TavoNotificationPlayerResponseType::Failed
                         ? TavoAttentionEnd::Failed
                         : TavoAttentionEnd::Closed;
    }
    soundEnded(response.id(), sound.number);
}

void OpenItems::soundEnded(const QString &sound, int number)
{
    const auto sounds = m_sounds.find(sound);
    if (sounds == m_sounds.end()) {
        return;
    }
    const auto ended = std::find_if(sounds->begin(), sounds->end(),
                                    [number](const Sound &each) { return each.number == number; });
    if (ended == sounds->end()) {
        return;
    }
    const QString id = ended->notification;
    sounds->erase(ended);
    if (sounds->isEmpty()) {
        m_sounds.erase(sounds);
    }
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end()) {
        return;
    }
    entry->sounds.remove(number);
    entry->heardUntil = AlarmClock::now();
    finishIfOver(id);
}

void OpenItems::cancelSounds(const Entry &entry)
{
    for (auto each = entry.sounds.cbegin(); each != entry.sounds.cend(); ++each) {
        for (Sound &sound : m_sounds[each.value()]) {
            if (sound.number == each.key() && !std::exchange(sound.isCancelled, true)) {
                CMRoot()->invoke(TavoNotificationPlayerCancelPath(),
                                 TavoValue().setString_(each.value()), {});
            }
        }
    }
}

void OpenItems::close(const QString &id, TavoAttentionEnd::Enum end, const QString &action)
{
    const auto entry = m_entries.find(id);
    Q_ASSERT(entry != m_entries.end());
    if (!entry->isShown() && isAttendedTo(entry->end)) {
        return;
    }
    entry->action = action;
    if (entry->isShown()) {
        hide(*entry);
    }
    messageEnded(*entry, end);
    finishIfOver(id);
}

void OpenItems::messageEnded(Entry &entry, TavoAttentionEnd::Enum end)
{
    leavePile(entry);
    m_requests.remove(entry.request);
    entry.request.clear();
    entry.end = end;
    if (!entry.path.isEmpty() && end != TavoAttentionEnd::Failed) {
        entry.shownUntil = AlarmClock::now();
    }
    if (isAttendedTo(end)) {
        entry.awaitsSound = false;
        entry.awaitedSpeech = 0;
        cancelSounds(entry);
    }
}

void OpenItems::finishIfOver(const QString &id)
{
    const auto found = m_entries.find(id);
    if (found->isShown() || !found->sounds.isEmpty() || found->awaitsSound ||
        found->awaitedSpeech != 0) {
        return;
    }
    Entry entry = *found;
    if (entry.end == TavoAttentionEnd::Unknown) {
        entry.end = TavoAttentionEnd::Silenced; // nothing of it has reached people
    }
    m_entries.erase(found);
    uncount(entry.item);
    if (entry.comesBack) {
        leavePlace(entry.item.user);
    }
    if (entry.node) {
        m_shownNodes.remove(entry.node->path()); // a requester's path may be the same
        entry.node->dispose();
    }
    if (entry.number != 0) {
        m_history.change(entry.number, stateOf(entry), entry.action, AlarmClock::now(),
                         entry.item.user);
    }
    m_ended->setValue(
        TavoValue().setAttentionEnded(TavoAttentionEnded()
                                          .setId(entry.item.id) // id may have gone with the entry
                                          .setEnd(entry.end)
                                          .setAction(entry.action)
                                          .setShownUntil(entry.shownUntil)
                                          .setHeardUntil(entry.heardUntil)
                                          .setNumber(++m_ends)));
}

HistoryEntry::State OpenItems::stateOf(const Entry &entry)
{
    using State = HistoryEntry::State;
    if (entry.end != TavoAttentionEnd::Expired) {
        return ::stateOf(entry.end);
    }
    if (entry.shownUntil != 0) {
        return entry.isOpened() ? State::Seen : State::Expired;
    }
    // Its sound was heard to the end, but not everything may have reached people.
    const bool isHidden = entry.decision.isQuiet && !entry.decision.isShown;
    return isHidden && hasMessage(entry.item) ? State::Silenced : State::Seen;
}

void OpenItems::on_display_ended(const CMPath & /*path*/, const QVariant &value)
{
    const Entrance::Hold held = m_entrance.hold();
    const auto ended = TavoValue(value.toHash()).displayEnded();
    const QString id = m_requests.value(ended.id(), ended.id());
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end() || entry->request != ended.id()) {
        m_groups.displayEnded(ended);
        return;
    }
    messageEnded(*entry, endOf(ended.end()));
    finishIfOver(id);
}

void OpenItems::on_queue_nodeChanged(const CMPath & /*path*/, bool published)
{
    if (published) {
        return;
    }
    const Entrance::Hold held = m_entrance.hold();
    m_groups.displayGone();
    const QStringList ids = m_entries.keys();
    for (const QString &id : ids) {
        Entry &entry = m_entries[id];
        if (entry.isShown()) {
            messageEnded(entry, TavoAttentionEnd::Failed);
            finishIfOver(id);
        }
    }
}

void OpenItems::on_player_nodeChanged(const CMPath & /*path*/, bool published)
{
    if (published) {
        return;
    }
    const Entrance::Hold held = m_entrance.hold();
    // The player has dropped its sounds, so no responses will come.
    while (!m_sounds.isEmpty()) {
        const QString id = m_sounds.firstKey();
        soundEnded(id, m_sounds.first().first().number);
    }
}

void OpenItems::on_action_activated(const CMSetDataRequest &request)
{
    const Entrance::Hold held = m_entrance.hold();
    const QString id = m_shownNodes.value(request.path().parent().parent());
    const auto entry = m_entries.find(id);
    if (entry != m_entries.end()) {
        if (const auto key = entry->node->actionAt(request.path())) {
            request.reply().setValue(QVariant());
            close(id, TavoAttentionEnd::ActedOn, *key);
            return;
        }
    }
    request.reply().setError(CMError(QStringLiteral("Attention"),
                                     TAVO_TR("The notification has no such action any more")));
}
