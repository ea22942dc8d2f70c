// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/output/ValueText.h"

#include "support/Text.h"
#include <core/records/cmpath.h>

#include <gtest/gtest.h>

TEST(ValueTextTest, ShowsAScalarUnchanged)
{
    EXPECT_EQ(valueText("chime"_s), "chime"_s);
    EXPECT_EQ(valueText(true), "true"_s);
    EXPECT_EQ(valueText(-7), "-7"_s);
    EXPECT_EQ(valueText(0.1), "0.1"_s);
    EXPECT_EQ(valueText(QVariant::fromValue<uchar>(65)), "65"_s);
    EXPECT_EQ(valueText(QVariant::fromValue(CMPath("/a/b"_s))), "/a/b"_s);
}

TEST(ValueTextTest, ShowsThatAValueIsEmpty)
{
    EXPECT_EQ(valueText(QVariant()), "(empty)"_s);
    EXPECT_EQ(valueText(QVariantList()), "(none)"_s);
    EXPECT_EQ(valueText(QVariantHash()), "(empty)"_s);
}

TEST(ValueTextTest, ShowsARecordAsALinePerField)
{
    EXPECT_EQ(valueText(QVariantHash({{"b", 2}, {"a", "x"}})), "a: x\nb: 2"_s);
}

TEST(ValueTextTest, IndentsNestedValues)
{
    const QVariantHash value{{"list", QVariantList{1, QVariantHash{{"k", "v"}}}},
                             {"none", QVariantList()},
                             {"x", QVariantHash{{"y", false}}}};
    EXPECT_EQ(valueText(value), "list:\n  - 1\n  -\n    k: v\nnone: (none)\nx:\n  y: false"_s);
}

TEST(ValueTextTest, ShowsTheNumberOfBytes)
{
    EXPECT_EQ(valueText(QByteArray("abc")), "(3 bytes)"_s);
}

TEST(ValueTextTest, EscapesControlCharacters)
{
    EXPECT_EQ(valueText("a\x1b[2J\nb"_s), "a\\x1b[2J\\nb"_s);
    EXPECT_EQ(valueText(QVariantHash({{"k\x1b", "v"}})), "k\\x1b: v"_s);
}
