// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"

namespace {
using testing::ElementsAre;

/// The server as used by notify-send, which most systems have.
class NotifySendTest : public DesktopTest
{
protected:
    NotifySendTest()
        : DesktopTest({{"defaultTimeout"_s, 60'000}})
    {
    }
};

TEST_F(NotifySendTest, ShowsATitleAndABody)
{
    const quint32 id = notifySend({"The title"_s, "The body"_s});
    EXPECT_EQ(id, 1U);
    EXPECT_EQ(titleOf(id), "The title"_s);
    EXPECT_EQ(rowOf(id).type(), TavoRolesType::Text);
    EXPECT_EQ(rowOf(id).title().toString(), "The body"_s);
    EXPECT_THAT(displayed(), ElementsAre(pathOf(id)));
}

TEST_F(NotifySendTest, ShowsABodyWithMarkupAsPlainText)
{
    const quint32 id = notifySend({"a <b> c"_s, "<b>5 &lt; 6</b><br/><a href=\"x\">more</a>"_s});
    EXPECT_EQ(titleOf(id), "a <b> c"_s);
    EXPECT_EQ(rowOf(id).title().toString(), "5 < 6\nmore"_s);
}

TEST_F(NotifySendTest, ShowsTitlesOfSeveralLinesAsOne)
{
    EXPECT_EQ(titleOf(notifySend({"one\ntwo"_s})), "one two"_s);
}

TEST_F(NotifySendTest, ShowsItsApplicationAndCategory)
{
    const quint32 id =
        notifySend({"-a"_s, "Mail"_s, "-c"_s, "email.arrived"_s, "-i"_s, "mail-unread"_s, "-e"_s,
                    "-h"_s, "string:desktop-entry:org.example.Mail"_s, "Title"_s});
    const TavoRoles row = rowOf(id);
    EXPECT_EQ(row.application(), "Mail"_s);
    EXPECT_EQ(row.category(), "email.arrived"_s);
    EXPECT_EQ(row.icon(), "mail-unread"_s);
    EXPECT_EQ(row.desktopEntry(), "org.example.Mail"_s);
    EXPECT_TRUE(row.isTransient());
}

TEST_F(NotifySendTest, ShowsEmphasisPicturesAndProgress)
{
    const quint32 id =
        notifySend({"-i"_s, "mail-unread"_s, "-h"_s, "string:image-path:file:///srv/a.png"_s,
                    "-h"_s, "int:value:42"_s, "-h"_s, "boolean:action-icons:true"_s, "Title"_s,
                    "a <b>bold &lt; word</b>"_s});
    const TavoRoles row = rowOf(id);
    EXPECT_EQ(row.title().toString(), "a bold < word"_s);
    EXPECT_EQ(row.markup(), "a <b>bold &lt; word</b>"_s);
    EXPECT_EQ(row.icon(), "mail-unread"_s);
    EXPECT_EQ(row.image().source(), "file:///srv/a.png"_s);
    EXPECT_EQ(row.value(), 42);
    EXPECT_EQ(rowOf(notifySend({"-h"_s, "int:value:101"_s, "Title"_s})).value(), 100);
    EXPECT_FALSE(rowOf(notifySend({"-h"_s, "string:value:5"_s, "Title"_s})).hasValue());
}

TEST_F(NotifySendTest, PrefersAnExactPriorityToTheUrgency)
{
    const quint32 normal = notifySend({"normal"_s});
    const quint32 high = notifySend({"-u"_s, "low"_s, "-h"_s, "int:x-tavo-priority:2"_s, "high"_s});
    const quint32 critical = notifySend({"-u"_s, "critical"_s, "critical"_s});
    const quint32 low =
        notifySend({"-u"_s, "critical"_s, "-h"_s, "int:x-tavo-priority:0"_s, "low"_s});
    EXPECT_THAT(displayed(),
                ElementsAre(pathOf(critical), pathOf(high), pathOf(normal), pathOf(low)));
}

TEST_F(NotifySendTest, PutsMoreUrgentOnesFirst)
{
    const quint32 normal = notifySend({"normal"_s});
    const quint32 low = notifySend({"-u"_s, "low"_s, "low"_s});
    const quint32 critical = notifySend({"-u"_s, "critical"_s, "critical"_s});
    EXPECT_THAT(displayed(), ElementsAre(pathOf(critical), pathOf(normal), pathOf(low)));
}

TEST_F(NotifySendTest, LeavesItsNotificationOpenWhenItEnds)
{
    const quint32 id = notifySend({"Title"_s});
    settle();
    EXPECT_TRUE(isOpen(id));
}

TEST_F(NotifySendTest, ChangesTheTextInPlace)
{
    const quint32 first = notifySend({"Title"_s, "old"_s});
    const quint32 second = notifySend({"Other"_s});
    EXPECT_EQ(notifySend({"-r"_s, QString::number(first), "New"_s, "new"_s}), first);
    EXPECT_EQ(titleOf(first), "New"_s);
    EXPECT_EQ(rowOf(first).title().toString(), "new"_s);
    EXPECT_THAT(displayed(), ElementsAre(pathOf(first), pathOf(second)));
}

TEST_F(NotifySendTest, IsQueuedAgainForAnotherUrgency)
{
    const quint32 first = notifySend({"first"_s});
    const quint32 second = notifySend({"second"_s});
    notifySend({"-r"_s, QString::number(first), "-u"_s, "low"_s, "first"_s});
    EXPECT_TRUE(waitFor([&] { return displayed().value(0) == pathOf(second); }));
    EXPECT_THAT(displayed(), ElementsAre(pathOf(second), pathOf(first)));
}

TEST_F(NotifySendTest, GetsTheRequestedIdEvenWhenItIsNotOpen)
{
    EXPECT_EQ(notifySend({"-r"_s, "4000000"_s, "Title"_s}), 4'000'000U);
    EXPECT_TRUE(isOpen(4'000'000));
    EXPECT_EQ(notifySend({"Title"_s}), 1U);
}

TEST_F(NotifySendTest, WaitsUntilItsNotificationExpires)
{
    ClientProgram program(bus(), "notify-send"_s, {"--wait"_s, "-t"_s, "300"_s, "Title"_s});
    EXPECT_TRUE(program.succeeds());
    EXPECT_THAT(displayed(), ElementsAre());
}

TEST_F(NotifySendTest, LearnsWhichActionWasChosen)
{
    ClientProgram program(bus(), "notify-send"_s,
                          {"-A"_s, "yes=Yes, please"_s, "-A"_s, "no=No"_s, "Title"_s, "Text"_s});
    ASSERT_TRUE(waitFor([&] { return displayed().size() == 1; }, std::chrono::seconds(20)));
    ASSERT_EQ(rowCount(1), 3);
    const TavoRoles yes = rowOf(1, 1);
    EXPECT_EQ(yes.type(), TavoRolesType::Action);
    EXPECT_EQ(yes.title().toString(), "Yes, please"_s);
    EXPECT_EQ(rowOf(1, 2).title().toString(), "No"_s);
    CMRoot()->invoke(yes.path(), QVariant(), {});
    EXPECT_TRUE(program.succeeds());
    EXPECT_EQ(program.output(), "yes\n"_s);
    EXPECT_FALSE(isOpen(1));
}

TEST_F(NotifySendTest, IsNotConfusedWithAnother)
{
    // One run each, so that each is another client.
    for (quint32 id = 1; id <= 5; ++id) {
        EXPECT_EQ(notifySend({"Title"_s}), id);
    }
    EXPECT_EQ(displayed().size(), 5);
}
} // namespace
