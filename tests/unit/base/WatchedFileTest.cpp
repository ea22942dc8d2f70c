// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/WatchedFile.h"

#include "support/EventLoop.h"
#include "support/Text.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {
class WatchedFileTest : public testing::Test
{
protected:
    void watch()
    {
        m_file = std::make_unique<WatchedFile>(name());
        QObject::connect(m_file.get(), &WatchedFile::changed, [this] { ++m_changes; });
        QObject::connect(m_file.get(), &WatchedFile::vanished, [this] { ++m_losses; });
    }

    void write(const QByteArray &content) const
    {
        QFile file(name());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    bool becomes(const QByteArray &content)
    {
        return waitFor([&] { return m_file->content() == content; });
    }

    QString name() const { return m_folder.filePath("a/b/settings.json"_s); }
    QDir folder() const { return QDir(m_folder.path()); }

    QTemporaryDir m_folder;
    std::unique_ptr<WatchedFile> m_file;
    int m_changes = 0;
    int m_losses = 0;
};

TEST_F(WatchedFileTest, IsFoundWhenItAndItsFoldersAreMadeLater)
{
    watch();
    EXPECT_EQ(m_file->content(), QByteArray());
    ASSERT_TRUE(folder().mkpath("a/b"_s));
    write("first");
    EXPECT_TRUE(becomes("first"));
    write("second");
    EXPECT_TRUE(becomes("second"));
    EXPECT_EQ(m_losses, 0);
}

TEST_F(WatchedFileTest, IsFoundWhenItsFoldersAreMadeOneAfterTheOther)
{
    watch();
    ASSERT_TRUE(folder().mkdir("a"_s));
    settle();
    ASSERT_TRUE(folder().mkdir("a/b"_s));
    settle();
    write("text");
    EXPECT_TRUE(becomes("text"));
}

TEST_F(WatchedFileTest, ReportsThatItIsGoneAndBackAgain)
{
    ASSERT_TRUE(folder().mkpath("a/b"_s));
    write("text");
    watch();
    ASSERT_TRUE(QDir(m_folder.filePath("a"_s)).removeRecursively());
    ASSERT_TRUE(waitFor([this] { return m_losses == 1; }));
    EXPECT_EQ(m_file->content(), "text") << "as it last was";
    ASSERT_TRUE(folder().mkpath("a/b"_s));
    write("text");
    EXPECT_TRUE(waitFor([this] { return m_changes == 1; }));
    EXPECT_EQ(m_losses, 1);
}
} // namespace
