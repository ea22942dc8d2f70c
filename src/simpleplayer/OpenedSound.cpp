// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/OpenedSound.h"

#include "base/UserThreads.h"

#include <QFile>
#include <QMultiHash>

#include <climits>

#include <array>
#include <cstdint>
#include <fcntl.h>
#include <linux/openat2.h>
#include <mutex>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <utility>

/// Entered in the table of its process for as long as it lives.
class OpenedSound::File
{
public:
    File(QString path, int descriptor, const struct statx &status)
        : m_path(std::move(path))
        , m_descriptor(descriptor)
        , m_status(status)
    {
    }
    ~File();
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    static std::shared_ptr<const File> entered(std::shared_ptr<const File> file);

    /// The file last entered for a path; null if there is none.
    static std::shared_ptr<const File> find(const QString &path);

    const QString &path() const { return m_path; }
    mode_t mode() const { return m_status.stx_mode; }
    FileId id() const
    {
        return {m_status.stx_uid, makedev(m_status.stx_dev_major, m_status.stx_dev_minor),
                m_status.stx_ino};
    }
    int openForReading() const;

private:
    using Table = QMultiHash<QString, std::weak_ptr<const File>>;

    static Table &table();
    static std::mutex &mutex();

    const QString m_path;
    const int m_descriptor;
    const struct statx m_status;
};

namespace {
constexpr int readingFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC;
constexpr int findingFlags = O_PATH | O_CLOEXEC;

/// A file of no more blocks of 512 bytes is freed in no time.
constexpr std::uint64_t fewBlocks = 128;

/// Of one owner. Each holds a descriptor until it is freed.
constexpr std::size_t maxClosing = 16;
constexpr std::size_t maxTasks = 1024; ///< with those that were opened before
constexpr std::size_t maxThreads = 96;

/// The threads in which FIFOs and deleted files are closed. Never destroyed, as sounds may live until the process ends.
const UserThreads &closing()
{
    static const UserThreads &s_threads = *new UserThreads(maxTasks, maxThreads);
    return s_threads;
}

/// What is known of an open file, without asking a server.
struct statx statusOf(int descriptor)
{
    struct statx status
    {
    };
    const int flags = AT_EMPTY_PATH | AT_STATX_DONT_SYNC;
    if (::statx(descriptor, "", flags, STATX_BASIC_STATS, &status) < 0) {
        status.stx_nlink = 1; // for all that is known, it is not deleted
    }
    return status;
}

/// To free a large file that is deleted takes the system seconds, and whoever closes it last waits for that.
void closeFile(int descriptor, const struct statx &status, bool mayHang)
{
    const bool isLargeAndDeleted = status.stx_nlink == 0 && status.stx_blocks > fewBlocks;
    const bool closesLater = (mayHang || isLargeAndDeleted) &&
                             closing().run(status.stx_uid, [descriptor] { ::close(descriptor); });
    if (!closesLater) {
        ::close(descriptor);
    }
}

QByteArray linkTo(int descriptor)
{
    return "/proc/self/fd/" + QByteArray::number(descriptor);
}

/// Where an open file is; empty if it is nowhere. Whoever resolves links one by one looks up each folder of a long
/// path again and again, which takes seconds if links have long targets.
QString locationOf(int descriptor)
{
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlink(linkTo(descriptor).constData(), target.data(), target.size());
    // Pipes and sockets without a path have names of another form.
    const bool isPath = length > 0 && length < ssize_t(target.size()) && target[0] == '/';
    return isPath ? QFile::decodeName(QByteArray(target.data(), int(length))) : QString();
}
} // namespace

OpenedSound::File::~File()
{
    closeFile(m_descriptor, statusOf(m_descriptor), false);
    const std::lock_guard lock(mutex());
    for (auto entry = table().find(m_path); entry != table().end() && entry.key() == m_path;) {
        entry = entry->expired() ? table().erase(entry) : std::next(entry);
    }
}

OpenedSound::File::Table &OpenedSound::File::table()
{
    static Table &s_table = *new Table; // Threads that hang may go on while the process ends.
    return s_table;
}

std::mutex &OpenedSound::File::mutex()
{
    static std::mutex &s_mutex = *new std::mutex;
    return s_mutex;
}

// Many may wait for the same sound, so they share its descriptor.
std::shared_ptr<const OpenedSound::File>
OpenedSound::File::entered(std::shared_ptr<const File> file)
{
    if (auto last = find(file->m_path); last != nullptr && last->id().isSameFile(file->id())) {
        return last;
    }
    const std::lock_guard lock(mutex());
    table().insert(file->m_path, file);
    return file;
}

std::shared_ptr<const OpenedSound::File> OpenedSound::File::find(const QString &path)
{
    QList<std::weak_ptr<const File>> entries;
    {
        const std::lock_guard lock(mutex());
        entries = table().values(path); // the last one first
    }
    // Outside the lock, since this may be the last reference to one of them.
    for (const auto &entry : entries) {
        if (auto file = entry.lock()) {
            return file;
        }
    }
    return nullptr;
}

int OpenedSound::File::openForReading() const
{
    return ::open(linkTo(m_descriptor).constData(), readingFlags);
}

OpenedSound::OpenedSound(std::shared_ptr<const File> file)
    : m_file(std::move(file))
{
}

std::optional<OpenedSound> OpenedSound::open(const QString &path)
{
    return take(::open(QFile::encodeName(path).constData(), findingFlags));
}

std::optional<OpenedSound> OpenedSound::openAtOnce(const QString &path)
{
    open_how how{};
    how.flags = findingFlags;
    how.resolve = RESOLVE_CACHED;
    return take(int(
        ::syscall(SYS_openat2, AT_FDCWD, QFile::encodeName(path).constData(), &how, sizeof(how))));
}

std::optional<OpenedSound> OpenedSound::take(int descriptor)
{
    if (descriptor < 0) {
        return std::nullopt;
    }
    const struct statx status = statusOf(descriptor);
    auto file = std::make_shared<const File>(locationOf(descriptor), descriptor, status);
    const bool isDeleted = status.stx_nlink == 0;
    if (file->path().isEmpty() || isDeleted || closing().count(status.stx_uid) >= maxClosing) {
        return std::nullopt;
    }
    return OpenedSound(File::entered(std::move(file)));
}

QString OpenedSound::path() const
{
    return m_file->path();
}

bool OpenedSound::isRegularFile() const
{
    return S_ISREG(m_file->mode());
}

bool OpenedSound::isFifo() const
{
    return S_ISFIFO(m_file->mode());
}

int OpenedSound::openForReading(const QString &path)
{
    if (const auto file = File::find(path)) {
        return file->openForReading();
    }
    return ::open(QFile::encodeName(path).constData(), readingFlags);
}

std::optional<OpenedSound::FileId> OpenedSound::idOf(const QString &path)
{
    const auto file = File::find(path);
    return file != nullptr ? std::make_optional(file->id()) : std::nullopt;
}

void OpenedSound::close(int descriptor)
{
    const struct statx status = statusOf(descriptor);
    // Its writer may keep a pipe locked.
    closeFile(descriptor, status, S_ISFIFO(status.stx_mode));
}
