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

/// The operations of the model, as a worker offers them to others.
///
/// Requests and subscriptions may be made from any thread; an answer comes through the reply. On
/// CMRoot() they reach every node of the model, on another worker its own nodes.
class TAVO_API_EXPORT CMAbstractWorker : public CMWorker
{
    Q_OBJECT

public:
    enum ChangeType { ValueChange = 0, NodeChange = 1, RowsChange = 2 };

    explicit CMAbstractWorker(QObject *parent = nullptr);
    ~CMAbstractWorker() override;

    /// Hands the request to the operation for its kind.
    void request(CMRequest request) override;

    /// Answers at once, with the worker's name: shows that it is there.
    virtual void ping(const CMSetDataRequest &request) = 0;

    /// Writes what the worker holds to the log, logger "Model", level INFO.
    virtual void trace() = 0;

    virtual void getDataRequest(const CMGetDataRequest &request) = 0;
    virtual void getRowsRequest(const CMGetRowsRequest &request) = 0;
    virtual void matchRowRequest(const CMMatchRowRequest &request) = 0;
    virtual void setDataRequest(const CMSetDataRequest &request) = 0;

    /// Subscribes the receiver to changes of a kind at a path, which need not have a node yet. The
    /// callable is given the subscription's notifier and makes the connection. Each call makes a
    /// subscription of its own, which ends with disconnectChange() or with its receiver.
    virtual void connectChange(ChangeType type, const CMPath &path, QObject *receiver,
                               std::function<bool(ChangeNotifier *)> connectTo);

    /// Ends one subscription of the receiver: the callable is given its notifiers at the path,
    /// oldest first, until it has disconnected one. It is to do no more than that: a lock is held.
    virtual void disconnectChange(ChangeType type, const CMPath &path, QObject *receiver,
                                  std::function<void(ChangeNotifier *)> disconnectFrom);

    /// Sends a set-data request with that value to the node at the path. The answer arrives in the
    /// reply, which is returned as well; a path without a node answers with CMErrors::noSuchNode().
    CMReply<QVariant> invoke(const CMPath &path, const TavoHash &value,
                             const CMReply<QVariant> &reply);
    CMReply<QVariant> invoke(const CMPath &path, const QVariant &value,
                             const CMReply<QVariant> &reply);

    /// Reads the value of the node at the path, in the calling thread, without waiting for any
    /// event loop. Invalid where no node has a value.
    QVariant getValue(const CMPath &path);

    /// Subscribes a slot to changes of the rows at a path.
    template <typename Receiver>
    void connectRowsChange(const CMPath &path, Receiver *receiver,
                           void (Receiver::*slot)(const CMPath &, const QStringList &, int, int),
                           Qt::ConnectionType type = Qt::AutoConnection)
    {
        subscribe(RowsChange, &RowsChangeNotifier::changed, path, receiver, slot, type);
    }

    /// Ends one such subscription. That there is one is the caller's to know: if not, it asserts.
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

    template <typename Receiver>
    void disconnectValueChange(const CMPath &path, Receiver *receiver,
                               void (Receiver::*slot)(const CMPath &, const QVariant &))
    {
        unsubscribe(ValueChange, &ValueChangeNotifier::changed, path, receiver, slot);
    }

    /// Subscribes a slot to a node's coming and going at a path.
    template <typename Receiver>
    void connectNodeChange(const CMPath &path, Receiver *receiver,
                           void (Receiver::*slot)(const CMPath &, bool),
                           Qt::ConnectionType type = Qt::AutoConnection)
    {
        subscribe(NodeChange, &NodeChangeNotifier::changed, path, receiver, slot, type);
    }

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
        // Asserted behind the call: the callable is offered each of the receiver's subscriptions.
        bool disconnectSucceeded = false;
        disconnectChange(kind, path, receiver, [&](ChangeNotifier *notifier) {
            disconnectSucceeded =
                QObject::disconnect(static_cast<Notifier *>(notifier), signal, receiver, slot);
        });
        Q_ASSERT(disconnectSucceeded);
    }
};
