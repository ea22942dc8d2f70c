// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryTest.h"

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>

#include <random>
#include <sqlite3.h>

using testing::Contains;
using testing::ElementsAre;
using testing::Gt;
using testing::IsEmpty;
using testing::SizeIs;

namespace {
constexpr qint64 versionAt = 60; // in the header of the file

class DamageTest : public HistoryTest
{
protected:
    /// Writes a history that has some pages, and ends it.
    void makeFile(int count)
    {
        start();
        for (int i = 0; i < count; ++i) {
            history->add(entry(QString::number(i), "some words to find"_s));
        }
        history.reset();
    }

    QByteArray content() const
    {
        QFile file(settings.file);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void setContent(const QByteArray &content) const
    {
        QFile file(settings.file);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    QStringList putAside() const
    {
        return QDir(folder.path()).entryList({"history.db.damaged-*"_s}, QDir::Files, QDir::Name);
    }

    /// Uses everything that is in the file, and adds an entry that must still be there after a restart.
    void expectUsable()
    {
        start();
        HistoryQuery query;
        query.limit = HistoryQuery::maxLimit;
        for (const char *text : {"", "some words"}) {
            query.text = text;
            query.before = 0;
            do {
                const Result<HistoryPage> result = answer(query);
                const auto *page = std::get_if<HistoryPage>(&result);
                query.before = page ? page->next : 0;
            } while (query.before != 0);
        }
        history->markSeen(std::numeric_limits<qint64>::max());
        history->add(entry("New"_s));
        history.reset();
        start();
        EXPECT_THAT(search("new"_s), Contains("New"_s));
    }

    /// Nothing is remembered, and the file stays as it is.
    void expectUntouched(const QString &why)
    {
        const QByteArray before = content();
        start();
        history->add(entry("New"_s));
        EXPECT_TRUE(waitFor([&] { return !failed->isEmpty(); }));
        EXPECT_TRUE(failed->first().first().toString().contains(why));
        EXPECT_TRUE(std::holds_alternative<Failure>(answer({})));
        history.reset();
        EXPECT_EQ(content(), before);
        EXPECT_THAT(putAside(), IsEmpty());
    }
};
} // namespace

TEST_F(DamageTest, AFileThatIsNoDatabaseIsPutAsideAndANewOneBegun)
{
    const QByteArray garbage(5000, 'x');
    setContent(garbage);
    start();
    history->add(entry("New"_s));
    EXPECT_THAT(titles(), ElementsAre("New"_s));
    EXPECT_THAT(*damaged, SizeIs(1));
    EXPECT_THAT(*failed, IsEmpty());
    ASSERT_THAT(putAside(), SizeIs(1));
    EXPECT_TRUE(damaged->first().first().toString().contains(putAside().first()));
    QFile file(folder.filePath(putAside().first()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), garbage);
    start();
    EXPECT_THAT(titles(), ElementsAre("New"_s));
    EXPECT_THAT(*damaged, IsEmpty());
}

TEST_F(DamageTest, AFileThatHasBeenCutIsPutAside)
{
    makeFile(1000);
    const QByteArray whole = content();
    ASSERT_THAT(whole.size(), Gt(100000));
    setContent(whole.left(whole.size() / 2));
    expectUsable();
    EXPECT_THAT(putAside(), SizeIs(1));
}

TEST_F(DamageTest, AnEmptyFileIsANewOne)
{
    setContent({});
    expectUsable();
    EXPECT_THAT(putAside(), IsEmpty());
}

TEST_F(DamageTest, WhateverBytesAreWrongTheHistoryGoesOn)
{
    constexpr int files = 12;
    makeFile(200);
    const QByteArray whole = content();
    std::mt19937 random(7);
    for (int i = 0; i < files; ++i) {
        QByteArray wrong = whole;
        // Not in the header, which says whose file it is.
        std::uniform_int_distribution<int> place(100, wrong.size() - 1);
        for (int left = 1 << (i % 10); left > 0; --left) {
            wrong[place(random)] = char(random());
        }
        QFile::remove(settings.file + "-wal"_s);
        setContent(wrong);
        SCOPED_TRACE(i);
        expectUsable();
        history.reset();
    }
}

TEST_F(DamageTest, TheLastThreeDamagedFilesAreKept)
{
    for (int i = 0; i < 5; ++i) {
        setContent(QByteArray(1000, char('a' + i)));
        start();
        EXPECT_THAT(titles(), IsEmpty());
        history.reset();
    }
    ASSERT_THAT(putAside(), SizeIs(3));
    QFile file(folder.filePath(putAside().first()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.read(1), "c");
}

TEST_F(DamageTest, AFileOfANewerVersionStaysAsItIs)
{
    makeFile(10);
    QByteArray newer = content();
    newer[int(versionAt) + 3] = 2;
    setContent(newer);
    expectUntouched("newer version"_s);
}

TEST_F(DamageTest, ADatabaseOfAnotherProgramStaysAsItIs)
{
    sqlite3 *database = nullptr;
    ASSERT_EQ(sqlite3_open(QFile::encodeName(settings.file).constData(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, "CREATE TABLE theirs(a); INSERT INTO theirs VALUES(1)",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(database);
    expectUntouched("another program"_s);
}
