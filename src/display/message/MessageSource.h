// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/message/Message.h"

#include <QObject>

/// What stands at the head of the queue.
struct Head
{
    CMPath path;
    int priority = 0;
    qint64 since = 0; ///< when it came on display, in milliseconds of the monotonic clock
    int remaining =
        0; ///< of its timeout at that time, in milliseconds; 0: stays until it is closed
    int waitingCount = 0;

    bool isSameAs(const Head &other) const { return path == other.path && since == other.since; }
};

/// Where messages come from.
class MessageSource : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void start() = 0;

    // No signal is emitted from within these, because a window calls them while it handles an event.

    /// A person closes the message on display.
    virtual void close(const CMPath &path) = 0;

    /// A person chooses an action.
    virtual void activate(const CMPath &action) = 0;

Q_SIGNALS:
    /// Nothing was on display, and a message is being read; shown() or emptied() follows.
    void expected();
    /// Another message is on display.
    void shown(const Head &head, const Message &message);
    /// The message on display says something else.
    void messageChanged(const Message &message);
    void waitingChanged(int count);
    /// Nothing is on display any more.
    void emptied();
};
