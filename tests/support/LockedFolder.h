// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"
#include "support/HangingPage.h"

#include <QByteArray>
#include <QFile>

#include <atomic>
#include <thread>

/// A folder in which the system looks nothing up for as long as this exists, except for what it has in memory. Whoever
/// deletes a file holds the lock of its folder, and waits until nobody writes to the file. Here the writer waits.
class LockedFolder
{
public:
    explicit LockedFolder(const QString &folder)
        : m_file(QFile::encodeName(folder + "/locked"))
    {
        if (!m_page.isPermitted()) {
            return;
        }
        m_writer = std::thread([this] {
            const int file = ::open(m_file.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
            (void)!::write(file, m_page.data(), 1);
            ::close(file);
        });
        m_page.waitForReader();
        m_remover = std::thread([this] {
            m_removerId = int(::syscall(SYS_gettid));
            ::unlink(m_file.constData());
        });
        m_isLocked = waitFor([this] { return m_removerId != 0 && isStuck(m_removerId); });
    }
    ~LockedFolder()
    {
        if (m_writer.joinable()) {
            m_page.release();
            m_writer.join();
            m_remover.join();
        }
    }
    Q_DISABLE_COPY_MOVE(LockedFolder)

    /// False where only root may do this.
    bool isLocked() const { return m_isLocked; }

private:
    /// Whether a thread waits for something that signals don't interrupt.
    static bool isStuck(int thread)
    {
        QFile status("/proc/self/task/" + QString::number(thread) + "/stat");
        status.open(QIODevice::ReadOnly);
        return status.readAll().contains(") D ");
    }

    const QByteArray m_file;
    const HangingPage m_page;
    bool m_isLocked = false;
    std::atomic<int> m_removerId{0};
    std::thread m_writer;
    std::thread m_remover;
};
