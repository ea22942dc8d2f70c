// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Entrance.h"

void Entrance::post(const std::function<void()> &function)
{
    const std::lock_guard<std::mutex> lock(m_workerMutex);
    if (m_worker != nullptr) {
        QMetaObject::invokeMethod(
            m_worker,
            [this, function] {
                const Hold held = hold();
                function();
            },
            Qt::QueuedConnection);
    }
}

void Entrance::bind(CMNodes *nodes, const CMPath &path, const Slot &slot, const AtOnce &atOnce)
{
    // The node may outlive the worker.
    const auto pass = [self = shared_from_this(), slot, atOnce](const CMSetDataRequest &request) {
        self->take(request, slot, atOnce);
    };
    CMActivateNode::create(nodes, path)->doSetInvoke([&pass](CMActivateNode *node) {
        tavoConnect(node, &CMActivateNode::privateInvoke, node, pass, Qt::DirectConnection);
    });
}

void Entrance::take(const CMSetDataRequest &request, const Slot &slot, const AtOnce &atOnce)
{
    if (atOnce) {
        const Hold held(m_mutex, std::try_to_lock);
        if (held && m_worker != nullptr && m_waiting == 0 && atOnce(request)) {
            return;
        }
    }
    ++m_waiting;
    post([this, request, slot] {
        slot(request);
        --m_waiting;
    });
}

void Entrance::close()
{
    const Hold held = hold();
    const std::lock_guard<std::mutex> lock(m_workerMutex);
    m_worker = nullptr;
}
