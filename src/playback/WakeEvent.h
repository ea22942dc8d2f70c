// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Ends a wait of the playback thread: set from any thread, waited for in one.
class WakeEvent
{
public:
    WakeEvent();
    ~WakeEvent();
    WakeEvent(const WakeEvent &) = delete;
    WakeEvent &operator=(const WakeEvent &) = delete;

    /// False when there were no more file descriptors.
    bool isValid() const { return m_descriptor >= 0; }

    void set();
    void clear();

    /// Waits until set or the time is over (negative: no limit); true when set.
    bool wait(int timeoutMs) const;

    /// As wait(), and also ends when there is something to read from the descriptor, or its writer
    /// is gone.
    void waitForInput(int descriptor, int timeoutMs) const;

private:
    int m_descriptor;
};
