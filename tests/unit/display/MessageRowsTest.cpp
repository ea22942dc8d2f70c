// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/message/MessageRows.h"

#include <core/records/attention.h>
#include <core/records/rows.h>

#include <QCoreApplication>
#include <QTranslator>

#include <gtest/gtest.h>

namespace {
QVariant text(const QVariantHash &fields)
{
    QVariantHash row = fields;
    row.insert("type", int(TavoRolesType::Text));
    return row;
}

QVariant action(const QString &title, const QString &path, const QVariantHash &fields = {})
{
    QVariantHash row = fields;
    row.insert("type", int(TavoRolesType::Action));
    row.insert("title", title);
    row.insert("path", path);
    return row;
}

TEST(DisplayMessageRowsTest, readsTheTextAndTheButtons)
{
    const Message message = messageFromRows(
        {}, "Door",
        {text({{"title", "Somebody <rings>"}, {"application", "Bell"}, {"icon", "bell"}}),
         action("Open", "/a/open"), action("", "/a/default", {{"default", true}}),
         action("Wait", "/a/wait", {{"icon", "clock"}})});
    EXPECT_EQ(message.title, "Door");
    EXPECT_EQ(message.text, "Somebody <rings>");
    EXPECT_EQ(message.styled, QString());
    EXPECT_EQ(message.application, "Bell");
    EXPECT_EQ(message.picture.source, "bell");
    EXPECT_EQ(message.value, Message::noValue);
    ASSERT_EQ(message.actions.size(), 2);
    EXPECT_EQ(message.actions[0].label, "Open");
    EXPECT_EQ(message.actions[0].path, CMPath("/a/open"));
    EXPECT_EQ(message.actions[1].icon, "clock");
    EXPECT_EQ(message.defaultAction, CMPath("/a/default"));
}

TEST(DisplayMessageRowsTest, readsMarkupAndValue)
{
    const Message message = messageFromRows(
        {}, {}, {text({{"title", "a < b"}, {"markup", "<b>a</b> &lt; b"}, {"value", 140}})});
    EXPECT_EQ(message.styled, "<b>a</b> &lt; b");
    EXPECT_EQ(message.value, 100);
}

TEST(DisplayMessageRowsTest, aNodeWithoutRowsHasItsTitle)
{
    EXPECT_EQ(messageFromRows({}, "Door", {}).title, "Door");
    EXPECT_EQ(messageFromRows({}, "Door", {QVariant("/a/path"), 7, QVariant()}).text, QString());
}

TEST(DisplayMessageRowsTest, translatesTheTitleThatTheHostGives)
{
    class German : public QTranslator
    {
    public:
        bool isEmpty() const override { return false; }
        QString translate(const char * /*context*/, const char *source,
                          const char * /*disambiguation*/, int /*n*/) const override
        {
            return source == QLatin1String("Message") ? QStringLiteral("Nachricht") : QString();
        }
    };
    EXPECT_EQ(messageFromRows({}, "Message", {}).title, "Message");
    German german;
    QCoreApplication::installTranslator(&german);
    EXPECT_EQ(messageFromRows({}, "Message", {}).title, "Nachricht");
}

TEST(DisplayMessageRowsTest, listsAllMessagesOfAGroup)
{
    QVariantList rows{text({{"title", "and 7 older ones"}})};
    for (int i = 0; i < 50; ++i) {
        rows.append(action("Letter", "/a"));
    }
    const CMPath path = TavoAttentionMessagesPath() + QStringLiteral("group-1");
    const Message group = messageFromRows(path, "57 messages of Mail", rows);
    EXPECT_TRUE(group.isGroup);
    EXPECT_EQ(group.title, "57 messages of Mail");
    EXPECT_EQ(group.text, "and 7 older ones");
    EXPECT_EQ(group.actions.size(), 50);
    EXPECT_FALSE(messageFromRows(CMPath("/a"), "57 messages of Mail", rows).isGroup);
    class Shouter : public QTranslator
    {
    public:
        bool isEmpty() const override { return false; }
        QString translate(const char * /*context*/, const char *source,
                          const char * /*disambiguation*/, int /*n*/) const override
        {
            return QString::fromLatin1(source).toUpper();
        }
    };
    Shouter shouter;
    QCoreApplication::installTranslator(&shouter);
    const Message translated = messageFromRows(path, "57 messages of Mail", rows);
    EXPECT_EQ(translated.title, "57 MESSAGES OF Mail");
    EXPECT_EQ(translated.text, "AND 7 OLDER ONES");
    EXPECT_EQ(messageFromRows(CMPath("/a"), "While you were not to be disturbed", {}).title,
              "WHILE YOU WERE NOT TO BE DISTURBED");
    const QVariantList flood{text({{"title", "They came too fast to be shown."}})};
    const Message summary = messageFromRows(CMPath("/a"), "7 more of Mail", flood);
    EXPECT_EQ(summary.title, "7 MORE OF Mail");
    EXPECT_EQ(summary.text, "THEY CAME TOO FAST TO BE SHOWN.");
    EXPECT_EQ(messageFromRows(CMPath("/a"), "7 more of Mail", {}).title, "7 more of Mail");
}

TEST(DisplayMessageRowsTest, limitsTheButtons)
{
    QVariantList rows;
    for (int i = 0; i < 1000; ++i) {
        rows.append(action(QString(100'000, QLatin1Char('a')), "/a"));
    }
    const Message message = messageFromRows({}, {}, rows);
    EXPECT_EQ(message.actions.size(), Message::maxActions);
    EXPECT_LT(message.actions[0].label.size(), 5000);
}

TEST(DisplayMessageRowsTest, takesPixelsOfTheRightSizeOnly)
{
    const auto picture = [](int width, int height, int bytes) {
        const QVariantHash image{{"width", width},
                                 {"height", height},
                                 {"pixels", QByteArray(bytes, '\x7f')},
                                 {"source", "bell"}};
        return messageFromRows({}, {}, {text({{"image", image}, {"icon", "program"}})}).picture;
    };
    EXPECT_EQ(picture(2, 3, 24).pixels.size(), QSize(2, 3));
    EXPECT_TRUE(picture(2, 3, 23).pixels.isNull());
    EXPECT_TRUE(picture(2, 3, 25).pixels.isNull());
    EXPECT_TRUE(picture(-2, -3, 24).pixels.isNull());
    EXPECT_TRUE(picture(257, 1, 1028).pixels.isNull());
    EXPECT_EQ(picture(0, 0, 0).source, "bell");
}
} // namespace
