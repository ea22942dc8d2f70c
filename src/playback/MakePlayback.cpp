// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/SoundLocation.h"
#include "playback/ByteInput.h"
#include "playback/CollectedSound.h"
#include "playback/HttpFetch.h"
#include "playback/PcmStream.h"
#include "playback/PlaybackWriter.h"
#include "playback/SoundFile.h"
#include "simpleplayer/OpenedSound.h"
#include "simpleplayer/PlaybackLibrary.h"

namespace {

/// The source of the frames, and the fetch that feeds it from a server; null for a file.
struct Source
{
    std::unique_ptr<FrameSource> frames;
    std::unique_ptr<HttpFetch> fetch;
};

Source ofFile(std::unique_ptr<FrameSource> frames, const QString &path)
{
    frames->file = OpenedSound::idOf(path);
    return Source{std::move(frames), nullptr};
}

std::unique_ptr<FrameSource> makeStream(std::unique_ptr<ByteInput> input,
                                        const StreamFormat &format,
                                        const SimplePlayerLimits &limits)
{
    if (format.pcm) {
        return std::make_unique<PcmStream>(std::move(input), *format.pcm);
    }
    return std::make_unique<CollectedSound>(std::move(input), limits);
}

Result<Source> fetchStream(const QUrl &url, const QString &name, const StreamFormat &format,
                           const SimplePlayerLimits &limits)
{
    auto made =
        makeHttpFetch(url, format.pcm ? HttpFetch::Kind::LiveStream : HttpFetch::Kind::WholeFile,
                      limits.httpTimeoutMs);
    if (auto *failure = std::get_if<Failure>(&made)) {
        return std::move(*failure);
    }
    auto &fetch = std::get<std::unique_ptr<HttpFetch>>(made);
    auto input = std::make_unique<ByteInput>(fetch->takeReadingEnd(), name);
    return Source{makeStream(std::move(input), format, limits), std::move(fetch)};
}

Result<SoundLocation> locate(const QString &name)
{
    Result<SoundLocation> location = parseSoundLocation(name);
    if (const auto *failure = std::get_if<Failure>(&location)) {
        return Failure{name.isEmpty() ? QStringLiteral("No sound is named")
                                      : QStringLiteral("\"%1\" %2").arg(name, failure->reason)};
    }
    return location;
}

Result<Source> makeSource(const UriSound &sound, const SimplePlayerLimits &limits)
{
    const Result<SoundLocation> located = locate(sound.uri);
    if (const auto *failure = std::get_if<Failure>(&located)) {
        return *failure;
    }
    const auto &location = std::get<SoundLocation>(located);
    if (location.url.isEmpty()) {
        return ofFile(SoundFile::fromPath(location.path, limits.maxSoundBytes), location.path);
    }
    return fetchStream(location.url, QStringLiteral("The sound \"%1\"").arg(sound.uri), {}, limits);
}

Result<Source> makeSource(const DataSound &sound, const SimplePlayerLimits &limits)
{
    return Source{
        SoundFile::fromData(sound.data, QStringLiteral("The sound data"), limits.maxSoundBytes),
        nullptr};
}

Result<Source> makeSource(const StreamSound &sound, const SimplePlayerLimits &limits)
{
    const Result<StreamFormat> parsed = parseStreamFormat(sound.format);
    if (const auto *failure = std::get_if<Failure>(&parsed)) {
        return *failure;
    }
    const Result<SoundLocation> located = locate(sound.content);
    if (const auto *failure = std::get_if<Failure>(&located)) {
        return *failure;
    }
    const auto &format = std::get<StreamFormat>(parsed);
    const auto &location = std::get<SoundLocation>(located);
    if (location.url.isEmpty()) {
        auto input = std::make_unique<ByteInput>(location.path, limits.fifoTimeoutMs);
        return ofFile(makeStream(std::move(input), format, limits), location.path);
    }
    return fetchStream(location.url, QStringLiteral("The stream \"%1\"").arg(sound.content), format,
                       limits);
}

Result<std::unique_ptr<Playback>> makeDevicePlayback(const PlayedSound &sound,
                                                     const PlaybackOptions &options,
                                                     const Playback::Report &report)
{
    Result<Source> made = std::visit(
        [&](const auto &content) { return makeSource(content, options.limits); }, sound.content);
    if (const auto *failure = std::get_if<Failure>(&made)) {
        return *failure;
    }
    auto &source = std::get<Source>(made);
    return PlaybackWriter::make(std::move(source.frames), sound.device, options, report,
                                std::move(source.fetch));
}

} // namespace

const MakePlayback tavo_make_playback = &makeDevicePlayback;
