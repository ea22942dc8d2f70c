// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <sys/types.h>

/// The bytes of a file, a FIFO, or the reading end of a pipe, read without blocking.
///
/// Thread: as FrameSource. Owner: the source that reads it.
class ByteInput
{
public:
    explicit ByteInput(const QString &path);

    /// Takes over the reading end of a pipe, which can't be repeated.
    ByteInput(int descriptor, const QString &name);

    ~ByteInput();
    ByteInput(const ByteInput &) = delete;
    ByteInput &operator=(const ByteInput &) = delete;

    bool open();

    /// Whether it is a file with an end, all of which is there.
    bool isRegularFile() const { return m_regular; }

    /// Reads at most so many bytes: 0 at the end, negative when nothing is there yet (a FIFO that
    /// nobody has opened for writing has nothing yet; one that the last writer closed is at its
    /// end).
    ssize_t read(char *bytes, std::size_t count);

    /// What to wait on when nothing is there yet.
    int descriptor() const { return m_descriptor; }

    /// Back to a file's begin, or on to a FIFO's next writer.
    bool rewind();

    QString path() const { return m_path; } ///< empty for a pipe
    QString name() const { return m_name; } ///< what people call it
    QString error() const { return m_error; }

private:
    bool fail(const QString &why);

    const QString m_path;
    const QString m_name; // what people call it
    QString m_error;
    int m_descriptor = -1;
    bool m_regular = false;
};
