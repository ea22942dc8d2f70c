// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/stream.h"

#include "core/base/trstring.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {
template <typename T>
std::string written(const T &value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

std::string writtenVariant(const QVariant &value)
{
    return written(value);
}

int depthOf(const std::string &text)
{
    return int(text.find_first_not_of('['));
}
} // namespace

TEST(TextStreamTest, WritesUtf8)
{
    EXPECT_EQ(written(QString::fromUtf8("Größe €")), "Größe €");
    EXPECT_EQ(written(QString()), "");
}

TEST(TextStreamTest, EscapesLineBreaksAndTabs)
{
    EXPECT_EQ(written(QStringLiteral("a\nb\rc\td")), "a\\nb\\rc\\td");
}

TEST(TextStreamTest, EscapesEveryOtherControlCharacter)
{
    EXPECT_EQ(written(QStringLiteral("\x1b[2J")), "\\x1b[2J");
    EXPECT_EQ(written(QString::fromUtf8("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(written(QString(QChar(0x7f))), "\\x7f");
    EXPECT_EQ(written(QString(QChar(0x85))), "\\x85") << "a line break for some programs";
    EXPECT_EQ(written(QString(QChar(0x9b))), "\\x9b") << "starts a control sequence of a terminal";
}

TEST(TextStreamTest, LetsNoControlCharacterThrough)
{
    for (ushort code = 0; code < 0xa0; ++code) {
        const QChar character(code);
        if (character.category() != QChar::Other_Control) {
            continue;
        }
        EXPECT_EQ(written(QString(character)).front(), '\\') << code;
    }
}

TEST(TextStreamTest, EscapesTheSeparatorsOfLinesAndParagraphs)
{
    EXPECT_EQ(written(QString(QChar(0x2028))), "\\x2028");
    EXPECT_EQ(written(QString(QChar(0x2029))), "\\x2029");
}

TEST(TextStreamTest, EscapesWhatChangesTheDirectionOfText)
{
    EXPECT_EQ(written(QString::fromUtf8("exe.\u202efdp")), "exe.\\x202efdp");
}

TEST(TextStreamTest, WritesTheBeginningAndTheEndOfALongText)
{
    EXPECT_EQ(written(QString(200, 'x')), std::string(200, 'x'));
    const std::string text = written("begin" + QString(1000000, 'x') + "end");
    EXPECT_EQ(text.substr(0, 6), "beginx");
    EXPECT_NE(text.find("...(999808 left out)..."), std::string::npos) << text;
    EXPECT_EQ(text.substr(text.size() - 4), "xend");
}

TEST(VariantStreamTest, WritesPlainValues)
{
    EXPECT_EQ(writtenVariant(5), "5");
    EXPECT_EQ(writtenVariant(-1.5), "-1.5");
    EXPECT_EQ(writtenVariant(true), "true");
    EXPECT_EQ(writtenVariant(QStringLiteral("text")), "\"text\"");
    EXPECT_EQ(writtenVariant(QStringLiteral("a\nb")), "\"a\\nb\"");
}

TEST(VariantStreamTest, WritesNoneForAnInvalidValue)
{
    EXPECT_EQ(writtenVariant(QVariant()), "(none)");
}

TEST(VariantStreamTest, WritesTheSizeOfBytesAndNotTheBytes)
{
    EXPECT_EQ(writtenVariant(QByteArray("\x00\x1b\n", 3)), "(3 bytes)");
}

TEST(VariantStreamTest, WritesTheNameOfATypeThatHasNoText)
{
    EXPECT_EQ(writtenVariant(QVariant::fromValue(TrString("a"))), "(TrString)");
}

TEST(VariantStreamTest, WritesListsInTheirOrder)
{
    EXPECT_EQ(writtenVariant(QVariantList{2, 1, "a"}), "[2, 1, \"a\"]");
    EXPECT_EQ(writtenVariant(QStringList{"b", "a"}), "[\"b\", \"a\"]");
    EXPECT_EQ(writtenVariant(QVariantList()), "[]");
}

TEST(VariantStreamTest, WritesFieldsInTheOrderOfTheirKeys)
{
    QVariantHash fields;
    std::string expected = "{";
    for (char key = 'a'; key <= 'z'; ++key) {
        fields.insert(QString(QLatin1Char(key)), 1);
        expected += std::string(key == 'a' ? "" : ", ") + key + ": 1";
    }
    EXPECT_EQ(writtenVariant(fields), expected + "}");
    EXPECT_EQ(writtenVariant(QVariantHash()), "{}");
}

TEST(VariantStreamTest, WritesAMapLikeAHash)
{
    EXPECT_EQ(writtenVariant(QVariantMap{{"b", 1}, {"a", QVariantMap{{"c", 2}}}}),
              "{a: {c: 2}, b: 1}");
}

TEST(VariantStreamTest, EscapesControlCharactersOfKeys)
{
    EXPECT_EQ(writtenVariant(QVariantHash{{"a\nb", 1}}), "{a\\nb: 1}");
}

TEST(VariantStreamTest, CutsValuesThatAreNestedTooDeeply)
{
    QVariant nested = 1;
    for (int i = 0; i < 1000; ++i) {
        nested = QVariantList{nested};
    }
    const std::string text = written(nested);
    EXPECT_NE(text.find("..."), std::string::npos);
    EXPECT_LT(depthOf(text), 50);
    EXPECT_EQ(text.find('1'), std::string::npos);
}

TEST(VariantStreamTest, WritesTheDepthOfEveryRecordInFull)
{
    QVariant nested = 1;
    for (int i = 0; i < 8; ++i) {
        nested = QVariantHash{{"k", nested}};
    }
    EXPECT_EQ(written(nested), "{k: {k: {k: {k: {k: {k: {k: {k: 1}}}}}}}}");
}

TEST(VariantStreamTest, ShortensLongTextsAndNotTheTextsAfterThem)
{
    const std::string text = writtenVariant(QVariantHash{{"a", QString(1000000, 'x')}, {"b", "y"}});
    EXPECT_LT(text.size(), 300U);
    EXPECT_EQ(text.substr(text.size() - 9), ", b: \"y\"}");
}

TEST(VariantStreamTest, EndsALongValueWithDots)
{
    const std::string list =
        written(QVariant(QVariantList::fromVector(QVector<QVariant>(100000, 7))));
    EXPECT_EQ(list.substr(0, 7), "[7, 7, ");
    EXPECT_LE(list.size(), 2003U);
    EXPECT_EQ(list.substr(list.size() - 3), "...");

    QVariantHash fields;
    for (int i = 0; i < 100000; ++i) {
        fields.insert(QString::number(i), i);
    }
    EXPECT_LE(written(QVariant(fields)).size(), 2003U);
}
