// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Ends a wait of the playback thread. Set from any thread, waited for in one.
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

    /// Waits until set, or for the timeout (negative: without a limit). True when set.
    bool wait(int timeoutMs) const;

    /// Like wait(), but ends as well when the descriptor has something to read or its writer is
    /// gone.
    void waitForInput(int descriptor, int timeoutMs) const;

private:
    int m_descriptor;
};
