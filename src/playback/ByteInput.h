// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QString>

#include <optional>

/// The bytes of a file, a FIFO, or the reading end of a pipe, read without blocking.
///
/// Threads: as for FrameSource. Owned by the source that reads it.
class ByteInput
{
public:
    explicit ByteInput(const QString &path);

    /// Takes over the reading end of a pipe, which can't be repeated.
    ByteInput(int descriptor, const QString &name);

    ~ByteInput();
    ByteInput(const ByteInput &) = delete;
    ByteInput &operator=(const ByteInput &) = delete;

    /// Returns why it can't be opened; does nothing when it is open.
    std::optional<Failure> open();

    /// Whether it is a file with an end, all of which is there.
    bool isRegularFile() const { return m_regular; }

    /// Reads up to so many bytes. 0 at the end; nothing while there are none yet: a FIFO that nobody
    /// has opened for writing has none yet, one that the last writer closed is at its end.
    Result<std::optional<std::size_t>> read(char *bytes, std::size_t count);

    /// What to wait on when nothing is there yet.
    int descriptor() const { return m_descriptor; }

    /// Back to a file's beginning, or on to a FIFO's next writer. False for a pipe.
    Result<bool> rewind();

    QString path() const { return m_path; } ///< empty for a pipe
    QString name() const { return m_name; } ///< what people call it

private:
    Failure fail(const QString &why);

    const QString m_path;
    const QString m_name; // what people call it
    int m_descriptor = -1;
    bool m_regular = false;
};
