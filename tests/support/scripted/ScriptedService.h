// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <functional>
#include <vector>

/// A worker that a test plays the part of: takes requests at paths, keeps them, and answers each as
/// the test says, at once or later.
class ScriptedService : public CMNodesWorker
{
    Q_OBJECT

public:
    explicit ScriptedService(const QString &name);

    /// What happens to a request: answer it here, or leave it for the test to answer.
    using Script = std::function<void(const CMSetDataRequest &)>;

    /// Publishes a node at the path; every request is kept and then given to the script.
    void take(const CMPath &path, Script script);

    /// Publishes a value.
    void publish(const CMPath &path, const TavoValue &value);
    void publishAgain(const CMPath &path, const TavoValue &value);

    /// Takes the node at the path away.
    void withdraw(const CMPath &path);

    /// The requests so far to the path, oldest first.
    std::vector<CMSetDataRequest> requests(const CMPath &path) const;
    int count(const CMPath &path) const { return int(requests(path).size()); }

    static Script accept();
    static Script refuse(const QString &message);
    static Script keep();

    /// Changes what happens to further requests to the path.
    void setScript(const CMPath &path, Script script) { m_scripts[path] = std::move(script); }

    /// Calls the script inside each request's call instead of from the event loop.
    void setDirectScript(const CMPath &path, Script script);

private:
    void on_request(const CMSetDataRequest &request);

    QHash<CMPath, CMNode *> m_nodes;
    QHash<CMPath, Script> m_scripts;
    std::vector<CMSetDataRequest> m_requests;
};
