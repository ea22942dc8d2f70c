// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/EventThread.h"
#include "support/Text.h"
#include <core/tavo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class CMCatalogTest : public testing::Test
{
protected:
    using Lines = std::vector<std::string>;

    void publishValue(const QString &path) { CMValueNode::create(&m_nodes, CMPath(path)); }

    /// One line for each entry: path, kind and title.
    static Lines linesOf(const std::vector<CMCatalog::Entry> &entries)
    {
        Lines lines;
        for (const CMCatalog::Entry &entry : entries) {
            const QString line =
                entry.path.toString() + ' ' + entry.kind + ' ' + entry.title.toString();
            lines.push_back(line.trimmed().toStdString());
        }
        return lines;
    }
    static Lines tree(const QString &path) { return linesOf(CMCatalog::tree(CMPath(path))); }
    static Lines children(const QString &path)
    {
        return linesOf(CMCatalog::children(CMPath(path)));
    }

    /// Compares the tree, and the children of every path that has some, with these nodes.
    static void expectListed(const std::map<std::string, CMNode *> &nodes)
    {
        Lines all;
        std::map<std::string, std::set<std::string>> below;
        below[""];
        for (const auto &[path, node] : nodes) {
            all.push_back(path + " value");
            for (std::size_t end = path.size(); end > 0; end = path.rfind('/', end - 1)) {
                const std::string child = path.substr(0, end);
                const char *kind = nodes.count(child) > 0 ? " value" : " group";
                below[child.substr(0, child.rfind('/'))].insert(child + kind);
            }
        }
        EXPECT_THAT(tree({}), ElementsAreArray(all));
        for (const auto &[path, lines] : below) {
            EXPECT_THAT(children(QString::fromStdString(path)), ElementsAreArray(lines)) << path;
        }
    }

    CMNodes m_nodes;
};

TEST_F(CMCatalogTest, IsEmptyForAPathWithoutNodes)
{
    publishValue("/a/b"_s);
    EXPECT_THAT(tree("/x"_s), IsEmpty());
    EXPECT_THAT(children("/x"_s), IsEmpty());
    EXPECT_THAT(children("/a/b"_s), IsEmpty());
}

TEST_F(CMCatalogTest, ListsTheTreeSortedByPath)
{
    publishValue("/b"_s);
    publishValue("/a/c"_s);
    publishValue("/a"_s);
    publishValue("/a/b/c"_s);
    EXPECT_THAT(tree(""_s), ElementsAre("/a value", "/a/b/c value", "/a/c value", "/b value"));
    EXPECT_THAT(tree("/a"_s), ElementsAre("/a value", "/a/b/c value", "/a/c value"));
}

TEST_F(CMCatalogTest, DoesNotListAPathThatOnlyStartsWithTheSameText)
{
    publishValue("/ab"_s);
    publishValue("/ab/c"_s);
    EXPECT_THAT(tree("/a"_s), IsEmpty());
    EXPECT_THAT(children("/a"_s), IsEmpty());
}

TEST_F(CMCatalogTest, ListsKindAndTitle)
{
    CMListRowsNode::create(&m_nodes, CMPath("/list"_s))->setTitle("Rows"_s);
    CMActivateNode::create(&m_nodes, CMPath("/request"_s))->doSetInvoke([](CMActivateNode *) {});
    EXPECT_THAT(tree(""_s), ElementsAre("/list list Rows", "/request request"));
}

TEST_F(CMCatalogTest, FindsOneNode)
{
    CMListRowsNode::create(&m_nodes, CMPath("/a/list"_s))->setTitle("Rows"_s);
    publishValue("/a/list/below"_s);
    const auto entry = CMCatalog::entry(CMPath("/a/list"_s));
    ASSERT_TRUE(entry.has_value());
    EXPECT_THAT(linesOf({*entry}), ElementsAre("/a/list list Rows"));
}

TEST_F(CMCatalogTest, FindsNothingForAPathWithoutANode)
{
    publishValue("/a/b"_s);
    EXPECT_FALSE(CMCatalog::entry(CMPath("/a"_s)).has_value()) << "a group is no node";
    EXPECT_FALSE(CMCatalog::entry(CMPath("/a/c"_s)).has_value());
    EXPECT_FALSE(CMCatalog::entry(CMPath()).has_value());
}

TEST_F(CMCatalogTest, ListsEachChildOnceAndPathsWithoutANodeAsGroups)
{
    publishValue("/a/x/1"_s);
    publishValue("/a/x/2"_s);
    publishValue("/a/y"_s);
    publishValue("/a/y/1"_s);
    publishValue("/b"_s);
    EXPECT_THAT(children(""_s), ElementsAre("/a group", "/b value"));
    EXPECT_THAT(children("/a"_s), ElementsAre("/a/x group", "/a/y value"));
    EXPECT_THAT(children("/a/x"_s), ElementsAre("/a/x/1 value", "/a/x/2 value"));
}

TEST_F(CMCatalogTest, DoesNotListDisposedNodes)
{
    CMNode *node = CMValueNode::create(&m_nodes, CMPath("/a"_s));
    node->dispose();
    EXPECT_THAT(tree(""_s), IsEmpty());
}

TEST_F(CMCatalogTest, ListsWhatIsThereAfterAnyNodesHaveComeAndGone)
{
    std::mt19937 random(1);
    std::map<std::string, CMNode *> nodes;
    for (int step = 0; step < 20'000; ++step) {
        QString path;
        do {
            path += '/' + QString(1, QChar(ushort('a' + random() % 4)));
        } while (path.size() < 10 && random() % 4 != 0);
        CMNode *&node = nodes[path.toStdString()];
        if (node != nullptr) {
            node->dispose();
            nodes.erase(path.toStdString());
        } else {
            node = CMValueNode::create(&m_nodes, CMPath(path));
        }
        if (step % 1000 == 0) {
            expectListed(nodes);
        }
    }
    for (const auto &[path, node] : nodes) {
        node->dispose();
    }
    expectListed({});
}

TEST_F(CMCatalogTest, CanBeReadWhileAnotherThreadPublishes)
{
    EventThread other;
    std::atomic<bool> goOn{true};
    auto publishing = other.start([&goOn] {
        CMNodes nodes;
        while (goOn) {
            CMNode *node = CMValueNode::create(&nodes, CMPath("/busy/node"_s));
            node->dispose();
        }
    });
    publishValue("/calm"_s);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_THAT(tree("/calm"_s), ElementsAre("/calm value"));
        CMCatalog::tree({});
        CMCatalog::children(CMPath("/busy"_s));
    }
    goOn = false;
    publishing.get();
}
} // namespace
