// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QFile>

#include <algorithm>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// A socket with a path, to which the program under test sends datagrams. Senders wait when some have not been read.
class DatagramSocket
{
public:
    explicit DatagramSocket(const QString &file)
        : m_path(QFile::encodeName(file))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy_n(m_path.begin(), std::min<size_t>(m_path.size(), sizeof address.sun_path - 1),
                    address.sun_path);
        if (bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
            throw std::runtime_error("can't bind " + m_path.toStdString());
        }
    }
    ~DatagramSocket() { close(m_socket); }
    DatagramSocket(const DatagramSocket &) = delete;
    DatagramSocket &operator=(const DatagramSocket &) = delete;

    const QByteArray &path() const { return m_path; }

    /// Empty after the timeout.
    std::string next() const
    {
        constexpr int timeoutMs = 20000;
        pollfd waiting{m_socket, POLLIN, 0};
        if (poll(&waiting, 1, timeoutMs) != 1) {
            return {};
        }
        std::string datagram(10000, '\0');
        datagram.resize(
            size_t(std::max<ssize_t>(0, recv(m_socket, datagram.data(), datagram.size(), 0))));
        return datagram;
    }

private:
    QByteArray m_path;
    int m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};
