// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/nodes/cmvaluenode.h"

#include "core/registry/cmsubscriptions.h"

#include <QMutex>

CMValueNode *CMValueNode::create(CMNodes *nodes, const CMPath &path, QMutex *lock)
{
    auto *node = new CMValueNode(nodes, path, lock);
    node->publish();
    return node;
}

CMValueNode::CMValueNode(CMNodes *nodes, const CMPath &path, QMutex *lock)
    : CMUINode(nodes, path)
    , m_lock(lock)
{
}

template <typename Function>
auto CMValueNode::guarded(Function function) const
{
    if (m_lock != nullptr) {
        const QMutexLocker locker(m_lock);
        return function();
    }
    const std::lock_guard locker(guard());
    return function();
}

void CMValueNode::setValue(const TavoValue &value)
{
    guarded([this, &value] {
        if (m_value == value) {
            return;
        }
        m_value = value;
        // Under the mutex, so that the reports of two writers have the order of their values.
        CMSubscriptions::reportValue(path(), value.__variant());
    });
}

TavoValue CMValueNode::value() const
{
    return guarded([this] { return m_value; });
}

QString CMValueNode::kind() const
{
    return QStringLiteral("value");
}

void CMValueNode::getData(const CMGetDataRequest &request)
{
    request.reply().setValue(value().__variant());
}
