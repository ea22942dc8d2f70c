// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

class NotificationDisplay;
class NotificationPlayer;

/// The notifications module's worker: publishes the four request nodes and passes each request to the
/// controller that does the work.
///
/// Lives in the thread that made it. Requests arrive there as queued calls, one at a time, and each
/// is answered before its slot returns. Owned by the host; owns both controllers.
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
