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

/// A host with the real modules to which something happens. Its sounds go to a scripted device, so
/// that it needs no sound server.
///
/// The test looks whether the host is as good as new afterwards: see expectAsGoodAsNew().
class FaultTest : public testing::Test
{
protected:
    static constexpr int rate = 48000;

    FaultTest();

    /// Says what the host wrote when a test has failed.
    void TearDown() override;

    /// Starts the host with the modules that a device has and the requester.
    void start(const QJsonObject &playerConfig = {}, const QJsonObject &hostConfig = {});
    void startModules(const QJsonArray &modules, const QJsonObject &hostConfig = {});

    /// The player's entry; notifications sound on the device "plain" unless it says otherwise.
    static QJsonObject playerModule(QJsonObject config = {});
    static QJsonObject standIn(const QJsonObject &config);

    /// Has the stand-in answer what it keeps, and what comes.
    void letAnswer(const QString &kind);

    /// What the host holds while nothing is asked of it.
    void noteState() { m_before = ProcessState::of(m_host.processId()); }

    /// The main audio isn't ducked, the resource isn't held, the host holds no more than when it was
    /// noted, and another notification sounds as ever.
    void expectAsGoodAsNew();
    void expectSettled();
    void expectPlays(const QString &id);

    int stopHost() { return m_host.stop(); }

    QString inFolder(const QString &name) const { return m_host.folder() + '/' + name; }

    /// A mono sound without a silent sample; gives the file's path.
    QString soundFile(const QString &name, int milliseconds);
    static QJsonObject fileItem(const QString &id, const QString &file, int priority = 1);
    /// One that holds its place, in silence, until it is cancelled.
    static QJsonObject endlessItem(const QString &id, int priority = 1);

    /// How many frames the devices have played since they were last forgotten.
    static long framesHeard() { return long(ScriptedDevices::instance().heard().size()); }
    static int framesOf(int milliseconds) { return rate / 1000 * milliseconds; }
    static bool waitForFrames(long frames);

    ScriptedDevices &m_devices = ScriptedDevices::instance(); // the environment names them
    HostProcess m_host;
    Requester m_requester{QStringLiteral("requester"), m_host.folder()};
    ProcessState m_before;
};
