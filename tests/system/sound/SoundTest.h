// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "HttpServer.h"
#include "Listener.h"
#include "Requester.h"
#include "support/host/HostProcess.h"
#include "support/sound/SoundFiles.h"
#include "support/sound/SoundServer.h"

#include <QJsonArray>
#include <QJsonObject>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <optional>

/// A host as it is installed, with the real modules and the module "requester", on a private sound
/// server whose devices are recorded.
class SoundTest : public testing::Test
{
public:
    static constexpr int rate = 48000;

    /// The loudest sample of the test's tones in 16 bit units, and their loudness in dBFS.
    static constexpr int amplitude = 10000;
    static constexpr double toneLevel = -13.3;

    static constexpr int frequency = 1000;
    static constexpr int musicFrequency = 300;

protected:
    SoundTest();

    /// Starts the host with a device's usual modules and the requester.
    void start(const QJsonObject &playerConfig = {});
    void startModules(const QJsonArray &modules);

    /// Configures music for start() and for the player's entry.
    QJsonObject withMusic();

    /// Waits until the music is heard at full volume.
    void waitForMusic();

    /// The player's entry, by default with the sound server's devices.
    static QJsonObject playerModule(QJsonObject config = {});

    /// A mono tone without silent samples. Its frequency must be a multiple of 100 Hz.
    static std::vector<short> tone(int frequency, int milliseconds);
    static int framesOf(int milliseconds) { return rate / 1000 * milliseconds; }

    /// Writes a tone to the test's folder and returns the file's path.
    QString toneFile(int frequency, int milliseconds, int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16,
                     const QString &suffix = "wav");
    QString inFolder(const QString &name) const;

    /// A notification that plays a file, for Requester::enqueue().
    static QJsonObject fileItem(const QString &id, const QString &file, int priority = 1);

    /// The recording of the notification device, once it is complete.
    Heard notifications();
    Heard music();

    /// Ends the host with SIGTERM and returns its exit code.
    int stopHost() { return m_host.stop(); }

    SoundServer m_server; // first, since the members below use its environment
    QJsonObject m_limits; ///< the host's section "sounds"
    HostProcess m_host;
    Requester m_requester{QStringLiteral("requester"), m_host.folder()};
    Listener m_notificationDevice{QStringLiteral("notifications")};
    Listener m_mainDevice{QStringLiteral("main")};
};
