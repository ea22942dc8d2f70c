// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "module/dbus/ModelTest.h"
#include "support/bus/BusUser.h"

#include <QFile>

#include <memory>
#include <sys/stat.h>

/// Clients of two users.
class UsersTest : public ModelTest
{
protected:
    UsersTest()
        : ModelTest({}, QStringLiteral("<policy context=\"default\"><allow user=\"*\"/></policy>"))
    {
    }

    void SetUp() override
    {
        if (!BusUser::canBeAnyone()) {
            GTEST_SKIP() << "it takes root to be somebody else";
        }
        ::chmod(QFile::encodeName(bus().folder()).constData(), 0755);
        first = clientOf("daemon");
        second = clientOf("mail");
    }

    std::unique_ptr<ModelClient> clientOf(const char *user)
    {
        const ActAs otherUser(BusUser::find(user));
        auto client = std::make_unique<ModelClient>(bus().address());
        EXPECT_TRUE(client->ask("List", {QStringLiteral("/")}).succeeds());
        return client;
    }

    std::unique_ptr<ModelClient> first;
    std::unique_ptr<ModelClient> second;
};
