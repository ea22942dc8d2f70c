// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QFile>
#include <QTimer>

/// Requests a sound and waits until the music is restored, several times; then ends the host.
/// Writes the time of each request to a file.
///
/// Configuration: "sound", the file to play; "count", how often; "requested", the file to write.
class LatencyWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    explicit LatencyWorker(const QVariantHash &config);

private Q_SLOTS:
    void on_response_activated(const CMSetDataRequest &request);
    void on_mainAudioState_changed(const CMPath &path, const QVariant &value);
    void on_restTimer_timeout();

private:
    QString m_sound;
    int m_left = 0;
    QFile m_requested;
    CMPath m_responsePath;
    QTimer m_restTimer;
    bool m_heard = false; // the sound has ended, but the music is still ducked
};
