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
    /// What the thread hangs in; nothing is a device, or a file that was not opened for a client.
    using File = std::optional<OpenedSound::FileId>;

    explicit HangingThread(const File &file);
    ~HangingThread();
    HangingThread(const HangingThread &) = delete;
    HangingThread &operator=(const HangingThread &) = delete;

    static int count();

    /// Whether so many hang already that another one might, too, and must not get a thread.
    static bool areTooMany(const File &file);

private:
    const File m_file;
};
