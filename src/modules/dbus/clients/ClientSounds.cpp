// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientSounds.h"

#include "Clients.h"
#include "Refusals.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {
const QString itemKey = QStringLiteral("notificationPlayerItem");

const CMPath &soundsPath()
{
    static const CMPath path{QStringLiteral("/dbus/sounds")};
    return path;
}

/// The value of a request to cancel the sound.
QVariant cancelOf(const QString &id)
{
    return TavoValue().setString_(id).__variant();
}

void askPlayerToCancel(const QString &id)
{
    CMRoot()->invoke(TavoNotificationPlayerCancelPath(), cancelOf(id), {});
}

/// Of one client, that wait for their replies.
constexpr std::size_t maxMusicRequests = 4;

/// So often, an urgent sound that plays gives way to those of other users and stays urgent.
constexpr int maxTimesGivenWay = 3;

/// From this priority on, sounds of several users take turns.
int urgentPriority(const ClientLimits &limits)
{
    return std::min<int>(TavoNotificationItemPriority::Urgent, limits.priority);
}

bool isEnd(TavoNotificationPlayerResponseType::Enum type)
{
    return type == TavoNotificationPlayerResponseType::Finished ||
           type == TavoNotificationPlayerResponseType::Cancelled ||
           type == TavoNotificationPlayerResponseType::Failed;
}

/// Each priority may have one sound that is paused for a more urgent one, and holds what it has opened,
/// decoded and fetched. So there are only as many as people use.
constexpr auto minPriority = TavoNotificationItemPriority::Low;

/// Keeps the notification of a sound open while the sound gives way.
void tellWhetherAgain(const QString &notification, bool isAgain)
{
    if (!notification.isEmpty()) {
        CMRoot()->invoke(TavoAttentionSoundPath(),
                         TavoValue().setString_(notification).setBool_(isAgain), {});
    }
}

void respond(const CMPath &target, const QVariant &response)
{
    if (!target.isEmpty()) {
        CMRoot()->invoke(target, response, {});
    }
}

QVariant cancelledResponse(const QString &id)
{
    return TavoValue()
        .setNotificationPlayerResponse(TavoNotificationPlayerResponse().setId(id).setType(
            TavoNotificationPlayerResponseType::Cancelled))
        .__variant();
}

/// Other sounds end by themselves.
bool endsWithItsClient(const TavoNotificationPlayerItem &item)
{
    return item.loop() || item.type() == TavoNotificationPlayerItemType::Stream;
}
} // namespace

ClientSounds::ClientSounds(Clients &clients, CMNodes *nodes, SoundAccess access)
    : m_clients(clients)
    , m_access(std::move(access))
    , m_nodes(nodes)
    , m_musicRequests(clients)
    , m_playerRequests(clients)
    , m_attentionRequests(clients)
{
    tavoConnect(&m_clients, &Clients::left, this, &ClientSounds::on_clients_left);
    tavoConnect(&m_clients, &Clients::userKnown, this, &ClientSounds::on_clients_userKnown);
    tavoConnect(&m_turns, &UrgentTurns::gaveWay, this, &ClientSounds::on_turns_gaveWay);
    tavoConnect(&m_turns, &UrgentTurns::cameBack, this, &ClientSounds::on_turns_cameBack);
    CMRoot()->connectNodeChange(TavoNotificationPlayerEnqueuePath(), this,
                                &ClientSounds::on_player_nodeChanged);
}

CMReply<QVariant> ClientSounds::enqueue(const std::string &client, const QVariant &value,
                                        std::size_t bytes)
{
    const TavoValue request(value.toHash());
    if (!request.fields().contains(itemKey)) {
        return CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(), value, {});
    }
    const TavoNotificationPlayerItem requested = request.notificationPlayerItem();
    checkId(requested.id(), {});
    // Without fields that the player does not know.
    TavoNotificationPlayerItem item = clean(requested);
    const auto file = checkAccess(client, item);
    return send(client, item, bytes, file);
}

TavoNotificationPlayerItem ClientSounds::clean(const TavoNotificationPlayerItem &requested) const
{
    checkTarget(requested.playbackResponsePath());
    return TavoNotificationPlayerItem()
        .setId(requested.id())
        .setType(requested.type())
        .setContent(requested.content())
        .setContentStreamFormat(requested.contentStreamFormat())
        .setPriority(m_clients.limits().allowedPriority(requested.priority()))
        .setLoop(requested.loop())
        .setAttenuation(requested.attenuation())
        .setPlaybackResponsePath(requested.playbackResponsePath());
}

CMPath ClientSounds::prepare(const std::string &client, const TavoNotificationPlayerItem &requested,
                             std::size_t bytes, const QString &notification)
{
    checkId(requested.id(), notification);
    TavoNotificationPlayerItem item = clean(requested);
    if (item.id().isEmpty()) {
        item.setId(tavoGenerateUuid());
    }
    const auto file = checkAccess(client, item);
    CMPath path = watch(client, item, bytes, file);
    m_sounds.at(path).notification = notification;
    return path;
}

CMReply<QVariant> ClientSounds::play(const std::string &client,
                                     const TavoNotificationPlayerItem &item,
                                     const std::optional<OpenedSound> &file,
                                     const QString &notification)
{
    return send(client, item, std::size_t(item.content().size()), file, notification);
}

CMReply<QVariant> ClientSounds::send(const std::string &client,
                                     const TavoNotificationPlayerItem &item, std::size_t bytes,
                                     const std::optional<OpenedSound> &file,
                                     const QString &notification)
{
    const CMPath path = watch(client, item, bytes, file);
    m_sounds.at(path).notification = notification;
    return sendInTurn(path);
}

void ClientSounds::start(const CMPath &path, const QString &notification)
{
    const auto prepared = m_sounds.find(path);
    if (prepared == m_sounds.end()) {
        tellWhetherAgain(notification, false); // it has made room for others
        return;
    }
    sendInTurn(path);
}

CMReply<QVariant> ClientSounds::sendInTurn(const CMPath &path)
{
    const Sound &added = m_sounds.at(path);
    SlowRequests &requests = added.notification.isEmpty() ? m_playerRequests : m_attentionRequests;
    return requests.addForGood(added.charge.user(), [this, path] {
        const auto found = m_sounds.find(path);
        if (found == m_sounds.end()) {
            // The player has gone in the meantime, or the sound of a notification has been cancelled.
            CMReply<QVariant> reply;
            reply.setError(CMError(QStringLiteral("Dbus"), TAVO_TR("The sound has ended")));
            return reply;
        }
        found->second.isSent = true;
        // One on its way to the player is cancelled when it has arrived.
        const bool isCancelled = found->second.isCancelled && found->second.notification.isEmpty();
        const QString id = found->second.item.id();
        CMReply<QVariant> reply = sendToPlayer(path, found->second);
        if (isCancelled) {
            askPlayerToCancel(id);
        }
        return reply;
    });
}

CMReply<QVariant> ClientSounds::sendToPlayer(const CMPath &path, Sound &sound)
{
    sound.turn = m_turns.nextTurn();
    TavoValue value = TavoValue().setNotificationPlayerItem(sound.item);
    CMPath target = TavoNotificationPlayerEnqueuePath();
    const bool isDirect = sound.notification.isEmpty();
    if (!isDirect) {
        value.setString_(sound.notification);
        target = TavoAttentionSoundPath();
    }
    if (!isDirect && sound.timesGivenWay > 0) {
        value.setInt_(sound.item.priority());
    }
    sound.isOnItsWay = !isDirect;
    CMReply<QVariant> reply = CMRoot()->invoke(target, value, {});
    if (isDirect) {
        takeTurns(path, sound);
    }
    reply.onFinished(this, [this, path, isDirect](const CMReply<QVariant> &finished) {
        // A refused request gets no response. If the reply is finished already, this is called at once,
        // and the sound does not exist any more afterwards.
        if (finished.error().isError()) {
            forget(path);
            return;
        }
        if (!isDirect) {
            takeOutcome(path, finished.value());
        }
    });
    return reply;
}

/// The module for attention plays a sound with the priority of its notification, or not at all.
void ClientSounds::takeOutcome(const CMPath &path, const QVariant &outcome)
{
    const auto found = m_sounds.find(path);
    if (found == m_sounds.end() || outcome.isNull()) {
        return; // a response follows
    }
    Sound &sound = found->second;
    sound.isOnItsWay = false;
    if (sound.isCancelled) {
        askPlayerToCancel(sound.item.id());
        return;
    }
    const int priority = TavoValue(outcome.toHash()).int_();
    sound.item.setPriority(TavoNotificationItemPriority::Enum(priority));
    takeTurns(path, sound);
}

void ClientSounds::takeTurns(const CMPath &path, const Sound &sound)
{
    if (!sound.isCancelled && sound.item.priority() >= urgentPriority(m_clients.limits())) {
        m_turns.add(path, sound.charge, sound.turn, sound.isPlaying,
                    m_clients.quotas().hasManyUsers());
    } else {
        m_turns.remove(path);
    }
}

void ClientSounds::on_turns_gaveWay(const CMPath &path)
{
    Sound &sound = m_sounds.at(path);
    sound.givesWay = true;
    const bool wasPlaying = std::exchange(sound.isPlaying, false);
    tellWhetherAgain(sound.notification, true);
    if (wasPlaying && ++sound.timesGivenWay == maxTimesGivenWay) {
        const int lower = urgentPriority(m_clients.limits()) - 1;
        sound.item.setPriority(TavoNotificationItemPriority::Enum(lower));
    }
    askPlayerToCancel(sound.item.id());
}

void ClientSounds::on_turns_cameBack(const CMPath &path)
{
    Sound &sound = m_sounds.at(path);
    sound.comesBack = true;
    if (sound.hasLeft) {
        sendAgain(path, sound);
    }
}

void ClientSounds::sendAgain(const CMPath &path, Sound &sound)
{
    sound.givesWay = false;
    sound.hasLeft = false;
    sound.comesBack = false;
    const auto tellRefusal = [target = sound.target, response = cancelledResponse(sound.item.id())](
                                 const CMReply<QVariant> &finished) {
        if (finished.error().isError()) {
            respond(target, response);
        }
    };
    sendToPlayer(path, sound).onFinished(this, tellRefusal);
}

CMReply<QVariant> ClientSounds::cancel(const std::string &client, const QVariant &value)
{
    return cancelInTurn(m_clients.quotas().userOf(client), value);
}

CMReply<QVariant> ClientSounds::cancel(const QVariant &value)
{
    const QString id = TavoValue(value.toHash()).string_();
    bool isKnown = false;
    bool isWithPlayer = false;
    std::vector<CMPath> over;
    for (auto &[path, sound] : m_sounds) {
        if (sound.item.id() == id) {
            isKnown = true;
            isWithPlayer = isWithPlayer || (sound.isSent && !sound.givesWay && !sound.isOnItsWay);
            const bool isToBeSent = !sound.isSent && !sound.notification.isEmpty();
            if (isToBeSent) {
                tellWhetherAgain(sound.notification, false);
            }
            if (isToBeSent || sound.hasLeft) {
                over.push_back(path);
            }
            stopGivingWay(sound);
            sound.isCancelled = true;
            m_turns.cancel(path); // It would give way and play again.
        }
    }
    for (const CMPath &path : over) {
        respond(m_sounds.at(path).target, cancelledResponse(id));
        forget(path);
    }
    if (isKnown && !isWithPlayer) {
        CMReply<QVariant> done;
        done.setValue(QVariant());
        return done;
    }
    return CMRoot()->invoke(TavoNotificationPlayerCancelPath(), value, {});
}

void ClientSounds::stopGivingWay(Sound &sound)
{
    if (std::exchange(sound.givesWay, false)) {
        tellWhetherAgain(sound.notification, false);
    }
}

/// The player would refuse a sound that waits when it comes back.
void ClientSounds::checkId(const QString &id, const QString &notification) const
{
    const auto isWaiting = [&](const auto &entry) {
        const Sound &sound = entry.second;
        return sound.givesWay && sound.item.id() == id &&
               (notification.isEmpty() || sound.notification != notification);
    };
    if (m_turns.isAnyWaiting() && std::any_of(m_sounds.begin(), m_sounds.end(), isWaiting)) {
        throw Refusals::soundWaits();
    }
}

void ClientSounds::cancelOfNotification(const QString &notification)
{
    if (m_turns.isAnyWaiting()) {
        cancelEach([&notification](const Sound &sound) {
            return sound.givesWay && sound.notification == notification;
        });
    }
}

template <typename Predicate>
void ClientSounds::cancelEach(const Predicate &isMeant)
{
    // First, because a sound that waits is forgotten at once.
    std::vector<std::pair<Quotas::UserId, QString>> meant;
    for (const auto &[path, sound] : m_sounds) {
        if (isMeant(sound)) {
            meant.emplace_back(sound.charge.user(), sound.item.id());
        }
    }
    for (const auto &[user, id] : meant) {
        cancelInTurn(user, cancelOf(id));
    }
}

void ClientSounds::cancel(const QString &id)
{
    const auto found = std::find_if(m_sounds.begin(), m_sounds.end(), [&id](const auto &entry) {
        return entry.second.item.id() == id;
    });
    if (found != m_sounds.end()) {
        cancelInTurn(found->second.charge.user(), cancelOf(id));
    }
}

CMReply<QVariant> ClientSounds::cancelInTurn(Quotas::UserId user, const QVariant &value)
{
    return m_playerRequests.addForGood(user, [this, value] { return cancel(value); });
}

void ClientSounds::checkTarget(const CMPath &path)
{
    static const CMPath soundResponses = TavoAttentionPath() + QStringLiteral("soundResponse");
    if (path.isBelow(soundsPath()) || path == soundResponses) {
        throw Refusals::onlyPlayerReports();
    }
}

std::optional<OpenedSound> ClientSounds::checkAccess(const std::string &client,
                                                     TavoNotificationPlayerItem &item)
{
    const bool isStream = item.type() == TavoNotificationPlayerItemType::Stream;
    const bool hasLocation = isStream || item.type() == TavoNotificationPlayerItemType::Uri;
    // The player refuses an item without a location.
    if (!hasLocation || item.content().isEmpty()) {
        return std::nullopt;
    }
    AllowedSound sound = allowed(client, item.content(),
                                 isStream ? SoundAccess::Kind::Stream : SoundAccess::Kind::File);
    item.setContent(sound.location);
    return std::move(sound.file);
}

Result<AllowedSound> ClientSounds::check(const std::string &client, const QString &location,
                                         SoundAccess::Kind kind)
{
    const QString key = QString::number(int(kind)) + ' ' + location;
    if (auto outcome = takeChecked(client, key)) {
        return *std::move(outcome);
    }
    if (auto outcome = m_access.checkAtOnce(location, kind)) {
        return *std::move(outcome);
    }
    checkLater(client, key,
               [access = m_access, location, kind] { return access.check(location, kind); });
}

Result<AllowedSound> ClientSounds::find(const std::string &client, const QString &name,
                                        const SoundOpener::Check &search)
{
    const QString key = QStringLiteral("name ") + name;
    if (auto outcome = takeChecked(client, key)) {
        return *std::move(outcome);
    }
    checkLater(client, key, search);
}

std::optional<Result<AllowedSound>> ClientSounds::takeChecked(const std::string &client,
                                                              const QString &key)
{
    const auto checked = m_checked.extract(client);
    // Its call may have been refused for another reason.
    constexpr int maxAgeMs = 5000;
    if (checked.empty() || checked.mapped().key != key ||
        checked.mapped().age.hasExpired(maxAgeMs)) {
        return std::nullopt;
    }
    return checked.mapped().outcome;
}

void ClientSounds::checkLater(const std::string &client, const QString &key,
                              const SoundOpener::Check &check)
{
    m_opener.run(m_clients.quotas().userOf(client), check,
                 [this, client, key](const Result<AllowedSound> &outcome) {
                     if (m_clients.goOn(client)) {
                         Checked checked{key, outcome, {}};
                         checked.age.start();
                         m_checked.insert_or_assign(client, checked);
                     }
                 });
    throw Clients::NotYet();
}

AllowedSound ClientSounds::allowed(const std::string &client, const QString &location,
                                   SoundAccess::Kind kind)
{
    const Result<AllowedSound> result = check(client, location, kind);
    if (const auto *refusal = std::get_if<Failure>(&result)) {
        throw Refusals::soundNotAllowed(refusal->reason.toStdString());
    }
    return std::get<AllowedSound>(result);
}

CMReply<QVariant> ClientSounds::playMusic(const std::string &client, const QVariant &value)
{
    // A record with the source, or the source itself. Empty means the last source.
    const QString source = value.userType() == QMetaType::QVariantHash
                               ? TavoValue(value.toHash()).string_()
                               : TavoCodec<QString>::read(value);
    if (!source.isEmpty()) {
        allowed(client, source, SoundAccess::Kind::File); // throws
    }
    if (m_musicRequests.count(client) >= maxMusicRequests) {
        throw Refusals::clientHoldsTooMuch(maxMusicRequests, "requests to play music");
    }
    const auto user = m_clients.quotas().userOf(client);
    return m_musicRequests.add(client, [this, user, source, value] {
        return source.isEmpty() ? CMRoot()->invoke(TavoPlayerMainAudioPlayPath(), value, {})
                                : startMusic(user, source);
    });
}

/// The file is opened now, because requests that wait must not hold files.
CMReply<QVariant> ClientSounds::startMusic(Quotas::UserId user, const QString &source)
{
    CMReply<QVariant> reply;
    constexpr auto kind = SoundAccess::Kind::File;
    if (const auto checked = m_access.checkAtOnce(source, kind)) {
        startMusic(*checked, reply);
    } else {
        m_opener.run(
            user, [access = m_access, source] { return access.check(source, kind); },
            [this, reply](const Result<AllowedSound> &outcome) { startMusic(outcome, reply); });
    }
    return reply;
}

void ClientSounds::startMusic(const Result<AllowedSound> &checked, const CMReply<QVariant> &reply)
{
    if (const auto *refusal = std::get_if<Failure>(&checked)) {
        reply.setError(CMError(QStringLiteral("Player"), refusal->reason));
        return;
    }
    const AllowedSound &music = std::get<AllowedSound>(checked);
    CMRoot()
        ->invoke(TavoPlayerMainAudioPlayPath(), QVariant(music.location), {})
        .onFinished(this, [this, reply, file = music.file](const CMReply<QVariant> &finished) {
            m_music = file; // the music before it plays no longer
            if (finished.error().isError()) {
                reply.setError(finished.error());
            } else {
                reply.setValue(finished.value());
            }
        });
}

CMPath ClientSounds::watch(const std::string &client, const TavoNotificationPlayerItem &item,
                           std::size_t bytes, const std::optional<OpenedSound> &file)
{
    CMPath path = soundsPath() + QString::number(++m_lastNumber);
    Quotas::Charge charge = m_clients.quotas().charge(
        client, {Quotas::Sounds, 1, Quotas::storedBytes(bytes), item.priority()},
        [this, path] { giveUp(path); });
    CMActivateNode *node = CMActivateNode::create(m_nodes, path);
    auto watched = item;
    watched.setPriority(std::max(item.priority(), minPriority)).setPlaybackResponsePath(path);
    m_sounds.emplace(
        path, Sound{std::move(charge), watched, item.playbackResponsePath(), file, node, {}});
    node->setInvoke(this, &ClientSounds::on_sound_responded, Qt::QueuedConnection);
    return path;
}

void ClientSounds::giveUp(const CMPath &path)
{
    const auto given = m_sounds.find(path);
    if (given == m_sounds.end()) {
        return;
    }
    const Sound &sound = given->second;
    if (sound.isSent) {
        cancelInTurn(sound.charge.user(), cancelOf(sound.item.id()));
        return;
    }
    // It no longer counts, so there could be any number of them if it stayed until its turn. The request to play one
    // without a notification is refused then.
    if (!sound.notification.isEmpty()) {
        tellWhetherAgain(sound.notification, false);
        respond(sound.target, cancelledResponse(sound.item.id()));
    }
    forget(path);
}

void ClientSounds::forget(const CMPath &path)
{
    const auto sound = m_sounds.find(path);
    if (sound == m_sounds.end()) {
        return;
    }
    m_turns.remove(path);
    stopGivingWay(sound->second);
    sound->second.node->dispose();
    m_sounds.erase(sound);
}

void ClientSounds::on_sound_responded(const CMSetDataRequest &request)
{
    request.reply().setValue(QVariant());
    const auto found = m_sounds.find(request.path());
    if (found == m_sounds.end()) {
        return;
    }
    Sound &sound = found->second;
    const auto type = TavoValue(request.value().toHash()).notificationPlayerResponse().type();
    if (type == TavoNotificationPlayerResponseType::Cancelled && sound.givesWay) {
        sound.hasLeft = true;
        if (sound.comesBack) {
            sendAgain(request.path(), sound);
        }
        return;
    }
    bool isAgain = false;
    if (type == TavoNotificationPlayerResponseType::Started) {
        m_turns.start(request.path());
        isAgain = std::exchange(sound.hasStarted, true);
        sound.isPlaying = !sound.givesWay; // it may have been on its way
    }
    if (!isAgain) {
        respond(sound.target, request.value());
    }
    if (type == TavoNotificationPlayerResponseType::Failed) {
        m_turns.fail(request.path());
    }
    if (isEnd(type)) {
        forget(request.path());
    }
}

void ClientSounds::on_clients_left(const std::string &client)
{
    m_checked.erase(client);
    if (m_clients.quotas().held(client, Quotas::Sounds) == 0) {
        return;
    }
    cancelEach([&client](const Sound &sound) {
        return sound.charge.client() == client && endsWithItsClient(sound.item);
    });
}

void ClientSounds::on_clients_userKnown()
{
    m_turns.takeUsers();
}

void ClientSounds::on_player_nodeChanged(const CMPath & /*path*/, bool published)
{
    if (published) {
        return;
    }
    // The player has dropped its sounds, so no responses will come.
    while (!m_sounds.empty()) {
        forget(m_sounds.begin()->first);
    }
}
