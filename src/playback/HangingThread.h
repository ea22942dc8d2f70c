// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/OpenedSound.h"

#include <optional>

/// Counts a thread that was left behind for as long as this object lives.
///
/// Used from any thread. Owned by the PlaybackWriter.
class HangingThread
{
public:
    /// Whose file the thread hangs in. Nobody owns a device, or a file that was not opened for a client.
    using Owner = std::optional<OpenedSound::Owner>;

    explicit HangingThread(Owner owner);
    ~HangingThread();
    HangingThread(const HangingThread &) = delete;
    HangingThread &operator=(const HangingThread &) = delete;

    static int count();
    static int count(Owner owner);

private:
    const Owner m_owner;
};
