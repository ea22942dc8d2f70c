// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QTimer>

class DisplayCurrentNode;
class DisplayEndedNode;

/// Publishes which notification is on display and how each one ended, for user interfaces.
///
/// Owned by the display, used in its thread. Ends and waiting notifications are cheap to report: a value is
/// only made for those who read it.
class DisplayStatus
{
public:
    explicit DisplayStatus(CMNodes *nodes);

    Q_DISABLE_COPY_MOVE(DisplayStatus)

    /// The notification has come on display. Its own timeout is what is left of the whole one.
    void setHead(const TavoNotificationDisplayItem &head, int timeout, int waiting);

    /// Nothing is on display.
    void clearHead();

    /// The number of notifications behind the head has changed. Reported within 100 ms.
    void setWaiting(int waiting);

    /// A notification has ended. It was on display for the last shownMs, or for 0 if it waited. Its own
    /// timeout is what was left before.
    void reportEnd(const TavoNotificationDisplayItem &item, TavoNotificationDisplayEnd::Enum end,
                   qint64 shownMs);

private:
    DisplayCurrentNode *m_current; ///< owned by the node set, like the other
    DisplayEndedNode *m_ended;
    int m_waiting = 0;
    QTimer m_waitingTimer; ///< runs while a changed number has not been reported
};
