// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/nodes/cmnodesworker.h"

#include "core/base/dbglog.h"
#include "core/registry/cmrouting.h"

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Model");
}

CMNodesWorker::CMNodesWorker(const QVariantHash &config, const QString &name)
    : m_config(config)
    , m_name(name)
{
}

CMNodesWorker::~CMNodesWorker() = default;

void CMNodesWorker::ping(const CMSetDataRequest &request)
{
    request.reply().setValue(m_name);
}

void CMNodesWorker::trace()
{
    LOG4CPLUS_INFO(logger, "Worker " << m_name << " has " << m_nodes.size() << " nodes");
    m_nodes.forEach(
        [](const CMEndpoint *node) { LOG4CPLUS_INFO(logger, "Node " << node->path()); });
}

void CMNodesWorker::getDataRequest(const CMGetDataRequest &request)
{
    cmRoute(request, &CMEndpoint::getData, &m_nodes);
}

void CMNodesWorker::getRowsRequest(const CMGetRowsRequest &request)
{
    cmRoute(request, &CMEndpoint::getRows, &m_nodes);
}

void CMNodesWorker::matchRowRequest(const CMMatchRowRequest &request)
{
    cmRoute(request, &CMEndpoint::matchRow, &m_nodes);
}

void CMNodesWorker::setDataRequest(const CMSetDataRequest &request)
{
    cmRoute(request, &CMEndpoint::setData, &m_nodes);
}
