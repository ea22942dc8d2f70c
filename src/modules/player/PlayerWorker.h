// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "PlayerConfiguration.h"
#include <core/tavo.h>

class MainAudio;

/// The player service: the main audio with its ducking, and the names of the audio devices.
///
/// Lives in the thread that made it; owned by the host. Every request gets a reply, after the state
/// node has been updated.
class PlayerWorker : public CMNodesWorker, public CMReconfigurable
{
    Q_OBJECT

public:
    /// Throws a std::runtime_error that names the key if the configuration is invalid.
    explicit PlayerWorker(const QVariantHash &config);

    QStringList reconfigure(const QVariantHash &config) override;

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
    CMValueNode *m_stateNode = nullptr; ///< owned by nodes()
};
