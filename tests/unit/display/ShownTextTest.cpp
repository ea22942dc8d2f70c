// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/text/ShownText.h"

#include <gtest/gtest.h>

namespace {
const QString s_ellipsis(QChar(0x2026));

TEST(DisplayShownTextTest, keepsAShortText)
{
    EXPECT_EQ(shownText(QStringLiteral("Somebody rang\nat the gate")),
              QStringLiteral("Somebody rang\nat the gate"));
    EXPECT_EQ(shownText(QStringLiteral("<b>AT&T</b>")), QStringLiteral("<b>AT&T</b>"));
}

TEST(DisplayShownTextTest, cutsALongText)
{
    const QString whole(maxShownLength, QLatin1Char('a'));
    EXPECT_EQ(shownText(whole), whole);
    EXPECT_EQ(shownText(whole + QLatin1Char('a')), whole + s_ellipsis);
    EXPECT_EQ(shownText(QString(1 << 20, QLatin1Char('a'))), whole + s_ellipsis);
}

TEST(DisplayShownTextTest, countsACharacterOutsideOfTheBasicPlaneAsOne)
{
    const QString emoji = QString::fromUtf8("\xF0\x9F\x94\x94");
    EXPECT_EQ(shownText(emoji.repeated(maxShownLength)), emoji.repeated(maxShownLength));
    EXPECT_EQ(shownText(emoji.left(1) + QLatin1Char('a')),
              QString(QChar(0xFFFD)) + QLatin1Char('a'));
}

TEST(DisplayShownTextTest, leavesOutMarksBeyondTheLimit)
{
    const QString mark(QChar(0x0301));
    const QString base(QLatin1Char('e'));
    EXPECT_EQ(shownText(base + mark.repeated(100) + base),
              base + mark.repeated(maxShownMarks) + base);
}

TEST(DisplayShownTextTest, readsLittleOfAMillionMarks)
{
    const QString mark(QChar(0x0301));
    EXPECT_EQ(shownText(QStringLiteral("e") + mark.repeated(1'000'000) + QStringLiteral("f")),
              QStringLiteral("e") + mark.repeated(maxShownMarks) + s_ellipsis);
}

TEST(DisplayShownTextTest, removesCharactersThatControl)
{
    EXPECT_EQ(shownText(QStringLiteral("a\x07\x1b\r\nb\tc")), QStringLiteral("a\nb c"));
    EXPECT_EQ(shownText(QString::fromUtf8("a\u202Eb\u2066c\u2069")), QStringLiteral("abc"));
    EXPECT_EQ(shownText(QString(QChar(0xFFFC))), QString());
}

TEST(DisplayShownTextTest, keepsTheMarksOfRightToLeftScripts)
{
    const QString text = QString::fromUtf8("\u200Fשלום\u200F");
    EXPECT_EQ(shownText(text), text);
}

TEST(DisplayShownTextTest, joinsTheLinesOfALine)
{
    EXPECT_EQ(shownLine(QStringLiteral(" a\nb\u2028c ")), QStringLiteral("a b c"));
}

TEST(DisplayStyledTextTest, keepsTheThreeTags)
{
    EXPECT_EQ(styledText(QStringLiteral("a <b>b <i>c</i></b> <u>d</u>")),
              QStringLiteral("a <b>b <i>c</i></b> <u>d</u>"));
}

TEST(DisplayStyledTextTest, escapesEverythingElse)
{
    EXPECT_EQ(styledText(QStringLiteral("<img src=\"file:///etc/passwd\">")),
              QStringLiteral("&lt;img src=\"file:///etc/passwd\"&gt;"));
    EXPECT_EQ(styledText(QStringLiteral("<b onclick=x>")), QStringLiteral("&lt;b onclick=x&gt;"));
    EXPECT_EQ(styledText(QStringLiteral("<B>")), QStringLiteral("&lt;B&gt;"));
    EXPECT_EQ(styledText(QStringLiteral("&nbsp;&#60;")), QStringLiteral("&amp;nbsp;&amp;#60;"));
}

TEST(DisplayStyledTextTest, keepsEscapedCharactersEscaped)
{
    EXPECT_EQ(styledText(QStringLiteral("&lt;img&gt; &amp;")), QStringLiteral("&lt;img&gt; &amp;"));
}

TEST(DisplayStyledTextTest, breaksLines)
{
    EXPECT_EQ(styledText(QStringLiteral("a\nb")), QStringLiteral("a<br>b"));
}

TEST(DisplayStyledTextTest, closesWhatIsOpen)
{
    EXPECT_EQ(styledText(QStringLiteral("<b><i>a")), QStringLiteral("<b><i>a</i></b>"));
    EXPECT_EQ(styledText(QStringLiteral("</b>a</i>")), QStringLiteral("a"));
}

TEST(DisplayStyledTextTest, cutsLongTextsAndDeepNesting)
{
    const QString whole(maxShownLength, QLatin1Char('a'));
    EXPECT_EQ(styledText(QStringLiteral("<b>") + whole + QStringLiteral("a</b>")),
              QStringLiteral("<b>") + whole + s_ellipsis + QStringLiteral("</b>"));
    const QString deep = styledText(QStringLiteral("<b>").repeated(1000) + QStringLiteral("a"));
    EXPECT_LT(deep.size(), 200);
    EXPECT_TRUE(deep.contains(QStringLiteral("<b>a</b>")));
}

TEST(DisplayStyledTextTest, endsAfterManyTagsWithoutText)
{
    EXPECT_LT(styledText(QStringLiteral("<b></b>").repeated(100'000)).size(), 8 * maxShownLength);
}
TEST(DisplayTextPartsTest, endWhereTheDirectionChanges)
{
    const auto parts = [](const char *text) { return textParts(QString::fromUtf8(text), false); };
    EXPECT_EQ(parts(""), QStringList(""));
    EXPECT_EQ(parts("a\nb\n\n1\nc"), QStringList("a\nb\n\n1\nc"));
    EXPECT_EQ(parts("1\n\u05d0\n2\nb"),
              (QStringList{QString::fromUtf8("1\n\u05d0\n2"), QStringLiteral("b")}));
    EXPECT_EQ(parts("\u0627\nb\n\u0627"),
              (QStringList{QString::fromUtf8("\u0627"), QStringLiteral("b"),
                           QString::fromUtf8("\u0627")}));
}

TEST(DisplayTextPartsTest, keepTheTagsThatAreOpen)
{
    // The letters of tags and entities have no direction.
    EXPECT_EQ(textParts(QString::fromUtf8("<b>\u05d0<br>&lt;\u05d1<br><i>c</i><br>d</b>e"), true),
              (QStringList{QString::fromUtf8("\u200f<b>\u05d0<br>&lt;\u05d1</b>"),
                           QStringLiteral("<b><i>c</i><br>d</b>e")}));
}

TEST(DisplayTextPartsTest, areLimited)
{
    const QStringList parts = textParts(QString::fromUtf8("a\n\u05d0\n").repeated(1000), false);
    EXPECT_EQ(parts.size(), maxTextParts);
    EXPECT_EQ(parts.join('\n'), QString::fromUtf8("a\n\u05d0\n").repeated(1000));
}
} // namespace
