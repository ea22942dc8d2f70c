// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundAccess.h"

#include "base/SoundLocation.h"

#include <algorithm>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace {
const QString fileScheme = QStringLiteral("file");

SoundAccess::Answer refuse(const QString &location, const QString &why)
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
    const Result<SoundLocation> parsed = parseSoundLocation(location);
    if (const auto *failure = std::get_if<Failure>(&parsed)) {
        return refuse(location, failure->reason);
    }
    const auto &[path, url] = std::get<SoundLocation>(parsed);
    if (!url.isEmpty()) {
        return m_schemes.contains(url.scheme())
                   ? Answer{location, {}}
                   : refuse(location, QStringLiteral("has a scheme that is not allowed"));
    }
    if (!path.startsWith('/')) {
        return refuse(location, QStringLiteral("is neither an absolute path nor a URI"));
    }
    return checkPath(location, path, kind);
}

SoundAccess::Answer SoundAccess::checkPath(const QString &location, const QString &path,
                                           Kind kind) const
{
    if (!m_schemes.contains(fileScheme)) {
        return refuse(location, QStringLiteral("has a scheme that is not allowed"));
    }
    const QString canonical = QFileInfo(path).canonicalFilePath();
    const bool isAllowed =
        std::any_of(m_folders.begin(), m_folders.end(),
                    [&](const QString &folder) { return isBelow(canonical, folder); });
    // One text for both: a client doesn't learn what there is in other folders.
    if (!isAllowed || !isOfKind(canonical, kind)) {
        return refuse(location, QStringLiteral("is no file in an allowed folder"));
    }
    return {canonical, {}};
}
