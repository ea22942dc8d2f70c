// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"
#include <core/tavo.h>

#include <vector>

/// A request that has been sent, as a client sees it.
class Request
{
public:
    Request(const CMPath &path, const QVariant &value)
        : m_reply(CMRoot()->invoke(path, value, CMReply<QVariant>()))
    {
    }
    Request(const CMPath &path, const TavoHash &value)
        : Request(path, value.__variant())
    {
    }

    bool isAnswered() const { return m_reply.isFinished(); }

    /// Runs the event loop until the reply has arrived.
    bool waitForAnswer() const
    {
        return waitFor([this] { return isAnswered(); });
    }

    /// Waits for the reply. Returns whether it arrived and is not an error.
    bool succeeds() const { return waitForAnswer() && !m_reply.error().isError(); }

    /// Waits for the reply and returns the error's text; empty without an error or a reply.
    std::string errorText() const
    {
        return waitForAnswer() ? m_reply.error().message().toString().toStdString() : std::string();
    }

    CMError error() const { return m_reply.error(); }
    QVariant value() const { return m_reply.value(); }

private:
    CMReply<QVariant> m_reply;
};

/// The value of the node at the path.
inline TavoValue valueAt(const CMPath &path)
{
    return TavoValue(CMRoot()->getValue(path).toHash());
}

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
