// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Wakes the playback thread. Set from any thread; only one thread waits.
class WakeEvent
{
public:
    WakeEvent();
    ~WakeEvent();
    WakeEvent(const WakeEvent &) = delete;
    WakeEvent &operator=(const WakeEvent &) = delete;

    /// Returns false if there were no more file descriptors.
    bool isValid() const { return m_descriptor >= 0; }

    void set();
    void clear();

    /// Waits until it is set, or for the timeout (none if negative). Returns whether it is set.
    bool wait(int timeoutMs) const;

    /// Like wait(), but also returns when the descriptor has something to read or its writer is
    /// gone.
    void waitForInput(int descriptor, int timeoutMs) const;

private:
    int m_descriptor;
};
