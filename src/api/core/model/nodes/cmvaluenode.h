// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/nodes/cmuinode.h"
#include "core/records/value.h"

class QMutex;

/// A node that holds a value. Thread and owner: as CMNode.
class TAVO_API_EXPORT CMValueNode : public CMUINode
{
public:
    /// The lock guards the value for an owner that has one for all of its state; null leaves it to
    /// the node's own guard. It must not be held by who calls the node, and must outlive the node
    /// and the requests that are just being handed to it.
    static CMValueNode *create(CMNodes *nodes, const CMPath &path, QMutex *lock = nullptr);

    /// Replaces the value; subscribers are told, from the event loop, when it differs.
    void setValue(const TavoValue &value);

    TavoValue value() const;

    QString kind() const override;
    void getData(const CMGetDataRequest &request) override;

private:
    CMValueNode(CMNodes *nodes, const CMPath &path, QMutex *lock);

    /// Runs a function under the guard.
    template <typename Function>
    auto guarded(Function function) const;

    QMutex *m_lock;
    TavoValue m_value;
};
