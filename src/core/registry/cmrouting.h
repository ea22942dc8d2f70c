// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/cmrequest.h"
#include "core/registry/cmregistry.h"

/// Hands a request to the node at its path. If there is no such node, or if a set of nodes is given
/// and the node is not in it, answers with an error that names the path.
template <typename Request>
void cmRoute(const Request &request, void (CMEndpoint::*operation)(const Request &),
             const CMNodes *nodes = nullptr)
{
    const CMPath path = request.path();
    const CMEndpoint::Pointer node = CMRegistry::instance().find(path);
    if (!node || (nodes != nullptr && node->nodes() != nodes)) {
        request.reply().setError(CMError(
            CMErrors::noSuchNode(), QStringLiteral("There is no node at %1").arg(path.toString())));
        return;
    }
    (node.get()->*operation)(request);
}
