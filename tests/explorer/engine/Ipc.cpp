// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Ipc.h"

#include "support/Sanitized.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <signal.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace exploration {
namespace {
[[noreturn]] void fail(const char *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

bool writeAll(int file, const char *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(file, data, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        data += written;
        size -= std::size_t(written);
    }
    return true;
}

bool readAll(int file, char *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t got = ::read(file, data, size);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return false;
        }
        data += got;
        size -= std::size_t(got);
    }
    return true;
}
bool isAlone()
{
    const std::filesystem::directory_iterator threads("/proc/self/task");
    // ThreadSanitizer has a thread of its own.
    return threadSanitized || std::distance(begin(threads), end(threads)) == 1;
}
} // namespace

void *sharedMemory(std::size_t size)
{
    void *memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        fail("mmap");
    }
    return memory;
}

void freeSharedMemory(void *memory, std::size_t size)
{
    ::munmap(memory, size);
}

Pipe::Pipe()
{
    // A write to a process that has died fails instead of raising a signal.
    ::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        fail("pipe");
    }
    reading = ends[0];
    writing = ends[1];
}

int forkAlone()
{
    // A thread that has been joined is listed for a moment longer.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!isAlone()) {
        if (std::chrono::steady_clock::now() > limit) {
            throw std::logic_error("only a process with one thread can be forked");
        }
        std::this_thread::yield();
    }
    return ::fork();
}

bool writeMessage(int file, const std::string &message)
{
    const auto size = std::uint32_t(message.size());
    return writeAll(file, reinterpret_cast<const char *>(&size), sizeof size) &&
           writeAll(file, message.data(), message.size());
}

std::optional<std::string> readMessage(int file)
{
    std::uint32_t size = 0;
    if (!readAll(file, reinterpret_cast<char *>(&size), sizeof size)) {
        return {};
    }
    std::string message(size, '\0');
    if (!readAll(file, message.data(), size)) {
        return {};
    }
    return message;
}

std::string collect(int pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            fail("waitpid");
        }
    }
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        return "signal " + std::to_string(signal) + " (" + ::strsignal(signal) + ")";
    }
    return WEXITSTATUS(status) == 0 ? std::string()
                                    : "exit status " + std::to_string(WEXITSTATUS(status));
}

} // namespace exploration
