// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FaultTest.h"
#include "support/Sanitized.h"

/// A host with a crowd in it, which asks for much at once.
class CrowdTest : public FaultTest
{
protected:
    static QJsonObject crowd() { return {{"name", "crowd"}, {"library", "crowd"}}; }

    /// The crowd runs and is content.
    void run(QJsonObject what, const QString &task)
    {
        what.insert("do", task);
        m_requester.invoke("/crowd/run", what);
        EXPECT_EQ(m_requester.answer(), "") << task.toStdString();
    }
};
