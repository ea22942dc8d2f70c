// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/base/trstring.h"
#include "core/records/cmpath.h"

#include <QSharedData>

#include <memory>

class CMGetDataRequest;
class CMGetRowsRequest;
class CMMatchRowRequest;
class CMNodes;
class CMSetDataRequest;

/// The model's view of a node: it has a path and takes requests. CMNode implements it.
///
/// Reference-counted, so that a node stays alive while a request is running on it.
class TAVO_API_EXPORT CMEndpoint : public QSharedData
{
public:
    /// Releases a counted reference.
    struct Release
    {
        /// Called by the pointer, in any thread.
        void operator()(CMEndpoint *node) const { node->release(); }
    };

    /// A counted reference, which hold() makes.
    using Pointer = std::unique_ptr<CMEndpoint, Release>;

    /// Null for null.
    static Pointer hold(CMEndpoint *node)
    {
        if (node != nullptr) {
            node->ref.ref();
        }
        return Pointer(node);
    }

    virtual ~CMEndpoint();

    CMEndpoint(const CMEndpoint &) = delete;
    CMEndpoint &operator=(const CMEndpoint &) = delete;

    /// The path that was given when the node was made.
    const CMPath &path() const { return m_path; }

    /// The set that owns the node.
    CMNodes *nodes() const { return m_nodes; }

    /// Takes the node out of the model, and frees it once no request is running on it. The pointer
    /// must not be used afterwards.
    virtual void dispose() = 0;

    /// The kind's name: "value", "list", "request". Called from any thread.
    virtual QString kind() const = 0;

    /// The title for user interfaces; empty if there is none. Called from any thread.
    virtual TrString title() const = 0;

    // Requests. Called in the thread that makes the request.
    /// Sets the value, or activates the node.
    virtual void setData(const CMSetDataRequest &request) = 0;
    /// Reads the value.
    virtual void getData(const CMGetDataRequest &request) = 0;
    /// Reads rows.
    virtual void getRows(const CMGetRowsRequest &request) = 0;
    /// Finds a row.
    virtual void matchRow(const CMMatchRowRequest &request) = 0;

protected:
    /// The set must outlive the node.
    CMEndpoint(CMNodes *nodes, const CMPath &path)
        : m_path(path)
        , m_nodes(nodes)
    {
    }

    /// Frees the node, whose last reference has been released. Called from any thread.
    virtual void free();

private:
    friend class CMNodes;
    friend class CMRegistry;
    friend class CMTree;

    void release()
    {
        if (!ref.deref()) {
            free();
        }
    }

    uint m_place = 0; ///< used by the registry; first, where it fills a gap
    CMPath m_path;
    CMNodes *m_nodes;
    CMEndpoint *m_previous = nullptr; ///< used by the set of nodes
    CMEndpoint *m_next = nullptr;
    CMEndpoint *m_nextInTable = nullptr; ///< used by the registry
};
