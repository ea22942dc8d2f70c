// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/nodes/cmactivatenode.h"

#include <QThread>

CMActivateNode *CMActivateNode::create(CMNodes *nodes, const CMPath &path)
{
    return new CMActivateNode(nodes, path);
}

void CMActivateNode::doSetInvoke(const Connector &connector)
{
    disconnect(this, &CMActivateNode::privateInvoke, nullptr, nullptr);
    connector(this);
    if (!m_published) {
        m_published = true;
        publish();
    }
}

QString CMActivateNode::kind() const
{
    return QStringLiteral("request");
}

void CMActivateNode::free()
{
    const QThread *home = thread();
    // If the thread has ended, it would never run deleteLater().
    if (home == nullptr || home == QThread::currentThread()) {
        delete this;
    } else {
        deleteLater();
    }
}

void CMActivateNode::setData(const CMSetDataRequest &request)
{
    // If the receiver is gone, the request is dropped here, and its destructor answers it with an
    // error.
    Q_EMIT privateInvoke(request);
}
