// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fuzz/support/Fuzz.h"
#include <core/tavo.h>

#include <memory>

/// A request that counts how often its end is reported.
class SentRequest
{
public:
    SentRequest(const CMPath &path, const QVariant &value)
        : m_path(path)
        , m_reported(std::make_shared<int>(0))
    {
        m_reply.addWatcher(
            nullptr, [count = m_reported](const CMVoidReply &) { ++*count; }, Qt::DirectConnection);
        CMRoot()->invoke(path, value, m_reply);
    }

    bool isAnswered() const { return m_reply.isFinished(); }

    /// Checks that the request was answered once.
    void checkAnswered() const
    {
        FUZZ_CHECK(isAnswered(), "no answer from " << m_path);
        FUZZ_CHECK(*m_reported == 1,
                   "the end was reported " << *m_reported << " times by " << m_path);
    }

    CMError error() const { return m_reply.error(); }
    bool isRefused() const { return m_reply.error().isError(); }
    const CMReply<QVariant> &reply() const { return m_reply; }

private:
    CMPath m_path;
    CMReply<QVariant> m_reply;
    std::shared_ptr<int> m_reported;
};

/// Checks that an error has a name, a text and a title.
inline void checkError(const CMError &error, const QString &name)
{
    FUZZ_CHECK(error.name() == name, error.name());
    FUZZ_CHECK(!error.message().toString().isEmpty(), error.name());
    FUZZ_CHECK(!error.title().toString().isEmpty(), error.name());
}
