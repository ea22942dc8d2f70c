// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/module/ModuleHost.h"
#include "support/LogCapture.h"
#include <core/tavo.h>

#include <QTimer>

#include <memory>

/// A fresh worker of the notifications module, as somebody sees it who sends it display requests and
/// whose clock stands still.
class DisplayClient
{
public:
    explicit DisplayClient(ModuleHost *host);

    // What can be done to it. Nothing is delivered before the host settles.
    static CMReply<QVariant> send(const CMPath &path, const QVariant &value);
    static CMReply<QVariant> open(const TavoNotificationDisplayItem &item);
    static CMReply<QVariant> cancel(const CMPath &path);
    static void close(const CMPath &path);

    // What can be seen of it.
    static QVector<CMPath> rows();
    static bool exists(const CMPath &path);
    static TavoRoles rowOf(const CMPath &path);
    /// How many have subscribed to the path's rows; they are told of a change that is none.
    static int subscriptions(const CMPath &path);
    const QTimer &closeTimer() const { return *m_closeTimer; }
    /// The warnings and worse since the last call, each with its level: "WARN message".
    QStringList takeLog();

private:
    LogCapture m_log;
    std::unique_ptr<CMWorker> m_worker;
    QTimer *m_closeTimer = nullptr;
};
