// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/records/cmpath.h"

#include <QObject>
#include <QStringList>
#include <QVariant>

#include <atomic>

/// Carries the changes at a path to one subscriber.
///
/// Made and owned by the model; lives in the receiver's thread. Changes are posted to it from any
/// thread, and it emits them from its thread's event loop in the order in which they were made.
class TAVO_API_EXPORT ChangeNotifier : public QObject
{
    Q_OBJECT

public:
    /// Called by the model, in the receiver's thread or another. The pointer is only compared.
    ChangeNotifier(const CMPath &path, const QObject *receiver)
        : m_path(path)
        , m_receiver(receiver)
    {
    }
    ~ChangeNotifier() override;

    /// The path of the subscription.
    const CMPath &path() const { return m_path; }

    /// The subscriber. Only compare the pointer: the object may be gone.
    const QObject *receiver() const { return m_receiver; }

    /// Returns false once the subscription has ended or the receiver is gone.
    bool isConnected() const { return m_connected; }

    /// Frees the notifier: at once, or later if it is emitting or lives in another thread. Called
    /// from any thread.
    void dispose();

    /// Emits a change that was posted.
    bool event(QEvent *event) override;

protected:
    /// Called by Qt in the thread that ends the connection.
    void disconnectNotify(const QMetaMethod &signal) override;

private:
    friend class CMNotifierTable;
    friend class CMSubscriptions;

    CMPath m_path;
    const QObject *m_receiver;
    ChangeNotifier *m_next = nullptr;        ///< used by the table of notifiers
    ChangeNotifier *m_nextInTable = nullptr; ///< used by the table of notifiers
    int m_emissions = 0; ///< emissions under way; more than one if a slot runs an event loop
    std::atomic<bool> m_connected{false};
    bool m_disposed = false; ///< is freed after the last emission
};

/// Carries changes of the rows of a list.
class TAVO_API_EXPORT RowsChangeNotifier : public ChangeNotifier
{
    Q_OBJECT

public:
    /// Called by the model.
    using ChangeNotifier::ChangeNotifier;

    /// Has a change emitted from the receiver's event loop. Called from any thread.
    void post(const QStringList &changes, int first, int count);

Q_SIGNALS:
    /// The rows of the list at the path have changed. CMSubscribe names the changes. They concern
    /// count rows from first on; first is -1 and count is 0 if they concern no particular rows.
    void changed(const CMPath &path, const QStringList &changes, int first, int count);
};

/// Carries changes of a value.
class TAVO_API_EXPORT ValueChangeNotifier : public ChangeNotifier
{
    Q_OBJECT

public:
    /// Called by the model.
    using ChangeNotifier::ChangeNotifier;

    /// Has a change emitted from the receiver's event loop. Called from any thread.
    void post(const QVariant &value);

Q_SIGNALS:
    /// The node at the path has this value now.
    void changed(const CMPath &path, const QVariant &value);
};

/// Carries the publishing and disposing of nodes.
class TAVO_API_EXPORT NodeChangeNotifier : public ChangeNotifier
{
    Q_OBJECT

public:
    /// Called by the model.
    using ChangeNotifier::ChangeNotifier;

    /// Has a change emitted from the receiver's event loop. Called from any thread.
    void post(bool published);

Q_SIGNALS:
    /// A node has been published at the path, or has been disposed of.
    void changed(const CMPath &path, bool published);
};
