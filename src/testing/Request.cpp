// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "testing/Request.h"

#include "testing/EventLoop.h"

namespace TavoTesting {
Request::Request(const CMPath &path, const QVariant &value)
    : m_reply(CMRoot()->invoke(path, value, CMReply<QVariant>()))
{
}

Request::Request(const CMPath &path, const TavoHash &value)
    : Request(path, value.__variant())
{
}

bool Request::waitForReply() const
{
    return waitFor([this] { return isAnswered(); });
}

bool Request::succeeds() const
{
    return waitForReply() && !m_reply.error().isError();
}

std::string Request::errorText() const
{
    return waitForReply() ? m_reply.error().message().toString().toStdString() : std::string();
}

TavoValue valueAt(const CMPath &path)
{
    return TavoValue(CMRoot()->getValue(path).toHash());
}
} // namespace TavoTesting
