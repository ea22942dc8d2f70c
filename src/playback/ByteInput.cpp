// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/ByteInput.h"

#include "simpleplayer/OpenedSound.h"

#include <cerrno>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

ByteInput::ByteInput(const QString &path, int timeoutMs)
    : m_path(path)
    , m_name(QStringLiteral("The stream \"%1\"").arg(path))
    , m_timeoutMs(timeoutMs)
{
}

ByteInput::ByteInput(int descriptor, const QString &name)
    : m_name(name)
    , m_descriptor(descriptor)
{
}

ByteInput::~ByteInput()
{
    if (m_descriptor < 0) {
        return;
    }
    if (m_path.isEmpty()) {
        ::close(m_descriptor); // Its writer is this process.
    } else {
        OpenedSound::close(m_descriptor);
    }
}

std::optional<Failure> ByteInput::open()
{
    m_idle.start();
    if (m_descriptor >= 0) {
        return std::nullopt;
    }
    // The pipe of a fetch, which could not be created.
    if (m_path.isEmpty()) {
        return fail(QStringLiteral(" can't be fetched: there are no more file descriptors"));
    }
    m_descriptor = OpenedSound::openForReading(m_path);
    if (m_descriptor < 0) {
        return fail(QStringLiteral(" can't be opened: ") + qt_error_string(errno));
    }
    struct stat status
    {
    };
    fstat(m_descriptor, &status);
    if (S_ISDIR(status.st_mode)) {
        return fail(QStringLiteral(" is a directory, not a sound"));
    }
    if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode)) {
        return fail(QStringLiteral(" is a device, not a sound"));
    }
    m_regular = S_ISREG(status.st_mode);
    if (m_regular && status.st_size == 0) {
        return fail(QStringLiteral(" is empty"));
    }
    return std::nullopt;
}

Failure ByteInput::fail(const QString &why)
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
    m_descriptor = -1;
    return {m_name + why};
}

Result<std::optional<std::size_t>> ByteInput::read(char *bytes, std::size_t count)
{
    // A FIFO without a writer reads as if it had ended; only poll() can tell the difference.
    pollfd ready{m_descriptor, POLLIN, 0};
    if (poll(&ready, 1, 0) <= 0) {
        return wait();
    }
    const ssize_t got = ::read(m_descriptor, bytes, count);
    if (got >= 0) {
        m_idle.start();
        return std::size_t(got);
    }
    if (errno == EAGAIN || errno == EINTR) {
        return wait();
    }
    return Failure{m_name + QStringLiteral(" can't be read: ") + qt_error_string(errno)};
}

Result<std::optional<std::size_t>> ByteInput::wait() const
{
    // A server has a timeout of its own.
    if (m_path.isEmpty() || !m_idle.hasExpired(m_timeoutMs)) {
        return std::nullopt;
    }
    return Failure{m_name + QStringLiteral(" has sent nothing for %1 ms").arg(m_timeoutMs)};
}

Result<bool> ByteInput::rewind()
{
    if (m_path.isEmpty()) {
        return false;
    }
    if (m_regular) {
        return lseek(m_descriptor, 0, SEEK_SET) == 0;
    }
    ::close(m_descriptor);
    m_descriptor = -1;
    if (auto failure = open()) {
        return std::move(*failure);
    }
    return true;
}
