// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/tavo.h"

#include <gtest/gtest.h>

namespace {
using Resources = TavoList<TavoPowerManagerResources::Enum>;
constexpr auto audio = TavoPowerManagerResources::Audio;
constexpr auto display = TavoPowerManagerResources::Display;
} // namespace

TEST(TavoListTest, IsEmptyByDefault)
{
    EXPECT_TRUE(Resources().isEmpty());
    EXPECT_EQ(Resources().size(), 0);
}

TEST(TavoListTest, KeepsItsElementsInTheirOrder)
{
    Resources list{audio, display};
    list.append(audio);
    ASSERT_EQ(list.size(), 3);
    EXPECT_EQ(list.at(0), audio);
    EXPECT_EQ(list.at(1), display);
    EXPECT_EQ(list.at(2), audio);
    EXPECT_FALSE(list.isEmpty());
}

TEST(TavoListTest, FindsTheElementsThatItHas)
{
    const Resources list{display, audio};
    EXPECT_TRUE(list.contains(audio));
    EXPECT_FALSE(list.contains(TavoPowerManagerResources::Network));
    EXPECT_FALSE(Resources().contains(audio));
}

TEST(TavoListTest, FindsIntegersThatCameAsDoubles)
{
    EXPECT_TRUE(Resources(QVariantList{2.0}).contains(audio));
}

TEST(TavoListTest, FindsNothingInUnsuitableElements)
{
    const Resources list(QVariantList{"2", "0", "abc", QVariant(), 2.5, QVariantList{2}, true});
    EXPECT_FALSE(list.contains(audio));
    EXPECT_FALSE(list.contains(display));
    EXPECT_FALSE(list.contains(TavoPowerManagerResources::Processor));
}

TEST(TavoListTest, ReadsUnsuitableElementsAsTheDefault)
{
    const Resources list(QVariantList{"2", audio});
    EXPECT_EQ(list.at(0), TavoPowerManagerResources::Processor);
    EXPECT_EQ(list.at(1), audio);
}

TEST(TavoListTest, CarriesEnumeratorsAsTheirNumbers)
{
    EXPECT_EQ((Resources{audio, display}.elements()), (QVariantList{2, 1}));
}

TEST(TavoListTest, HoldsTextsPathsAndRecords)
{
    const CMPath path(QStringLiteral("/a"));
    EXPECT_EQ(TavoList<QString>{"a"}.at(0), "a");
    EXPECT_EQ(TavoList<CMPath>{path}.at(0), path);
    EXPECT_EQ(TavoList<TavoRoles>{TavoRoles().setType(TavoRolesType::Text)}.at(0).type(),
              TavoRolesType::Text);
    EXPECT_TRUE(TavoList<QString>{"a"}.contains("a"));
    EXPECT_TRUE(TavoList<CMPath>{path}.contains(path));
}

TEST(TavoListTest, IsEqualWhenItsElementsAreEqual)
{
    EXPECT_TRUE((Resources{audio, display}) == (Resources{audio, display}));
    EXPECT_TRUE((Resources{audio, display}) != (Resources{display, audio}));
    EXPECT_TRUE(Resources{audio} != Resources());
}

TEST(TavoListTest, IsNotChangedThroughACopy)
{
    const Resources original{audio};
    Resources copy = original;
    copy.append(display);
    EXPECT_EQ(original.size(), 1);
}
