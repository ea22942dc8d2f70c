// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/connect.h"
#include "core/base/export.h"
#include "core/model/changenotifier.h"
#include "core/model/cmreply.h"
#include "core/model/cmrequest.h"
#include "core/model/cmworker.h"
#include "core/records/cmpath.h"
#include "core/records/tavohash.h"

#include <functional>

/// The operations of the model.
///
/// Called from any thread; the result comes in the reply. CMRoot() reaches every node of the model,
/// another worker only its own nodes.
class TAVO_API_EXPORT CMAbstractWorker : public CMWorker
{
    Q_OBJECT

public:
    /// What changes: a value, the existence of a node, or the rows of a list.
    enum ChangeType { ValueChange = 0, NodeChange = 1, RowsChange = 2 };

    /// Called by derived classes, in the thread in which the worker lives.
    explicit CMAbstractWorker(QObject *parent = nullptr);
    ~CMAbstractWorker() override;

    /// Hands the request to the operation for its kind.
    void request(CMRequest request) override;

    /// Replies with the worker's name.
    virtual void ping(const CMSetDataRequest &request) = 0;

    /// Writes the worker's nodes to the logger "Model" at level INFO.
    virtual void trace() = 0;

    /// Passes the request to the node at its path. Without a node, it is answered with an error.
    virtual void getDataRequest(const CMGetDataRequest &request) = 0;
    /// As getDataRequest().
    virtual void getRowsRequest(const CMGetRowsRequest &request) = 0;
    /// As getDataRequest().
    virtual void matchRowRequest(const CMMatchRowRequest &request) = 0;
    /// As getDataRequest().
    virtual void setDataRequest(const CMSetDataRequest &request) = 0;

    /// Subscribes the receiver to changes of a kind at a path, which need not have a node yet. The
    /// function connects the notifier to the receiver and returns whether it did. Each call makes a
    /// subscription, which ends with disconnectChange() or with its receiver.
    virtual void connectChange(ChangeType type, const CMPath &path, QObject *receiver,
                               std::function<bool(ChangeNotifier *)> connectTo);

    /// Ends one subscription of the receiver. The function is called with the receiver's notifiers
    /// at the path, oldest first, until it has disconnected one. It is called under a mutex and
    /// must not do anything else.
    virtual void disconnectChange(ChangeType type, const CMPath &path, QObject *receiver,
                                  std::function<void(ChangeNotifier *)> disconnectFrom);

    /// Sends a set-data request with the value to the node at the path. If there is no node, the
    /// reply gets the error CMErrors::noSuchNode(). Returns the reply.
    CMReply<QVariant> invoke(const CMPath &path, const TavoHash &value,
                             const CMReply<QVariant> &reply);
    /// The same with a value that is not a record, such as a string.
    CMReply<QVariant> invoke(const CMPath &path, const QVariant &value,
                             const CMReply<QVariant> &reply);

    /// Reads the value of the node at the path. Waits until the value is there; a value node gives
    /// it in the calling thread, without an event loop. Returns an invalid variant if there is no
    /// value.
    QVariant getValue(const CMPath &path);

    /// Subscribes a slot to changes of the rows at a path.
    template <typename Receiver>
    void connectRowsChange(const CMPath &path, Receiver *receiver,
                           void (Receiver::*slot)(const CMPath &, const QStringList &, int, int),
                           Qt::ConnectionType type = Qt::AutoConnection)
    {
        subscribe(RowsChange, &RowsChangeNotifier::changed, path, receiver, slot, type);
    }

    /// Ends one such subscription. Asserts if there is none.
    template <typename Receiver>
    void disconnectRowsChange(const CMPath &path, Receiver *receiver,
                              void (Receiver::*slot)(const CMPath &, const QStringList &, int, int))
    {
        unsubscribe(RowsChange, &RowsChangeNotifier::changed, path, receiver, slot);
    }

    /// Subscribes a slot to changes of the value at a path.
    template <typename Receiver>
    void connectValueChange(const CMPath &path, Receiver *receiver,
                            void (Receiver::*slot)(const CMPath &, const QVariant &),
                            Qt::ConnectionType type = Qt::AutoConnection)
    {
        subscribe(ValueChange, &ValueChangeNotifier::changed, path, receiver, slot, type);
    }

    /// Ends one such subscription. Asserts if there is none.
    template <typename Receiver>
    void disconnectValueChange(const CMPath &path, Receiver *receiver,
                               void (Receiver::*slot)(const CMPath &, const QVariant &))
    {
        unsubscribe(ValueChange, &ValueChangeNotifier::changed, path, receiver, slot);
    }

    /// Subscribes a slot to the publishing and disposing of nodes at a path.
    template <typename Receiver>
    void connectNodeChange(const CMPath &path, Receiver *receiver,
                           void (Receiver::*slot)(const CMPath &, bool),
                           Qt::ConnectionType type = Qt::AutoConnection)
    {
        subscribe(NodeChange, &NodeChangeNotifier::changed, path, receiver, slot, type);
    }

    /// Ends one such subscription. Asserts if there is none.
    template <typename Receiver>
    void disconnectNodeChange(const CMPath &path, Receiver *receiver,
                              void (Receiver::*slot)(const CMPath &, bool))
    {
        unsubscribe(NodeChange, &NodeChangeNotifier::changed, path, receiver, slot);
    }

private:
    template <typename Notifier, typename... Args, typename Receiver, typename Slot>
    void subscribe(ChangeType kind, void (Notifier::*signal)(Args...), const CMPath &path,
                   Receiver *receiver, Slot slot, Qt::ConnectionType type)
    {
        connectChange(kind, path, receiver, [=](ChangeNotifier *notifier) {
            tavoConnect(static_cast<Notifier *>(notifier), signal, receiver, slot, type);
            return true;
        });
    }

    template <typename Notifier, typename... Args, typename Receiver, typename Slot>
    void unsubscribe(ChangeType kind, void (Notifier::*signal)(Args...), const CMPath &path,
                     Receiver *receiver, Slot slot)
    {
        // Asserted after the call: not every notifier of the receiver is connected to this slot.
        bool disconnectSucceeded = false;
        disconnectChange(kind, path, receiver, [&](ChangeNotifier *notifier) {
            disconnectSucceeded =
                QObject::disconnect(static_cast<Notifier *>(notifier), signal, receiver, slot);
        });
        Q_ASSERT(disconnectSucceeded);
    }
};
