// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/tavo.h"

#include <gtest/gtest.h>

TEST(CMErrorTest, IsNoErrorByDefault)
{
    const CMError error;
    EXPECT_FALSE(error.isError());
    EXPECT_TRUE(error.isEmpty());
    EXPECT_EQ(error.name(), QString());
    EXPECT_TRUE(error.message().isEmpty());
    EXPECT_TRUE(error.title().isEmpty());
}

TEST(CMErrorTest, HasANameAMessageAndTheDefaultTitle)
{
    const CMError error(QStringLiteral("Notifications"), "Failed to enqueue sound notification");
    EXPECT_TRUE(error.isError());
    EXPECT_EQ(error.name(), "Notifications");
    EXPECT_EQ(error.message(), TrString("Failed to enqueue sound notification"));
    EXPECT_EQ(error.title(), CMError::DefaultTitle());
}

TEST(CMErrorTest, IsAHashWithThreeKeys)
{
    CMError error;
    error.insert(CMError::Name(), QStringLiteral("Notifications"));
    error.insert(CMError::Message(), TrString("message"));
    error.insert(CMError::Title(), CMError::DefaultTitle());
    EXPECT_EQ(error, CMError(QStringLiteral("Notifications"), "message"));
    EXPECT_EQ(error.size(), 3);
}

TEST(CMErrorTest, IsNoErrorWithoutAName)
{
    EXPECT_FALSE(CMError(QVariantHash{{CMError::Message(), "message"}}).isError());
    EXPECT_FALSE(CMError(QString(), "message").isError());
}

TEST(CMErrorTest, KeepsATranslatableMessageTranslatable)
{
    const TrString message(TrCharData{"A", "message", nullptr, -1}, {});
    EXPECT_EQ(CMError(QStringLiteral("A"), message).message(), message);
}

TEST(CMErrorTest, HasATranslatableDefaultTitle)
{
    EXPECT_TRUE(CMError::DefaultTitle().isTranslatable());
    EXPECT_EQ(CMError::DefaultTitle().toString(), "Error");
}

TEST(CMErrorTest, HasThreeDifferentKeys)
{
    EXPECT_NE(CMError::Name(), CMError::Message());
    EXPECT_NE(CMError::Name(), CMError::Title());
    EXPECT_NE(CMError::Message(), CMError::Title());
}

TEST(CMErrorTest, HasADifferentNameForEachErrorOfTheModel)
{
    EXPECT_EQ(CMErrors::noSuchNode(), "NoSuchNode");
    EXPECT_EQ(CMErrors::notSupported(), "NotSupported");
    EXPECT_EQ(CMErrors::noAnswer(), "NoAnswer");
}
