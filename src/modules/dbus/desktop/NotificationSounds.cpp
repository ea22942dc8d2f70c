// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationSounds.h"

#include <bus/BusError.h>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// So many different refusals are told; who causes more doesn't fill the log.
constexpr int mostRefusals = 100;
} // namespace

NotificationSounds::NotificationSounds(ClientSounds &sounds,
                                       const DbusConfiguration::Sounds &configuration)
    : m_clientSounds(sounds)
    , m_access(configuration.schemes, configuration.folders)
    , m_theme(configuration.theme)
{
}

void NotificationSounds::play(const std::string &client, quint32 id, const QString &file,
                              const QString &event, TavoNotificationItemPriority::Enum priority)
{
    stop(id);
    // The theme's sounds are the device's own: clients choose among them, not where they are.
    const QString location = file.isEmpty() ? m_theme.find(event) : allowedFile(file);
    if (location.isEmpty()) {
        return;
    }
    const QString sound = QStringLiteral("dbus-notification-%1-%2").arg(id).arg(++m_played);
    m_sounds.insert(id, sound);
    enqueue(client, TavoNotificationPlayerItem()
                        .setId(sound)
                        .setContent(location)
                        .setType(TavoNotificationPlayerItemType::Uri)
                        .setPriority(priority));
}

QString NotificationSounds::allowedFile(const QString &file)
{
    const SoundAccess::Answer answer = m_access.check(file);
    if (answer.location.isEmpty()) {
        logOnce(answer.refusal);
    }
    return answer.location;
}

void NotificationSounds::logOnce(const QString &refusal)
{
    if (!m_refused.contains(refusal) && m_refused.size() < mostRefusals) {
        m_refused.insert(refusal);
        LOG4CPLUS_WARN(logger, "A notification's sound is not played: " << refusal);
    }
}

void NotificationSounds::enqueue(const std::string &client, const TavoNotificationPlayerItem &item)
{
    try {
        m_clientSounds.play(client, item)
            .onFinished(this, [sound = item.id()](const CMReply<QVariant> &reply) {
                if (reply.error().isError()) {
                    LOG4CPLUS_WARN(logger, "The sound " << sound << " is not played: "
                                                        << reply.error().message().toString());
                }
            });
    } catch (const BusError &limit) {
        logOnce(QString::fromStdString(limit.message()));
    }
}

void NotificationSounds::stop(quint32 id)
{
    const QString sound = m_sounds.take(id);
    if (!sound.isEmpty()) {
        // One that has ended is unknown to the player, which is as well.
        CMRoot()->invoke(TavoNotificationPlayerCancelPath(), TavoValue().setString_(sound),
                         CMReply<QVariant>());
    }
}
