// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundAccess.h"

#include "base/SoundLocation.h"
#include "base/StateFolder.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {
const QString fileScheme = QStringLiteral("file");

/// The limit for paths, in characters. The main audio's state has the source that plays.
constexpr int maxLocationLength = 4096;

Failure refusal(const QString &location, const QString &reason)
{
    // A client's string must not break a line of the log, nor fill the log.
    constexpr int maxSize = 200;
    return {QStringLiteral("\"%1\" %2").arg(location.left(maxSize).simplified(), reason)};
}

bool isOfKind(const OpenedSound &file, SoundAccess::Kind kind)
{
    return kind == SoundAccess::Kind::Stream ? file.isFifo() : file.isRegularFile();
}

bool isBelow(const QString &path, const QString &folder)
{
    return folder == QLatin1String("/") || path.startsWith(folder + '/');
}

bool isAt(const QUrl &url, const QUrl &server)
{
    const int defaultPort = url.scheme() == QLatin1String("https") ? 443 : 80;
    return url.host() == server.host() && url.port(defaultPort) == server.port(defaultPort);
}

/// A folder that does not exist may be made later.
QString withoutLinks(const QString &folder)
{
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(folder) : canonical;
}
} // namespace

SoundAccess::SoundAccess(QStringList schemes, const QStringList &folders, QVector<QUrl> servers)
    : m_schemes(std::move(schemes))
    , m_servers(std::move(servers))
    , m_ownFolder(stateFolder())
{
    for (const QString &folder : folders) {
        m_folders.append(withoutLinks(folder));
    }
}

Result<AllowedSound> SoundAccess::check(const QString &location, Kind kind) const
{
    return check(location, kind, &OpenedSound::open);
}

std::optional<Result<AllowedSound>> SoundAccess::checkAtOnce(const QString &location,
                                                             Kind kind) const
{
    bool mustWait = false;
    const Result<AllowedSound> result = check(location, kind, [&](const QString &path) {
        auto file = OpenedSound::openAtOnce(path);
        mustWait = !file;
        return file;
    });
    return mustWait ? std::nullopt : std::optional(result);
}

Result<AllowedSound> SoundAccess::check(const QString &location, Kind kind, const Open &open) const
{
    if (location.size() > maxLocationLength) {
        return Failure{
            QStringLiteral("The path or URI of a sound may have no more than %1 characters")
                .arg(maxLocationLength)};
    }
    const Result<SoundLocation> parsed = parseSoundLocation(location);
    if (const auto *failure = std::get_if<Failure>(&parsed)) {
        return refusal(location, failure->reason);
    }
    const auto &[path, url] = std::get<SoundLocation>(parsed);
    if (!url.isEmpty()) {
        return checkUrl(location, url);
    }
    if (!path.startsWith('/')) {
        return refusal(location, QStringLiteral("is neither an absolute path nor a URI"));
    }
    if (!m_schemes.contains(fileScheme)) {
        return refusal(location, QStringLiteral("has a scheme that is not allowed"));
    }
    return checkFile(location, open(path), kind);
}

Result<AllowedSound> SoundAccess::checkUrl(const QString &location, const QUrl &url) const
{
    if (!m_schemes.contains(url.scheme())) {
        return refusal(location, QStringLiteral("has a scheme that is not allowed"));
    }
    const bool isAllowed = std::any_of(m_servers.begin(), m_servers.end(),
                                       [&](const QUrl &server) { return isAt(url, server); });
    if (!isAllowed) {
        return refusal(location, QStringLiteral("is on a server that is not allowed"));
    }
    return AllowedSound{location, {}};
}

Result<AllowedSound> SoundAccess::checkFile(const QString &requested,
                                            const std::optional<OpenedSound> &file, Kind kind) const
{
    const QString location = file ? file->path() : QString();
    const bool isAllowed =
        !isBelow(location, withoutLinks(m_ownFolder)) &&
        std::any_of(m_folders.begin(), m_folders.end(),
                    [&](const QString &folder) { return isBelow(location, folder); });
    // One reason for all cases: a client must not learn what is in other folders.
    if (!file || !isAllowed || !isOfKind(*file, kind)) {
        return refusal(requested, kind == Kind::Stream
                                      ? QStringLiteral("is not a FIFO in an allowed folder")
                                      : QStringLiteral("is not a file in an allowed folder"));
    }
    return AllowedSound{location, file};
}
