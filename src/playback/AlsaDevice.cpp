// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/AlsaDevice.h"

#include "simpleplayer/Log.h"
#include "simpleplayer/SimplePlayer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace {

// The device reports what it has played in steps of a period, so a pause is exact to a period.
// Short periods cost no wake-ups, because the playback thread sleeps until the buffer is half
// empty.
constexpr unsigned periodUs = 10'000;

// A notification is short and needs little reserve for a busy machine, but its changes must be
// heard at once. Media wake the processor only twenty times a second, and a pause or a change of
// the gain still takes effect within a tenth of a second.
constexpr unsigned notificationBufferUs = 50'000;
constexpr unsigned mediaBufferUs = 110'000;

// After so many failed writes in a row, a device won't recover.
constexpr int maxFailedWrites = 10;

// By default, the library writes to standard error.
void logAlsaError(const char *, int, const char *function, int, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    std::array<char, 256> text{};
    // The analyzer doesn't see that va_start() has initialized the list.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    std::vsnprintf(text.data(), text.size(), format, args);
    va_end(args);
    LOG4CPLUS_DEBUG(simplePlayerLogger(), function << ": " << text.data());
}

QString openError(int result)
{
    switch (-result) {
    case EBUSY:
        return QStringLiteral("is busy: something else is using it");
    case ENOENT:
    case ENODEV:
    case ENXIO:
        return QStringLiteral("doesn't exist");
    case EACCES:
    case EPERM:
        return QStringLiteral("can't be opened: permission denied");
    default:
        return QStringLiteral("can't be opened: ") + QString::fromUtf8(snd_strerror(result));
    }
}

} // namespace

AlsaDevice::~AlsaDevice()
{
    close();
}

std::optional<Failure> AlsaDevice::open(const QString &name, SoundFormat format, int usage)
{
    close();
    static std::once_flag handlerSet;
    std::call_once(handlerSet, snd_lib_error_set_handler, logAlsaError);
    m_name = QStringLiteral("The sound device \"%1\"").arg(name);
    m_lost = 0;
    m_failedWrites = 0;
    m_countsLate = false;
    m_keepsTime = false;
    m_rate = format.rate;

    int result = 0;
    for (const QString &alsaName : {name, QStringLiteral("plug:SLAVE='%1'").arg(name)}) {
        result = openAs(alsaName);
        if (result < 0) {
            return Failure{m_name + QLatin1Char(' ') + openError(result)};
        }
        result = configure(format, usage);
        if (result >= 0) {
            return std::nullopt;
        }
        close();
    }
    return Failure{m_name + QStringLiteral(" takes no sound of %1 Hz and %2 channels: %3")
                                .arg(format.rate)
                                .arg(format.channels)
                                .arg(QString::fromUtf8(snd_strerror(result)))};
}

void AlsaDevice::keepTime()
{
    m_keepsTime = snd_pcm_type(m_pcm) == SND_PCM_TYPE_NULL;
    m_counted = std::chrono::steady_clock::now();
}

int AlsaDevice::openAs(const QString &alsaName)
{
    // Non-blocking: opening must not wait until another program closes the device.
    const int result = snd_pcm_open(&m_pcm, alsaName.toLocal8Bit().constData(),
                                    SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK);
    if (result < 0) {
        m_pcm = nullptr;
        return result;
    }
    m_countsLate = m_countsLate || snd_pcm_type(m_pcm) == SND_PCM_TYPE_IOPLUG;
    return 0;
}

int AlsaDevice::configure(SoundFormat format, int usage)
{
    const int result = setHardware(format, usage);
    return result < 0 ? result : setStart();
}

int AlsaDevice::setHardware(SoundFormat format, int usage)
{
    unsigned period = periodUs;
    unsigned buffer =
        usage == SimplePlayer::UsageNotification ? notificationBufferUs : mediaBufferUs;
    snd_pcm_hw_params_t *params = nullptr;
    snd_pcm_hw_params_alloca(&params);

    int result = snd_pcm_hw_params_any(m_pcm, params);
    if (result >= 0) {
        result = snd_pcm_hw_params_set_access(m_pcm, params, SND_PCM_ACCESS_RW_INTERLEAVED);
    }
    if (result >= 0) {
        result = snd_pcm_hw_params_set_format(m_pcm, params, SND_PCM_FORMAT_FLOAT);
    }
    if (result >= 0) {
        result = snd_pcm_hw_params_set_channels(m_pcm, params, unsigned(format.channels));
    }
    if (result >= 0) {
        result = snd_pcm_hw_params_set_rate(m_pcm, params, unsigned(format.rate), 0);
    }
    if (result >= 0) {
        result = snd_pcm_hw_params_set_period_time_near(m_pcm, params, &period, nullptr);
    }
    if (result >= 0) {
        result = snd_pcm_hw_params_set_buffer_time_near(m_pcm, params, &buffer, nullptr);
    }
    if (result >= 0) {
        result = snd_pcm_hw_params(m_pcm, params);
    }
    if (result >= 0) {
        result = snd_pcm_hw_params_get_period_size(params, &m_periodFrames, nullptr);
    }
    if (result >= 0) {
        result = snd_pcm_hw_params_get_buffer_size(params, &m_bufferFrames);
    }
    return result;
}

int AlsaDevice::setStart()
{
    snd_pcm_sw_params_t *params = nullptr;
    snd_pcm_sw_params_alloca(&params);
    int result = snd_pcm_sw_params_current(m_pcm, params);
    // The first write starts the sound; it fills the buffer if the source has enough.
    if (result >= 0) {
        result = snd_pcm_sw_params_set_start_threshold(m_pcm, params, 1);
    }
    if (result >= 0) {
        result = snd_pcm_sw_params_set_avail_min(m_pcm, params, m_periodFrames);
    }
    return result < 0 ? result : snd_pcm_sw_params(m_pcm, params);
}

void AlsaDevice::close()
{
    if (!m_pcm) {
        return;
    }
    snd_pcm_drop(m_pcm);
    snd_pcm_close(m_pcm);
    m_pcm = nullptr;
    m_held = 0;
}

long AlsaDevice::closeAndCount()
{
    const bool isHeld = m_pcm && std::holds_alternative<long>(room());
    const long unheard = isHeld ? m_held : 0;
    close();
    return unheard;
}

Result<long> AlsaDevice::room()
{
    // Not every device reports these states as errors of snd_pcm_avail().
    const snd_pcm_state_t state = snd_pcm_state(m_pcm);
    if (state == SND_PCM_STATE_SUSPENDED) {
        return recover(-ESTRPIPE);
    }
    if (state == SND_PCM_STATE_DISCONNECTED) {
        return recover(-ENODEV);
    }
    const snd_pcm_sframes_t available = snd_pcm_avail(m_pcm);
    if (available < 0) {
        return recover(int(available));
    }
    m_held = m_keepsTime
                 ? heldByClock()
                 : std::clamp(long(m_bufferFrames) - long(available), 0L, long(m_bufferFrames));
    return std::max(0L, capacity() - m_held);
}

// What is left of the frames that were held when they were last counted.
long AlsaDevice::heldByClock()
{
    const std::chrono::nanoseconds frame =
        std::chrono::nanoseconds(std::chrono::seconds(1)) / m_rate;
    const auto now = std::chrono::steady_clock::now();
    const long played = (now - m_counted) / frame;
    m_counted = played < m_held ? m_counted + played * frame : now;
    return std::max(0L, m_held - played);
}

// One period stays free: plug-ins with their own ring buffer can't distinguish a full one from an
// empty one, and would count frames as played that were not.
long AlsaDevice::capacity() const
{
    return long(m_bufferFrames - std::min(m_periodFrames, m_bufferFrames / 2));
}

Result<long> AlsaDevice::write(const float *samples, long frames)
{
    const snd_pcm_sframes_t written = snd_pcm_writei(m_pcm, samples, snd_pcm_uframes_t(frames));
    if (written >= 0) {
        m_failedWrites = 0;
        m_held += long(written);
        return long(written);
    }
    if (written == -EAGAIN || written == -EINTR) {
        return 0L;
    }
    const Result<long> recovered = recover(int(written));
    if (const auto *failure = std::get_if<Failure>(&recovered)) {
        return *failure;
    }
    return 0L;
}

Result<long> AlsaDevice::recover(int result)
{
    if (result == -ESTRPIPE) {
        return resume();
    }
    if (result != -EPIPE || ++m_failedWrites > maxFailedWrites) {
        return gone(result);
    }
    LOG4CPLUS_DEBUG(simplePlayerLogger(), "Underrun");
    return prepare();
}

Result<long> AlsaDevice::resume()
{
    const int result = snd_pcm_resume(m_pcm);
    if (result == -EAGAIN) {
        return 0L;
    }
    if (result == 0 && snd_pcm_state(m_pcm) != SND_PCM_STATE_SUSPENDED) {
        return std::max(0L, capacity() - m_held);
    }
    // The device can't resume, so the frames that it held have to be written again.
    const snd_pcm_sframes_t available = snd_pcm_avail_update(m_pcm);
    if (available >= 0) {
        m_held = std::clamp(long(m_bufferFrames) - long(available), 0L, long(m_bufferFrames));
    }
    m_lost += m_held;
    return prepare();
}

Result<long> AlsaDevice::prepare()
{
    m_held = 0;
    if (const int result = snd_pcm_prepare(m_pcm); result < 0) {
        return gone(result);
    }
    return capacity();
}

Failure AlsaDevice::gone(int result) const
{
    return {m_name + QStringLiteral(" has gone: ") + QString::fromUtf8(snd_strerror(result))};
}

long AlsaDevice::latency()
{
    snd_pcm_sframes_t frames = 0;
    return snd_pcm_delay(m_pcm, &frames) < 0 ? 0 : std::max(0L, long(frames));
}

long AlsaDevice::takeLost()
{
    const long lost = m_lost;
    m_lost = 0;
    return lost;
}
