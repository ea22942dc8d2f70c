// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"

#include <QByteArray>
#include <QFile>

#include <atomic>
#include <fcntl.h>
#include <linux/userfaultfd.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

/// A folder in which the system looks nothing up for as long as this exists, except for what it has in memory. Whoever
/// deletes a file holds the lock of its folder, and waits until nobody writes to the file. Here the writer waits
/// for a page of memory that nobody provides.
class LockedFolder
{
public:
    explicit LockedFolder(const QString &folder)
        : m_file(QFile::encodeName(folder + "/locked"))
        , m_faults(int(::syscall(SYS_userfaultfd, O_CLOEXEC)))
    {
        if (m_faults < 0) {
            return; // not permitted
        }
        m_page =
            ::mmap(nullptr, pageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        uffdio_api api{};
        api.api = UFFD_API;
        uffdio_register page{};
        page.range = {reinterpret_cast<__u64>(m_page), pageBytes};
        page.mode = UFFDIO_REGISTER_MODE_MISSING;
        const int file = ::open(m_file.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        if (::ioctl(m_faults, UFFDIO_API, &api) < 0 ||
            ::ioctl(m_faults, UFFDIO_REGISTER, &page) < 0) {
            ::close(file);
            return;
        }
        m_writer = std::thread([this, file] {
            (void)!::write(file, m_page, 1);
            ::close(file);
        });
        uffd_msg fault{};
        m_isLocked = ::read(m_faults, &fault, sizeof(fault)) == sizeof(fault);
        m_remover = std::thread([this] {
            m_removerId = int(::syscall(SYS_gettid));
            ::unlink(m_file.constData());
        });
        m_isLocked =
            m_isLocked && waitFor([this] { return m_removerId != 0 && isStuck(m_removerId); });
    }

    ~LockedFolder()
    {
        if (m_writer.joinable()) {
            uffdio_zeropage zero{};
            zero.range = {reinterpret_cast<__u64>(m_page), pageBytes};
            ::ioctl(m_faults, UFFDIO_ZEROPAGE, &zero);
            m_writer.join();
            m_remover.join();
        }
        ::close(m_faults);
        ::munmap(m_page, pageBytes);
    }
    Q_DISABLE_COPY_MOVE(LockedFolder)

    /// False where only root may do this.
    bool isLocked() const { return m_isLocked; }

private:
    static constexpr std::size_t pageBytes = 4096;

    /// Whether a thread waits for something that signals don't interrupt.
    static bool isStuck(int thread)
    {
        QFile status("/proc/self/task/" + QString::number(thread) + "/stat");
        status.open(QIODevice::ReadOnly);
        return status.readAll().contains(") D ");
    }

    const QByteArray m_file;
    const int m_faults;
    void *m_page = nullptr;
    bool m_isLocked = false;
    std::atomic<int> m_removerId{0};
    std::thread m_writer;
    std::thread m_remover;
};
