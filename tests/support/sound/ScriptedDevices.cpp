// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/sound/ScriptedDevices.h"

#include <QFile>

#include <cstring>
#include <stdexcept>

namespace {

constexpr const char *behaviours[] = {"plain",        "busy",           "denied",
                                      "broken",       "forbidden",      "missing",
                                      "unconfigured", "stalls",         "suspends_forgets_dies",
                                      "slow",         "slow_busy",      "fixed",
                                      "picky",        "vanishes",       "unplugged",
                                      "underruns",    "underruns_dies", "suspends",
                                      "sleeps",       "hesitates",      "suspends_forgets",
                                      "chokes",       "wants_sound",    "distant",
                                      "clueless",     "clings",         "alternates",
                                      "hangs",        "exclusive",      "sticks"};

} // namespace

ScriptedDevices &ScriptedDevices::instance()
{
    static ScriptedDevices devices;
    return devices;
}

ScriptedDevices::ScriptedDevices()
{
    QByteArray text = "pcm_type.scripted { lib \"" SCRIPTED_PCM_LIBRARY "\" }\n";
    for (const char *behaviour : behaviours) {
        text += QByteArray("pcm.") + behaviour + " { type scripted behaviour \"" + behaviour +
                "\" heard \"" + QFile::encodeName(heardPath()) + "\" }\n";
    }
    // With a conversion in front, ALSA can't tell it from hardware.
    text += "pcm.hardware { type plug slave.pcm plain }\n";
    QFile configuration(m_folder.filePath(QStringLiteral("asound.conf")));
    if (!configuration.open(QIODevice::WriteOnly) ||
        configuration.write("</usr/share/alsa/alsa.conf>\n" + text) < 0) {
        throw std::runtime_error("no ALSA configuration could be written");
    }
    configuration.close();
    qputenv("ALSA_CONFIG_PATH", QFile::encodeName(configuration.fileName()));
    forget();
}

QByteArray ScriptedDevices::heardBytes() const
{
    QFile file(heardPath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::vector<float> ScriptedDevices::heard() const
{
    const QByteArray bytes = heardBytes();
    std::vector<float> samples(std::size_t(bytes.size()) / sizeof(float));
    if (!samples.empty()) {
        std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(float));
    }
    return samples;
}

void ScriptedDevices::forget()
{
    QFile file(heardPath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        throw std::runtime_error("what was heard can't be forgotten");
    }
}
