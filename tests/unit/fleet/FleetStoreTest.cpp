// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <base/sqlite/Sqlite.h>
#include <base/sqlite/SqliteError.h>

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fleet/store/FleetStore.h>

class FleetStoreTest : public testing::Test
{
protected:
    FleetStore &store()
    {
        if (!m_store) {
            m_store = std::make_unique<FleetStore>(m_file);
        }
        return *m_store;
    }

    /// As after the end of the program.
    FleetStore &reopened()
    {
        m_store.reset();
        return store();
    }

    static StoredCall call(const QString &id)
    {
        StoredCall call;
        call.id = id;
        call.call = "{}";
        call.group = "all";
        call.forgetAfter = 100;
        return call;
    }

    static OutgoingMessage message(const QByteArray &payload, qint64 expires)
    {
        return {0, "topic", payload, expires};
    }

    StoreChanges write(StoreChanges changes)
    {
        store().write(changes);
        return changes;
    }

    void add(const QByteArray &payload, qint64 expires)
    {
        write({{}, {}, {}, {message(payload, expires)}, {}});
    }

    const qint64 m_later = QDateTime::currentMSecsSinceEpoch() + 1000000;
    QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath("new/fleet.db");
    std::unique_ptr<FleetStore> m_store;
};

TEST_F(FleetStoreTest, ACallIsRememberedInEachOfItsStates)
{
    write({{call("a")}, {}, {}, {}, {}});
    ASSERT_EQ(reopened().begun().size(), 1U);
    EXPECT_EQ(store().begun()[0].group, "all");
    StoredCall answered = call("a");
    answered.answer = "shown";
    answered.path = "/m/1";
    answered.isOpen = true;
    const auto messages = write({{}, {answered}, {}, {message("shown", m_later)}, {}}).messages;
    EXPECT_GT(messages[0].number, 0);
    EXPECT_TRUE(reopened().begun().empty());
    ASSERT_EQ(store().open().size(), 1U);
    EXPECT_EQ(store().open()[0].path, "/m/1");
    ASSERT_EQ(store().outgoing(0, 10).size(), 1U);
    store().remove(messages[0].number);
    write({{}, {}, {"a"}, {message("ended", m_later)}, {}});
    EXPECT_TRUE(reopened().open().empty());
    EXPECT_EQ(store().outgoing(0, 10).at(0).payload, "ended");
    ASSERT_TRUE(store().find("a"));
    EXPECT_EQ(store().find("a")->answer, "shown");
    store().tidy(101);
    EXPECT_FALSE(store().find("a"));
}

TEST_F(FleetStoreTest, WhatIsWrittenTogetherIsWrittenWhollyOrNotAtAll)
{
    const QByteArray tooLarge(2 << 20, 'x');
    StoreChanges changes{
        {call("a")}, {}, {}, {message("shown", m_later), message(tooLarge, m_later)}, {}};
    EXPECT_THROW(store().write(changes), SqliteError);
    EXPECT_FALSE(store().find("a"));
    EXPECT_TRUE(reopened().outgoing(0, 1).empty());
}

TEST_F(FleetStoreTest, ACallThatIsThereStaysAsItIs)
{
    write({{call("a")}, {}, {}, {}, {}});
    StoredCall other = call("a");
    other.group = "other";
    EXPECT_EQ(write({{other, call("b")}, {}, {}, {}, {}}).known, std::vector<QString>{"a"});
    EXPECT_EQ(store().find("a")->group, "all");
    EXPECT_TRUE(store().find("b"));
}

TEST_F(FleetStoreTest, TheExpiredGoFirstWhenThereAreTooManyMessages)
{
    add("expired", 1);
    const auto kept = write({{}, {}, {}, {message("kept", m_later)}, {}}).messages[0];
    for (int i = 2; i < FleetStore::maxOutgoing; ++i) {
        add("more", m_later);
    }
    EXPECT_EQ(store().dropped(), 0);
    add("last", m_later);
    EXPECT_EQ(store().dropped(), 1);
    EXPECT_EQ(store().outgoing(0, 1).at(0).number, kept.number);
    add("one too many", m_later);
    EXPECT_GT(store().dropped(), 1);
    EXPECT_GT(store().outgoing(0, 1).at(0).number, kept.number);
}

TEST_F(FleetStoreTest, ManyBytesAreTooManyAsWell)
{
    const QByteArray large(FleetStore::maxOutgoingBytes / 8, 'x');
    for (int i = 0; i < 20; ++i) {
        add(large, m_later);
    }
    EXPECT_LE(store().outgoing(0, 100).size(), 8U);
    EXPECT_GE(store().dropped(), 12);
}

TEST_F(FleetStoreTest, ADamagedFileIsPutAside)
{
    write({{call("a")}, {}, {}, {}, {}});
    m_store.reset();
    QFile file(m_file);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(8192, 'x'));
    file.close();
    EXPECT_FALSE(store().damage().isEmpty());
    EXPECT_FALSE(store().find("a"));
    EXPECT_TRUE(QFile::exists(m_file + ".damaged"));
}

TEST_F(FleetStoreTest, AFileWithLargerPagesIsUsedAsItIs)
{
    write({{call("a")}, {}, {}, {message("shown", m_later)}, {}});
    m_store.reset();
    {
        Sqlite file(m_file);
        file.execute("PRAGMA journal_mode = DELETE; PRAGMA page_size = 4096; VACUUM");
        ASSERT_EQ(file.number("PRAGMA page_size"), 4096);
    }
    write({{call("a"), call("b")}, {}, {}, {message("shown", m_later)}, {}});
    EXPECT_EQ(reopened().begun().size(), 2U);
    EXPECT_EQ(store().outgoing(0, 10).size(), 2U);
    EXPECT_TRUE(store().damage().isEmpty());
    m_store.reset();
    EXPECT_EQ(Sqlite(m_file).number("PRAGMA page_size"), 4096);
}

TEST_F(FleetStoreTest, TwoCannotUseTheSameFile)
{
    store();
    EXPECT_THROW(FleetStore{m_file}, SqliteError);
}
