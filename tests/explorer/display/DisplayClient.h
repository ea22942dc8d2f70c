// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/module/ModuleHost.h"
#include "support/LogCapture.h"
#include <core/tavo.h>

#include <QTimer>

#include <memory>

/// A new worker of the notifications module, as a client of its display side sees it.
class DisplayClient
{
public:
    explicit DisplayClient(ModuleHost *host);

    // Requests and closes. Nothing is delivered before the host settles.
    static CMReply<QVariant> send(const CMPath &path, const QVariant &value);
    static CMReply<QVariant> open(const TavoNotificationDisplayItem &item);
    static CMReply<QVariant> cancel(const CMPath &path);
    static void close(const CMPath &path);

    // What a client can see.
    static QVector<CMPath> rows();
    static bool exists(const CMPath &path);
    static TavoRoles rowOf(const CMPath &path);
    static TavoNotificationDisplayCurrent current();
    static TavoNotificationDisplayEnded ended();
    /// The number of subscriptions to the path's rows. Reports a reset to each of them.
    static int subscriptions(const CMPath &path);
    const QTimer &closeTimer() const { return *m_closeTimer; }
    /// The log records of level WARN and higher since the last call, such as "WARN message".
    QStringList takeLog();

private:
    LogCapture m_log;
    std::unique_ptr<CMWorker> m_worker;
    QTimer *m_closeTimer = nullptr;
};
