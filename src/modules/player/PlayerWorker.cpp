// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PlayerWorker.h"

#include "MainAudio.h"

#include <QTimer>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Player");

CMError error(const TrString &message)
{
    return {QStringLiteral("Player"), message};
}

/// Clients send a TavoValue with the field, or just the value.
QVariant bareOrField(const QVariant &value, const QString &field)
{
    const bool isRecord =
        value.userType() == QMetaType::QVariantHash || value.userType() == QMetaType::QVariantMap;
    return isRecord ? value.toHash().value(field) : value;
}

void refuse(const CMSetDataRequest &request, const TrString &message)
{
    LOG4CPLUS_WARN(logger, "Refused " << request.value() << " at " << request.path() << ": "
                                      << message.toString());
    request.reply().setError(error(message));
}
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    LOG4CPLUS_DEBUG(logger, "Creating worker " << (name != nullptr ? name : ""));
    CMWorker *worker = new PlayerWorker(*static_cast<const QVariantHash *>(config));
    return worker;
}

PlayerWorker::PlayerWorker(const QVariantHash &config)
    : CMNodesWorker(config, QStringLiteral("Player"))
    , m_configuration(PlayerConfiguration::fromHash(config))
    , m_mainAudio(new MainAudio(m_configuration, this))
{
    publishDevice(TavoPlayerAlsaDeviceNotificationsPath(), m_configuration.notificationsDevice);
    publishDevice(TavoPlayerAlsaDeviceMainPath(), m_configuration.mainDevice);
    m_stateNode = CMValueNode::create(nodes(), TavoPlayerMainAudioStatePath());
    on_mainAudio_changed();
    tavoConnect(m_mainAudio, &MainAudio::changed, this, &PlayerWorker::on_mainAudio_changed);
    CMActivateNode::create(nodes(), TavoPlayerMainAudioDuckingPath())
        ->setInvoke(this, &PlayerWorker::on_ducking_activated, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), TavoPlayerMainAudioPlayPath())
        ->setInvoke(this, &PlayerWorker::on_play_activated, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), TavoPlayerMainAudioStopPath())
        ->setInvoke(this, &PlayerWorker::on_stop_activated, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), TavoPlayerMainAudioVolumePath())
        ->setInvoke(this, &PlayerWorker::on_volume_activated, Qt::QueuedConnection);
    if (!m_configuration.music.isEmpty()) {
        // Later, because opening a device takes time, and the other modules shouldn't wait for it.
        QTimer::singleShot(0, m_mainAudio, [this] { m_mainAudio->play({}); });
    }
}

QStringList PlayerWorker::reconfigure(const QVariantHash &config)
{
    const PlayerConfiguration next = PlayerConfiguration::fromHash(config);
    m_mainAudio->reconfigure(next);
    QStringList restartKeys;
    // Others have read the names of the devices, and the music is what plays from the start.
    if (next.notificationsDevice != m_configuration.notificationsDevice) {
        restartKeys << QStringLiteral("notificationsDevice");
    }
    if (next.mainDevice != m_configuration.mainDevice) {
        restartKeys << QStringLiteral("mainDevice");
    }
    if (next.music != m_configuration.music) {
        restartKeys << QStringLiteral("music");
    }
    return restartKeys;
}

void PlayerWorker::publishDevice(const CMPath &path, const QString &device)
{
    CMValueNode::create(nodes(), path)
        ->setValue(TavoValue().setAudioDevice(TavoPlayerAudioDevice().setDevice(device)));
}

void PlayerWorker::on_ducking_activated(const CMSetDataRequest &request)
{
    const TavoPlayerAudioDuckingRequest ducking(request.value().toHash());
    if (ducking.requester().isEmpty()) {
        refuse(request, TAVO_TR("The request names no requester"));
        return;
    }
    // A missing field would read as false: a request to unduck.
    if (ducking.fields().value(QStringLiteral("duckAudio")).userType() != QMetaType::Bool) {
        refuse(request, TAVO_TR("duckAudio must be true or false"));
        return;
    }
    if (ducking.duckAudio()) {
        if (!m_mainAudio->duck(ducking.requester())) {
            refuse(request, TAVO_TR("The requester's name is too long, or there are too many"));
            return;
        }
    } else {
        m_mainAudio->unduck(ducking.requester());
    }
    request.reply().setValue(QVariant());
}

void PlayerWorker::on_play_activated(const CMSetDataRequest &request)
{
    const QVariant source = bareOrField(request.value(), QStringLiteral("string"));
    if (source.isValid() && source.userType() != QMetaType::QString) {
        refuse(request, TAVO_TR("The source must be a text"));
        return;
    }
    if (!m_mainAudio->play(source.toString())) {
        request.reply().setError(error(m_mainAudio->state().error()));
        return;
    }
    request.reply().setValue(QVariant());
}

void PlayerWorker::on_stop_activated(const CMSetDataRequest &request)
{
    m_mainAudio->stop();
    request.reply().setValue(QVariant());
}

void PlayerWorker::on_volume_activated(const CMSetDataRequest &request)
{
    const QVariant volume = bareOrField(request.value(), QStringLiteral("double"));
    const double number = tavoReadDouble(volume);
    // This form of the comparison also refuses NaN.
    if (!tavoIsNumber(volume) || !(number >= 0.0 && number <= 1.0)) {
        refuse(request, TAVO_TR("The volume must be a number from 0.0 to 1.0"));
        return;
    }
    m_mainAudio->setVolume(number);
    request.reply().setValue(QVariant());
}

void PlayerWorker::on_mainAudio_changed()
{
    m_stateNode->setValue(TavoValue().setMainAudioState(m_mainAudio->state()));
}
