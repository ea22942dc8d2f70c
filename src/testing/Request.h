// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <string>
#include <vector>

namespace TavoTesting {
/// A request to a node, sent as a client of the module sends it.
class Request
{
public:
    /// Sends the value, such as a string or a hash, to the node at the path.
    Request(const CMPath &path, const QVariant &value);

    /// Sends a record.
    Request(const CMPath &path, const TavoHash &value);

    /// Returns whether the reply has arrived. Does not run the event loop.
    bool isAnswered() const { return m_reply.isFinished(); }

    /// Runs the event loop until the reply has arrived. Returns false if none arrives within 5 s.
    bool waitForReply() const;

    /// Waits for the reply. Returns whether it arrived and is not an error.
    bool succeeds() const;

    /// Waits for the reply and returns the error's text; empty without an error or a reply.
    std::string errorText() const;

    /// The error of the reply; empty while there is none.
    CMError error() const { return m_reply.error(); }

    /// The value of the reply, as TavoValue(request.value().toHash()) reads it. Blocks until the reply
    /// has arrived, so wait for it first.
    QVariant value() const { return m_reply.value(); }

private:
    CMReply<QVariant> m_reply;
};

/// The value of the node at the path; empty if there is no node.
TavoValue valueAt(const CMPath &path);

/// The elements of a record's list, for comparing with ElementsAre().
template <typename T>
std::vector<T> elementsOf(const TavoList<T> &list)
{
    std::vector<T> elements;
    elements.reserve(std::size_t(list.size()));
    for (int i = 0; i < list.size(); ++i) {
        elements.push_back(list.at(i));
    }
    return elements;
}
} // namespace TavoTesting
