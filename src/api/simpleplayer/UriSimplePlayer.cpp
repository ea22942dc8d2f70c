// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/UriSimplePlayer.h"

#include "simpleplayer/playback/CollectedSound.h"
#include "simpleplayer/playback/HttpFetch.h"
#include "simpleplayer/playback/Location.h"
#include "simpleplayer/playback/NoSound.h"
#include "simpleplayer/playback/Playback.h"
#include "simpleplayer/playback/SoundFile.h"

namespace {

std::unique_ptr<Playback> makePlayback(const QString &uri, const QString &id, const QString &device)
{
    const Location location = parseLocation(uri);
    if (!location.error.isEmpty())
        return std::make_unique<Playback>(std::make_unique<NoSound>(location.error), id, device);
    if (location.url.isEmpty())
        return std::make_unique<Playback>(SoundFile::fromPath(location.path), id, device);
    auto fetch = std::make_unique<HttpFetch>(location.url, HttpFetch::Kind::WholeFile);
    auto source = std::make_unique<CollectedSound>(fetch->takeReadingEnd(),
                                                   QStringLiteral("The sound \"%1\"").arg(uri));
    return std::make_unique<Playback>(std::move(source), id, device, std::move(fetch));
}

} // namespace

UriSimplePlayer::UriSimplePlayer(const QString &uri, const QString &id, const QString &device,
                                 QObject *parent)
    : PlaybackPlayer(makePlayback(uri, id, device), parent)
{
}
