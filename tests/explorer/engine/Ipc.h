// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace exploration {

/// Zeroed memory that is shared with processes forked later.
void *sharedMemory(std::size_t size);
void freeSharedMemory(void *memory, std::size_t size);

/// A pipe's two ends. Closed on exec.
struct Pipe
{
    Pipe();

    int reading = -1;
    int writing = -1;
};

/// Forks. Throws if this process has several threads: the child would wait for ever for a lock that one
/// of them holds.
int forkAlone();

/// Writes a whole message. Returns false if the reader has gone.
bool writeMessage(int file, const std::string &message);

/// Reads a whole message. Returns nothing if the writer has gone.
std::optional<std::string> readMessage(int file);

/// Waits for the child and returns how it ended: "" for success, "exit status 1", "signal 11
/// (...)".
std::string collect(int pid);

} // namespace exploration
