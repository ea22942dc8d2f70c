// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/images/PictureReader.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QSet>
#include <QStringList>
#include <QtEndian>
#include <QUrl>
#include <QXmlStreamReader>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
Result<QByteArray> readFile(const QString &path)
{
    // A FIFO without a writer would block otherwise.
    const int descriptor =
        open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return Failure{QStringLiteral("can't be opened")};
    }
    QFile file;
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        return Failure{QStringLiteral("is not a file")};
    }
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        close(descriptor);
        return Failure{QStringLiteral("can't be opened")};
    }
    QByteArray content = file.read(maxPictureBytes + 1);
    if (content.size() > maxPictureBytes) {
        return Failure{QStringLiteral("is too large")};
    }
    return content;
}

/// Whether the value of an attribute or a style refers to nothing outside of its document.
bool isLocal(const QString &value)
{
    for (int at = value.indexOf(QLatin1String("url("), 0, Qt::CaseInsensitive); at >= 0;
         at = value.indexOf(QLatin1String("url("), at + 1, Qt::CaseInsensitive)) {
        const QString target =
            value.mid(at + 4, 8).remove(QLatin1Char('\'')).remove(QLatin1Char('"'));
        if (!target.trimmed().startsWith(QLatin1Char('#'))) {
            return false;
        }
    }
    return !value.contains(QLatin1String("@import"), Qt::CaseInsensitive);
}

/// As Qt reads it.
QString idOf(const QXmlStreamAttributes &attributes)
{
    const QStringRef id = attributes.value(QLatin1String("id"));
    return (id.isEmpty() ? attributes.value(QLatin1String("xml:id")) : id).toString();
}

/// Nothing but shapes, and few enough of them to be drawn at once.
bool isHarmlessSvg(const QByteArray &content)
{
    constexpr int maxSvgBytes = 1 << 20;
    constexpr int maxElements = 5000;
    constexpr int maxDepth = 64;
    constexpr int maxUses = 64;
    if (content.size() > maxSvgBytes) {
        return false;
    }
    QXmlStreamReader reader(content);
    int elements = 0;
    int uses = 0;
    QStringList open; // the ids of the elements around; empty for those without
    // What is copied must have no copies in it: each copy of copies could double the work.
    QSet<QString> copied;
    QSet<QString> copying;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::DTD:
            if (!reader.entityDeclarations().isEmpty()) {
                return false;
            }
            break;
        case QXmlStreamReader::StartElement: {
            const QStringRef name = reader.name();
            const bool isUse = name == QLatin1String("use");
            uses += isUse ? 1 : 0;
            const QXmlStreamAttributes attributes = reader.attributes();
            open.append(idOf(attributes));
            if (++elements > maxElements || open.size() > maxDepth || uses > maxUses ||
                name == QLatin1String("image") || name == QLatin1String("script")) {
                return false;
            }
            for (const QXmlStreamAttribute &attribute : attributes) {
                const bool isLink = attribute.name() == QLatin1String("href") ||
                                    attribute.name() == QLatin1String("src");
                const bool isWithin = attribute.value().startsWith(QLatin1Char('#'));
                if ((isLink && !isWithin && name != QLatin1String("a")) ||
                    !isLocal(attribute.value().toString())) {
                    return false;
                }
                if (isUse && isLink) {
                    copied.insert(attribute.value().mid(1).toString());
                }
            }
            if (isUse) {
                copying.unite(QSet<QString>(open.begin(), open.end()));
            }
            break;
        }
        case QXmlStreamReader::EndElement:
            open.removeLast();
            break;
        case QXmlStreamReader::Characters:
            if (!isLocal(reader.text().toString())) {
                return false;
            }
            break;
        case QXmlStreamReader::ProcessingInstruction:
            return false;
        default:
            break;
        }
    }
    return !reader.hasError() && !copied.intersects(copying);
}

/// Whether a JPEG has more scans than programs write: each may draw the whole picture again.
bool hasManyScans(const QByteArray &jpeg)
{
    constexpr int maxScans = 100;
    constexpr uchar startOfScan = 0xDA;
    constexpr uchar endOfImage = 0xD9;
    constexpr int lengthBytes = 2;
    int scans = 0;
    for (int at = jpeg.indexOf('\xFF'); at >= 0 && at + lengthBytes + 1 < jpeg.size();
         at = jpeg.indexOf('\xFF', at)) {
        const auto marker = uchar(jpeg[++at]);
        // Not those within a scan, nor the start of the picture.
        const bool hasLength = marker >= 0xC0 && (marker < 0xD0 || marker > 0xD8) && marker != 0xFF;
        if (marker == endOfImage) {
            break;
        }
        if (marker == startOfScan && ++scans > maxScans) {
            return true;
        }
        if (hasLength) {
            at += 1 + qMax<int>(qFromBigEndian<quint16>(jpeg.constData() + at + 1), lengthBytes);
        }
    }
    return false;
}

Result<QImage> decode(const QByteArray &content, const QSize &size)
{
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    const QByteArray format = QImageReader::imageFormat(&buffer);
    constexpr const char *formats[] = {"png", "jpeg", "jpg", "gif", "bmp",
                                       "ico", "webp", "xpm", "svg"};
    if (std::none_of(std::begin(formats), std::end(formats),
                     [&](const char *known) { return format == known; })) {
        return Failure{QStringLiteral("is no picture of a known format")};
    }
    if (format == "svg" && !isHarmlessSvg(content)) {
        return Failure{
            QStringLiteral("is an SVG that is broken, too complex, or refers to others")};
    }
    if (format == "jpeg" && hasManyScans(content)) {
        return Failure{QStringLiteral("has too many scans")};
    }
    QImageReader reader(&buffer, format);
    const QSize original = reader.size();
    if (original.isEmpty() || qint64(original.width()) * original.height() > maxPicturePixels) {
        return Failure{QStringLiteral("has no size, or is too large")};
    }
    const bool isVector = format == "svg";
    const QSize scaled = original.scaled(size, Qt::KeepAspectRatio);
    if (isVector || scaled.width() < original.width()) {
        reader.setScaledSize(scaled.expandedTo({1, 1}));
    }
    QImage image = reader.read();
    if (image.isNull()) {
        return Failure{QStringLiteral("is broken: %1").arg(reader.errorString())};
    }
    return image;
}

QString fileOf(const QString &source, const QSize &size, const IconTheme &icons)
{
    if (source.startsWith(QLatin1Char('/'))) {
        return source;
    }
    if (source.startsWith(QLatin1String("file:"))) {
        const QUrl url(source);
        return url.host().isEmpty() ? url.toLocalFile() : QString();
    }
    return icons.find(source, qMax(size.width(), size.height()));
}
} // namespace

Result<QImage> readPicture(const QString &source, const QSize &size, const IconTheme &icons)
{
    const QString file = fileOf(source, size, icons);
    if (file.isEmpty()) {
        return Failure{QStringLiteral("is no icon of the theme")};
    }
    const auto content = readFile(file);
    if (const auto *failure = std::get_if<Failure>(&content)) {
        return *failure;
    }
    return decode(std::get<QByteArray>(content), size);
}
