// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationSounds.h"

#include <bus/BusError.h>

#include <QUuid>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// How many different refusals are logged, so that a client can't fill the log.
constexpr int maxLoggedRefusals = 100;
} // namespace

NotificationSounds::NotificationSounds(ClientSounds &sounds, const QString &theme)
    : m_clientSounds(sounds)
    , m_theme(theme)
{
}

AllowedSound NotificationSounds::find(const std::string &client, const NotifyHints &hints)
{
    if (!hints.hasSound()) {
        return {};
    }
    const Result<AllowedSound> result =
        hints.soundFile.isEmpty()
            ? m_clientSounds.find(client, hints.soundName,
                                  [theme = m_theme, name = hints.soundName] {
                                      // A client may choose any sound of the theme, wherever its file is.
                                      return AllowedSound{theme.find(name), {}};
                                  })
            : m_clientSounds.check(client, hints.soundFile, SoundAccess::Kind::File);
    if (const auto *refusal = std::get_if<Failure>(&result)) {
        logOnce(refusal->reason);
        return {};
    }
    return std::get<AllowedSound>(result);
}

void NotificationSounds::play(const std::string &client, quint32 id, const AllowedSound &found,
                              TavoNotificationItemPriority::Enum priority, const QString &request)
{
    stop(id);
    if (!playIfFound(client, id, found, priority, request) && !request.isEmpty()) {
        // There is no sound after all.
        CMRoot()->invoke(TavoAttentionSoundPath(), TavoValue().setString_(request), {});
    }
}

bool NotificationSounds::playIfFound(const std::string &client, quint32 id,
                                     const AllowedSound &found,
                                     TavoNotificationItemPriority::Enum priority,
                                     const QString &request)
{
    if (found.location.isEmpty()) {
        return false;
    }
    // Random, so that no client can take the id before or cancel the sound.
    const QString sound = QStringLiteral("dbus-notification-") + tavoGenerateUuid();
    m_sounds.insert(id, sound);
    return enqueue(client,
                   TavoNotificationPlayerItem()
                       .setId(sound)
                       .setContent(found.location)
                       .setType(TavoNotificationPlayerItemType::Uri)
                       .setPriority(priority),
                   found.file, request);
}

void NotificationSounds::logOnce(const QString &refusal)
{
    if (!m_refused.contains(refusal) && m_refused.size() < maxLoggedRefusals) {
        m_refused.insert(refusal);
        LOG4CPLUS_WARN(logger, "A notification's sound is not played: " << refusal);
    }
}

bool NotificationSounds::enqueue(const std::string &client, const TavoNotificationPlayerItem &item,
                                 const std::optional<OpenedSound> &file, const QString &request)
{
    try {
        m_clientSounds.play(client, item, file, request)
            .onFinished(this, [sound = item.id()](const CMReply<QVariant> &reply) {
                if (reply.error().isError()) {
                    LOG4CPLUS_WARN(logger, "The sound " << sound << " is not played: "
                                                        << reply.error().message().toString());
                }
            });
        return true;
    } catch (const BusError &limit) {
        logOnce(QString::fromStdString(limit.message()));
        return false;
    }
}

void NotificationSounds::stop(quint32 id)
{
    const QString sound = m_sounds.take(id);
    if (!sound.isEmpty()) {
        // If it has ended, the player refuses that, which does no harm.
        m_clientSounds.cancel(sound);
    }
}
