// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/loader/MissingPlayback.h"

#include "playback/Log.h"
#include "simpleplayer/SimplePlayer.h"

#include <QMetaObject>

#include <utility>

MissingPlayback::MissingPlayback(const QString &id, const QString &why)
    : m_id(id)
    , m_why(why)
{
}

bool MissingPlayback::play()
{
    LOG4CPLUS_ERROR(simplePlayerLogger(),
                    "Can't play " << m_id.toStdString() << ": " << m_why.toStdString());
    return false;
}

void MissingPlayback::stop()
{
    if (std::exchange(m_stopped, true))
        return;
    QMetaObject::invokeMethod(
        m_player, [player = m_player, id = m_id] { Q_EMIT player->playbackStopped(id); },
        Qt::QueuedConnection);
}
