// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/Palette.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {
/// As the Web Content Accessibility Guidelines define them.
double luminance(const QColor &color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor &one, const QColor &other)
{
    const double light = std::max(luminance(one), luminance(other));
    const double dark = std::min(luminance(one), luminance(other));
    return (light + 0.05) / (dark + 0.05);
}

class DisplayPaletteTest : public testing::TestWithParam<std::tuple<std::string, int>>
{
protected:
    const QString m_name = QString::fromStdString(std::get<0>(GetParam()));
    const Palette m_palette = Palette::find(m_name, std::get<1>(GetParam()));
    const bool m_isHighContrast = m_name == QStringLiteral("high-contrast");
    const double m_minOfText = m_isHighContrast ? 7 : 4.5;
    const double m_minOfLine = m_isHighContrast ? 4.5 : 3;
};

TEST_P(DisplayPaletteTest, textsStandOut)
{
    EXPECT_GE(contrast(m_palette.text, m_palette.background), m_minOfText);
    EXPECT_GE(contrast(m_palette.faintText, m_palette.background), m_minOfText);
    EXPECT_GE(contrast(m_palette.text, m_palette.button), m_minOfText);
    EXPECT_GE(contrast(m_palette.text, m_palette.pressedButton), m_minOfText);
}

TEST_P(DisplayPaletteTest, linesStandOut)
{
    EXPECT_GE(contrast(m_palette.accent, m_palette.background), m_minOfLine);
    EXPECT_GE(contrast(m_palette.border, m_palette.background), m_minOfLine);
    EXPECT_GE(contrast(m_palette.focus, m_palette.background), m_minOfLine);
    EXPECT_GE(contrast(m_palette.focus, m_palette.button), m_minOfLine);
    EXPECT_GE(contrast(m_palette.border, m_palette.backdrop), m_minOfLine);
}

INSTANTIATE_TEST_SUITE_P(All, DisplayPaletteTest,
                         testing::Combine(testing::Values("dark", "light", "high-contrast"),
                                          testing::Values(0, 1, 2, 3)));

TEST(DisplayPalettesTest, theTestsKnowAllPalettes)
{
    EXPECT_EQ(Palette::names(), QStringList({"dark", "light", "high-contrast"}));
}

TEST(DisplayPalettesTest, unknownPrioritiesLookLikeTheNearest)
{
    const auto accent = [](int priority) { return Palette::find("dark", priority).accent; };
    EXPECT_EQ(accent(-5), accent(0));
    EXPECT_EQ(accent(77), accent(3));
    EXPECT_NE(accent(2), accent(3));
}
} // namespace
