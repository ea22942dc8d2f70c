// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <attention/JsonPosition.h>

namespace {
const QByteArray json = R"({
  "first": [1, "a ] } , \" b", {"x": [[]]}, -1.5e3, true],
  "rules": [
    {"name": "one"},
    {
      "name": "two",
      "when":
        {"so\u0075rce": 5}
    }
  ],
  "last": {}
})";

TEST(JsonPositionTest, FindsTheLineOfAValue)
{
    EXPECT_EQ(lineInJson(json, QStringLiteral("first")), 2);
    EXPECT_EQ(lineInJson(json, QStringLiteral("rules")), 3);
    EXPECT_EQ(lineInJson(json, QStringLiteral("rules[0].name")), 4);
    EXPECT_EQ(lineInJson(json, QStringLiteral("rules[1].name")), 6);
    EXPECT_EQ(lineInJson(json, QStringLiteral("rules[1].when.source")), 8);
    EXPECT_EQ(lineInJson(json, QStringLiteral("last")), 11);
}

TEST(JsonPositionTest, FindsTheLineOfWhatShouldHoldAMissingValue)
{
    EXPECT_EQ(lineInJson(json, QStringLiteral("missing")), 1);
    EXPECT_EQ(lineInJson(json, QStringLiteral("rules[1].then")), 5);
    EXPECT_EQ(lineInJson(json, QStringLiteral("rules[7].name")), 3);
    EXPECT_EQ(lineInJson(json, QStringLiteral("last.x")), 11);
}

TEST(JsonPositionTest, EndsForTextsThatAreNotJson)
{
    for (const char *text : {"", "{", "{\"a", "[[[[", "{\"a\":\"\\", "}}}"}) {
        EXPECT_EQ(lineInJson(text, QStringLiteral("a.b[3].c")), 1) << text;
    }
}
} // namespace
