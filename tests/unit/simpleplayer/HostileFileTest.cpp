// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Files that are made to keep a player busy: they take little space, but claim to be huge.

#include "PlayerTest.h"
#include "support/LogCapture.h"
#include "support/Sanitized.h"
#include <simpleplayer/UriSimplePlayer.h>

#include <QElapsedTimer>
#include <QFile>
#include <QtEndian>

#include <gmock/gmock.h>
#include <ogg/ogg.h>

#include <chrono>
#include <ctime>
#include <utility>
#include <vector>

using testing::HasSubstr;

namespace {

constexpr qint64 gibibyte = qint64(1) << 30;

/// Far longer than an interruption takes, and far shorter than reading such a file.
constexpr int promptMs = 3000;

/// Where the second page of an Ogg file begins.
int secondPage(const QByteArray &ogg)
{
    return ogg.indexOf("OggS", 1);
}

/// The headers of an Ogg file, which end where the third page does.
QByteArray oggHeaders(const QByteArray &ogg)
{
    return ogg.left(ogg.indexOf("OggS", secondPage(ogg) + 1));
}

/// With the right checksum.
QByteArray pageOf(QByteArray header, QByteArray body)
{
    ogg_page page{};
    page.header = reinterpret_cast<unsigned char *>(header.data());
    page.header_len = header.size();
    page.body = reinterpret_cast<unsigned char *>(body.data());
    page.body_len = body.size();
    ogg_page_checksum_set(&page);
    return header + body;
}

/// Pages of one packet that has no end.
QByteArray endlessPacket(const QByteArray &ogg, int pages)
{
    constexpr int largestPage = 255 * 255;
    QByteArray all;
    const QByteArray body(largestPage, 'x');
    for (int i = 0; i < pages; ++i) {
        const qint32 number = qToLittleEndian(2 + i);
        QByteArray header = ogg.left(18) +
                            QByteArray(reinterpret_cast<const char *>(&number), sizeof number) +
                            ogg.mid(22, 4) + QByteArray(256, char(255));
        header[5] = char(i == 0 ? 0 : 1); // continues the packet
        all += pageOf(header, body);
    }
    return all;
}

constexpr int tagBytes = 200 << 20;
constexpr int tagHeaderBytes = 10;

/// The beginning of an ID3 tag that holds one long text.
QByteArray largeTag()
{
    QByteArray tag("ID3\3\0\0", 6);
    for (int shift = 21; shift >= 0; shift -= 7) {
        tag += char(tagBytes >> shift & 0x7f);
    }
    tag += QByteArray("TIT2\0\0\0\0\0\0", 10);
    qToBigEndian(quint32(tagBytes - 10), tag.data() + 14);
    return tag;
}

/// The packets of a Vorbis file, written bit by bit.
class VorbisFile
{
public:
    VorbisFile() { ogg_stream_init(&m_stream, 1); }
    ~VorbisFile() { ogg_stream_clear(&m_stream); }
    VorbisFile(const VorbisFile &) = delete;
    VorbisFile &operator=(const VorbisFile &) = delete;

    /// Numbers and how many bits each takes.
    using Bits = std::vector<std::pair<unsigned long, int>>;

    void addHeader(int type, const Bits &numbers)
    {
        oggpack_buffer buffer{};
        oggpack_writeinit(&buffer);
        oggpack_write(&buffer, type, 8);
        for (const char character : {'v', 'o', 'r', 'b', 'i', 's'}) {
            oggpack_write(&buffer, character, 8);
        }
        for (const auto &[number, bits] : numbers) {
            oggpack_write(&buffer, number, bits);
        }
        ogg_packet packet{};
        packet.packet = oggpack_get_buffer(&buffer);
        packet.bytes = oggpack_bytes(&buffer);
        packet.b_o_s = type == 1 ? 1 : 0;
        ogg_stream_packetin(&m_stream, &packet);
        oggpack_writeclear(&buffer);
        flush();
    }

    /// Silence.
    void addSound()
    {
        constexpr int packets = 200;
        constexpr int framesOfPacket = 128;
        unsigned char empty = 0;
        for (int i = 1; i <= packets; ++i) {
            ogg_packet packet{};
            packet.packet = &empty;
            packet.bytes = 1;
            packet.e_o_s = i == packets ? 1 : 0;
            packet.granulepos = framesOfPacket * i;
            ogg_stream_packetin(&m_stream, &packet);
        }
        flush();
    }

    const QByteArray &bytes() const { return m_bytes; }

private:
    void flush()
    {
        ogg_page page{};
        while (ogg_stream_flush(&m_stream, &page) != 0) {
            m_bytes.append(reinterpret_cast<const char *>(page.header), int(page.header_len));
            m_bytes.append(reinterpret_cast<const char *>(page.body), int(page.body_len));
        }
    }

    ogg_stream_state m_stream{};
    QByteArray m_bytes;
};

/// The file with another head: of so many streams, one of which is heard, and with so many frames before the first one.
QByteArray withStreams(const QByteArray &opus, int streams, quint16 skipped)
{
    constexpr int skippedAt = 10;
    constexpr int streamsAt = 19;
    QByteArray head("OpusHead\1\1\0\0\x80\xbb\0\0\0\0\xff\0\0\0", 22);
    qToLittleEndian(skipped, head.data() + skippedAt);
    head[streamsAt] = char(streams);
    return pageOf(opus.left(26) + char(1) + char(head.size()), head) + opus.mid(secondPage(opus));
}

/// Beginnings of large pages with a wrong checksum, one in another.
QByteArray brokenPages(const QByteArray &ogg, int bytes)
{
    const QByteArray page = ogg.left(26) + QByteArray(256, char(255));
    return page.repeated(bytes / page.size());
}

/// A file without a fault, with so many codebooks whose entries all have codewords of so many bits. The first of them
/// classifies so many residues.
QByteArray vorbisWithCodebooks(unsigned long count, unsigned codewordBits,
                               unsigned long residues = 1)
{
    VorbisFile file;
    file.addHeader(1, {{0, 32}, {1, 8}, {48000, 32}, {0, 32}, {0, 32}, {0, 32}, {0x88, 8}, {1, 1}});
    file.addHeader(3, {{0, 32}, {0, 32}, {1, 1}});
    VorbisFile::Bits setup{{count - 1, 8}};
    const auto add = [&setup](const VorbisFile::Bits &more) {
        setup.insert(setup.end(), more.begin(), more.end());
    };
    for (unsigned long i = 0; i < count; ++i) {
        const auto entries = 1UL << codewordBits;
        add({{0x564342, 24}, {1, 16}, {entries, 24}, {1, 1}, {codewordBits - 1, 5}});
        add({{entries, int(codewordBits) + 1}, {0, 4}});
    }
    add({{0, 6}, {0, 16}});                         // time
    add({{0, 6}, {1, 16}, {0, 5}, {0, 2}, {4, 4}}); // floor
    add({{residues - 1, 6}});
    for (unsigned long i = 0; i < residues; ++i) {
        add({{0, 16}, {0, 24}, {0, 24}, {0, 24}, {0, 6}, {0, 8}, {0, 3}, {0, 1}});
    }
    add({{0, 6}, {0, 16}, {0, 1}, {0, 1}, {0, 2}, {0, 8}, {0, 8}, {0, 8}}); // mapping
    add({{0, 6}, {0, 1}, {0, 16}, {0, 16}, {0, 8}, {1, 1}});                // mode
    file.addHeader(5, setup);
    file.addSound();
    return file.bytes();
}

} // namespace

class HostileFileTest : public PlayerTest
{
protected:
    /// A file that begins with these bytes and goes on with zeros, which take no space on disk.
    QString sparse(const QByteArray &head, qint64 size)
    {
        QString file = path("huge");
        writeFile(file, head);
        EXPECT_TRUE(QFile::resize(file, size));
        return file;
    }

    QByteArray encoded(int format)
    {
        writeSound(path("sound"), format, rate, sineSamples(24000, rate, 1000));
        return readFile(path("sound"));
    }
    QByteArray vorbis() { return encoded(SF_FORMAT_OGG | SF_FORMAT_VORBIS); }
    QByteArray mp3() { return encoded(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III); }

    /// A RIFF header that promises as much as it can, and some bytes.
    static QByteArray riff(const QByteArray &chunks)
    {
        QByteArray head("RIFF\0\0\0\0WAVE", 12);
        qToLittleEndian(quint32(0x7fffe000), head.data() + 4);
        return head + chunks;
    }

    /// A file whose beginning takes longer than it may.
    QString late()
    {
        constexpr int bytes = 14 << 20;
        const QByteArray ogg = vorbis();
        writeFile(path("late"), oggHeaders(ogg) + brokenPages(ogg, bytes) + ogg);
        return path("late");
    }

    /// Plays the file, interrupts it with another sound, and destroys its player.
    void expectInterrupted(const QString &file)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        {
            UriSimplePlayer hostile(file, QStringLiteral("hostile"), QStringLiteral("plain"),
                                    nullptr);
            if (hostile.play()) {
                hostile.pause();
            }
            EXPECT_LT(elapsed.elapsed(), promptMs);
            UriSimplePlayer urgent(counting(), QStringLiteral("urgent"), QStringLiteral("plain"),
                                   nullptr);
            ASSERT_TRUE(urgent.play());
            EXPECT_TRUE(hasHeard(1));
            hostile.play();
            elapsed.restart();
        }
        EXPECT_LT(elapsed.elapsed(), promptMs);
    }

    void expectRefused(const QString &file, const std::string &reason)
    {
        m_devices.forget();
        const LogCapture log("SimplePlayer");
        UriSimplePlayer player(file, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
        EndSpy end(player);
        if (player.play()) {
            ASSERT_TRUE(end.hasEndedOnce());
        }
        ASSERT_EQ(log.countAt(log4cplus::ERROR_LOG_LEVEL), 1);
        EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL)[0], HasSubstr(reason));
        EXPECT_EQ(heard(), std::vector<float>());
    }

    void expectLittleMemory(const QString &file)
    {
        if (sanitized) {
            GTEST_SKIP() << "The sanitizer keeps memory that was freed";
        }
        constexpr long maxGrowthKb = 48 << 10;
        UriSimplePlayer player(file, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
        EndSpy end(player);
        peakMemoryKb();
        const long before = peakMemoryKb();
        if (player.play()) {
            EXPECT_TRUE(end.hasEndedOnce());
        }
        EXPECT_LT(peakMemoryKb(), before + maxGrowthKb);
    }
};

TEST_F(HostileFileTest, ARiffHeaderWithZerosBehindItIsRefused)
{
    const QString file = sparse(riff({}), 4 * gibibyte);
    expectInterrupted(file);
    expectRefused(file, "is damaged: no samples follow its first 64 chunks");
}

TEST_F(HostileFileTest, ARiffHeaderWithoutALengthAndManyEmptyChunksCanBeInterrupted)
{
    QByteArray chunks;
    for (int i = 0; i < 1'000'000; ++i) {
        chunks += QByteArray("junk\0\0\0\0", 8);
    }
    QByteArray head = riff(chunks);
    qToLittleEndian(quint32(0), head.data() + 4);
    expectInterrupted(sparse(head, 4 * gibibyte));
}

TEST_F(HostileFileTest, AListBeforeTheSamplesThatClaimsGigabytesIsRefused)
{
    QByteArray head = riff(QByteArray("LIST\x66\xff\xff\xff", 8) + QByteArray(80, '\xff'));
    qToLittleEndian(quint32(0), head.data() + 4);
    writeFile(path("huge"), head);
    expectRefused(path("huge"), "holds no sound: it has no samples");
}

TEST_F(HostileFileTest, AListBehindTheSamplesThatClaimsGigabytesIsNotRead)
{
    QByteArray sound = readFile(counting());
    sound += QByteArray("LIST\x66\xff\xff\xff", 8) + QByteArray(80, '\xff');
    writeFile(path("huge"), sound);
    UriSimplePlayer player(path("huge"), QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    EndSpy end(player);
    ASSERT_TRUE(player.play());
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(HostileFileTest, AnOggPageWithZerosBehindItIsRefused)
{
    const QByteArray ogg = vorbis();
    const QString file = sparse(ogg.left(secondPage(ogg)), 64 * gibibyte);
    expectInterrupted(file);
    expectRefused(file, "is cut off or damaged at its beginning");
}

TEST_F(HostileFileTest, OggHeadersWithZerosBehindThemCanBeInterrupted)
{
    for (const int codec : {SF_FORMAT_VORBIS, SF_FORMAT_OPUS}) {
        const QByteArray ogg = encoded(SF_FORMAT_OGG | codec);
        expectInterrupted(sparse(oggHeaders(ogg), 64 * gibibyte));
        expectInterrupted(sparse(ogg, 64 * gibibyte));
    }
}

TEST_F(HostileFileTest, AnMp3WithZerosBehindItCanBeInterrupted)
{
    expectInterrupted(sparse(mp3(), 64 * gibibyte));
    expectInterrupted(sparse("ID3", 64 * gibibyte));
}

TEST_F(HostileFileTest, AFlacWithZerosBehindItCanBeInterrupted)
{
    const QByteArray flac = encoded(SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    expectInterrupted(sparse(flac, 64 * gibibyte));
    expectInterrupted(sparse(flac.left(42), 64 * gibibyte));
}

TEST_F(HostileFileTest, CodebooksThatTakeMoreThanTheStackAreRefused)
{
    writeFile(path("huge"), vorbisWithCodebooks(1, 22));
    expectRefused(path("huge"), "is cut off or damaged at its beginning");
}

TEST_F(HostileFileTest, ManyLargeCodebooksAreRefused)
{
    writeFile(path("huge"), vorbisWithCodebooks(256, 15));
    expectRefused(path("huge"), "is cut off or damaged at its beginning");
}

TEST_F(HostileFileTest, ManyResiduesOfALargeCodebookAreRefused)
{
    writeFile(path("huge"), vorbisWithCodebooks(1, 15, 64));
    expectRefused(path("huge"), "is cut off or damaged at its beginning");
}

TEST_F(HostileFileTest, SmallCodebooksAreNot)
{
    writeFile(path("huge"), vorbisWithCodebooks(2, 10, 64));
    UriSimplePlayer player(path("huge"), QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    EndSpy end(player);
    EXPECT_TRUE(player.play());
    EXPECT_TRUE(end.hasEndedOnce());
}

TEST_F(HostileFileTest, ManyOpusStreamsAreRefused)
{
    const QByteArray opus = encoded(SF_FORMAT_OGG | SF_FORMAT_OPUS);
    for (const auto &[streams, skipped] : {std::pair(9, 0), std::pair(8, 65535)}) {
        writeFile(path("many"), withStreams(opus, streams, quint16(skipped)));
        expectRefused(path("many"), "is cut off or damaged at its beginning");
    }
    writeFile(path("one"), withStreams(opus, 1, 300));
    UriSimplePlayer player(path("one"), QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    EXPECT_TRUE(player.play());
}

TEST_F(HostileFileTest, OggPagesThatTakeLongToCheckEndTheSound)
{
    expectRefused(late(), "takes too long");
}

TEST_F(HostileFileTest, OggPagesThatTakeLongToCheckKeepNobodyWaiting)
{
    const QString file = late();
    constexpr std::chrono::milliseconds most(50); // half of what the sound may take
    const std::clock_t before = std::clock();
    {
        UriSimplePlayer player(file, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
        EXPECT_TRUE(player.play());
    }
    EXPECT_LT((std::clock() - before) * std::milli::den / CLOCKS_PER_SEC, most.count());
}

TEST_F(HostileFileTest, AnOggPacketWithoutEndTakesLittleMemory)
{
    constexpr int pages = 1500; // 97 MB
    const QByteArray ogg = vorbis();
    for (const QByteArray &head : {ogg.left(secondPage(ogg)), oggHeaders(ogg)}) {
        writeFile(path("huge"), head + endlessPacket(ogg, pages));
        expectLittleMemory(path("huge"));
    }
}

TEST_F(HostileFileTest, AnMp3WithALargeTagBeforeItsFramesPlays)
{
    const QByteArray frames = mp3();
    writeFile(path("huge"), largeTag());
    QFile file(path("huge"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(tagHeaderBytes + tagBytes));
    ASSERT_EQ(file.write(frames), frames.size());
    file.close();
    expectLittleMemory(path("huge"));
}

TEST_F(HostileFileTest, ALargeTagBetweenTheFramesOfAnMp3TakesLittleMemory)
{
    writeFile(path("huge"), mp3() + largeTag());
    ASSERT_TRUE(QFile::resize(path("huge"), gibibyte));
    expectLittleMemory(path("huge"));
}

TEST_F(HostileFileTest, TheFaultsOfAnMp3WriteNothingToStandardError)
{
    QByteArray faults = mp3();
    for (int i = 0; i < 100; ++i) {
        faults += QByteArray("ID3\3\0\0\0\0\0\14TIT2\0\0\0\2\0\0\11x",
                             22); // an encoding that does not exist
        faults += mp3().mid(1000, 2000);
    }
    writeFile(path("faulty"), faults);
    UriSimplePlayer player(path("faulty"), QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    EndSpy end(player);
    testing::internal::CaptureStderr();
    const bool plays = player.play();
    const bool ended = plays && end.hasEndedOnce();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(ended);
}
