// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/nodes/cmnode.h"

#include "core/base/dbglog.h"
#include "core/model/nodes/cmnodes.h"
#include "core/registry/cmregistry.h"

#include <array>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Model");

void refuse(const CMRequest &request, const char *what)
{
    request.reply().setError(CMError(
        CMErrors::notSupported(), QStringLiteral("The node at %1 %2")
                                      .arg(request.path().toString(), QString::fromLatin1(what))));
}
} // namespace

CMNode::CMNode(CMNodes *nodes, const CMPath &path)
    : CMEndpoint(nodes, path)
{
    nodes->add(this);
}

void CMNode::publish()
{
    if (path().isEmpty()) {
        LOG4CPLUS_ERROR(logger, "A node without a path is not published");
        return;
    }
    if (!CMRegistry::instance().publish(this)) {
        LOG4CPLUS_ERROR(logger,
                        "A node is published at " << path() << " already, the new one is not");
    }
}

void CMNode::dispose()
{
    CMRegistry::instance().withdraw(this);
    nodes()->remove(this);
}

QString CMNode::kind() const
{
    return QStringLiteral("node");
}

TrString CMNode::title() const
{
    return {};
}

void CMNode::setData(const CMSetDataRequest &request)
{
    refuse(request, "can't be set");
}

void CMNode::getData(const CMGetDataRequest &request)
{
    refuse(request, "has no value");
}

void CMNode::getRows(const CMGetRowsRequest &request)
{
    refuse(request, "has no rows");
}

void CMNode::matchRow(const CMMatchRowRequest &request)
{
    refuse(request, "has no rows");
}

std::mutex &CMNode::guard() const
{
    // With a mutex in each node, the node of a closed message would take 432 bytes, and the goal is
    // 410 (benchmark tavo_memory_use).
    static std::array<std::mutex, 64> guards;
    return guards[(reinterpret_cast<quintptr>(this) >> 5) % guards.size()];
}
