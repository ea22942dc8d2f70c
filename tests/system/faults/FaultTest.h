// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ProcessState.h"
#include "support/host/HostProcess.h"
#include "support/sound/ScriptedDevices.h"
#include "support/sound/SoundFiles.h"
#include "system/sound/Requester.h"

#include <QJsonArray>
#include <QJsonObject>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// A host with the real modules, to which a test does something. Its sounds go to a scripted
/// device, so it needs no sound server.
///
/// expectAsGoodAsNew() checks the host afterwards.
class FaultTest : public testing::Test
{
protected:
    static constexpr int rate = 48000;

    /// A sound or a message that lasts until it is ended, and a sound that ends soon.
    static constexpr int longMs = 20'000;
    static constexpr int shortMs = 50;

    /// Soon, on a busy machine and with a sanitizer's report.
    static constexpr int promptMs = 5000;

    FaultTest();

    /// Prints the host's log if the test has failed.
    void TearDown() override;

    /// Starts the host with a device's usual modules and the requester.
    void start(const QJsonObject &playerConfig = {}, const QJsonObject &hostConfig = {});
    void startModules(const QJsonArray &modules, const QJsonObject &hostConfig = {});

    /// The configuration of the player. By default, notifications play on the device "plain".
    static QJsonObject playerModule(QJsonObject config = {});
    static QJsonObject standIn(const QJsonObject &config);

    /// Makes the stand-in answer all kept and later requests.
    void letAnswer(const QString &kind);

    /// Notes what the idle host uses.
    void noteState() { m_before = ProcessState::of(m_host.processId()); }

    /// Expects that the main audio is not ducked, that the resource is released, that the host
    /// uses no more than before, and that another notification plays.
    void expectAsGoodAsNew();
    void expectSettled();
    void expectPlays(const QString &id);

    int stopHost() { return m_host.stop(); }

    QString inFolder(const QString &name) const { return m_host.folder() + '/' + name; }

    /// Writes a mono sound without silent samples and returns the file's path.
    QString soundFile(const QString &name, int milliseconds);
    static QJsonObject fileItem(const QString &id, const QString &file, int priority = 1);
    /// A placeholder sound that stays silent until it is cancelled.
    static QJsonObject endlessItem(const QString &id, int priority = 1);

    /// How many frames the devices have played since forget().
    static long framesHeard() { return long(ScriptedDevices::instance().heard().size()); }
    static int framesOf(int milliseconds) { return rate / 1000 * milliseconds; }
    static bool waitForFrames(long frames);

    ScriptedDevices &m_devices =
        ScriptedDevices::instance(); // the environment names their configuration
    HostProcess m_host;
    Requester m_requester{QStringLiteral("requester"), m_host.folder()};
    ProcessState m_before;
};
