// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/changenotifier.h"

#include "core/changeevent.h"

#include <QMetaMethod>
#include <QThread>

ChangeNotifier::~ChangeNotifier() = default;

void ChangeNotifier::dispose()
{
    const QThread *home = thread();
    // Nothing would run a deletion that is posted to a thread that has gone.
    if (home == nullptr || (home == QThread::currentThread() && m_emissions == 0)) {
        delete this;
    } else {
        deleteLater();
    }
}

bool ChangeNotifier::event(QEvent *event)
{
    if (event->type() == QEvent::DeferredDelete && m_emissions > 0) {
        m_disposed = true;
        return true;
    }
    if (event->type() != ChangeEvent::eventType()) {
        return QObject::event(event);
    }
    ++m_emissions;
    static_cast<const ChangeEvent *>(event)->emitFrom(this);
    if (--m_emissions == 0 && m_disposed) {
        deleteLater();
    }
    return true;
}

void ChangeNotifier::disconnectNotify(const QMetaMethod & /*signal*/)
{
    m_connected = false;
}

void RowsChangeEvent::emitFrom(ChangeNotifier *notifier) const
{
    auto *rows = static_cast<RowsChangeNotifier *>(notifier);
    Q_EMIT rows->changed(rows->path(), m_changes, m_first, m_count);
}

void ValueChangeEvent::emitFrom(ChangeNotifier *notifier) const
{
    auto *value = static_cast<ValueChangeNotifier *>(notifier);
    Q_EMIT value->changed(value->path(), m_value);
}

void NodeChangeEvent::emitFrom(ChangeNotifier *notifier) const
{
    auto *node = static_cast<NodeChangeNotifier *>(notifier);
    Q_EMIT node->changed(node->path(), m_published);
}
