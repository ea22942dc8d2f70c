// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "MainAudio.h"

#include "base/SoundLocation.h"
#include <base/SoundLocation.h>
#include <core/tavo.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Player");

/// The delay before the first retry: long enough for the restart of a sound server. Each further
/// delay is twice as long, up to the maximum.
constexpr int firstRetryMs = 250;
constexpr int maxRetryMs = 30'000;

/// Music that has played for this long has recovered: the count of retries starts again.
constexpr int recoveredMs = 10'000;

// Clients on a bus may duck too. The limits keep the state small enough to be published at each change.
constexpr int maxRequesters = 256;
constexpr int maxRequesterLength = 256; ///< in characters

/// The factor for the amplitude, not for the power.
double factorOf(double decibels)
{
    return std::pow(10.0, decibels / 20.0);
}

bool isFetched(const QString &source)
{
    const Result<SoundLocation> location = parseSoundLocation(source);
    const auto *found = std::get_if<SoundLocation>(&location);
    return found != nullptr && !found->url.isEmpty();
}
} // namespace

MainAudio::MainAudio(const PlayerConfiguration &configuration, QObject *parent)
    : QObject(parent)
    , m_configuration(configuration)
    , m_source(configuration.music)
    , m_retryTimer(this)
{
    m_retryTimer.setSingleShot(true);
    tavoConnect(&m_retryTimer, &QTimer::timeout, this, &MainAudio::on_retryTimer_timeout);
}

bool MainAudio::play(const QString &source)
{
    if (source.isEmpty() && m_player != nullptr) {
        return true;
    }
    if (!source.isEmpty()) {
        m_source = source;
    }
    forgetRetries();
    delete std::exchange(m_player, nullptr); // frees the device for the next player
    const bool started = m_source.isEmpty() ? fail(QStringLiteral("There is no music")) : start();
    Q_EMIT changed();
    return started;
}

bool MainAudio::start()
{
    m_error.clear();
    m_player = new UriSimplePlayer(m_source, m_source, m_configuration.mainDevice, this);
    m_player->loop = true;
    m_player->usage = SimplePlayer::UsageMedia;
    tavoConnect(m_player, &SimplePlayer::playbackEnded, this, &MainAudio::on_music_ended);
    tavoConnect(m_player, &SimplePlayer::playbackErrorReported, this, &MainAudio::on_music_failed);
    m_player->setGain(gain(), 0);
    if (!m_player->play()) {
        delete std::exchange(m_player, nullptr);
        return fail(QStringLiteral("The music or its device can't be opened"));
    }
    m_played.start();
    LOG4CPLUS_INFO(logger, "Playing " << m_source << " on " << m_configuration.mainDevice);
    return true;
}

bool MainAudio::fail(const QString &reason)
{
    LOG4CPLUS_WARN(logger, "Failed to play " << m_source << ": " << reason);
    m_error = reason;
    return false;
}

void MainAudio::stop()
{
    forgetRetries();
    if (m_player == nullptr) {
        return;
    }
    delete std::exchange(m_player, nullptr);
    LOG4CPLUS_INFO(logger, "Stopped " << m_source);
    Q_EMIT changed();
}

void MainAudio::setVolume(double volume)
{
    m_volume = volume;
    fadeToGain();
    LOG4CPLUS_INFO(logger, "Volume: " << m_volume);
    Q_EMIT changed();
}

bool MainAudio::duck(const QString &requester)
{
    if (m_requesters.contains(requester)) {
        return true;
    }
    if (requester.size() > maxRequesterLength || m_requesters.size() >= maxRequesters) {
        return false;
    }
    m_requesters.append(requester);
    LOG4CPLUS_INFO(logger, "Ducked for " << requester << ", requesters: " << m_requesters.size());
    fadeToGain();
    Q_EMIT changed();
    return true;
}

void MainAudio::unduck(const QString &requester)
{
    if (!m_requesters.removeOne(requester)) {
        return;
    }
    LOG4CPLUS_INFO(logger, "Unducked for " << requester << ", requesters: " << m_requesters.size());
    fadeToGain();
    Q_EMIT changed();
}

TavoPlayerMainAudioState MainAudio::state() const
{
    TavoList<QString> requesters;
    for (const QString &requester : m_requesters) {
        requesters.append(requester);
    }
    return TavoPlayerMainAudioState()
        .setPlaying(m_player != nullptr)
        .setSource(withoutUserInfo(m_source))
        .setVolume(m_volume)
        .setDucked(!m_requesters.isEmpty())
        .setRequesters(requesters)
        .setError(m_error);
}

void MainAudio::on_music_ended(const QString &source)
{
    LOG4CPLUS_INFO(logger, "The music has ended: " << source);
    std::exchange(m_player, nullptr)->deleteLater();
    Q_EMIT changed();
}

void MainAudio::on_music_failed(const QString &source, const QString &reason)
{
    std::exchange(m_player, nullptr)->deleteLater();
    fail(reason);
    if (isFetched(source)) {
        // The reason would tell clients what answers in the host's network. It is in the log.
        m_error = QStringLiteral("The music can't be fetched or played");
    }
    if (m_played.hasExpired(recoveredMs)) {
        m_retries = 0;
    }
    retryLater();
    Q_EMIT changed();
}

void MainAudio::retryLater()
{
    if (m_retries >= m_configuration.musicRetries) {
        return;
    }
    int delay = firstRetryMs;
    for (int i = 0; i < m_retries && delay < maxRetryMs; ++i) {
        delay *= 2;
    }
    ++m_retries;
    m_retryTimer.start(std::min(delay, maxRetryMs));
}

void MainAudio::forgetRetries()
{
    m_retryTimer.stop();
    m_retries = 0;
}

void MainAudio::on_retryTimer_timeout()
{
    LOG4CPLUS_INFO(logger, "Trying the music again, " << m_retries << " of "
                                                      << m_configuration.musicRetries);
    if (!start()) {
        retryLater();
    }
    Q_EMIT changed();
}

void MainAudio::reconfigure(const PlayerConfiguration &configuration)
{
    m_configuration.musicRetries = configuration.musicRetries;
    m_configuration.duckingAttenuation = configuration.duckingAttenuation;
    m_configuration.duckingFade = configuration.duckingFade;
    fadeToGain();
}

double MainAudio::gain() const
{
    return m_requesters.isEmpty() ? m_volume
                                  : m_volume * factorOf(m_configuration.duckingAttenuation);
}

void MainAudio::fadeToGain()
{
    if (m_player != nullptr) {
        m_player->setGain(gain(), m_configuration.duckingFade);
    }
}
