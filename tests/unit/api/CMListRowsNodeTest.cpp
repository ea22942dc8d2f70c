// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/EventLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using Reply = CMReply<QVariant>;

namespace {
const CMPath a(QStringLiteral("/a"));
const CMPath b(QStringLiteral("/b"));
const CMPath c(QStringLiteral("/c"));

class CMListRowsNodeTest : public testing::Test
{
protected:
    void SetUp() override
    {
        CMRoot()->connectRowsChange(path, &recorder, &ChangeRecorder::on_rows_changed);
    }

    QStringList rows() const
    {
        QStringList result;
        for (int i = 0; i < node->rowsSize(); ++i) {
            result.append(CMPath::fromQVariant(node->getRow(i)).toString());
        }
        return result;
    }

    QVariant askForRows(int first, int count)
    {
        const Reply reply;
        CMRoot()->getRowsRequest(CMGetRowsRequest(path, first, count, reply));
        return reply.value();
    }

    QVariant askForMatch(const QVariant &value)
    {
        const Reply reply;
        CMRoot()->matchRowRequest(CMMatchRowRequest(path, value, reply));
        return reply.value();
    }

    CMNodesWorker worker{{}, QStringLiteral("Test")};
    CMListRowsNode *node = CMListRowsNode::create(worker.nodes(), path);
    ChangeRecorder recorder;
};

using CMListRowsNodeDeathTest = CMListRowsNodeTest;
} // namespace

TEST_F(CMListRowsNodeTest, HasNoRowsAtFirst)
{
    EXPECT_EQ(node->rowsSize(), 0);
    EXPECT_FALSE(node->getRow(0).isValid());
}

TEST_F(CMListRowsNodeTest, AppendsRows)
{
    node->rowsAppend(a);
    node->rowsAppend(b);
    EXPECT_EQ(rows(), (QStringList{"/a", "/b"}));
}

TEST_F(CMListRowsNodeTest, AppendsRowsWithRoles)
{
    const auto roles = TavoRoles().setType(TavoRolesType::Text).setTitle("message");
    node->rowsAppend(roles);
    EXPECT_EQ(TavoRoles(node->getRow(0).toHash()), roles);
}

TEST_F(CMListRowsNodeTest, ReturnsRolesAsTheyWereAppended)
{
    const QVariantList given{
        QVariantHash{{"type", 6}, {"title", "text"}},
        QVariantHash{{"type", 6}, {"title", QVariantHash{{"source", "text"}}}},
        QVariantHash{{"type", 6}, {"title", QVariant()}},
        QVariantHash{{"type", 6LL}, {"title", "text"}},
        QVariantHash{{"type", 6}, {"title", "text"}, {"more", 1}},
        QVariantHash{{"type", 6}, {"more", 1}},
        QVariantHash{{"title", "text"}, {"more", 1}},
        QVariantHash{{"type", 6}},
        QVariantHash(),
    };
    for (const QVariant &row : given) {
        node->rowsAppend(TavoRoles(row.toHash()));
    }
    for (int i = 0; i < given.size(); ++i) {
        const QVariantHash expected = given.at(i).toHash();
        const QVariantHash row = node->getRow(i).toHash();
        EXPECT_EQ(row, expected);
        EXPECT_EQ(row.value("type").userType(), expected.value("type").userType());
    }
    EXPECT_EQ(askForRows(0, -1), QVariant(given));
}

TEST_F(CMListRowsNodeTest, DoesNotTakeATitleThatLooksLikeAPathForAPath)
{
    node->rowsAppend(TavoRoles(QVariantHash{{"type", 6}, {"title", QVariant::fromValue(a)}}));
    const QVariantHash row = node->getRow(0).toHash();
    EXPECT_EQ(row.value("type"), QVariant(6));
    EXPECT_EQ(CMPath::fromQVariant(row.value("title")), a);
    EXPECT_EQ(askForMatch(a.toQVariant()), QVariant(-1));
}

TEST_F(CMListRowsNodeTest, InsertsARowAtItsIndex)
{
    node->rowsInsert(0, b);
    node->rowsInsert(0, a);
    node->rowsInsert(2, c);
    node->rowsInsert(1, path);
    EXPECT_EQ(rows(), (QStringList{"/a", "/test/node", "/b", "/c"}));
}

TEST_F(CMListRowsNodeTest, RemovesTheRowAtAnIndex)
{
    node->rowsAppend(a);
    node->rowsAppend(b);
    node->rowsAppend(c);
    node->rowsRemoveAt(1);
    EXPECT_EQ(rows(), (QStringList{"/a", "/c"}));
}

TEST_F(CMListRowsNodeTest, ReturnsARowThatConvertsToAPath)
{
    const CMPath row(QStringLiteral("/a/b"));
    node->rowsInsert(0, row);
    EXPECT_TRUE(node->getRow(0).canConvert<CMPath>());
    EXPECT_EQ(node->getRow(0).value<CMPath>(), row);
    EXPECT_EQ(CMPath::fromQVariant(node->getRow(0)), row);
}

TEST_F(CMListRowsNodeTest, HasNoRowOutsideItsRange)
{
    node->rowsAppend(a);
    EXPECT_TRUE(node->getRow(0).isValid());
    EXPECT_FALSE(node->getRow(-1).isValid());
    EXPECT_FALSE(node->getRow(1).isValid());
}

TEST_F(CMListRowsNodeTest, AnnouncesTheRolesOfItsRows)
{
    EXPECT_TRUE(node->rowsRoles().isEmpty());
    const auto roles = TavoRowsRoles().setType({TavoRowsRolesType::Title});
    node->setRowsRoles(roles);
    EXPECT_EQ(node->rowsRoles(), roles);
}

TEST_F(CMListRowsNodeTest, ReplacesAllRowsAtOnce)
{
    node->rowsAppend(a);
    node->rowsAppend(b);
    settle();
    recorder.rows.clear();
    const auto text = TavoRoles().setType(TavoRolesType::Text).setTitle("text");
    const auto action = TavoRoles().setType(TavoRolesType::Action).setPath(c);
    node->setRows({text, action, text});
    EXPECT_EQ(askForRows(0, -1),
              QVariant(QVariantList{text.__variant(), action.__variant(), text.__variant()}));
    settle();
    EXPECT_THAT(recorder.rows,
                ElementsAre(RowsReport{path, {CMSubscribe::RowsChangeReset()}, 0, 3}));
    node->setRows({});
    EXPECT_EQ(node->rowsSize(), 0);
}

TEST_F(CMListRowsNodeTest, ReportsChangesFromTheEventLoopOnly)
{
    node->rowsAppend(a);
    node->rowsRemoveAt(0);
    EXPECT_TRUE(recorder.rows.empty());
    settle();
    EXPECT_EQ(recorder.rows.size(), 2U);
}

TEST_F(CMListRowsNodeTest, ReportsWhatChangedAndWhere)
{
    node->rowsAppend(a);
    node->rowsAppend(TavoRoles());
    node->rowsInsert(1, b);
    node->rowsRemoveAt(0);
    settle();
    const QStringList inserted{CMSubscribe::RowsChangeInserted()};
    const QStringList removed{CMSubscribe::RowsChangeRemoved()};
    EXPECT_THAT(recorder.rows,
                ElementsAre(RowsReport{path, inserted, 0, 1}, RowsReport{path, inserted, 1, 1},
                            RowsReport{path, inserted, 1, 1}, RowsReport{path, removed, 0, 1}));
}

TEST_F(CMListRowsNodeTest, ReturnsAllItsRowsOnRequest)
{
    EXPECT_EQ(askForRows(0, -1), QVariant(QVariantList()));
    node->rowsAppend(a);
    node->rowsAppend(b);
    EXPECT_EQ(askForRows(0, -1), QVariant(QVariantList{"/a", "/b"}));
}

TEST_F(CMListRowsNodeTest, ReturnsTheRequestedRows)
{
    for (const CMPath &row : {a, b, c}) {
        node->rowsAppend(row);
    }
    EXPECT_EQ(askForRows(1, 1), QVariant(QVariantList{"/b"}));
    EXPECT_EQ(askForRows(1, -1), QVariant(QVariantList{"/b", "/c"}));
    EXPECT_EQ(askForRows(0, 0), QVariant(QVariantList()));
}

TEST_F(CMListRowsNodeTest, ReturnsTheExistingRowsWhenMoreAreRequested)
{
    node->rowsAppend(a);
    EXPECT_EQ(askForRows(0, 99), QVariant(QVariantList{"/a"}));
    EXPECT_EQ(askForRows(1, 5), QVariant(QVariantList()));
    EXPECT_EQ(askForRows(99, -1), QVariant(QVariantList()));
    EXPECT_EQ(askForRows(-5, -1), QVariant(QVariantList{"/a"}));
    EXPECT_EQ(askForRows(2147483647, 2147483647), QVariant(QVariantList()));
}

TEST_F(CMListRowsNodeTest, MatchesAPathThatIsGivenAsAPathOrAsAText)
{
    node->rowsAppend(CMPath(QStringLiteral("/other")));
    node->rowsAppend(CMPath(QStringLiteral("/sought")));
    EXPECT_EQ(askForMatch(QStringLiteral("/sought")), 1);
    EXPECT_EQ(askForMatch(QVariant::fromValue(CMPath(QStringLiteral("/sought")))), 1);
    EXPECT_EQ(askForMatch(QVariant::fromValue(CMPath(QStringLiteral("/nowhere")))), -1);
}

TEST_F(CMListRowsNodeTest, FindsTheFirstRowThatEqualsAValue)
{
    for (const CMPath &row : {a, b, b}) {
        node->rowsAppend(row);
    }
    EXPECT_EQ(askForMatch(QStringLiteral("/b")), QVariant(1));
    EXPECT_EQ(askForMatch(QVariant::fromValue(b)), QVariant(1));
    EXPECT_EQ(askForMatch(QStringLiteral("/c")), QVariant(-1));
    EXPECT_EQ(askForMatch(QVariant()), QVariant(-1));
}

TEST_F(CMListRowsNodeTest, ReturnsTheTextOfAPathThatWasMadeFromParts)
{
    node->rowsAppend(CMPath(QStringLiteral("/one")) + QStringLiteral("two"));
    EXPECT_EQ(node->getRow(0), QVariant(QStringLiteral("/one/two")));
    EXPECT_EQ(node->getRow(0).userType(), int(QMetaType::QString));
    EXPECT_EQ(askForMatch(QStringLiteral("/one/two")), QVariant(0));
}

TEST_F(CMListRowsNodeTest, MatchesOnlyTheTextThatItReturns)
{
    node->rowsAppend(CMPath(QStringLiteral("/one/two")));
    node->rowsAppend(CMPath());
    EXPECT_EQ(askForMatch(QStringLiteral("/one//two")), QVariant(-1));
    EXPECT_EQ(askForMatch(QStringLiteral("one/two")), QVariant(-1));
    EXPECT_EQ(askForMatch(QStringLiteral("")), QVariant(1));
    EXPECT_EQ(askForMatch(QByteArray("/one/two")), QVariant(0));
}

TEST_F(CMListRowsNodeTest, FindsARowByItsRoles)
{
    const auto roles = TavoRoles().setTitle("message");
    node->rowsAppend(a);
    node->rowsAppend(roles);
    EXPECT_EQ(askForMatch(roles.__variant()), QVariant(1));
}

TEST(CMSubscribeTest, HasADifferentNameForEachChange)
{
    const QSet<QString> names{CMSubscribe::RowsChangeInserted(), CMSubscribe::RowsChangeRemoved(),
                              CMSubscribe::RowsChangeReset(), CMSubscribe::RowsChangeClose()};
    EXPECT_EQ(names.size(), 4);
    EXPECT_FALSE(names.contains(QString()));
}

TEST_F(CMListRowsNodeDeathTest, RefusesToInsertOutsideItsRange)
{
    EXPECT_DEATH(node->rowsInsert(1, a), "index out of range");
    EXPECT_DEATH(node->rowsInsert(-1, a), "index out of range");
}

TEST_F(CMListRowsNodeDeathTest, RefusesToRemoveARowThatIsNotThere)
{
    EXPECT_DEATH(node->rowsRemoveAt(0), "index out of range");
    EXPECT_DEATH(node->rowsRemoveAt(-1), "index out of range");
}
