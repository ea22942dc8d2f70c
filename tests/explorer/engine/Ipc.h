// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace exploration {

/// Memory that a process shares with those that it forks from now on; all zeros.
void *sharedMemory(std::size_t size);
void freeSharedMemory(void *memory, std::size_t size);

/// A pipe's two ends; they are closed in programs that are started.
struct Pipe
{
    Pipe();

    int reading = -1;
    int writing = -1;
};

/// Writes a whole message; false when nobody reads any more.
bool writeMessage(int file, const std::string &message);

/// Reads a whole message; nothing when the writer has gone.
std::optional<std::string> readMessage(int file);

/// Waits for the child and says how it ended: "" for well, "exit status 1", "signal 11 (...)".
std::string collect(int pid);

} // namespace exploration
