// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/loader/PlaybackMaker.h"

#include "playback/ByteInput.h"
#include "playback/CollectedSound.h"
#include "playback/DevicePlayback.h"
#include "playback/HttpFetch.h"
#include "playback/Location.h"
#include "playback/NoSound.h"
#include "playback/PcmStream.h"
#include "playback/SoundFile.h"

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

class DevicePlaybackMaker final : public PlaybackMaker
{
public:
    std::unique_ptr<Playback> fromUri(const QString &uri, const QString &id,
                                      const QString &device) const override;
    std::unique_ptr<Playback> fromData(const QByteArray &data, const QString &id,
                                       const QString &device) const override;
    std::unique_ptr<Playback> fromStream(const QString &content, const QString &mediaType,
                                         const QString &id, const QString &device) const override;
};

std::unique_ptr<Playback> DevicePlaybackMaker::fromUri(const QString &uri, const QString &id,
                                                       const QString &device) const
{
    const Location location = parseLocation(uri);
    if (!location.error.isEmpty())
        return std::make_unique<DevicePlayback>(std::make_unique<NoSound>(location.error), id,
                                                device);
    if (location.url.isEmpty())
        return std::make_unique<DevicePlayback>(SoundFile::fromPath(location.path), id, device);
    auto fetch = std::make_unique<HttpFetch>(location.url, HttpFetch::Kind::WholeFile);
    auto source = std::make_unique<CollectedSound>(fetch->takeReadingEnd(),
                                                   QStringLiteral("The sound \"%1\"").arg(uri));
    return std::make_unique<DevicePlayback>(std::move(source), id, device, std::move(fetch));
}

std::unique_ptr<Playback> DevicePlaybackMaker::fromData(const QByteArray &data, const QString &id,
                                                        const QString &device) const
{
    return std::make_unique<DevicePlayback>(
        SoundFile::fromData(data, QStringLiteral("The sound data")), id, device);
}

std::unique_ptr<Playback> DevicePlaybackMaker::fromStream(const QString &content,
                                                          const QString &mediaType,
                                                          const QString &id,
                                                          const QString &device) const
{
    const Location location = parseLocation(content);
    const StreamFormat format = parseStreamFormat(mediaType);
    for (const QString &error : {format.error, location.error}) {
        if (!error.isEmpty())
            return std::make_unique<DevicePlayback>(std::make_unique<NoSound>(error), id, device);
    }
    if (location.url.isEmpty())
        return std::make_unique<DevicePlayback>(makeLocal(location.path, format), id, device);
    auto fetch = std::make_unique<HttpFetch>(location.url, format.pcm ? HttpFetch::Kind::LiveStream
                                                                      : HttpFetch::Kind::WholeFile);
    auto source = makeRemote(fetch->takeReadingEnd(),
                             QStringLiteral("The stream \"%1\"").arg(content), format);
    return std::make_unique<DevicePlayback>(std::move(source), id, device, std::move(fetch));
}

} // namespace

const PlaybackMaker *tavo_playback_maker()
{
    static const DevicePlaybackMaker maker;
    return &maker;
}
