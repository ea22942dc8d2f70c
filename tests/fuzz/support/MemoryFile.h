// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <sys/mman.h>
#include <unistd.h>

/// A regular file in memory. Removed with the object.
class MemoryFile
{
public:
    explicit MemoryFile(const QByteArray &bytes)
        : m_descriptor(memfd_create("fuzz", MFD_CLOEXEC))
    {
        // In memory, a write is complete or fails; then the sound is too short.
        const ssize_t written = ::write(m_descriptor, bytes.constData(), std::size_t(bytes.size()));
        static_cast<void>(written);
    }
    ~MemoryFile() { ::close(m_descriptor); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

private:
    int m_descriptor;
};
