// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/records/cmpath.h"

#include "core/base/stream.h"
#include "support/CollidingTexts.h"

#include <QHash>

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace {
CMPath path(const char *text)
{
    return CMPath(QString::fromUtf8(text));
}

QString text(const CMPath &path)
{
    return path.toString();
}
} // namespace

TEST(CMPathTest, IsEmptyByDefault)
{
    EXPECT_TRUE(CMPath().isEmpty());
    EXPECT_EQ(text(CMPath()), QString());
}

TEST(CMPathTest, KeepsACanonicalText)
{
    EXPECT_EQ(text(path("/a/b/c")), "/a/b/c");
    EXPECT_FALSE(path("/a").isEmpty());
}

TEST(CMPathTest, AddsAMissingSlashAtTheStart)
{
    EXPECT_EQ(text(path("a/b")), "/a/b");
}

TEST(CMPathTest, DropsDoubledAndTrailingSlashes)
{
    EXPECT_EQ(text(path("//a///b//")), "/a/b");
    EXPECT_EQ(text(path("/a/")), "/a");
}

TEST(CMPathTest, IsEmptyWithoutAnySegment)
{
    EXPECT_TRUE(path("").isEmpty());
    EXPECT_TRUE(path("/").isEmpty());
    EXPECT_TRUE(path("///").isEmpty());
}

TEST(CMPathTest, KeepsEveryOtherCharacterOfASegment)
{
    EXPECT_EQ(text(path("/a b/ü.ö-%2F")), QString::fromUtf8("/a b/ü.ö-%2F"));
}

TEST(CMPathTest, EqualsAPathOfTheSameCanonicalText)
{
    EXPECT_TRUE(path("/a/b") == path("a//b/"));
    EXPECT_FALSE(path("/a/b") != path("a//b/"));
}

TEST(CMPathTest, DiffersFromAPathOfAnotherText)
{
    EXPECT_TRUE(path("/a/b") != path("/a/c"));
    EXPECT_TRUE(path("/a/b") != path("/a"));
    EXPECT_TRUE(path("/a/b") != path("/A/b"));
    EXPECT_FALSE(path("/a/b") == path("/b/a"));
}

TEST(CMPathTest, ComparesTheEmptyPathLikeAnyOther)
{
    EXPECT_TRUE(CMPath() == CMPath());
    EXPECT_TRUE(CMPath() == path("/"));
    EXPECT_TRUE(CMPath() != path("/a"));
    EXPECT_TRUE(path("/a") != CMPath());
}

TEST(CMPathTest, SharesItsHashWithEqualPaths)
{
    EXPECT_EQ(qHash(path("/a/b")), qHash(path("a/b")));
    EXPECT_EQ(qHash(path("/a") + "b"), qHash(path("/a/b")));
    EXPECT_NE(qHash(path("/a/b")), qHash(path("/a/c")));
}

TEST(CMPathTest, IsAChildOfItsParentOnly)
{
    for (const CMPath &made : {path("/a/b/c"), path("/a/b") + "c"}) {
        for (const CMPath &parent : {path("/a/b"), path("/a") + "b"}) {
            EXPECT_TRUE(made.isChildOf(parent));
        }
        for (const char *other : {"/", "/a", "/a/b/c", "/a/b/c/d", "/a/d", "/a/bb", "/x/b"}) {
            EXPECT_FALSE(made.isChildOf(path(other))) << other;
        }
    }
    EXPECT_TRUE(path("/a").isChildOf(CMPath()));
    EXPECT_FALSE(CMPath().isChildOf(CMPath()));
    EXPECT_FALSE(CMPath().isChildOf(path("/a")));
}

TEST(CMPathTest, HasAHashThatNobodyCanForesee)
{
    constexpr int bits = 12;
    for (const std::vector<QString> &texts : {textsOfOneHash(bits), textsOfOneSeededHash(bits)}) {
        ASSERT_EQ(std::set<QString>(texts.begin(), texts.end()).size(), 1U << bits);
        std::set<uint> hashes;
        std::set<uint> hashesOfJoined;
        for (const QString &each : texts) {
            hashes.insert(CMPath("/a/" + each).hash());
            hashesOfJoined.insert((path("/a") + each).hash());
        }
        // Some may be equal by chance.
        EXPECT_GT(hashes.size(), (1U << bits) - 5);
        EXPECT_GT(hashesOfJoined.size(), (1U << bits) - 5);
    }
}

TEST(CMPathTest, HasAHashOfEachCharacter)
{
    std::set<uint> hashes;
    for (int length = 1; length < 40; ++length) {
        const QString text(length, 'x');
        hashes.insert(CMPath(text).hash());
        for (int i = 0; i < length; ++i) {
            hashes.insert(CMPath(QString(text).replace(i, 1, 'y')).hash());
            hashes.insert(CMPath(QString(text).replace(i, 1, QChar(QChar::Null))).hash());
        }
    }
    // Two may be equal by chance.
    EXPECT_GT(hashes.size(), 39U + 2 * 39 * 40 / 2 - 5);
}

TEST(CMPathTest, IsFoundInAHashByAnEqualPath)
{
    const QHash<CMPath, int> numbers{{path("/a"), 1}, {CMPath(), 2}};
    EXPECT_EQ(numbers.value(path("a/")), 1);
    EXPECT_EQ(numbers.value(CMPath()), 2);
    EXPECT_EQ(numbers.value(path("/b"), -1), -1);
}

TEST(CMPathTest, GrowsByOneSegment)
{
    EXPECT_EQ(text(path("/a") + "b"), "/a/b");
}

TEST(CMPathTest, EqualsAPathOfTheSameTextHoweverItWasMade)
{
    const CMPath whole = path("/a/b/c");
    for (const CMPath &made : {path("/a/b") + "c", path("/a") + "b" + "c", path("/a") + "b/c"}) {
        EXPECT_EQ(text(made), "/a/b/c");
        EXPECT_TRUE(made == whole && whole == made);
        EXPECT_TRUE(made == path("/a/b") + "c");
        EXPECT_EQ(qHash(made), qHash(whole));
        EXPECT_EQ(made.name(), "c");
        EXPECT_EQ(made.parent(), path("/a/b"));
        EXPECT_TRUE(made != path("/a/b") + "d" && made != path("/a") + "b");
        EXPECT_TRUE(path("/a/b") + "d" != made && path("/a/b/d") != made);
    }
}

TEST(CMPathTest, GrowsByARelativeTextWithoutDoublingASlash)
{
    EXPECT_EQ(text(path("/notifications") + "/player/revokeResources"),
              "/notifications/player/revokeResources");
    EXPECT_EQ(text(path("/a") + "b/c"), "/a/b/c");
    EXPECT_EQ(text(path("/a") + "//b//c/"), "/a/b/c");
    EXPECT_EQ(text(path("/a") + "b/"), "/a/b");
}

TEST(CMPathTest, StaysTheSameWhenNothingIsAdded)
{
    EXPECT_EQ(path("/a") + "", path("/a"));
    EXPECT_EQ(path("/a") + "/", path("/a"));
    EXPECT_TRUE((CMPath() + "").isEmpty());
}

TEST(CMPathTest, GrowsFromTheEmptyPath)
{
    EXPECT_EQ(text(CMPath() + "a"), "/a");
    EXPECT_EQ(text(CMPath() + "/a/b"), "/a/b");
}

TEST(CMPathTest, DoesNotChangeThePathThatItGrowsFrom)
{
    const CMPath base = path("/a");
    const CMPath child = base + "b";
    EXPECT_EQ(text(base), "/a");
    EXPECT_NE(base, child);
}

TEST(CMPathTest, NamesItsLastSegment)
{
    EXPECT_EQ(path("/a/b").name(), "b");
    EXPECT_EQ(path("/a").name(), "a");
    EXPECT_EQ(CMPath().name(), QString());
}

TEST(CMPathTest, HasAParentUpToTheTop)
{
    EXPECT_EQ(path("/a/b").parent(), path("/a"));
    EXPECT_TRUE(path("/a").parent().isEmpty());
    EXPECT_TRUE(CMPath().parent().isEmpty());
}

TEST(CMPathTest, IsReadFromAVariantThatHoldsAPath)
{
    EXPECT_EQ(CMPath::fromQVariant(QVariant::fromValue(path("/a/b"))), path("/a/b"));
    EXPECT_TRUE(CMPath::fromQVariant(QVariant::fromValue(CMPath())).isEmpty());
}

TEST(CMPathTest, IsReadFromAVariantThatHoldsAnAbsoluteText)
{
    EXPECT_EQ(CMPath::fromQVariant(QStringLiteral("/a/b")), path("/a/b"));
    EXPECT_EQ(CMPath::fromQVariant(QStringLiteral("/a//b/")), path("/a/b"));
}

TEST(CMPathTest, IsEmptyWhenReadFromAnUnsuitableVariant)
{
    const QVariantList unsuitable{
        QVariant(),
        5,
        1.5,
        true,
        QStringLiteral(""),
        QStringLiteral("a/b"),
        QByteArray("/a/b"),
        QStringList{"/a"},
        QVariantList{"/a"},
        QVariantHash{{"path", "/a"}},
    };
    for (const QVariant &variant : unsuitable) {
        EXPECT_TRUE(CMPath::fromQVariant(variant).isEmpty()) << variant;
    }
}

TEST(CMPathTest, IsTheSameAfterAVariantHasCarriedIt)
{
    EXPECT_EQ(CMPath::fromQVariant(path("/a/b").toQVariant()), path("/a/b"));
    EXPECT_EQ(path("/a/b").toQVariant(), QVariant(QStringLiteral("/a/b")));
    EXPECT_TRUE(CMPath::fromQVariant(CMPath().toQVariant()).isEmpty());
}

TEST(CMPathTest, IsKnownToTheMetaTypeSystemByItsName)
{
    EXPECT_NE(QMetaType::type("CMPath"), int(QMetaType::UnknownType));
}

TEST(CMPathTest, ConvertsToATextWithinAVariant)
{
    EXPECT_EQ(QVariant::fromValue(path("/a/b")).toString(), "/a/b");
}

TEST(CMPathTest, IsWrittenToAStreamAsItsText)
{
    std::ostringstream stream;
    stream << path("/a/b") << '|' << CMPath() << '|';
    EXPECT_EQ(stream.str(), "/a/b||");
}

TEST(CMPathTest, IsBelowEveryPathThatItStartsWith)
{
    const CMPath path("/a/b/c");
    EXPECT_TRUE(path.isBelow(CMPath("/a/b")));
    EXPECT_TRUE(path.isBelow(CMPath("/a")));
    EXPECT_TRUE(path.isBelow(CMPath()));
    EXPECT_FALSE(path.isBelow(path));
    EXPECT_FALSE(path.isBelow(CMPath("/a/b/c/d")));
    EXPECT_FALSE(path.isBelow(CMPath("/a/bb")));
    EXPECT_FALSE(CMPath("/ab/c").isBelow(CMPath("/a")));
    EXPECT_FALSE(CMPath().isBelow(CMPath()));
}

TEST(CMPathTest, IsBelowTheSamePathsHoweverItWasMade)
{
    const CMPath joined = CMPath("/a/b") + "c";
    EXPECT_TRUE(joined.isBelow(CMPath("/a/b")));
    EXPECT_TRUE(joined.isBelow(CMPath("/a") + "b"));
    EXPECT_TRUE(joined.isBelow(CMPath("/a")));
    EXPECT_FALSE(joined.isBelow(joined));
    EXPECT_FALSE(joined.isBelow(CMPath("/a/b/c")));
    EXPECT_FALSE(joined.isBelow(CMPath("/x/y")));
    EXPECT_FALSE((CMPath("/a") + "bcd").isBelow(CMPath("/a/b")));
}
