// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/loader/Playback.h"

#include <functional>
#include <memory>

#include <QByteArray>
#include <QString>

/// Makes what sounds. What that takes (decoders, the device, the network) are some twenty libraries;
/// they stand behind libtavo_playback, which only the first sounding player has loaded: a process
/// that has played nothing yet starts faster and holds less.
///
/// Thread: any. Its functions never fail: what is made says at its play() why there is no sound.
class PlaybackMaker
{
public:
    virtual std::unique_ptr<Playback> fromUri(const QString &uri, const QString &id,
                                              const QString &device) const = 0;
    virtual std::unique_ptr<Playback> fromData(const QByteArray &data, const QString &id,
                                               const QString &device) const = 0;
    virtual std::unique_ptr<Playback> fromStream(const QString &content, const QString &mediaType,
                                                 const QString &id,
                                                 const QString &device) const = 0;

protected:
    PlaybackMaker() = default;
    ~PlaybackMaker() = default;
    Q_DISABLE_COPY_MOVE(PlaybackMaker)
};

/// What is to be asked of the maker.
using PlaybackWish = std::function<std::unique_ptr<Playback>(const PlaybackMaker &maker)>;

/// Has the library's maker fulfil the wish. Where the library can't be loaded, gives one with that
/// id whose play() says why; the next call tries again. Thread: any.
std::unique_ptr<Playback> makePlayback(const QString &id, const PlaybackWish &wish);

/// The library's entry point.
extern "C" Q_DECL_EXPORT const PlaybackMaker *tavo_playback_maker();
