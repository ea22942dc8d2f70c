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
    /// The mutex protects the value, for an owner that has one mutex for all of its state. If it is
    /// null, the node uses guard(). It must not be held during a call to the node, and must outlive
    /// the node and the requests that are running on it.
    static CMValueNode *create(CMNodes *nodes, const CMPath &path, QMutex *lock = nullptr);

    /// Replaces the value. If it differs, the change is reported to the subscribers from their
    /// event loops.
    void setValue(const TavoValue &value);

    /// The value that was set last.
    TavoValue value() const;

    QString kind() const override;
    /// Replies with the value.
    void getData(const CMGetDataRequest &request) override;

private:
    CMValueNode(CMNodes *nodes, const CMPath &path, QMutex *lock);

    /// Calls the function under the mutex.
    template <typename Function>
    auto guarded(Function function) const;

    QMutex *m_lock;
    TavoValue m_value;
};
