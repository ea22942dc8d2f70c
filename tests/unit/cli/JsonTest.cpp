// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/Json.h"

#include "support/Text.h"
#include <core/records/cmpath.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {
QVariant valueOf(const char *json)
{
    const auto read = fromJson(json);
    if (const auto *error = std::get_if<Failure>(&read)) {
        ADD_FAILURE() << json << ": " << error->reason.toStdString();
        return {};
    }
    return std::get<QVariant>(read);
}

std::string jsonOf(const QVariant &value)
{
    return toJson(value, JsonForm::Line).toStdString();
}

bool isRefused(const char *json)
{
    return std::holds_alternative<Failure>(fromJson(json));
}
} // namespace

TEST(JsonTest, ReadsEveryKindOfScalar)
{
    EXPECT_EQ(valueOf("true"), QVariant(true));
    EXPECT_EQ(valueOf("\"a \\u00e4\""), QVariant("a \u00e4"_s));
    EXPECT_EQ(valueOf("0.5"), QVariant(0.5));
    EXPECT_EQ(valueOf(" 7 "), QVariant(7));
    EXPECT_FALSE(valueOf("null").isValid());
}

TEST(JsonTest, ReadsAnIntegerAsTheSmallestTypeThatHoldsIt)
{
    EXPECT_EQ(int(valueOf("2147483647").userType()), int(QMetaType::Int));
    EXPECT_EQ(int(valueOf("2147483648").userType()), int(QMetaType::LongLong));
    EXPECT_EQ(valueOf("9007199254740993").toLongLong(), 9007199254740993LL);
    EXPECT_EQ(valueOf("-9223372036854775808").toLongLong(), std::numeric_limits<qlonglong>::min());
}

TEST(JsonTest, EscapesWhatIsUnsafeToPrint)
{
    const QVariant text =
        QString::fromUtf8("a\n\x7f\u0085\u009b2J\u2028\u202e\u2066\U0001F600\u00e4");
    EXPECT_EQ(jsonOf(text),
              "\"a\\n\\u007f\\u0085\\u009b2J\\u2028\\u202e\\u2066\xf0\x9f\x98\x80\xc3\xa4\"");
    EXPECT_EQ(valueOf(jsonOf(text).c_str()), text) << "it is the same value";
    EXPECT_EQ(jsonOf(QVariantHash{{QString::fromUtf8("\u202e"), 1}}), "{\"\\u202e\":1}");
}

TEST(JsonTest, ReadsRecordsAndLists)
{
    const QVariantHash record = valueOf(R"({"a": [1, "x", null], "b": {"c": false}})").toHash();
    EXPECT_EQ(record.value("a").toList(), QVariantList({1, "x", QVariant()}));
    EXPECT_EQ(record.value("b").toHash(), QVariantHash({{"c", false}}));
}

TEST(JsonTest, ReadsBytes)
{
    EXPECT_EQ(valueOf(R"({"base64": "AAH/"})"), QVariant(QByteArray("\x00\x01\xff", 3)));
}

TEST(JsonTest, RefusesWhatIsNotOneValue)
{
    for (const char *json :
         {"", " ", "1, 2", "{", "tru", "'a'", "1]", "[1", "\"\xff\"", "] [", "// 1"}) {
        EXPECT_TRUE(isRefused(json)) << json;
    }
}

TEST(JsonTest, WritesEveryKindOfScalar)
{
    EXPECT_EQ(jsonOf(true), "true");
    EXPECT_EQ(jsonOf(-3), "-3");
    EXPECT_EQ(jsonOf(0.1), "0.1");
    EXPECT_EQ(jsonOf("a\n\"\u00e4"_s), "\"a\\n\\\"\u00e4\"");
    EXPECT_EQ(jsonOf(QVariant()), "null");
    EXPECT_EQ(jsonOf(QVariant::fromValue(CMPath("/a/b"_s))), "\"/a/b\"");
}

TEST(JsonTest, WritesLargeIntegersWithAllTheirDigits)
{
    EXPECT_EQ(jsonOf(std::numeric_limits<qulonglong>::max()), "18446744073709551615");
    EXPECT_EQ(jsonOf(std::numeric_limits<qlonglong>::min()), "-9223372036854775808");
}

TEST(JsonTest, WritesSmallIntegersAsNumbers)
{
    EXPECT_EQ(jsonOf(QVariant::fromValue<uchar>(65)), "65");
    EXPECT_EQ(jsonOf(QVariant::fromValue<short>(-7)), "-7");
    EXPECT_EQ(jsonOf(QVariant::fromValue<ushort>(7)), "7");
}

TEST(JsonTest, WritesNotANumberAndInfinitiesAsNull)
{
    EXPECT_EQ(jsonOf(std::nan("")), "null");
    EXPECT_EQ(jsonOf(std::numeric_limits<double>::infinity()), "null");
}

TEST(JsonTest, WritesFieldsInTheOrderOfTheirKeys)
{
    EXPECT_EQ(jsonOf(QVariantHash({{"b", 1}, {"a", QVariantList{1, 2}}, {"c", QVariantHash()}})),
              R"({"a":[1,2],"b":1,"c":{}})");
}

TEST(JsonTest, WritesBytesInTheFormThatIsRead)
{
    const QByteArray bytes("\x00\x01\xff", 3);
    EXPECT_EQ(jsonOf(bytes), R"({"base64":"AAH/"})");
    EXPECT_EQ(valueOf(jsonOf(bytes).c_str()), QVariant(bytes));
}

TEST(JsonTest, IndentsNestedValues)
{
    const QVariantHash value{{"a", QVariantList{1, QVariantHash{{"b", 2}}}}, {"c", QVariantList()}};
    EXPECT_EQ(toJson(value, JsonForm::Indented).toStdString(),
              "{\n  \"a\": [\n    1,\n    {\n      \"b\": 2\n    }\n  ],\n  \"c\": []\n}");
}
