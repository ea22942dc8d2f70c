// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationSounds.h"

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// So many different refusals are told; who causes more doesn't fill the log.
constexpr int mostRefusals = 100;
} // namespace

NotificationSounds::NotificationSounds(const DbusConfiguration::Sounds &configuration)
    : m_access(configuration.schemes, configuration.folders)
    , m_theme(configuration.theme)
{
}

void NotificationSounds::play(quint32 id, const QString &file, const QString &event,
                              TavoNotificationItemPriority::Enum priority)
{
    stop(id);
    // The theme's sounds are the device's own: clients choose among them, not where they are.
    const QString location = file.isEmpty() ? m_theme.find(event) : allowedFile(file);
    if (location.isEmpty()) {
        return;
    }
    const QString sound = QStringLiteral("dbus-notification-%1-%2").arg(id).arg(++m_played);
    m_sounds.insert(id, sound);
    enqueue(sound, location, priority);
}

QString NotificationSounds::allowedFile(const QString &file)
{
    const SoundAccess::Answer answer = m_access.check(file);
    if (answer.location.isEmpty() && !m_refused.contains(answer.refusal) &&
        m_refused.size() < mostRefusals) {
        m_refused.insert(answer.refusal);
        LOG4CPLUS_WARN(logger, "A notification's sound is not played: " << answer.refusal);
    }
    return answer.location;
}

void NotificationSounds::enqueue(const QString &sound, const QString &location,
                                 TavoNotificationItemPriority::Enum priority)
{
    const auto item = TavoNotificationPlayerItem()
                          .setId(sound)
                          .setContent(location)
                          .setType(TavoNotificationPlayerItemType::Uri)
                          .setPriority(priority);
    CMRoot()
        ->invoke(TavoNotificationPlayerEnqueuePath(), TavoValue().setNotificationPlayerItem(item),
                 CMReply<QVariant>())
        .onFinished(this, [sound](const CMReply<QVariant> &reply) {
            if (reply.error().isError()) {
                LOG4CPLUS_WARN(logger, "The sound " << sound << " is not played: "
                                                    << reply.error().message().toString());
            }
        });
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
