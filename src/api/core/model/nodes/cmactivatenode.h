// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/connect.h"
#include "core/model/nodes/cmuinode.h"

#include <QObject>

#include <functional>

/// A node that is activated with a value: each set-data request on it becomes one call of the slot
/// that it is bound to, which answers. It is published when it is bound, so that no request comes
/// before there is somebody to take it. Thread and owner: as CMNode.
class TAVO_API_EXPORT CMActivateNode : public QObject, public CMUINode
{
    Q_OBJECT

public:
    /// Makes the connection between a node's signal and whoever takes its requests.
    using Connector = std::function<void(CMActivateNode *)>;

    static CMActivateNode *create(CMNodes *nodes, const CMPath &path);

    /// Binds the node to a slot of the receiver, in place of the one before. A request that comes
    /// when the receiver has gone is answered with an error.
    template <typename Receiver>
    void setInvoke(Receiver *receiver, void (Receiver::*slot)(const CMSetDataRequest &),
                   Qt::ConnectionType type)
    {
        Q_ASSERT(receiver);
        doSetInvoke([receiver, slot, type](CMActivateNode *node) {
            tavoConnect(node, &CMActivateNode::privateInvoke, receiver, slot, type);
        });
    }

    void doSetInvoke(const Connector &connector);

    QString kind() const override;
    void setData(const CMSetDataRequest &request) override;

Q_SIGNALS:
    /// Carries each request to the bound slot. For setInvoke() alone.
    void privateInvoke(const CMSetDataRequest &request);

private:
    using CMUINode::CMUINode;

    bool m_published = false;
};
