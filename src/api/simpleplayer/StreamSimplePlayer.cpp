// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/StreamSimplePlayer.h"

#include "simpleplayer/playback/ByteInput.h"
#include "simpleplayer/playback/CollectedSound.h"
#include "simpleplayer/playback/HttpFetch.h"
#include "simpleplayer/playback/Location.h"
#include "simpleplayer/playback/NoSound.h"
#include "simpleplayer/playback/PcmStream.h"
#include "simpleplayer/playback/Playback.h"

namespace {

std::unique_ptr<FrameSource> makeLocal(const QString &path, const StreamFormat &format)
{
    if (format.pcm)
        return std::make_unique<PcmStream>(std::make_unique<ByteInput>(path), *format.pcm);
    return std::make_unique<CollectedSound>(path);
}

std::unique_ptr<FrameSource> makeRemote(int descriptor, const QString &name,
                                        const StreamFormat &format)
{
    if (format.pcm)
        return std::make_unique<PcmStream>(std::make_unique<ByteInput>(descriptor, name),
                                           *format.pcm);
    return std::make_unique<CollectedSound>(descriptor, name);
}

std::unique_ptr<Playback> makePlayback(const QString &content, const QString &mediaType,
                                       const QString &id, const QString &device)
{
    const Location location = parseLocation(content);
    const StreamFormat format = parseStreamFormat(mediaType);
    for (const QString &error : {format.error, location.error}) {
        if (!error.isEmpty())
            return std::make_unique<Playback>(std::make_unique<NoSound>(error), id, device);
    }
    if (location.url.isEmpty())
        return std::make_unique<Playback>(makeLocal(location.path, format), id, device);
    auto fetch = std::make_unique<HttpFetch>(location.url, format.pcm ? HttpFetch::Kind::LiveStream
                                                                      : HttpFetch::Kind::WholeFile);
    auto source = makeRemote(fetch->takeReadingEnd(),
                             QStringLiteral("The stream \"%1\"").arg(content), format);
    return std::make_unique<Playback>(std::move(source), id, device, std::move(fetch));
}

} // namespace

StreamSimplePlayer::StreamSimplePlayer(const QString &content, const QString &format,
                                       const QString &id, const QString &device, QObject *parent)
    : PlaybackPlayer(makePlayback(content, format, id, device), parent)
{
}
