// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Files that are opened before they are played.

#include "PlayerTest.h"
#include "support/HangingPage.h"
#include <simpleplayer/OpenedSound.h>
#include <simpleplayer/StreamSimplePlayer.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

/// A FIFO that is open for reading, and whose writer can keep it locked.
class LockedFifo
{
public:
    explicit LockedFifo(const QString &path)
        : m_path(path)
    {
        EXPECT_EQ(mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
        m_opened = OpenedSound::open(m_path);
    }
    ~LockedFifo() { unlock(); }
    LockedFifo(const LockedFifo &) = delete;
    LockedFifo &operator=(const LockedFifo &) = delete;

    bool isPermitted() const { return m_page.isPermitted(); }

    int open() const { return OpenedSound::openForReading(m_path); }

    void lock()
    {
        m_writer = std::thread([this] {
            const int writing = ::open(QFile::encodeName(m_path).constData(), O_WRONLY | O_CLOEXEC);
            (void)!::write(writing, m_page.data(), 1);
            ::close(writing);
        });
        m_page.waitForReader();
    }

    void unlock()
    {
        if (m_writer.joinable()) {
            m_page.release();
            m_writer.join();
        }
    }

private:
    const QString m_path;
    const HangingPage m_page;
    std::optional<OpenedSound> m_opened;
    std::thread m_writer;
};

} // namespace

class OpenedSoundTest : public PlayerTest
{
protected:
    OpenedSoundTest()
    {
        EXPECT_TRUE(QDir(m_folder.path()).mkdir("folder"));
        QFile::rename(counting(), file());
    }

    QString file() const { return m_folder.filePath("folder/sound.wav"); }

    /// Replaces the file by another sound.
    void replace(int frames = 100) const
    {
        QFile::remove(file());
        writeSound(file(), wav, rate, std::vector<short>(std::size_t(frames), 77));
    }

    std::vector<float> played()
    {
        m_devices.forget();
        UriSimplePlayer player(file(), QStringLiteral("id"), QStringLiteral("plain"), nullptr);
        EndSpy end(player);
        EXPECT_TRUE(player.play());
        EXPECT_TRUE(end.hasEndedOnce());
        EXPECT_EQ(end.ended.count(), 1) << end.error();
        return heard();
    }

    static int descriptors()
    {
        return int(QDir("/proc/self/fd").entryList(QDir::Files | QDir::System).size());
    }
};

TEST_F(OpenedSoundTest, IsPlayedEvenIfItsFileIsReplaced)
{
    const auto opened = OpenedSound::open(file());
    ASSERT_TRUE(opened && opened->isRegularFile());
    replace();
    EXPECT_EQ(played(), countingFloats());
}

TEST_F(OpenedSoundTest, IsPlayedEvenIfItsFileIsDeleted)
{
    const auto opened = OpenedSound::open(file());
    QFile::remove(file());
    EXPECT_EQ(played(), countingFloats());
}

TEST_F(OpenedSoundTest, CountsNoLongerOnceItIsDestroyed)
{
    {
        const auto opened = OpenedSound::open(file());
        replace();
    }
    EXPECT_EQ(played().size(), 100U);
}

TEST_F(OpenedSoundTest, GivesWayToTheFileOpenedLast)
{
    const auto first = OpenedSound::open(file());
    replace(100);
    auto second = OpenedSound::open(file());
    replace(200);
    EXPECT_EQ(played().size(), 100U);
    second.reset();
    EXPECT_EQ(played(), countingFloats());
}

TEST_F(OpenedSoundTest, SharesOneDescriptorForOneFile)
{
    const int before = descriptors();
    std::vector<std::optional<OpenedSound>> many;
    for (int i = 0; i < 100; ++i) {
        many.push_back(OpenedSound::open(file()));
    }
    EXPECT_EQ(descriptors(), before + 1);
    many.clear();
    EXPECT_EQ(descriptors(), before);
}

TEST_F(OpenedSoundTest, IsClosedAlsoIfItsFileIsDeleted)
{
    const auto isHeld = [this] {
        const QFileInfoList all = QDir("/proc/self/fd").entryInfoList(QDir::Files | QDir::System);
        return std::any_of(all.begin(), all.end(), [this](const QFileInfo &descriptor) {
            return descriptor.symLinkTarget().startsWith(file());
        });
    };
    auto opened = OpenedSound::open(file());
    QFile::remove(file());
    EXPECT_TRUE(isHeld());
    opened.reset();
    EXPECT_TRUE(waitFor([&isHeld] { return !isHeld(); }));
}

TEST_F(OpenedSoundTest, IsClosedWithoutWaitingForTheWriterOfAFifo)
{
    LockedFifo fifo(path("fifo"));
    if (!fifo.isPermitted()) {
        GTEST_SKIP() << "not permitted";
    }
    const int reading = fifo.open();
    fifo.lock();
    OpenedSound::close(reading);
}

TEST_F(OpenedSoundTest, IsRefusedWhileSixteenOfItsOwnerWaitToBeClosed)
{
    LockedFifo fifo(path("fifo"));
    if (!fifo.isPermitted()) {
        GTEST_SKIP() << "not permitted";
    }
    std::array<int, 16> reading{};
    std::generate(reading.begin(), reading.end(), [&fifo] { return fifo.open(); });
    fifo.lock();
    const auto half = reading.begin() + reading.size() / 2;
    std::for_each(reading.begin(), half, OpenedSound::close);
    EXPECT_TRUE(OpenedSound::open(file()));
    std::for_each(half, reading.end(), OpenedSound::close);
    EXPECT_FALSE(OpenedSound::open(file()));
    fifo.unlock();
    EXPECT_TRUE(waitFor([this] { return OpenedSound::open(file()).has_value(); }));
}

TEST_F(OpenedSoundTest, TellsWhereItIsWithoutLinks)
{
    ASSERT_TRUE(QFile::link(file(), path("link.wav")));
    const auto opened = OpenedSound::open(path("link.wav"));
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened->path(), QFileInfo(file()).canonicalFilePath());
}

TEST_F(OpenedSoundTest, HasAPlace)
{
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    EXPECT_FALSE(OpenedSound::open("/proc/self/fd/" + QString::number(pipe[0])));
    ::close(pipe[0]);
    ::close(pipe[1]);
    const int deleted = ::open(QFile::encodeName(file()).constData(), O_RDONLY | O_CLOEXEC);
    QFile::remove(file());
    EXPECT_FALSE(OpenedSound::open("/proc/self/fd/" + QString::number(deleted)));
    ::close(deleted);
    EXPECT_FALSE(OpenedSound::open(path("missing.wav")));
    EXPECT_FALSE(OpenedSound::open(file() + "/below"));
}

TEST_F(OpenedSoundTest, OfAFifoDoesNotCountAsItsReader)
{
    const QByteArray fifo = QFile::encodeName(path("fifo"));
    ASSERT_EQ(mkfifo(fifo.constData(), 0600), 0);
    const auto opened = OpenedSound::open(path("fifo"));
    ASSERT_TRUE(opened && opened->isFifo());
    EXPECT_EQ(::open(fifo.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC), -1);
    EXPECT_EQ(errno, ENXIO);
}

TEST_F(OpenedSoundTest, OfAFifoIsPlayedEvenIfItIsMoved)
{
    const QByteArray fifo = QFile::encodeName(path("fifo"));
    ASSERT_EQ(mkfifo(fifo.constData(), 0600), 0);
    const auto opened = OpenedSound::open(path("fifo"));
    ASSERT_TRUE(QFile::rename(path("fifo"), path("moved")));
    StreamSimplePlayer player(path("fifo"), QStringLiteral("audio/x-raw;format=S16LE;rate=48000"),
                              QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    EndSpy end(player);
    ASSERT_TRUE(player.play());
    writeFile(path("moved"), QByteArray(2000, '\1'));
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_EQ(heard().size(), 1000U);
}
