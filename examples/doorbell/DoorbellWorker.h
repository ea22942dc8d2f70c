// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

/// A doorbell: shows a message and plays a sound when its button is pressed, or when anybody sends a
/// request to /doorbell/ring.
class DoorbellWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    explicit DoorbellWorker(const QVariantHash &config);

private:
    void on_button_pressed();
    void on_button_lost();
    void on_ring_activated(const CMSetDataRequest &request);
    void on_response_activated(const CMSetDataRequest &request);

    /// Shows the message. The reply is that of the display.
    CMReply<QVariant> ring();

    /// Cancels the message of the previous ring, so that somebody who rings often fills no queue.
    void replaceMessage(const CMPath &message);
    void playSound();

    QString m_sound;
    QString m_text;
    int m_timeoutMs = 0;
    CMPath m_responsePath;
    CMPath m_message;               ///< of the last ring
    CMValueNode *m_rings = nullptr; ///< how often the bell has rung; owned by nodes()
    int m_ringCount = 0;
    bool m_isSounding = false;
};
