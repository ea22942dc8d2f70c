// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/Playback.h"

#include <memory>

/// Makes a playback with libtavo_playback, which is loaded by the first call and never unloaded. If
/// the modules were linked with it, loading one would take 2.4 ms instead of 0.35, and a host that
/// has played nothing would need 2 MiB more. Fails if the library is missing, or if the sound can't
/// be played. Called from any thread.
Result<std::unique_ptr<Playback>> makePlayback(const PlayedSound &sound,
                                               const PlaybackOptions &options,
                                               const Playback::Report &report);

using MakePlayback = decltype(&makePlayback);

/// The library's entry point.
extern "C" Q_DECL_EXPORT const MakePlayback tavo_make_playback;
