// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/model/cmrequest.h"
#include "core/records/cmpath.h"

#include <mutex>

#include <QExplicitlySharedDataPointer>

class CMNodes;

/// A node of the model: something at a path that takes requests.
///
/// Made by its kind's create() in a worker's node set, which owns it, and used by its worker in the
/// worker's thread; requests reach it in the thread that makes them. It is published from its
/// making to its disposal, unless its path is empty or was taken already: then it exists, but
/// nobody reaches it.
class TAVO_API_EXPORT CMNode : public QSharedData
{
public:
    using Pointer = QExplicitlySharedDataPointer<CMNode>;

    virtual ~CMNode();

    CMNode(const CMNode &) = delete;
    CMNode &operator=(const CMNode &) = delete;

    const CMPath &path() const { return m_path; }
    CMNodes *nodes() const { return m_nodes; }

    /// Takes the node out of the model and frees it, once requests that are just being handed to it
    /// are through. The pointer is not to be used any more.
    virtual void dispose();

    /// The kind's name, for people and programs that look around: "value", "list", "request". Any
    /// thread.
    virtual QString kind() const;

    // Requests. A kind answers those that it knows; here each is answered with an error.
    virtual void setData(const CMSetDataRequest &request);
    virtual void getData(const CMGetDataRequest &request);
    virtual void getRows(const CMGetRowsRequest &request);
    virtual void matchRow(const CMMatchRowRequest &request);

protected:
    CMNode(CMNodes *nodes, const CMPath &path);

    /// Publishes the finished node; called last by create().
    void publish();

    /// Guards what requests in other threads read of the node. Shared among many nodes, so nothing
    /// is to be called under it that may come back to a node.
    std::mutex &guard() const;

private:
    friend class CMNodes;
    friend class CMRegistry;

    CMPath m_path;
    CMNodes *m_nodes;
    CMNode *m_previous = nullptr; ///< the set's list of its nodes
    CMNode *m_next = nullptr;
    CMNode *m_nextInTable = nullptr; ///< the registry's
};
