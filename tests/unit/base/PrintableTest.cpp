// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/Printable.h"

#include <gtest/gtest.h>

TEST(PrintableTest, LeavesOrdinaryTextsOfAllScriptsAsTheyAre)
{
    for (const char *text :
         {"", "plain", "Größe 5 €", "\u05E9\u05DC\u05D5\u05DD\u200F!", "👩‍💻"}) {
        const QString ordinary = QString::fromUtf8(text);
        EXPECT_TRUE(isPrintable(ordinary)) << text;
        EXPECT_EQ(printable(ordinary), ordinary);
    }
}

TEST(PrintableTest, EscapesEveryControlCharacter)
{
    for (ushort code = 0; code < 0x100; ++code) {
        const QChar character(code);
        const bool isControl = character.category() == QChar::Other_Control;
        EXPECT_EQ(printable(QString(character)).startsWith('\\'), isControl || code == '\\')
            << code;
    }
}

TEST(PrintableTest, EscapesWhatChangesTheDirectionOfText)
{
    for (const ushort code :
         {0x202a, 0x202b, 0x202c, 0x202d, 0x202e, 0x2066, 0x2067, 0x2068, 0x2069}) {
        EXPECT_EQ(printable("a" + QString(QChar(code))), QStringLiteral("a\\x%1").arg(code, 0, 16));
    }
}

TEST(ShortenedTest, KeepsATextOfTheMaximumSize)
{
    EXPECT_EQ(shortened("12345678", 8), "12345678");
}

TEST(ShortenedTest, KeepsTheBeginningAndTheEndOfALongText)
{
    EXPECT_EQ(shortened("123456789", 8), "123456...(1 left out)...89");
    EXPECT_EQ(shortened("begin." + QString(1000000, 'x') + ".e", 8),
              "begin....(1000000 left out)....e");
}

TEST(ShortenedTest, DividesNoSurrogatePair)
{
    const QString faces = QString::fromUtf8("😀😀😀😀😀😀😀😀");
    for (int size = 1; size < faces.size(); ++size) {
        const QString text = shortened(faces, size);
        EXPECT_EQ(QString::fromUtf8(text.toUtf8()), text) << size;
    }
}

TEST(LogTextTest, IsShortAndPrintable)
{
    EXPECT_EQ(logText("id\n"), "id\\n");
    EXPECT_LT(logText(QString(1000000, '\n')).size(), 500U);
}

TEST(LogTextTest, HasNoPasswordOfAUrlHoweverLong)
{
    EXPECT_EQ(logText("http://user:" + QString(300, 'x') + "@host/a.wav"), "http://host/a.wav");
}
