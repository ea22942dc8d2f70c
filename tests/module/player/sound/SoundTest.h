// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "module/player/PlayerTest.h"
#include "module/player/sound/Loudness.h"
#include "support/sound/SoundFiles.h"
#include "support/sound/SoundServer.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <sndfile.h>

#include <cmath>

/// The sound server and the music. A base class, so that both are made before the module.
class SoundStage
{
public:
    /// Much shorter than a recording, so that only a loop fills it.
    static constexpr int musicMs = 100;

    SoundStage()
    {
        constexpr int tone = 1000; // Hz; a step of the measurement has whole waves
        constexpr int count = SoundServer::rate * musicMs / 1000;
        writeSound(music(), SF_FORMAT_WAV | SF_FORMAT_PCM_16, SoundServer::rate,
                   sineSamples(count, SoundServer::rate, tone));
    }

    QString music() const { return m_folder.filePath(QStringLiteral("music.wav")); }
    SoundServer &server() { return m_server; }

private:
    QTemporaryDir m_folder;
    SoundServer m_server;
};

/// The module plays on the device "main" of a sound server; by default, from the start.
class SoundTest : private SoundStage, public PlayerTest
{
protected:
    using SoundStage::music;
    using SoundStage::musicMs;
    using SoundStage::server;

    explicit SoundTest(const QVariantHash &config = {})
        : PlayerTest(with(config, SoundStage::music()))
    {
    }

    void SetUp() override
    {
        ASSERT_TRUE(waitFor([] { return state().playing() || state().source().isEmpty(); }));
    }

    /// The loudness of the music at a gain.
    static double level(double gain)
    {
        constexpr double amplitude = 10000.0 / 32768.0; // of sineSamples()
        return gain * amplitude / std::sqrt(2.0);
    }

    /// Plays the music for a while, long enough to distinguish the stages of a test.
    static void listen(int ms = 400)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        waitFor([&] { return elapsed.hasExpired(ms); });
    }

private:
    static QVariantHash with(const QVariantHash &config, const QString &music)
    {
        QVariantHash complete{{"mainDevice", "main"}, {"music", music}};
        for (auto it = config.cbegin(); it != config.cend(); ++it) {
            complete.insert(it.key(), it.value());
        }
        return complete;
    }
};
