// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <functional>
#include <vector>

namespace TavoTesting {
/// A worker whose nodes do what a test says: stands for the services that the tested module uses. Each
/// request is kept, and answered by a script or later by the test.
///
/// Lives in the test's thread, whose event loop must run for requests to be answered: see settle() and
/// waitFor().
class ScriptedService : public CMNodesWorker
{
    Q_OBJECT

public:
    /// The name is for messages only.
    explicit ScriptedService(const QString &name);

    /// Answers a request, or leaves it for the test to answer.
    using Script = std::function<void(const CMSetDataRequest &)>;

    /// Publishes a command at the path. Every request to it is kept and then passed to the script.
    void take(const CMPath &path, Script script);

    /// Publishes a value.
    void publish(const CMPath &path, const TavoValue &value);

    /// Removes the node at the path, and publishes the value in a new one.
    void publishAgain(const CMPath &path, const TavoValue &value);

    /// Removes the node at the path. Requests to it get an error from then on.
    void withdraw(const CMPath &path);

    /// The requests to the path so far, oldest first. request.value() is what was sent, and
    /// request.reply() the reply to finish if the script has not done so.
    std::vector<CMSetDataRequest> requests(const CMPath &path) const;

    /// How many requests there were to the path.
    int count(const CMPath &path) const { return int(requests(path).size()); }

    /// Scripts that reply with nothing, with a value, with an error of that text, and not at all.
    static Script accept();
    /// Replies with the value.
    static Script replyWith(const QVariant &value);
    /// Replies with an error of that text.
    static Script refuse(const QString &message);
    /// Does not reply; the test does that later.
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
} // namespace TavoTesting
