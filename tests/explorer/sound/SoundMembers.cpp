// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/sound/SoundMembers.h"

#include "modules/notifications/NotificationPlayer.h"
#include <core/tavo.h>

#include <cstring>
#include <stdexcept>

namespace {
const NotificationPlayer *controllerOf(const CMWorker &worker)
{
    for (const QObject *child : worker.children()) {
        if (std::strcmp(child->metaObject()->className(), "NotificationPlayer") == 0) {
            // The class's meta-object is in another library, so qobject_cast is not available.
            return static_cast<const NotificationPlayer *>(child);
        }
    }
    throw std::runtime_error("the worker has no sound controller");
}

int idOf(const QString &name)
{
    return name.isEmpty() ? SoundMembers::nobody : name.at(0).unicode() - 'a';
}

std::vector<SoundMembers::Item> itemsOf(const QList<NotificationPlayerItem> &list)
{
    std::vector<SoundMembers::Item> items;
    items.reserve(std::size_t(list.size()));
    for (const NotificationPlayerItem &item : list) {
        items.push_back({idOf(item.id), int(item.priority), item.player != nullptr});
    }
    return items;
}
} // namespace

SoundMembers SoundMembers::of(const CMWorker &worker)
{
    const NotificationPlayer *controller = controllerOf(worker);
    SoundMembers members;
    members.audioDucked = controller->m_audioDucked;
    members.audioResource = controller->m_audioResource;
    members.resourceRequestPending = controller->m_resourceRequestPending;
    members.activeRequest = controller->m_activeRequest;
    members.activeId = idOf(controller->m_activePlaybackId);
    members.timerRuns = controller->m_inactivityTimer.isActive();
    members.timerRemains = members.timerRuns ? controller->m_inactivityTimer.remainingTime() : 0;
    members.continuing = controller->m_continuing;
    members.queue = itemsOf(controller->m_queue);
    members.stopping = itemsOf(controller->m_stoppingItems);
    return members;
}

int SoundMembers::positionOfActive() const
{
    if (activeId == nobody) {
        return nobody;
    }
    int position = 0;
    for (const auto *list : {&queue, &stopping}) {
        for (const Item &item : *list) {
            if (item.id == activeId) {
                return position;
            }
            ++position;
        }
    }
    return stranger;
}
