// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/connect.h"
#include "core/model/nodes/cmuinode.h"

#include <QObject>

#include <functional>

/// A command: each set-data request calls the slot that the node is bound to, which answers it. The
/// node is published when it is bound, so that no request comes before a slot can take it. Thread
/// and owner: as CMNode. Freed in its own thread, even if a request from another one is the last to
/// hold it.
class TAVO_API_EXPORT CMActivateNode : public QObject, public CMUINode
{
    Q_OBJECT

public:
    /// Connects a node's signal to a slot that takes its requests.
    using Connector = std::function<void(CMActivateNode *)>;

    /// Makes a node at the path. It is published by setInvoke().
    static CMActivateNode *create(CMNodes *nodes, const CMPath &path);

    /// Binds the node to a slot of the receiver instead of any other slot. Once the receiver is
    /// destroyed, requests are answered with an error.
    template <typename Receiver>
    void setInvoke(Receiver *receiver, void (Receiver::*slot)(const CMSetDataRequest &),
                   Qt::ConnectionType type)
    {
        Q_ASSERT(receiver);
        doSetInvoke([receiver, slot, type](CMActivateNode *node) {
            tavoConnect(node, &CMActivateNode::privateInvoke, receiver, slot, type);
        });
    }

    /// Binds the node to what the function connects to privateInvoke(), for receivers that setInvoke()
    /// does not suit.
    void doSetInvoke(const Connector &connector);

    QString kind() const override;
    /// Emits privateInvoke(), or answers with an error if nothing is bound.
    void setData(const CMSetDataRequest &request) override;

Q_SIGNALS:
    /// Carries each request to the bound slot. Connected by setInvoke() only.
    void privateInvoke(const CMSetDataRequest &request);

private:
    using CMUINode::CMUINode;

    void free() override;

    bool m_published = false;
};
