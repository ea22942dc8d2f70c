// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/DevicePlayback.h"

#include "playback/HttpFetch.h"
#include "playback/Log.h"
#include "simpleplayer/SimplePlayer.h"

#include <QMetaObject>

DevicePlayback::DevicePlayback(std::unique_ptr<FrameSource> source, const QString &id,
                               const QString &device, std::unique_ptr<HttpFetch> fetch)
    : m_id(id)
    , m_fetch(std::move(fetch))
    , m_writer(std::move(source), device, [this](const QString &error) { reportLater(error); })
{
}

DevicePlayback::~DevicePlayback() = default;

bool DevicePlayback::play()
{
    if (m_state == State::Playing)
        return true;
    if (m_state == State::Done) {
        LOG4CPLUS_WARN(simplePlayerLogger(),
                       "Can't play " << m_id.toStdString() << ": it has ended before");
        return false;
    }
    if (m_state == State::Ready)
        m_writer.configure(m_player->loop, m_player->usage);
    if (!m_writer.start()) {
        LOG4CPLUS_ERROR(simplePlayerLogger(), "Can't play " << m_id.toStdString() << ": "
                                                            << m_writer.startError().toStdString());
        return false;
    }
    m_state = State::Playing;
    startFetch();
    return true;
}

void DevicePlayback::pause()
{
    if (m_state != State::Playing)
        return;
    m_writer.pause();
    m_state = State::Paused;
}

void DevicePlayback::stop()
{
    if (m_state == State::Done)
        return;
    m_state = State::Done;
    m_writer.stop();
    QMetaObject::invokeMethod(
        m_player, [player = m_player, id = m_id] { Q_EMIT player->playbackStopped(id); },
        Qt::QueuedConnection);
}

void DevicePlayback::setGain(double gain, int fadeMs)
{
    m_writer.setGain(gain, m_state == State::Ready ? 0 : fadeMs);
}

void DevicePlayback::startFetch()
{
    if (!m_fetch || m_fetchStarted)
        return;
    m_fetchStarted = true;
    m_fetch->start([this](const QString &error) { reportLater(error); });
}

// In the writer's thread, or from inside the fetch.
void DevicePlayback::reportLater(const QString &error)
{
    QMetaObject::invokeMethod(
        m_player, [this, error] { report(error); }, Qt::QueuedConnection);
}

void DevicePlayback::report(const QString &error)
{
    if (m_state == State::Done)
        return;
    m_state = State::Done;
    m_writer.stop();
    m_fetch.reset();
    if (error.isEmpty()) {
        Q_EMIT m_player->playbackEnded(m_id);
        return;
    }
    LOG4CPLUS_ERROR(simplePlayerLogger(),
                    "Playing " << m_id.toStdString() << " broke off: " << error.toStdString());
    Q_EMIT m_player->playbackErrorReported(m_id, error);
}
