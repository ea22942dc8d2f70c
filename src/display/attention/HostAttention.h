// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include <client/TavoClient.h>

#include <QObject>
#include <QTimer>

#include <functional>

/// What the host's module for attention knows: whether people want to be disturbed, and what has come.
/// Without the module, nothing is quiet and nothing is missed.
class HostAttention : public QObject
{
    Q_OBJECT

public:
    using PageReceiver = std::function<void(Result<TavoAttentionPage>)>;

    explicit HostAttention(TavoClient &client, QObject *parent = nullptr);

    void start();

    /// Whether the host has the module.
    bool isLoaded() const { return m_isLoaded; }
    const TavoAttentionDoNotDisturb &doNotDisturb() const { return m_doNotDisturb; }
    /// How many notifications of the past nobody has seen.
    int missedCount() const { return m_missedCount; }

    /// Reports changes of the history, or no longer.
    void followHistory(bool isFollowed);

    /// The receiver is called once, from the event loop.
    void readPage(const TavoAttentionQuery &query, const PageReceiver &receiver);

    /// Somebody has seen those with these numbers.
    void markSeen(qint64 first, qint64 last);

    void setDoNotDisturb(bool isOn);

Q_SIGNALS:
    void changed();
    /// Notifications have come, or something has become of them.
    void historyChanged();

private Q_SLOTS:
    void on_client_availableChanged(bool available);
    void on_client_valueChanged(const CMPath &path, const QVariant &value);
    void on_client_nodeChanged(const CMPath &path, bool published);
    void on_client_changesDropped(const CMPath &path);
    void on_client_subscriptionFailed(const CMPath &path, const CMError &error);
    void on_retryTimer_timeout();

private:
    void read(const CMPath &path);
    void readLater();
    void forget();

    TavoClient &m_client;
    bool m_isLoaded = false;
    TavoAttentionDoNotDisturb m_doNotDisturb;
    int m_missedCount = 0;
    bool m_isHistoryFollowed = false;
    QTimer m_retryTimer; ///< runs until the host is asked again for what it refused
};
