// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/desktop/PlainText.h"

#include "base/Printable.h"
#include "support/Text.h"
#include "support/TimeOf.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <optional>

namespace {
QString plainText(const QString &markup)
{
    return readBody(markup).text;
}

QString emphasised(const char *markup)
{
    return readBody(QString::fromUtf8(markup)).markup;
}

QString repeated(const QString &part, int times)
{
    return part.repeated(times);
}

TEST(PlainTextTest, LeavesATextWithoutMarkupAsItIs)
{
    const QString text = "Grüße,\n\t2 > 1"_s;
    EXPECT_EQ(plainText(text), text);
    EXPECT_TRUE(plainText(text).isSharedWith(text));
}

TEST(PlainTextTest, RemovesTagsAndKeepsWhatTheyEnclose)
{
    EXPECT_EQ(plainText("a <b>bold</b> <i>word</i> and <u>more</u>"_s), "a bold word and more"_s);
}

TEST(PlainTextTest, KeepsALinksText)
{
    EXPECT_EQ(plainText("see <a href=\"https://example.org/?a>b\">the page</a>!"_s),
              "see the page!"_s);
}

TEST(PlainTextTest, ReadsTagsInUpperAndLowerCase)
{
    EXPECT_EQ(plainText("<B>a</B><I CLASS='x'>b</I >"_s), "ab"_s);
}

TEST(PlainTextTest, BreaksLinesWhereTheMarkupDoes)
{
    EXPECT_EQ(plainText("one<br>two<br/>three<br />four"_s), "one\ntwo\nthree\nfour"_s);
}

TEST(PlainTextTest, PutsParagraphsOnLinesOfTheirOwn)
{
    EXPECT_EQ(plainText("<p>one</p><p>two</p>"_s), "one\ntwo"_s);
    EXPECT_EQ(plainText("zero<p>one</p>two"_s), "zero\none\ntwo"_s);
    EXPECT_EQ(plainText("<ul><li>one</li><li>two</li></ul>"_s), "one\ntwo"_s);
}

TEST(PlainTextTest, ShowsAnImagesAlternativeText)
{
    EXPECT_EQ(plainText("a <img src=\"x.png\" alt=\"red &amp; blue\"/> b"_s), "a red & blue b"_s);
    EXPECT_EQ(plainText("<img alt='one'><img src='y'>"_s), "one"_s);
    EXPECT_EQ(plainText("<img default=\"x\" alt=\"<b>\">"_s), "<b>"_s);
    EXPECT_EQ(plainText("<img alt=>.<img alt=bare>.<img alt=\"open>."_s), "..<img alt=\"open>."_s);
}

TEST(PlainTextTest, ReadsNamedEntities)
{
    EXPECT_EQ(plainText("&lt;b&gt; &amp;amp; &quot;x&quot; &apos;"_s), "<b> &amp; \"x\" '"_s);
}

TEST(PlainTextTest, ReadsNumberedEntities)
{
    EXPECT_EQ(plainText("&#65;&#x42;&#X63;&#8364;&#x1F600;"_s), "ABc\u20AC\U0001F600"_s);
}

TEST(PlainTextTest, ReplacesNumbersWithoutACharacter)
{
    for (const char *entity : {"&#0;", "&#xD800;", "&#xDFFF;", "&#xFFFE;", "&#x110000;", "&#27;",
                               "&#x9B;", "&#4294967295;"}) {
        EXPECT_EQ(plainText(QString::fromLatin1(entity)), QString(QChar(0xFFFD))) << entity;
    }
}

TEST(PlainTextTest, LeavesAnAmpersandThatStartsNoEntity)
{
    for (const char *text : {"AT&T", "a & b; c", "&", "&;", "&#;", "&#x;", "&#-1;", "&# 1;",
                             "&#99999999999;", "&unknown;", "&amp", "&#12a;"}) {
        EXPECT_EQ(plainText(QString::fromLatin1(text)), QString::fromLatin1(text));
    }
}

TEST(PlainTextTest, LeavesWhatIsNotAKnownTag)
{
    for (const char *text : {"a < b", "<", "<>", "</>", "< b>", "<user@example.org>", "<unknown>",
                             "<b", "<b <", "1<2 and 3>2", "<b\"", "<ib>", "<blink>"}) {
        EXPECT_EQ(plainText(QString::fromLatin1(text)), QString::fromLatin1(text));
    }
}

TEST(PlainTextTest, AcceptsTagsThatNeverOpenOrClose)
{
    EXPECT_EQ(plainText("</b>a<i>b</u></i></i>"_s), "ab"_s);
    EXPECT_EQ(plainText("<b attr='>a</b>"_s), "<b attr='>a"_s);
}

TEST(PlainTextTest, DoesNotReadItsResultAsMarkupAgain)
{
    EXPECT_EQ(plainText("&lt;b&gt;x&lt;/b&gt; <<b>b>"_s), "<b>x</b> <b>"_s);
}

TEST(PlainTextTest, DropsControlCharacters)
{
    EXPECT_EQ(plainText("a\x1B[31mb\x07"
                        "c\x7F"
                        "d\u009Be"_s),
              "a[31mbcde"_s);
}

TEST(PlainTextTest, DropsWhatChangesTheDirectionOfText)
{
    EXPECT_EQ(plainText("invoice \u202Efdp.exe \u2068name\u2069"_s), "invoice fdp.exe name"_s);
    EXPECT_EQ(plainText("&#x202E;"_s), "\uFFFD"_s);
}

TEST(PlainTextTest, EndsAllLinesWithALineFeed)
{
    EXPECT_EQ(plainText("one\u2028two\u2029three"_s), "one\ntwo\nthree"_s);
    EXPECT_EQ(plainText("one\r\ntwo\rthree\n"_s), "one\ntwo\nthree\n"_s);
}

TEST(PlainTextTest, AcceptsTwentyThousandNestedTags)
{
    const QString text = repeated("<b>"_s, 20000) + "deep"_s + repeated("</b>"_s, 20000);
    EXPECT_EQ(plainText(text), "deep"_s);
    EXPECT_EQ(plainText(repeated("<i>"_s, 20000) + "deep"_s), "deep"_s);
}

/// If characters were read again for each tag before them, these texts would take quadratic time:
/// 256 times as long for 16 times the length.
TEST(PlainTextTest, TakesTimeInProportionToTheLength)
{
    constexpr int size = 256;
    constexpr int growth = 16;
    constexpr int tolerance = 4;
    for (const char *part :
         {"<",  "<b",  "<b ", "<b \"",    "<b '\"",       "<b \"'\" ",   "<b '\"'\"",
          "&",  "&#",  "&#x", "&#0",      "<img alt=",    "<img alt=\"", "<img alt='<img alt=\"",
          "</", "<b/", "<p>", "</p><br>", "<img alt=\"&", "<b \"<i '"}) {
        for (const char *end : {"", ">"}) {
            const auto timeFor = [&](int length) {
                const QString unit = QString::fromLatin1(part);
                const QString markup = repeated(unit, length / unit.size()) + end;
                return processorTimeOf([&] { plainText(markup); });
            };
            EXPECT_LT(timeFor(growth * size), growth * tolerance * timeFor(size)) << part << end;
        }
    }
}

TEST(PlainTextTest, ReadsNoMoreThanItsLimit)
{
    EXPECT_EQ(plainText("<p>"_s + QString(1 << 20, 'x')).size(), maxTextLength - 3);
    EXPECT_EQ(plainText(QString(1 << 20, '<')).size(), maxTextLength);
    EXPECT_EQ(plainLine(QString(1 << 20, 'x')).size(), maxLineLength);
    EXPECT_EQ(plainLine(QString(1 << 20, '\t')).size(), maxLineLength);
}

TEST(PlainTextTest, CutsNoCharacterInHalf)
{
    const QString text = "x"_s + repeated("\U0001F600"_s, maxTextLength);
    EXPECT_EQ(plainText(text), text.left(maxTextLength - 1));
    EXPECT_EQ(plainText("<"_s + text), '<' + text.left(maxTextLength - 1));
    EXPECT_EQ(plainLine(text), text.left(maxLineLength - 1));
}

/// A text of 1 MiB, which is cut to 64 KiB, must take about as long as one of 64 KiB.
TEST(PlainTextTest, TakesNoLongerForATextThatIsCut)
{
    constexpr int tolerance = 4;
    for (const char *part : {"<", "&", "&amp;amp;", "<b \"", "<img alt="}) {
        const QString unit = QString::fromLatin1(part);
        const auto timeFor = [&](int length) {
            const QString markup = repeated(unit, length / unit.size());
            return processorTimeOf([&] { plainText(markup); });
        };
        EXPECT_LT(timeFor(1 << 20), tolerance * timeFor(maxTextLength)) << part;
    }
}

TEST(EmphasisTest, IsLeftOutOfATextWithoutAny)
{
    for (const char *markup : {"text", "a <a href='x'>link</a> &amp; more", "<b></b>text<i/>",
                               "<b><img alt=''></b>x", "</b>x</i>", "<b", "a < b"}) {
        EXPECT_EQ(emphasised(markup), ""_s) << markup;
    }
}

TEST(EmphasisTest, IsKept)
{
    EXPECT_EQ(emphasised("a <b>bold</b> <i>word</i> and <u>more</u>"),
              "a <b>bold</b> <i>word</i> and <u>more</u>"_s);
    EXPECT_EQ(emphasised("<strong>a</strong> <EM class='x'>b</EM>"), "<b>a</b> <i>b</i>"_s);
    EXPECT_EQ(emphasised("<b>a<br>b</b><p><u>c</u>"), "<b>a\nb\n</b><u>c</u>"_s);
}

TEST(EmphasisTest, IsNestedAndClosed)
{
    EXPECT_EQ(emphasised("<b>a<i>b"), "<b>a</b><b><i>b</i></b>"_s);
    EXPECT_EQ(emphasised("<b>a<i>b</b>c</i>d"), "<b>a</b><b><i>b</i></b><i>c</i>d"_s);
    EXPECT_EQ(emphasised("<b>a<b>b</b>c</b>d"), "<b>abc</b>d"_s);
    EXPECT_EQ(emphasised("</b></b><b>a</b>b"), "<b>a</b>b"_s);
}

TEST(EmphasisTest, DoesNotLetTextPassAsATag)
{
    EXPECT_EQ(emphasised("&lt;b&gt; <b>&lt;i&gt; &amp;amp; <x> \"</b>"),
              "&lt;b&gt; <b>&lt;i&gt; &amp;amp; &lt;x&gt; \"</b>"_s);
}

TEST(EmphasisTest, IsNotKeptAfterAThousandChanges)
{
    const QString markup = readBody(repeated("<b>x</b>y"_s, maxEmphasisChanges)).markup;
    EXPECT_EQ(markup.count("<b>"_s), maxEmphasisChanges / 2);
    EXPECT_TRUE(markup.endsWith("yxyxy"_s));
    EXPECT_TRUE(readBody(repeated("<b>x</b>y"_s, 2000) + "<b>z"_s).markup.endsWith("yz"_s));
}

/// The text of markup in the form of the model; empty if it does not have that form.
std::optional<QString> textOfModelMarkup(const QString &markup)
{
    static const QHash<QString, QString> entities{
        {"amp"_s, "&"_s}, {"lt"_s, "<"_s}, {"gt"_s, ">"_s}};
    QString text;
    QStringList open;
    for (int at = 0; at < markup.size(); ++at) {
        const int end = markup.indexOf(markup[at] == '<' ? '>' : ';', at);
        if (markup[at] == '<') {
            const QString tag = markup.mid(at + 1, end - at - 1);
            const QString name = tag.startsWith('/') ? tag.mid(1) : tag;
            if (!QStringList{"b"_s, "i"_s, "u"_s}.contains(name) ||
                (tag != name && (open.isEmpty() || open.takeLast() != name))) {
                return std::nullopt;
            }
            if (tag == name) {
                open.append(name);
            }
            at = end;
        } else if (markup[at] == '&') {
            const QString name = markup.mid(at + 1, end - at - 1);
            if (!entities.contains(name)) {
                return std::nullopt;
            }
            text += entities[name];
            at = end;
        } else if (markup[at] == '>') {
            return std::nullopt;
        } else {
            text += markup[at];
        }
    }
    return open.isEmpty() ? std::make_optional(text) : std::nullopt;
}

TEST(EmphasisTest, AlwaysHasTheFormOfTheModelAndTheSameText)
{
    EXPECT_TRUE(rc::check([&] {
        const auto alphabet = rc::gen::element<std::string>(
            "<b>", "</b>", "<i>", "</i>", "<u>", "</u>", "<", ">", "/", "<p>", "<br>",
            "<img alt='x'>", "<img alt=''>", "&", "&lt;", "&amp;", "&#60;", ";", "x", "\r", "\n");
        const auto parts = *rc::gen::container<std::vector<std::string>>(alphabet);
        QString markup;
        for (const std::string &part : parts) {
            markup += QString::fromStdString(part);
        }
        const BodyText body = readBody(markup);
        RC_ASSERT(body.markup.isEmpty() || textOfModelMarkup(body.markup) == body.text);
    }));
}

TEST(PlainTextTest, NeverMakesATextLongerNorKeepsControlCharacters)
{
    const auto isHarmless = [](QChar character) {
        return character == '\n' || character == '\t' || isPrintable(QString(character));
    };
    EXPECT_TRUE(rc::check([&] {
        const auto alphabet = rc::gen::element<std::string>(
            "<", ">", "/", "b", "p", "br", "img", " alt=", "\"", "'", "&", "#", "x", "amp", ";",
            "\r", "\n", "\x1B", " ", "\xC3\xA4", "\u2028", "\u202E", "9", "D800");
        const auto parts = *rc::gen::container<std::vector<std::string>>(alphabet);
        QString markup;
        for (const std::string &part : parts) {
            markup += QString::fromStdString(part);
        }
        const QString text = plainText(markup);
        RC_ASSERT(text.size() <= markup.size());
        RC_ASSERT(std::all_of(text.begin(), text.end(), isHarmless));
    }));
}

TEST(PlainTextTest, TakesNoRoomForWhatIsRemoved)
{
    constexpr int tags = 10000;
    constexpr int room = 100;
    const BodyText body = readBody("<i>text</i>"_s + QString("<b>"_s).repeated(tags));
    EXPECT_EQ(body.markup, "<i>text</i>"_s);
    EXPECT_LT(body.text.capacity(), room);
    EXPECT_LT(body.markup.capacity(), room);
}

TEST(PlainLineTest, MakesOneLineOfSeveral)
{
    EXPECT_EQ(plainLine("one\r\ntwo\tthree\n"_s), "one two three "_s);
    EXPECT_EQ(plainLine("one\u2028two\u202E"_s), "one two"_s);
}

TEST(PlainLineTest, LeavesMarkupAlone)
{
    EXPECT_EQ(plainLine("<b>1 & 2</b>"_s), "<b>1 & 2</b>"_s);
}

TEST(PlainLineTest, DropsControlCharacters)
{
    EXPECT_EQ(plainLine("a\x1B]0;b\x07"_s), "a]0;b"_s);
}
} // namespace
