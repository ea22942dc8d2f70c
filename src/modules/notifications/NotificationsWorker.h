// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

class NotificationDisplay;
class NotificationPlayer;

/// The frame of the notifications module: publishes the four request nodes and turns each request
/// into a call of the controller that does the work.
///
/// Thread: the one that made it; requests arrive there as queued calls, one at a time, and each is
/// answered before its slot returns. Owner: the host; deleting it deletes both controllers.
class NotificationsWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    explicit NotificationsWorker(const QVariantHash &config);

private Q_SLOTS:
    void on_notificationPlayerEnqueue_activated(const CMSetDataRequest &request);
    void on_notificationPlayerCancel_activated(const CMSetDataRequest &request);
    void on_notificationDisplayEnqueue_activated(const CMSetDataRequest &req);
    void on_notificationDisplayCancel_activated(const CMSetDataRequest &req);

private:
    NotificationDisplay *m_notificationDisplay = nullptr;
    NotificationPlayer *m_notificationPlayer = nullptr;
};
