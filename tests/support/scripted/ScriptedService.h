// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <functional>
#include <vector>

/// A worker whose nodes do what a test says: they keep each request and answer it at once or later.
class ScriptedService : public CMNodesWorker
{
    Q_OBJECT

public:
    explicit ScriptedService(const QString &name);

    /// Answers a request, or leaves it for the test to answer.
    using Script = std::function<void(const CMSetDataRequest &)>;

    /// Publishes a node at the path. Every request to it is kept and then passed to the script.
    void take(const CMPath &path, Script script);

    /// Publishes a value.
    void publish(const CMPath &path, const TavoValue &value);
    void publishAgain(const CMPath &path, const TavoValue &value);

    /// Removes the node at the path.
    void withdraw(const CMPath &path);

    /// The requests to the path so far, oldest first.
    std::vector<CMSetDataRequest> requests(const CMPath &path) const;
    int count(const CMPath &path) const { return int(requests(path).size()); }

    static Script accept();
    static Script refuse(const QString &message);
    static Script keep();

    /// Replaces the script for further requests to the path.
    void setScript(const CMPath &path, Script script) { m_scripts[path] = std::move(script); }

    /// Has the script called inside the call that sends the request, not from the event loop.
    void setDirectScript(const CMPath &path, Script script);

private:
    void on_request(const CMSetDataRequest &request);

    QHash<CMPath, CMNode *> m_nodes;
    QHash<CMPath, Script> m_scripts;
    std::vector<CMSetDataRequest> m_requests;
};
