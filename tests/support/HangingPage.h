// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <fcntl.h>
#include <linux/userfaultfd.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

/// A page of memory that nobody provides until it is released: whoever reads it waits, also inside the system, with
/// the locks that it holds.
class HangingPage
{
public:
    HangingPage()
        : m_faults(int(::syscall(SYS_userfaultfd, O_CLOEXEC)))
        , m_page(::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))
    {
        uffdio_api api{};
        api.api = UFFD_API;
        uffdio_register page{};
        page.range = range();
        page.mode = UFFDIO_REGISTER_MODE_MISSING;
        m_isPermitted = m_faults >= 0 && ::ioctl(m_faults, UFFDIO_API, &api) >= 0 &&
                        ::ioctl(m_faults, UFFDIO_REGISTER, &page) >= 0;
    }
    ~HangingPage()
    {
        ::close(m_faults);
        ::munmap(m_page, bytes);
    }
    Q_DISABLE_COPY_MOVE(HangingPage)

    /// False where only root may do this.
    bool isPermitted() const { return m_isPermitted; }

    const void *data() const { return m_page; }

    /// Waits until somebody waits for the page.
    void waitForReader() const
    {
        uffd_msg fault{};
        (void)!::read(m_faults, &fault, sizeof(fault));
    }

    void release() const
    {
        uffdio_zeropage zero{};
        zero.range = range();
        ::ioctl(m_faults, UFFDIO_ZEROPAGE, &zero);
    }

private:
    static constexpr std::size_t bytes = 4096;

    uffdio_range range() const { return {reinterpret_cast<__u64>(m_page), bytes}; }

    const int m_faults;
    void *const m_page;
    bool m_isPermitted = false;
};
