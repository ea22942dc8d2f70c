// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/images/PictureProvider.h"

#include "base/Printable.h"
#include "display/images/PictureReader.h"

#include <QMutexLocker>
#include <QStandardPaths>
#include <QUrl>

namespace {
constexpr QSize maxSize(1024, 1024);

/// A null image if there is none. Many programs name icons that a device does not have.
QImage imageOf(const QString &source, const QSize &size, const IconTheme &icons)
{
    const auto image = readPicture(source, size, icons);
    const auto *failure = std::get_if<Failure>(&image);
    if (failure != nullptr && source.contains(QLatin1Char('/'))) {
        qWarning("The picture %s %s", logText(source).c_str(), qUtf8Printable(failure->reason));
    }
    return failure == nullptr ? std::get<QImage>(image) : QImage();
}
} // namespace

PictureProvider::PictureProvider()
    : QQuickImageProvider(Image, ForceAsynchronousImageLoading)
{
}

void PictureProvider::setPicture(const Picture &picture)
{
    const QMutexLocker lock(&m_mutex);
    m_picture = picture;
}

void PictureProvider::setIconTheme(const QString &theme)
{
    const QMutexLocker lock(&m_mutex);
    m_iconTheme = theme;
}

QImage PictureProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    Picture picture;
    QString theme;
    {
        const QMutexLocker lock(&m_mutex);
        picture = m_picture;
        theme = m_iconTheme;
    }
    const auto icon = QStringLiteral("icon/");
    if (id.startsWith(icon)) {
        picture = {{}, QUrl::fromPercentEncoding(id.mid(icon.size()).toUtf8())};
    }
    const QSize wanted = requestedSize.isEmpty() ? maxSize : requestedSize.boundedTo(maxSize);
    QImage image = picture.pixels;
    if (image.isNull()) {
        const IconTheme icons(
            theme, QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation));
        image = imageOf(picture.source, wanted, icons);
    } else if (image.width() > wanted.width() || image.height() > wanted.height()) {
        image = image.scaled(wanted, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    *size = image.size();
    return image;
}
