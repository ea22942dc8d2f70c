// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/loader/Playback.h"

#include <memory>

/// Makes a playback by libtavo_playback, which is loaded for the first one and never unloaded: what
/// it is linked to would make the loading of a module take 2.4 ms instead of 0.35, and a host that
/// has played nothing 2 MiB larger. Fails where the library is missing, and for a sound that can't
/// be played. Called from any thread.
Result<std::unique_ptr<Playback>> makePlayback(const PlayedSound &sound,
                                               const PlaybackOptions &options,
                                               const Playback::Report &report);

using MakePlayback = decltype(&makePlayback);

/// The library's entry point.
extern "C" Q_DECL_EXPORT const MakePlayback tavo_make_playback;
