// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"

#include <QElapsedTimer>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

class DbusListsTest : public ModelTest
{
protected:
    DbusListsTest()
        : ModelTest(withLargeMessages())
    {
    }

    using Lines = std::vector<std::string>;

    /// The nodes in a reply, one line each; each node has this many strings.
    static Lines linesOf(BusReader reader, std::size_t strings)
    {
        const std::string members(strings, 's');
        Lines lines;
        reader.enterArray(('(' + members + ')').c_str());
        while (!reader.isAtEnd()) {
            reader.enterStruct(members.c_str());
            QStringList line;
            for (std::size_t i = 0; i < strings; ++i) {
                line.append(reader.readString());
            }
            lines.push_back(line.join(' ').toStdString());
            reader.leave();
        }
        return lines;
    }

    /// The reply of List or Tree.
    Lines nodes(const std::string &method, const QString &path)
    {
        return linesOf(client->ask(method, {path}).reader(), 3);
    }

    Lines describe(const QStringList &paths)
    {
        return linesOf(client->describe(paths).reader(), 4);
    }

    CMListRowsNode *publishText(const QString &path, const QString &text)
    {
        CMListRowsNode *node = publishRows(path, {});
        node->rowsAppend(TavoRoles().setTitle(text));
        return node;
    }

    std::vector<QVariant> rows(const QString &path, int first, int count)
    {
        BusReader reader = client->getRows(path, first, count).reader();
        std::vector<QVariant> rows;
        reader.enterArray("v");
        while (!reader.isAtEnd()) {
            rows.push_back(reader.readVariant());
        }
        return rows;
    }

    int matchRow(const QString &path, const QVariant &row)
    {
        return client
            ->call("MatchRow",
                   [&](BusWriter &writer) {
                       writer.writeString(path);
                       writer.writeVariant(row);
                   })
            .reader()
            .readInt32();
    }
};

TEST_F(DbusListsTest, OfAPathHasWhatIsDirectlyBelowIt)
{
    publishValue("/test/a/value"_s, 1);
    publishRows("/test/b"_s, {})->setTitle("Title"_s);
    publishEcho("/test/c"_s);
    EXPECT_THAT(nodes("List", "/test"_s),
                ElementsAre("/test/a group ", "/test/b list Title", "/test/c request "));
    EXPECT_THAT(nodes("List", "/test/c"_s), IsEmpty());
}

TEST_F(DbusListsTest, OfTheTopHasTheFirstNames)
{
    publishValue("/test/a"_s, 1);
    EXPECT_THAT(nodes("List", "/"_s), ElementsAre("/test group "));
}

TEST_F(DbusListsTest, OfATreeHasEveryNode)
{
    publishValue("/test/a/value"_s, 1);
    publishValue("/test"_s, 1);
    publishEcho("/other"_s);
    EXPECT_THAT(nodes("Tree", "/test"_s), ElementsAre("/test value ", "/test/a/value value "));
    EXPECT_THAT(nodes("Tree", "/"_s),
                ElementsAre("/other request ", "/test value ", "/test/a/value value "));
}

TEST_F(DbusListsTest, OfOneClientDoNotKeepAnotherWaitingHoweverManyNodesThereAre)
{
    constexpr int manyNodes = 50'000;
    for (int i = 0; i < manyNodes; ++i) {
        publishValue("/test/many/"_s + QString::number(i), i);
    }
    ModelClient other(bus().address());
    ASSERT_TRUE(other.getValue("/test/many/1"_s).succeeds());
    std::vector<BusCall> calls;
    for (int i = 0; i < 1000; ++i) {
        calls.push_back(client->ask("List", {"/test"_s}));
    }
    QElapsedTimer waiting;
    waiting.start();
    EXPECT_TRUE(other.getValue("/test/many/1"_s).succeeds());
    EXPECT_LT(waiting.elapsed(), 1000);
    EXPECT_TRUE(calls.back().succeeds());
}

TEST_F(DbusListsTest, PreviewsCutNoCharacterInHalves)
{
    const QString bell = QString::fromUtf8("\U0001F514"); // two UTF-16 units
    publishText("/test/text"_s, "ab"_s + bell.repeated(10))->setTitle("Door"_s);
    BusReader reader = client->preview("/test/text"_s, 1, 5).reader();
    EXPECT_EQ(reader.readString(), "Door"_s);
    reader.enterArray("v");
    EXPECT_EQ(TavoRoles(reader.readVariant().toHash()).title().toString(), "ab"_s + bell);
    EXPECT_TRUE(reader.isAtEnd());
    EXPECT_EQ(client->preview("/test/text"_s, -1, 5).errorName(),
              "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(DbusListsTest, CutLongTitles)
{
    publishRows("/test/rows"_s, {})->setTitle(QString(1000, 'x'));
    EXPECT_THAT(nodes("List", "/test"_s), ElementsAre("/test/rows list " + std::string(200, 'x')));
}

/// A title of 122 KB that is a billion characters long with its arguments.
QVariant hugeTitle()
{
    const QVariantList arguments{QString(100'000, 'x')};
    return QVariantHash{
        {"context", ""}, {"source", "%1"_s.repeated(11'000)}, {"arguments", arguments}};
}

TEST_F(DbusListsTest, AreCompleteDespiteATitleThatGrowsWithItsArguments)
{
    publishRows("/test/a"_s, {})->setTitle(TrString::fromQVariant(hugeTitle()));
    const std::string line = "/test/a list " + std::string(200, 'x');
    EXPECT_THAT(nodes("List", "/test"_s), ElementsAre(line));
    EXPECT_THAT(nodes("Tree", "/test"_s), ElementsAre(line));
    EXPECT_THAT(describe({"/test/a"_s}), ElementsAre(line + ' '));
}

TEST_F(DbusListsTest, TooLargeForEveryBusAreRefusedAndTheModuleStays)
{
    constexpr int manyRows = 33;
    CMListRowsNode *rows = publishRows("/test/rows"_s, {});
    for (int i = 0; i < manyRows; ++i) {
        rows->rowsAppend(TavoRoles().setTitle(QString(1 << 20, 'x')));
    }
    const BusCall call = client->getRows("/test/rows"_s, 0, -1);
    EXPECT_EQ(call.errorName(), "org.tavo.Error.UnsupportedValue");
    EXPECT_EQ(call.errorMessage(), "The value is too large for a message");
    EXPECT_TRUE(client->getRows("/test/rows"_s, 0, manyRows - 2).succeeds());
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 0);
}

TEST_F(DbusListsTest, OfDescriptionsHaveTheTextOfEachNode)
{
    publishText("/test/b"_s, "Somebody rings"_s)->setTitle("Door"_s);
    publishText("/test/a"_s, "Cake"_s)->rowsAppend(TavoRoles().setTitle("Not the first"_s));
    EXPECT_THAT(describe({"/test/b"_s, "/test/a"_s, "/test/b"_s}),
                ElementsAre("/test/b list Door Somebody rings", "/test/a list  Cake",
                            "/test/b list Door Somebody rings"));
    EXPECT_THAT(describe({}), IsEmpty());
}

TEST_F(DbusListsTest, OfDescriptionsHaveNoTextOfANodeWithoutRowsOfText)
{
    publishRows("/test/empty"_s, {});
    publishRows("/test/paths"_s, {"/a"_s});
    publishValue("/test/value"_s, 1);
    publishRequest("/test/request"_s, [](const CMSetDataRequest &) {
        ADD_FAILURE() << "A description sends nothing to a node";
    });
    EXPECT_THAT(describe({"/test/empty"_s, "/test/paths"_s, "/test/value"_s, "/test/request"_s}),
                ElementsAre("/test/empty list  ", "/test/paths list  ", "/test/value value  ",
                            "/test/request request  "));
}

TEST_F(DbusListsTest, OfDescriptionsLeaveOutWhatIsNotThePathOfANode)
{
    publishText("/test/a"_s, "Cake"_s);
    EXPECT_THAT(describe({"/test"_s, "/test/none"_s, "/test/a"_s, "test/a"_s, "/test//a"_s, "/"_s,
                          ""_s, '/' + QString(5000, 'x')}),
                ElementsAre("/test/a list  Cake"));
}

TEST_F(DbusListsTest, OfDescriptionsHaveLongTextsWholeAndTitlesCut)
{
    publishText("/test/a"_s, QString(1000, 'x'))->setTitle(QString(1000, 'y'));
    EXPECT_THAT(describe({"/test/a"_s}), ElementsAre("/test/a list " + std::string(200, 'y') + ' ' +
                                                     std::string(1000, 'x')));
}

TEST_F(DbusListsTest, OfDescriptionsReplaceWhatAMessageCanNotHold)
{
    publishText("/test/a"_s, "a"_s + QChar(0xd800) + QChar(0) + 'b')->setTitle("c"_s + QChar(0));
    EXPECT_THAT(describe({"/test/a"_s}), ElementsAre("/test/a list c\uFFFD a\uFFFD\uFFFDb"));
}

TEST_F(DbusListsTest, OfManyDescriptionsAreComplete)
{
    QStringList paths;
    for (int i = 0; i < 5000; ++i) {
        paths.append("/test/"_s + QString::number(i));
        publishText(paths.back(), QString::number(i));
    }
    const Lines lines = describe(paths);
    ASSERT_EQ(lines.size(), 5000U);
    EXPECT_EQ(lines.front(), "/test/0 list  0");
    EXPECT_EQ(lines.back(), "/test/4999 list  4999");
}

TEST_F(DbusListsTest, OfTooLargeDescriptionsAreRefused)
{
    publishText("/test/a"_s, QString(1 << 20, 'x'));
    QStringList paths;
    for (int i = 0; i < 31; ++i) {
        paths.append("/test/a"_s);
    }
    EXPECT_TRUE(client->describe(paths).succeeds());
    const BusCall call = client->describe(paths << "/test/a"_s);
    EXPECT_EQ(call.errorName(), "org.tavo.Error.UnsupportedValue");
    EXPECT_EQ(call.errorMessage(), "The value is too large for a message");
    EXPECT_THAT(describe({"/test/a"_s}), testing::SizeIs(1));
}

TEST_F(DbusListsTest, OfAnInvalidPathIsAnError)
{
    for (const char *method : {"List", "Tree"}) {
        EXPECT_EQ(client->ask(method, {""_s}).errorName(), "org.tavo.Error.InvalidPath");
        EXPECT_EQ(client->ask(method, {"//"_s}).errorName(), "org.tavo.Error.InvalidPath");
    }
}

TEST_F(DbusListsTest, OfRowsHasTheRequestedOnes)
{
    publishRows("/test/rows"_s, {"/a"_s, "/b"_s, "/c"_s});
    EXPECT_THAT(rows("/test/rows"_s, 0, -1), ElementsAre("/a", "/b", "/c"));
    EXPECT_THAT(rows("/test/rows"_s, 1, 1), ElementsAre("/b"));
    EXPECT_THAT(rows("/test/rows"_s, 2, 5), ElementsAre("/c"));
    EXPECT_THAT(rows("/test/rows"_s, 5, 1), IsEmpty());
    EXPECT_THAT(rows("/test/rows"_s, 0, 0), IsEmpty());
}

TEST_F(DbusListsTest, OfRowsHasRolesAsRecords)
{
    publishRows("/test/rows"_s, {})->rowsAppend(TavoRoles().setTitle("Text"_s));
    EXPECT_THAT(rows("/test/rows"_s, 0, -1),
                ElementsAre(QVariant(QVariantHash{{"title", "Text"}})));
}

TEST_F(DbusListsTest, OfRowsBeforeTheFirstIsAnError)
{
    publishRows("/test/rows"_s, {"/a"_s});
    const char *invalid = "org.freedesktop.DBus.Error.InvalidArgs";
    EXPECT_EQ(client->getRows("/test/rows"_s, -1, 1).errorName(), invalid);
    EXPECT_EQ(client->getRows("/test/rows"_s, 0, -2).errorName(), invalid);
}

TEST_F(DbusListsTest, OfRowsOfANodeWithoutRowsIsAnError)
{
    publishValue("/test/value"_s, 1);
    EXPECT_EQ(client->getRows("/test/value"_s, 0, -1).errorName(), "org.tavo.Error.NotSupported");
    EXPECT_EQ(client->getRows("/test/no"_s, 0, -1).errorName(), "org.tavo.Error.NoSuchNode");
}

TEST_F(DbusListsTest, TellWhereARowIs)
{
    publishRows("/test/rows"_s, {"/a"_s, "/b"_s});
    EXPECT_EQ(matchRow("/test/rows"_s, "/b"_s), 1);
    EXPECT_EQ(matchRow("/test/rows"_s, "/c"_s), -1);
}

TEST_F(DbusListsTest, HaveNoRowWithFieldsOfAnotherType)
{
    publishRows("/test/rows"_s, {"/a"_s})->rowsAppend(TavoRoles().setTitle("Text"_s));
    EXPECT_EQ(matchRow("/test/rows"_s, QVariantHash{{"title", QByteArray("Text")}}), -1);
    EXPECT_EQ(matchRow("/test/rows"_s, QVariantHash{{"title", "Text"}}), 1);
}

TEST_F(DbusListsTest, AreClosedForTheirListeners)
{
    const auto close = [this] {
        return client->ask("Close", {"/test/rows"_s}).reader().readBoolean();
    };
    EXPECT_FALSE(close());
    ASSERT_TRUE(client->subscribe("/test/rows"_s, "rows"_s).succeeds());
    EXPECT_TRUE(close());
    EXPECT_TRUE(client->waitForSignals(1));
    EXPECT_THAT(client->received, ElementsAre("RowsChanged /test/rows close -1+0"));
}
} // namespace
