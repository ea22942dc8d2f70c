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

/// A host as it is installed, with the real modules and one that does what the test says, on a
/// sound server of its own to whose devices the test listens.
class SoundTest : public testing::Test
{
public:
    static constexpr int rate = 48000;

    /// What the test's tones measure in 16 bit units, and how loud that is in dBFS.
    static constexpr int amplitude = 10000;
    static constexpr double toneLevel = -13.3;

    static constexpr int musicFrequency = 300;

protected:
    SoundTest();

    /// Starts the host with the modules that a device has and the requester.
    void start(const QJsonObject &playerConfig = {});
    void startModules(const QJsonArray &modules);

    /// Configures music for start(), and says so to the player.
    QJsonObject withMusic();

    /// Waits until the music is heard and known to be loud.
    void waitForMusic();

    /// The player's entry, with the sound server's devices unless the configuration has others.
    static QJsonObject playerModule(QJsonObject config = {});

    /// A mono tone without a single silent sample; its frequency is in whole hundreds of Hz.
    static std::vector<short> tone(int frequency, int milliseconds);
    static int framesOf(int milliseconds) { return rate / 1000 * milliseconds; }

    /// Writes a tone into the test's folder; gives the file's path.
    QString toneFile(int frequency, int milliseconds, int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16,
                     const QString &suffix = "wav");
    QString inFolder(const QString &name) const;

    /// A notification that plays a file, for Requester::enqueue().
    static QJsonObject fileItem(const QString &id, const QString &file, int priority = 1);

    /// What was heard of notifications, once it is all here.
    Heard notifications();
    Heard music();

    /// Ends the host with SIGTERM; gives its exit code.
    int stopHost() { return m_host.stop(); }

    SoundServer m_server; // first: what follows takes over its environment
    QJsonObject m_limits; ///< the host's section "sounds"
    HostProcess m_host;
    Requester m_requester{QStringLiteral("requester"), m_host.folder()};
    Listener m_notificationDevice{QStringLiteral("notifications")};
    Listener m_mainDevice{QStringLiteral("main")};
};
