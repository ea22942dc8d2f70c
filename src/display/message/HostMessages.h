// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/message/MessageSource.h"
#include <client/TavoClient.h>

#include <QTimer>

/// Follows the display of a host, over the bus.
///
/// Costs the same however long the queue is: only the message on display is read, and while one is being
/// read, no other. After a message has been read, the next one is read at the earliest after
/// minReadIntervalMs; messages that are on display for less are never shown.
///
/// Each message is read twice: its beginning at once, and the whole of it a moment later, once its changes are
/// reported. So it is shown sooner than if it were subscribed to first, and no change is missed.
class HostMessages : public MessageSource
{
    Q_OBJECT

public:
    static constexpr int minReadIntervalMs = 25;

    /// Of a long text, so many characters are shown first: more than there is room for in a corner.
    static constexpr int firstReadLength = 1000;

    explicit HostMessages(TavoClient &client, QObject *parent = nullptr);

    void start() override;
    void close(const CMPath &path) override;
    void activate(const CMPath &action) override;

private Q_SLOTS:
    void on_client_availableChanged(bool available);
    void on_client_valueChanged(const CMPath &path, const QVariant &value);
    void on_client_rowsChanged(const CMPath &path);
    void on_client_nodeChanged(const CMPath &path, bool published);
    void on_client_changesDropped(const CMPath &path);
    void on_client_subscriptionFailed(const CMPath &path, const CMError &error);
    void on_readTimer_timeout();
    void on_retryTimer_timeout();

private:
    void readCurrent();
    void readLater();
    void setHead(const Head &head);
    void follow(const CMPath &path);
    void readMessage();
    void on_message_read(const CMPath &path, const Message &message);

    TavoClient &m_client;
    Head m_head;               ///< what is on display; its path is empty if there is nothing
    Head m_shownHead;          ///< what has been reported last
    Message m_shownMessage;    ///< of that head
    bool m_isExpected = false; ///< has been reported, and neither shown() nor emptied() since
    CMPath m_followed;
    bool m_isReading = false;
    bool m_isReadDue = false;
    QTimer m_readTimer;  ///< runs until the next message may be read
    QTimer m_retryTimer; ///< runs until the host is asked again for what it refused
};
