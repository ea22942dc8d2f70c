// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "EndSpy.h"
#include "support/sound/ScriptedDevices.h"
#include "support/sound/SoundFiles.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>

/// The most memory that this process has had since the last call.
inline long peakMemoryKb()
{
    const QByteArray status = readFile(QStringLiteral("/proc/self/status"));
    writeFile(QStringLiteral("/proc/self/clear_refs"), "5");
    return status.mid(status.indexOf("VmHWM:") + 6).trimmed().split(' ').value(0).toLong();
}

/// The fixture for tests of players on scripted devices.
class PlayerTest : public testing::Test
{
protected:
    static constexpr int rate = 48000;
    static constexpr int soundFrames = 12000; // a quarter of a second
    static constexpr int wav = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

    PlayerTest() { m_devices.forget(); }

    QString path(const char *name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    /// A mono WAV file with the counting samples.
    QString counting(int frames = soundFrames)
    {
        QString file = path("counting.wav");
        writeSound(file, wav, rate, countingSamples(frames));
        return file;
    }

    static std::vector<float> countingFloats(int frames = soundFrames)
    {
        return asFloats(countingSamples(frames));
    }

    /// The frames that were heard, without silence. The sounds have no silence; a device may insert
    /// some wherever it has no frames.
    std::vector<float> heard() const
    {
        std::vector<float> samples = m_devices.heard();
        samples.erase(std::remove(samples.begin(), samples.end(), 0.0F), samples.end());
        return samples;
    }

    bool hasHeard(int frames) const
    {
        return waitFor([&] { return int(m_devices.heard().size()) >= frames; });
    }

    static int threads()
    {
        return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs).count();
    }

    ScriptedDevices &m_devices = ScriptedDevices::instance();
    QTemporaryDir m_folder;
};
