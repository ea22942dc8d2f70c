// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/images/PictureReader.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {
class DisplayPictureReaderTest : public testing::Test
{
protected:
    QString write(const QString &name, const QByteArray &content)
    {
        const QString path = m_folder.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path;
    }

    QString writePng(const QString &name, const QSize &size, const QColor &color = Qt::red)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        const QString path = m_folder.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        EXPECT_TRUE(image.save(path));
        return path;
    }

    QImage read(const QString &source, const QSize &size = {64, 64})
    {
        const auto image = readPicture(source, size, {QStringLiteral("mine"), {m_folder.path()}});
        return std::holds_alternative<QImage>(image) ? std::get<QImage>(image) : QImage();
    }

    QImage readSvg(const QByteArray &content)
    {
        return read(write("a.svg", "<svg xmlns=\"http://www.w3.org/2000/svg\" "
                                   "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"32\" "
                                   "height=\"32\">" +
                                       content + "</svg>"));
    }

    QTemporaryDir m_folder;
};

TEST_F(DisplayPictureReaderTest, readsAFileByPathAndByUri)
{
    const QString path = writePng("a b.png", {20, 10});
    EXPECT_EQ(read(path).size(), QSize(20, 10));
    EXPECT_EQ(read(QUrl::fromLocalFile(path).toString()).size(), QSize(20, 10));
    EXPECT_TRUE(read("http://127.0.0.1/a.png").isNull());
    EXPECT_TRUE(read("file://server" + path).isNull());
}

TEST_F(DisplayPictureReaderTest, reducesWhatIsLarge)
{
    EXPECT_EQ(read(writePng("a.png", {640, 320})).size(), QSize(64, 32));
}

TEST_F(DisplayPictureReaderTest, refusesWhatIsNoPicture)
{
    EXPECT_TRUE(read(write("a.png", "no picture")).isNull());
    EXPECT_TRUE(read(write("b.png", {})).isNull());
    EXPECT_TRUE(read(m_folder.path()).isNull());
    EXPECT_TRUE(read("/dev/zero").isNull());
    EXPECT_TRUE(read(m_folder.filePath("missing")).isNull());
    const QString fifo = m_folder.filePath("fifo");
    ASSERT_EQ(mkfifo(qPrintable(fifo), 0600), 0);
    EXPECT_TRUE(read(fifo).isNull());
}

TEST_F(DisplayPictureReaderTest, refusesAPictureThatIsCut)
{
    QFile file(writePng("a.png", {500, 500}));
    ASSERT_TRUE(file.resize(file.size() / 2));
    EXPECT_TRUE(read(file.fileName()).isNull());
}

/// A header that promises 60,000 times 60,000 pixels.
TEST_F(DisplayPictureReaderTest, refusesAPictureThatIsHuge)
{
    QFile file(writePng("a.png", {500, 500}));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.seek(16);
    const QByteArray side("\x00\x00\xEA\x60", 4);
    file.write(side + side);
    file.close();
    EXPECT_TRUE(read(file.fileName()).isNull());
}

TEST_F(DisplayPictureReaderTest, refusesAFileThatIsTooLarge)
{
    QFile file(writePng("a.png", {5, 5}));
    ASSERT_TRUE(file.resize(maxPictureBytes + 1));
    EXPECT_TRUE(read(file.fileName()).isNull());
}

TEST_F(DisplayPictureReaderTest, drawsAnSvgOfShapes)
{
    const QImage image = readSvg("<rect id=\"a\" width=\"32\" height=\"32\" fill=\"#ff0000\"/>");
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.pixelColor(20, 20), QColor(Qt::red));
    EXPECT_FALSE(readSvg("<defs><rect id=\"a\" width=\"9\" height=\"9\"/></defs>"
                         "<use xlink:href=\"#a\"/>")
                     .isNull());
    EXPECT_FALSE(readSvg("<rect id=\"a\" width=\"9\" height=\"9\"/><g id=\"b\">"
                         "<use id=\"c\" xlink:href=\"#a\"/><use id=\"d\" xlink:href=\"#a\"/></g>")
                     .isNull());
}

TEST_F(DisplayPictureReaderTest, refusesAnSvgThatRefersToOthers)
{
    const QByteArray other = writePng("other.png", {20, 10}).toUtf8();
    EXPECT_TRUE(readSvg("<image width=\"9\" height=\"9\" xlink:href=\"" + other + "\"/>").isNull());
    EXPECT_TRUE(readSvg("<use xlink:href=\"http://127.0.0.1/a.svg#a\"/>").isNull());
    EXPECT_TRUE(readSvg("<rect width=\"9\" height=\"9\" fill=\"url(file:///a.svg#b)\"/>").isNull());
    EXPECT_TRUE(readSvg("<style>@import 'http://127.0.0.1/a.css';</style>").isNull());
    EXPECT_TRUE(read(write("b.svg", "<?xml-stylesheet href=\"a.css\"?><svg "
                                    "xmlns=\"http://www.w3.org/2000/svg\"/>"))
                    .isNull());
    EXPECT_TRUE(
        read(write("c.svg", "<!DOCTYPE svg [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><svg "
                            "xmlns=\"http://www.w3.org/2000/svg\">&a;</svg>"))
            .isNull());
}

TEST_F(DisplayPictureReaderTest, refusesAnSvgThatIsTooComplex)
{
    EXPECT_TRUE(
        readSvg(QByteArray("<g>").repeated(1000) + QByteArray("</g>").repeated(1000)).isNull());
    EXPECT_TRUE(readSvg(QByteArray("<rect/>").repeated(100'000)).isNull());
}

TEST_F(DisplayPictureReaderTest, refusesAJpegOfManyScans)
{
    QImage image({64, 64}, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    QImageWriter writer(&buffer, "jpeg");
    writer.setProgressiveScanWrite(true);
    ASSERT_TRUE(writer.write(image));
    EXPECT_FALSE(read(write("few.jpg", jpeg)).isNull());
    // The last scan, again and again.
    const int last = jpeg.lastIndexOf("\xFF\xDA");
    const int end = jpeg.size() - 2;
    const QByteArray scan = jpeg.mid(last, end - last);
    EXPECT_TRUE(read(write("many.jpg", jpeg.insert(end, scan.repeated(1000)))).isNull());
}

/// A camera may put a video after the picture, and a small picture before it.
TEST_F(DisplayPictureReaderTest, countsOnlyTheScansOfTheJpegItself)
{
    QImage image({64, 64}, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    ASSERT_TRUE(image.save(&buffer, "jpeg"));
    const QByteArray scans = QByteArray("\xFF\xDA").repeated(1000);
    const QByteArray comment = QByteArray("\xFF\xFE\x07\xD2", 4) + scans;
    EXPECT_FALSE(read(write("a.jpg", jpeg.insert(2, comment) + scans)).isNull());
}

/// 31 of these, without a size, would take a quarter of an hour.
TEST_F(DisplayPictureReaderTest, refusesAnSvgOfCopiesOfCopies)
{
    QByteArray copies = "<rect id=\"a0\" width=\"9\" height=\"9\"/>";
    for (int i = 1; i <= 10; ++i) {
        const QByteArray copy = "<use xlink:href=\"#a" + QByteArray::number(i - 1) + "\"/>";
        copies += "<g id=\"a" + QByteArray::number(i) + "\">" + copy + copy + "</g>";
    }
    EXPECT_TRUE(readSvg(copies).isNull());
    for (const char *id : {"id=\"b\"", "xml:id=\"b\"", "id=\"b\" xml:id=\"c\""}) {
        EXPECT_TRUE(readSvg("<use " + QByteArray(id) +
                            " xlink:href=\"#a\"/><use xlink:href=\"#b\"/>"
                            "<rect id=\"a\" width=\"9\" height=\"9\"/>")
                        .isNull());
    }
}

class DisplayIconThemeTest : public DisplayPictureReaderTest
{
protected:
    void SetUp() override
    {
        write("icons/mine/index.theme",
              "[Icon Theme]\nInherits=other\nDirectories=16x16/apps,64x64/apps\n"
              "[16x16/apps]\nSize=16\n[64x64/apps]\nSize=64\n");
        write("icons/other/index.theme",
              "[Icon Theme]\nInherits=mine\nDirectories=a\n[a]\nSize=32\n");
        write("icons/hicolor/index.theme", "[Icon Theme]\nDirectories=a\n[a]\nSize=32\n");
        writePng("icons/mine/16x16/apps/bell.png", {16, 16});
        writePng("icons/mine/64x64/apps/bell.png", {64, 64});
        writePng("icons/other/a/door.png", {32, 32});
        writePng("icons/hicolor/a/gate.png", {31, 31});
        writePng("pixmaps/window.png", {30, 30});
    }
};

TEST_F(DisplayIconThemeTest, findsTheSizeThatFits)
{
    EXPECT_EQ(read("bell", {64, 64}).width(), 64);
    EXPECT_EQ(read("bell", {16, 16}).width(), 16);
    EXPECT_EQ(read("bell", {32, 32}).width(), 32); // reduced
    EXPECT_EQ(read("bell", {200, 200}).width(), 64);
}

TEST_F(DisplayIconThemeTest, looksIntoOtherThemesToo)
{
    EXPECT_EQ(read("door").width(), 32);
    EXPECT_EQ(read("gate").width(), 31);
    EXPECT_EQ(read("window").width(), 30);
    EXPECT_TRUE(read("missing").isNull());
}

TEST_F(DisplayIconThemeTest, refusesNamesThatLeaveTheTheme)
{
    writePng("icons/secret.png", {8, 8});
    EXPECT_TRUE(read("../../../secret").isNull());
    EXPECT_TRUE(read("..").isNull());
    EXPECT_TRUE(read("").isNull());
    EXPECT_TRUE(read(QString(1 << 20, QLatin1Char('a'))).isNull());
}
TEST_F(DisplayPictureReaderTest, readsTheFirstPictureOfAnAnimation)
{
    // Two pictures of one pixel: red, then green, without end.
    const QByteArray gif =
        QByteArray::fromHex("474946383961010001008000 00ff000000ff00"
                            "21ff0b4e45545343415045322e30030100000021f904040a000000"
                            "2c00000000010001000002024401 00"
                            "21f904040a0000002c000000000100010000020 24c01 003b");
    const QImage image = read(write("a.gif", gif));
    ASSERT_EQ(image.size(), QSize(1, 1));
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::red));
}
} // namespace
