// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "PlayerConfiguration.h"
#include <core/tavo.h>

class MainAudio;

/// The player service: the main audio and its ducking, and the choice of audio devices.
///
/// Runs in the thread that made it; owned by the host. Every request gets a reply, and the state
/// node is up to date before it.
class PlayerWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    /// Throws a std::runtime_error that names the key when the configuration can't be used.
    explicit PlayerWorker(const QVariantHash &config);

private Q_SLOTS:
    void on_ducking_activated(const CMSetDataRequest &request);
    void on_play_activated(const CMSetDataRequest &request);
    void on_stop_activated(const CMSetDataRequest &request);
    void on_volume_activated(const CMSetDataRequest &request);
    void on_mainAudio_changed();

private:
    void publishDevice(const CMPath &path, const QString &device);

    const PlayerConfiguration m_configuration;
    MainAudio *m_mainAudio;             ///< a child
    CMValueNode *m_stateNode = nullptr; ///< the node set's
};
