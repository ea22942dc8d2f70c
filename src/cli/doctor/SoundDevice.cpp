// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/doctor/SoundDevice.h"

#include <alsa/asoundlib.h>

#include <cerrno>

namespace {
extern "C" void saySilently(const char * /*file*/, int /*line*/, const char * /*function*/,
                            int /*error*/, const char * /*format*/, ...)
{
}

QString remedyFor(int error, const QString &device)
{
    switch (error) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
        return QStringLiteral(
                   "aplay -L (package alsa-utils) lists the devices; name one in the host's "
                   "configuration of the module player (mainDevice, "
                   "notificationsDevice), or define %1 in /etc/asound.conf")
            .arg(device);
    case EACCES:
    case EPERM:
        return QStringLiteral("let the user that runs the host use it: usermod -aG audio USER");
    case ECONNREFUSED:
    case EHOSTDOWN:
        return QStringLiteral("start the sound server that the device belongs to");
    default:
        return QStringLiteral("try it with: speaker-test -D %1").arg(device);
    }
}
} // namespace

Finding lookAtSoundDevice(const QString &subject, const QString &device)
{
    snd_lib_error_set_handler(saySilently);
    snd_pcm_t *pcm = nullptr;
    const int result = snd_pcm_open(&pcm, device.toLocal8Bit().constData(), SND_PCM_STREAM_PLAYBACK,
                                    SND_PCM_NONBLOCK);
    snd_lib_error_set_handler(nullptr);
    if (result == 0) {
        snd_pcm_close(pcm);
        return {Finding::State::Good, subject, QStringLiteral("%1 can be opened").arg(device), {}};
    }
    if (result == -EBUSY) {
        return {Finding::State::Notice, subject,
                QStringLiteral("%1 is in use, as it is while the host plays").arg(device),
                QStringLiteral("if the host plays nothing, another program holds it; a device "
                               "that mixes (dmix, a sound server) lets both play")};
    }
    return {Finding::State::Missing, subject,
            QStringLiteral("%1 can't be opened: %2")
                .arg(device, QString::fromLocal8Bit(snd_strerror(result))),
            remedyFor(-result, device)};
}
