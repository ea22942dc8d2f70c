// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundAccess.h"

#include <algorithm>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <sys/stat.h>

namespace {
const QString fileScheme = QStringLiteral("file");

SoundAccess::Answer refuse(const QString &location, const char *why)
{
    // Whatever a client sent, a line of the log stays one, and of a bearable length.
    constexpr int longest = 200;
    return {{}, QStringLiteral("\"%1\" %2").arg(location.left(longest).simplified(), why)};
}

bool isOfKind(const QString &path, SoundAccess::Kind kind)
{
    struct stat status;
    if (stat(QFile::encodeName(path).constData(), &status) != 0) {
        return false;
    }
    const bool isPipe = S_ISFIFO(status.st_mode);
    return S_ISREG(status.st_mode) || (isPipe && kind == SoundAccess::Kind::Stream);
}

bool isBelow(const QString &path, const QString &folder)
{
    return folder == QLatin1String("/") || path.startsWith(folder + '/');
}
} // namespace

SoundAccess::SoundAccess(QStringList schemes, const QStringList &folders)
    : m_schemes(std::move(schemes))
{
    for (const QString &folder : folders) {
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        m_folders.append(canonical.isEmpty() ? QDir::cleanPath(folder) : canonical);
    }
}

SoundAccess::Answer SoundAccess::check(const QString &location, Kind kind) const
{
    if (location.startsWith('/')) {
        return checkPath(location, location, kind);
    }
    const QUrl url(location, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (scheme.isEmpty()) {
        return refuse(location, "is neither an absolute path nor a URI");
    }
    if (scheme == fileScheme) {
        const bool isLocal = url.host().isEmpty() || url.host() == QLatin1String("localhost");
        return isLocal ? checkPath(location, url.path(QUrl::FullyDecoded), kind)
                       : refuse(location, "names no file of this device");
    }
    if (!m_schemes.contains(scheme)) {
        return refuse(location, "has a scheme that is not allowed");
    }
    return {location, {}};
}

SoundAccess::Answer SoundAccess::checkPath(const QString &location, const QString &path,
                                           Kind kind) const
{
    if (!m_schemes.contains(fileScheme)) {
        return refuse(location, "has a scheme that is not allowed");
    }
    const QString canonical =
        path.contains(QChar::Null) ? QString() : QFileInfo(path).canonicalFilePath();
    const bool isAllowed =
        std::any_of(m_folders.begin(), m_folders.end(),
                    [&](const QString &folder) { return isBelow(canonical, folder); });
    // One text for both: a client doesn't learn what there is in other folders.
    if (!isAllowed || !isOfKind(canonical, kind)) {
        return refuse(location, "is no file in an allowed folder");
    }
    return {canonical, {}};
}
