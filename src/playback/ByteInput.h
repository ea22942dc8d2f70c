// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QElapsedTimer>
#include <QString>

#include <optional>

/// Reads the bytes of a file, a FIFO, or a pipe, without blocking.
///
/// Threads: as FrameSource. Owned by the source that reads it.
class ByteInput
{
public:
    /// A FIFO must not have nothing to read for longer than the timeout.
    ByteInput(const QString &path, int timeoutMs);

    /// Takes ownership of the reading end of a pipe. A pipe can't be repeated.
    ByteInput(int descriptor, const QString &name);

    ~ByteInput();
    ByteInput(const ByteInput &) = delete;
    ByteInput &operator=(const ByteInput &) = delete;

    /// Opens the input, unless it is open. Returns the reason if it fails. The timeout starts
    /// again, so it does not include a pause.
    std::optional<Failure> open();

    /// Returns whether the input is a regular file, and so complete.
    bool isRegularFile() const { return m_regular; }

    /// Reads up to count bytes. Returns their number, 0 at the end, and nothing if there are no
    /// bytes yet. A FIFO has no bytes yet until it is opened for writing; it is at its end when the
    /// last writer has closed it.
    Result<std::optional<std::size_t>> read(char *bytes, std::size_t count);

    /// The descriptor to wait on when there are no bytes yet.
    int descriptor() const { return m_descriptor; }

    /// Goes back to the beginning of a file, or on to the next writer of a FIFO. Returns false for
    /// a pipe.
    Result<bool> rewind();

    QString path() const { return m_path; } ///< empty for a pipe
    QString name() const { return m_name; } ///< for error messages

private:
    Failure fail(const QString &why);
    Result<std::optional<std::size_t>> wait() const;

    const QString m_path;
    const QString m_name;
    const int m_timeoutMs = 0; // only for a path
    QElapsedTimer m_idle;      // since something was read, or the FIFO opened
    int m_descriptor = -1;
    bool m_regular = false;
};
