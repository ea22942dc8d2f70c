// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/records/cmpath.h"

#include <atomic>

#include <QObject>
#include <QStringList>
#include <QVariant>

/// Stands between a node and one subscription to its changes.
///
/// Made and owned by the model, in the receiver's thread. A change is posted to it from any thread
/// and emitted from that thread's event loop, in the order in which the changes were made.
class TAVO_API_EXPORT ChangeNotifier : public QObject
{
    Q_OBJECT

public:
    ChangeNotifier(const CMPath &path, const QObject *receiver)
        : m_path(path)
        , m_receiver(receiver)
    {
    }
    ~ChangeNotifier() override;

    const CMPath &path() const { return m_path; }

    /// Who subscribed; for comparing only, it may be gone.
    const QObject *receiver() const { return m_receiver; }

    /// False once the subscription has been ended, by its receiver or by the receiver's end.
    bool isConnected() const { return m_connected; }

    /// Frees the notifier, later when it is emitting or lives in another thread; in no case while a
    /// slot that it has called is still running. Any thread.
    void dispose();

    bool event(QEvent *event) override;

protected:
    /// Called by Qt in whatever thread ends the connection, a receiver's destructor included.
    void disconnectNotify(const QMetaMethod &signal) override;

private:
    friend class CMRegistry;

    CMPath m_path;
    const QObject *m_receiver;
    ChangeNotifier *m_next = nullptr;        ///< the registry's: the next one to the same path
    ChangeNotifier *m_nextInTable = nullptr; ///< the registry's
    int m_emissions = 0; ///< under way: a slot may run an event loop, which emits again
    std::atomic<bool> m_connected{false};
    bool m_disposed = false; ///< to be freed when the outermost emission is through
};

class TAVO_API_EXPORT RowsChangeNotifier : public ChangeNotifier
{
    Q_OBJECT

public:
    using ChangeNotifier::ChangeNotifier;
Q_SIGNALS:
    /// Rows of the list at the path have changed as the names in changes say (see CMSubscribe),
    /// from row first on, count of them; -1 and 0 where the change is not about certain rows.
    void changed(const CMPath &path, const QStringList &changes, int first, int count);
};

class TAVO_API_EXPORT ValueChangeNotifier : public ChangeNotifier
{
    Q_OBJECT

public:
    using ChangeNotifier::ChangeNotifier;
Q_SIGNALS:
    void changed(const CMPath &path, const QVariant &value);
};

class TAVO_API_EXPORT NodeChangeNotifier : public ChangeNotifier
{
    Q_OBJECT

public:
    using ChangeNotifier::ChangeNotifier;
Q_SIGNALS:
    /// A node has been published at the path, or has gone.
    void changed(const CMPath &path, bool published);
};
