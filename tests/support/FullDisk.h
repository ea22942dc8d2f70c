// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

/// Lets no file of this process grow, as on a full disk.
class FullDisk
{
public:
    FullDisk()
    {
        getrlimit(RLIMIT_FSIZE, &m_old);
        rlimit limit = m_old;
        limit.rlim_cur = 1;
        m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    rlimit m_old{};
    void (*m_oldHandler)(int) = SIG_DFL;
};
