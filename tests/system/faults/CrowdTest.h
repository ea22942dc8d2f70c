// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FaultTest.h"
#include "support/Sanitized.h"

/// A host with the module "crowd", which sends many requests at once.
class CrowdTest : public FaultTest
{
protected:
    static QJsonObject crowd() { return {{"name", "crowd"}, {"library", "crowd"}}; }

    /// Makes a request to the crowd and expects success.
    void run(QJsonObject what, const QString &task)
    {
        what.insert("do", task);
        m_requester.invoke("/crowd/run", what);
        EXPECT_EQ(m_requester.answer(), "") << task.toStdString();
    }
};
