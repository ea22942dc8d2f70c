// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "LatencyWorker.h"

#include "../Moment.h"

#include <QCoreApplication>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Latency");

/// The time until the music plays at full volume again: the fade and what the device has buffered.
constexpr int restMs = 200;
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char * /*name*/, void *config)
{
    return new LatencyWorker(*static_cast<const QVariantHash *>(config));
}

LatencyWorker::LatencyWorker(const QVariantHash &config)
    : CMNodesWorker(config, QStringLiteral("Latency"))
    , m_restTimer(this)
{
    TavoConfiguration configuration(config);
    m_sound = configuration.string(QStringLiteral("sound"), {});
    m_left = configuration.integer(QStringLiteral("count"), 1, 1, 1000);
    m_requested.setFileName(configuration.string(QStringLiteral("requested"), {}));
    configuration.finish();
    if (!m_requested.open(QIODevice::WriteOnly | QIODevice::Text)) {
        LOG4CPLUS_ERROR(logger, "Can't write " << m_requested.fileName());
    }

    CMActivateNode *response =
        CMActivateNode::create(nodes(), CMPath(QStringLiteral("/latency/response")));
    response->setInvoke(this, &LatencyWorker::on_response_activated, Qt::QueuedConnection);
    m_responsePath = response->path();
    CMRoot()->connectValueChange(TavoPlayerMainAudioStatePath(), this,
                                 &LatencyWorker::on_mainAudioState_changed);

    m_restTimer.setSingleShot(true);
    tavoConnect(&m_restTimer, &QTimer::timeout, this, &LatencyWorker::on_restTimer_timeout);
    m_restTimer.start(restMs);
}

void LatencyWorker::on_restTimer_timeout()
{
    if (m_left-- == 0) {
        m_requested.close();
        QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
        return;
    }
    const TavoNotificationPlayerItem item = TavoNotificationPlayerItem()
                                                .setId(QString::number(m_left))
                                                .setType(TavoNotificationPlayerItemType::Uri)
                                                .setContent(m_sound)
                                                .setPriority(TavoNotificationItemPriority::Normal)
                                                .setPlaybackResponsePath(m_responsePath);
    const std::int64_t requested = momentNow();
    CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(),
                     TavoValue().setNotificationPlayerItem(item), CMReply<QVariant>());
    m_requested.write(QByteArray::number(qint64(requested)) + '\n');
}

void LatencyWorker::on_response_activated(const CMSetDataRequest &request)
{
    const TavoNotificationPlayerResponse response =
        TavoValue(request.value().toHash()).notificationPlayerResponse();
    request.reply().setValue(QVariant());
    if (response.type() == TavoNotificationPlayerResponseType::Finished) {
        m_heard = true;
    } else if (response.type() != TavoNotificationPlayerResponseType::Started) {
        LOG4CPLUS_ERROR(logger, "The sound was not heard");
        QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
    }
}

void LatencyWorker::on_mainAudioState_changed(const CMPath & /*path*/, const QVariant &value)
{
    if (m_heard && !TavoValue(value.toHash()).mainAudioState().ducked()) {
        m_heard = false;
        m_restTimer.start(restMs);
    }
}
