// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "testing/ScriptedService.h"

namespace TavoTesting {
ScriptedService::ScriptedService(const QString &name)
    : CMNodesWorker(QVariantHash(), name)
{
}

void ScriptedService::take(const CMPath &path, Script script)
{
    m_scripts[path] = std::move(script);
    CMActivateNode *node = CMActivateNode::create(nodes(), path);
    node->setInvoke(this, &ScriptedService::on_request, Qt::QueuedConnection);
    m_nodes[path] = node;
}

void ScriptedService::publish(const CMPath &path, const TavoValue &value)
{
    CMValueNode *node = CMValueNode::create(nodes(), path, nullptr);
    node->setValue(value);
    m_nodes[path] = node;
}

void ScriptedService::publishAgain(const CMPath &path, const TavoValue &value)
{
    withdraw(path);
    publish(path, value);
}

void ScriptedService::withdraw(const CMPath &path)
{
    m_nodes.take(path)->dispose();
}

void ScriptedService::setDirectScript(const CMPath &path, Script script)
{
    setScript(path, std::move(script));
    static_cast<CMActivateNode *>(m_nodes.value(path))
        ->setInvoke(this, &ScriptedService::on_request, Qt::DirectConnection);
}

void ScriptedService::on_request(const CMSetDataRequest &request)
{
    m_requests.push_back(request);
    m_scripts.value(request.path())(request);
}

std::vector<CMSetDataRequest> ScriptedService::requests(const CMPath &path) const
{
    std::vector<CMSetDataRequest> result;
    for (const CMSetDataRequest &request : m_requests) {
        if (request.path() == path) {
            result.push_back(request);
        }
    }
    return result;
}

ScriptedService::Script ScriptedService::accept()
{
    return replyWith(QVariant());
}

ScriptedService::Script ScriptedService::replyWith(const QVariant &value)
{
    return [value](const CMSetDataRequest &request) { request.reply().setValue(value); };
}

ScriptedService::Script ScriptedService::refuse(const QString &message)
{
    return [message](const CMSetDataRequest &request) {
        request.reply().setError(CMError(QStringLiteral("Scripted"), message));
    };
}

ScriptedService::Script ScriptedService::keep()
{
    return [](const CMSetDataRequest &) {};
}
} // namespace TavoTesting
