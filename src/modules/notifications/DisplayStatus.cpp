// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayStatus.h"

#include <QElapsedTimer>

#include <algorithm>

namespace {
/// Often enough for people, and rarely enough for a burst of thousands of notifications.
constexpr int waitingIntervalMs = 100;
} // namespace

class DisplayCurrentNode : public CMComputedNode
{
public:
    explicit DisplayCurrentNode(CMNodes *nodes)
        : CMComputedNode(nodes, TavoNotificationDisplayCurrentPath())
    {
        publish();
    }

    void setHead(const TavoNotificationDisplayItem &head, int timeout, int waiting)
    {
        change([&] {
            m_isEmpty = false;
            m_head = head;
            m_timeout = timeout;
            m_waiting = waiting;
            m_since.start();
        });
    }

    void clearHead()
    {
        if (!m_isEmpty) {
            change([this] {
                m_isEmpty = true;
                m_head = {};
            });
        }
    }

    /// Called in the worker's thread, the only one that changes the data.
    void setWaiting(int waiting)
    {
        if (!m_isEmpty && m_waiting != waiting) {
            change([this, waiting] { m_waiting = waiting; });
        }
    }

private:
    TavoValue makeValue() const override
    {
        TavoNotificationDisplayCurrent current;
        if (!m_isEmpty) {
            current.setPath(m_head.path())
                .setId(m_head.id())
                .setPriority(m_head.priority())
                .setTimeout(std::max(m_timeout, 0))
                .setRemaining(std::max(m_head.timeout(), 0))
                .setSince(m_since.msecsSinceReference())
                .setWaiting(m_waiting);
        }
        return TavoValue().setDisplayCurrent(current);
    }

    bool m_isEmpty = true;
    TavoNotificationDisplayItem m_head;
    int m_timeout = 0;
    int m_waiting = 0;
    QElapsedTimer m_since;
};

class DisplayEndedNode : public CMComputedNode
{
public:
    explicit DisplayEndedNode(CMNodes *nodes)
        : CMComputedNode(nodes, TavoNotificationDisplayEndedPath())
    {
        publish();
    }

    void setEnd(const TavoNotificationDisplayItem &item, TavoNotificationDisplayEnd::Enum end,
                qint64 shownMs)
    {
        change([&] {
            m_item = item;
            m_end = end;
            m_shownMs = shownMs;
            ++m_number;
        });
    }

private:
    TavoValue makeValue() const override
    {
        if (m_number == 0) {
            return {};
        }
        return TavoValue().setDisplayEnded(TavoNotificationDisplayEnded()
                                               .setPath(m_item.path())
                                               .setId(m_item.id())
                                               .setEnd(m_end)
                                               .setRemaining(remaining())
                                               .setNumber(m_number));
    }

    int remaining() const
    {
        const bool isOver = m_end == TavoNotificationDisplayEnd::Expired ||
                            m_end == TavoNotificationDisplayEnd::Overtaken;
        return isOver ? 0 : int(std::max<qint64>(m_item.timeout() - m_shownMs, 0));
    }

    TavoNotificationDisplayItem m_item;
    TavoNotificationDisplayEnd::Enum m_end = TavoNotificationDisplayEnd::Unknown;
    qint64 m_shownMs = 0;
    qint64 m_number = 0;
};

DisplayStatus::DisplayStatus(CMNodes *nodes)
    : m_current(new DisplayCurrentNode(nodes))
    , m_ended(new DisplayEndedNode(nodes))
{
    m_current->setTitle("Message on display");
    m_ended->setTitle("Last message that ended");
    m_waitingTimer.setSingleShot(true);
    m_waitingTimer.setInterval(waitingIntervalMs);
    tavoConnect(&m_waitingTimer, &QTimer::timeout, &m_waitingTimer,
                [this] { m_current->setWaiting(m_waiting); });
}

void DisplayStatus::setHead(const TavoNotificationDisplayItem &head, int timeout, int waiting)
{
    m_waiting = waiting;
    m_current->setHead(head, timeout, waiting);
}

void DisplayStatus::clearHead()
{
    m_current->clearHead();
}

void DisplayStatus::setWaiting(int waiting)
{
    m_waiting = waiting;
    if (!m_waitingTimer.isActive()) {
        m_waitingTimer.start();
    }
}

void DisplayStatus::reportEnd(const TavoNotificationDisplayItem &item,
                              TavoNotificationDisplayEnd::Enum end, qint64 shownMs)
{
    m_ended->setEnd(item, end, shownMs);
}
