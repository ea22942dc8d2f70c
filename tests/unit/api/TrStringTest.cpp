// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/trstring.h"

#include "core/base/stream.h"

#include <QCoreApplication>
#include <QTranslator>

#include <gtest/gtest.h>

namespace {
/// Translates one text in one context, with and without a disambiguation, and one plural form.
class Swedish : public QTranslator
{
public:
    Swedish() { QCoreApplication::installTranslator(this); }
    ~Swedish() override { QCoreApplication::removeTranslator(this); }

    bool isEmpty() const override { return false; }

    QString translate(const char *context, const char *source, const char *disambiguation,
                      int count) const override
    {
        if (qstrcmp(context, "Player") != 0) {
            return {};
        }
        if (qstrcmp(source, "No sound") == 0) {
            return qstrcmp(disambiguation, "tone") == 0 ? QStringLiteral("Ingen ton")
                                                        : QStringLiteral("Inget ljud");
        }
        if (qstrcmp(source, "%1 plays %2") == 0) {
            return QStringLiteral("%2 spelas av %1");
        }
        if (qstrcmp(source, "%n sound(s)") == 0) {
            return count == 1 ? QStringLiteral("ett ljud") : QStringLiteral("%n ljud");
        }
        return {};
    }
};

TrString translatable(const char *source, const QList<TrArg> &arguments = {})
{
    return {TrCharData{"Player", source, nullptr, -1}, arguments};
}

const QString withNul = QString::fromUtf8("a\0b", 3);
const QString unpaired = QStringLiteral("a") + QChar(0xd800) + QStringLiteral("b");
} // namespace

TEST(TrStringTest, IsEmptyByDefault)
{
    EXPECT_TRUE(TrString().isEmpty());
    EXPECT_FALSE(TrString().isTranslatable());
    EXPECT_EQ(TrString().toString(), QString());
}

TEST(TrStringTest, ShowsAPlainTextUnchanged)
{
    const Swedish translator;
    EXPECT_EQ(TrString("Größe %1").toString(), QString::fromUtf8("Größe %1"));
    EXPECT_EQ(TrString("No sound").toString(), "No sound");
    EXPECT_FALSE(TrString("No sound").isTranslatable());
    EXPECT_FALSE(TrString("No sound").isEmpty());
}

TEST(TrStringTest, ShowsTheSourceWithoutATranslation)
{
    EXPECT_EQ(translatable("No sound").toString(), "No sound");
    EXPECT_TRUE(translatable("No sound").isTranslatable());
}

TEST(TrStringTest, IsTranslatedWhenItIsShownAndNotWhenItIsMade)
{
    const TrString text = translatable("No sound");
    EXPECT_EQ(text.toString(), "No sound");
    {
        const Swedish translator;
        EXPECT_EQ(text.toString(), "Inget ljud");
    }
    EXPECT_EQ(text.toString(), "No sound");
}

TEST(TrStringTest, IsTranslatedInItsContextOnly)
{
    const Swedish translator;
    EXPECT_EQ(TrString(TrCharData{"Other", "No sound", nullptr, -1}, {}).toString(), "No sound");
}

TEST(TrStringTest, IsTranslatedByItsDisambiguation)
{
    const Swedish translator;
    EXPECT_EQ(TrString(TrCharData{"Player", "No sound", "tone", -1}, {}).toString(), "Ingen ton");
}

TEST(TrStringTest, PicksThePluralFormOfItsCount)
{
    const Swedish translator;
    EXPECT_EQ(TrString(TrCharData{"Player", "%n sound(s)", nullptr, 1}, {}).toString(), "ett ljud");
    EXPECT_EQ(TrString(TrCharData{"Player", "%n sound(s)", nullptr, 7}, {}).toString(), "7 ljud");
}

TEST(TrStringTest, CopiesTheBuffersThatItIsMadeFrom)
{
    char context[] = "Player";
    char source[] = "No sound";
    const TrString text(TrCharData{context, source, nullptr, -1}, {});
    context[0] = source[0] = 'X';
    const Swedish translator;
    EXPECT_EQ(text.toString(), "Inget ljud");
}

TEST(TrStringTest, InsertsArguments)
{
    EXPECT_EQ(translatable("%1 and %2", {TrArg(QStringLiteral("a")), TrArg(5)}).toString(),
              "a and 5");
    EXPECT_EQ(translatable("%1 %1", {TrArg(1.5)}).toString(), "1.5 1.5");
}

TEST(TrStringTest, InsertsArgumentsAtThePlaceholdersOfTheTranslation)
{
    const Swedish translator;
    EXPECT_EQ(translatable("%1 plays %2", {TrArg(QStringLiteral("A")), TrArg(QStringLiteral("B"))})
                  .toString(),
              "B spelas av A");
}

TEST(TrStringTest, KeepsAPlaceholderWithoutAnArgument)
{
    EXPECT_EQ(translatable("%1 %2 %0 100%", {TrArg(1)}).toString(), "1 %2 %0 100%");
    EXPECT_EQ(translatable("%1").toString(), "%1");
}

TEST(TrStringTest, KeepsAPlaceholderWithinAnArgument)
{
    EXPECT_EQ(
        translatable("%1 %2", {TrArg(QStringLiteral("%2")), TrArg(QStringLiteral("x"))}).toString(),
        "%2 x");
}

TEST(TrStringTest, GrowsByALimitedLengthHoweverManyPlaceholdersItHas)
{
    constexpr int max = TrString::maxInsertedLength;
    constexpr int placeholders = 11'000;
    const QByteArray source = QByteArray("%1").repeated(placeholders) + "end";
    const TrString text = translatable(source, {TrArg(QString(max - 1, 'x'))});
    EXPECT_EQ(text.toString(), QString(max, 'x') + "end");
}

TEST(TrStringTest, InsertsItsCountInLinearTime)
{
    const QByteArray source = QByteArray("%n").repeated(100'000);
    const TrString text(TrCharData{"Player", source, nullptr, 5}, {});
    EXPECT_EQ(text.toString(), QString::fromUtf8(source));
    const TrString shorter(TrCharData{"Player", "%n%n", nullptr, 5}, {});
    EXPECT_EQ(shorter.toString(), "55");
}

TEST(TrStringTest, KeepsNoMoreArgumentsThanItCanInsert)
{
    QList<TrArg> arguments;
    QVariantList carried;
    for (int i = 0; i < 1000; ++i) {
        arguments.append(TrArg(i));
        carried.append(i);
    }
    const TrString text = translatable("%9 %1", arguments);
    EXPECT_EQ(text.toString(), "8 0");
    EXPECT_EQ(QVariant(text).toHash().value("arguments").toList().size(), 9);
    EXPECT_EQ(TrString::fromQVariant(
                  QVariantHash{{"context", "Player"}, {"source", "%9 %1"}, {"arguments", carried}}),
              text);
}

TEST(TrStringTest, IsCarriedAsATextWhenPlain)
{
    const QVariant carried = TrString("text");
    EXPECT_EQ(carried.userType(), int(QMetaType::QString));
    EXPECT_EQ(TrString::fromQVariant(carried), TrString("text"));
}

TEST(TrStringTest, StaysTranslatableWhenCarried)
{
    const TrString text(TrCharData{"Player", "No sound", "tone", 4}, {TrArg(5), TrArg(1.5)});
    const QVariant carried = text;
    EXPECT_EQ(TrString::fromQVariant(carried), text);
    const Swedish translator;
    EXPECT_EQ(TrString::fromQVariant(carried).toString(), "Ingen ton");
}

TEST(TrStringTest, IsNotTranslatableWithoutASource)
{
    const TrString text = translatable("");
    EXPECT_FALSE(text.isTranslatable());
    EXPECT_EQ(TrString::fromQVariant(text), text);
}

TEST(TrStringTest, IsReadFromAVariantThatHoldsOne)
{
    const TrString text = translatable("No sound");
    EXPECT_EQ(TrString::fromQVariant(QVariant::fromValue(text)), text);
}

TEST(TrStringTest, IsEmptyWhenReadFromAnUnsuitableVariant)
{
    for (const QVariant &variant :
         {QVariant(), QVariant(5), QVariant(QVariantList{"text"}), QVariant(QVariantHash()),
          QVariant(QVariantHash{{"context", "Player"}}), QVariant(QByteArray("text"))}) {
        EXPECT_EQ(TrString::fromQVariant(variant), TrString()) << variant;
    }
}

TEST(TrStringTest, KeepsEveryCharacterOfAPlainText)
{
    for (const QString &text : {withNul, unpaired}) {
        EXPECT_EQ(TrString(text).toString(), text);
        EXPECT_EQ(TrString::fromQVariant(TrString(text)).toString(), text);
    }
}

TEST(TrStringTest, KeepsEveryCharacterOfATranslatableTextFromOutside)
{
    for (const QString &source : {withNul, unpaired}) {
        const auto text =
            TrString::fromQVariant(QVariantHash{{"context", "Player"}, {"source", source}});
        EXPECT_EQ(text.toString(), source);
        EXPECT_EQ(TrString::fromQVariant(text), text);
    }
}

TEST(TrStringTest, KeepsEveryCharacterOfAnArgument)
{
    EXPECT_EQ(translatable("[%1]", {TrArg(withNul)}).toString(), '[' + withNul + ']');
    EXPECT_EQ(translatable("[%1]", {TrArg(unpaired)}).toString(), '[' + unpaired + ']');
}

TEST(TrStringTest, IsEqualWhenAllItsPartsAreEqual)
{
    const TrString text(TrCharData{"Player", "No sound", "tone", 4}, {TrArg(5)});
    EXPECT_TRUE(text == TrString(TrCharData{"Player", "No sound", "tone", 4}, {TrArg(5)}));
    EXPECT_TRUE(text != TrString(TrCharData{"Other", "No sound", "tone", 4}, {TrArg(5)}));
    EXPECT_TRUE(text != TrString(TrCharData{"Player", "Sound", "tone", 4}, {TrArg(5)}));
    EXPECT_TRUE(text != TrString(TrCharData{"Player", "No sound", nullptr, 4}, {TrArg(5)}));
    EXPECT_TRUE(text != TrString(TrCharData{"Player", "No sound", "tone", -1}, {TrArg(5)}));
    EXPECT_TRUE(text != TrString(TrCharData{"Player", "No sound", "tone", 4}, {TrArg(6)}));
}

TEST(TrStringTest, DiffersFromThePlainTextOfTheSameSource)
{
    EXPECT_TRUE(translatable("No sound") != TrString("No sound"));
    EXPECT_TRUE(TrString("No sound") != translatable("No sound"));
    EXPECT_TRUE(TrString("a") == TrString(QStringLiteral("a")));
}
