// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/cmendpoint.h"
#include "core/model/cmrequest.h"

#include <mutex>

/// A node of the model.
///
/// Each kind has a create() that makes a node in a worker's node set, which owns it. The worker
/// uses the node in its own thread; requests reach it in the threads of their senders. The node is
/// published until it is disposed of. If its path is empty, or is taken by another node, it exists
/// but is never published.
class TAVO_API_EXPORT CMNode : public CMEndpoint
{
public:
    void dispose() override;
    QString kind() const override;
    TrString title() const override;

    // Each kind overrides the requests that it answers. The defaults answer with an error.
    void setData(const CMSetDataRequest &request) override;
    void getData(const CMGetDataRequest &request) override;
    void getRows(const CMGetRowsRequest &request) override;
    void matchRow(const CMMatchRowRequest &request) override;

protected:
    /// Called by the kinds, whose create() then calls publish().
    CMNode(CMNodes *nodes, const CMPath &path);

    /// Publishes the finished node; called last by create().
    void publish();

    /// Protects the data that requests read from other threads. Many nodes share a mutex, so it
    /// must not be held during a call to another node.
    std::mutex &guard() const;
};
