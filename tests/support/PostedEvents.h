// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

/// Delivers every call queued for the calling thread's objects, including those queued meanwhile. No
/// timer fires, so the speed of the machine does not matter.
inline void deliverPosted()
{
    class EventCounter : public QObject
    {
    public:
        EventCounter() { QCoreApplication::instance()->installEventFilter(this); }

        void reset() { m_seen = false; }
        bool seen() const { return m_seen; }

        bool eventFilter(QObject * /*watched*/, QEvent * /*event*/) override
        {
            m_seen = true;
            return false;
        }

    private:
        bool m_seen = false;
    };

    EventCounter counter;
    do {
        counter.reset();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    } while (counter.seen());
}
