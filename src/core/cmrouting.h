// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/cmregistry.h"
#include "core/model/cmrequest.h"

/// Hands a request to the node at its path. Answers it with an error that names the path if there
/// is none, or if a node set is given and the node is not in it.
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
    (node.data()->*operation)(request);
}
