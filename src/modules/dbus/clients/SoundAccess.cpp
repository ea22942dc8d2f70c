// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundAccess.h"

#include "base/SoundLocation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <sys/stat.h>

namespace {
const QString fileScheme = QStringLiteral("file");

Failure refusal(const QString &location, const QString &reason)
{
    // A client's string must not break a line of the log, nor fill the log.
    constexpr int maxSize = 200;
    return {QStringLiteral("\"%1\" %2").arg(location.left(maxSize).simplified(), reason)};
}

bool isOfKind(const QString &path, SoundAccess::Kind kind)
{
    struct stat status;
    if (stat(QFile::encodeName(path).constData(), &status) != 0) {
        return false;
    }
    return kind == SoundAccess::Kind::Stream ? S_ISFIFO(status.st_mode) : S_ISREG(status.st_mode);
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

Result<QString> SoundAccess::check(const QString &location, Kind kind) const
{
    const Result<SoundLocation> parsed = parseSoundLocation(location);
    if (const auto *failure = std::get_if<Failure>(&parsed)) {
        return refusal(location, failure->reason);
    }
    const auto &[path, url] = std::get<SoundLocation>(parsed);
    if (!url.isEmpty()) {
        if (!m_schemes.contains(url.scheme())) {
            return refusal(location, QStringLiteral("has a scheme that is not allowed"));
        }
        return location;
    }
    if (!path.startsWith('/')) {
        return refusal(location, QStringLiteral("is neither an absolute path nor a URI"));
    }
    return checkPath(location, path, kind);
}

Result<QString> SoundAccess::checkPath(const QString &location, const QString &path,
                                       Kind kind) const
{
    if (!m_schemes.contains(fileScheme)) {
        return refusal(location, QStringLiteral("has a scheme that is not allowed"));
    }
    const QString canonical = QFileInfo(path).canonicalFilePath();
    const bool isAllowed =
        std::any_of(m_folders.begin(), m_folders.end(),
                    [&](const QString &folder) { return isBelow(canonical, folder); });
    // One reason for both cases: a client must not learn what is in other folders.
    if (!isAllowed || !isOfKind(canonical, kind)) {
        return refusal(location, kind == Kind::Stream
                                     ? QStringLiteral("is not a FIFO in an allowed folder")
                                     : QStringLiteral("is not a file in an allowed folder"));
    }
    return canonical;
}
