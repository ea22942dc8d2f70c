// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QFile>
#include <QTimer>

/// Sends the request for a sound, waits until all is as before, and sends it again; then it ends the
/// host. When each was sent goes to a file.
///
/// Configuration: "sound", the file to play, "count", how often, and "asked", the file to write.
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
    QFile m_asked;
    CMPath m_responsePath;
    QTimer m_restTimer;
    bool m_heard = false; // the sound has ended, and the music is still ducked
};
