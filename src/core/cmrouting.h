// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/cmregistry.h"
#include "core/model/cmrequest.h"
#include "core/model/nodes/cmnode.h"

/// Hands a request to the node at its path; answers it with an error that names the path when there
/// is none, or none of the given set.
template <typename Request>
void cmRoute(const Request &request, void (CMNode::*operation)(const Request &),
             const CMNodes *nodes = nullptr)
{
    const CMPath path = request.path();
    const CMNode::Pointer node = CMRegistry::instance().find(path);
    if (!node || (nodes != nullptr && node->nodes() != nodes)) {
        request.reply().setError(CMError(
            CMErrors::noSuchNode(), QStringLiteral("There is no node at %1").arg(path.toString())));
        return;
    }
    (node.data()->*operation)(request);
}
