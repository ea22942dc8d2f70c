// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryPlace.h"

#include "base/sqlite/SqliteError.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int maxPutAside = 3;
constexpr const char *asideMark = ".damaged-";

/// The files that make up a database, by what is appended to its name.
const char *const endings[] = {"", "-wal", "-shm"};

[[noreturn]] void fail(const QString &what)
{
    throw SqliteError(
        SqliteError::Kind::Failed,
        QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(errno))));
}

int openPrivate(const QString &file)
{
    const int descriptor = ::open(QFile::encodeName(file).constData(),
                                  O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, S_IRUSR | S_IWUSR);
    if (descriptor < 0) {
        fail(QStringLiteral("cannot open %1").arg(file));
    }
    return descriptor;
}
} // namespace

HistoryPlace::HistoryPlace(QString file)
    : m_file(std::move(file))
{
}

HistoryPlace::~HistoryPlace()
{
    if (m_lock >= 0) {
        ::close(m_lock);
    }
}

void HistoryPlace::prepare()
{
    const QString folder = QFileInfo(m_file).absolutePath();
    if (!QFileInfo(folder).isDir()) {
        QDir().mkpath(QFileInfo(folder).absolutePath());
        if (::mkdir(QFile::encodeName(folder).constData(), S_IRWXU) != 0 && errno != EEXIST) {
            fail(QStringLiteral("cannot make the folder %1").arg(folder));
        }
    }
    lock();
    // SQLite would let others read a file that it makes.
    const int descriptor = openPrivate(m_file);
    struct stat status
    {
    };
    const bool isFile = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    ::close(descriptor);
    if (!isFile) {
        throw SqliteError(SqliteError::Kind::Unusable, QStringLiteral("it is not a regular file"));
    }
}

// A lock of its own, since the database may be renamed by the process that has the lock.
void HistoryPlace::lock()
{
    if (m_lock >= 0) {
        return;
    }
    const int descriptor = openPrivate(m_file + QLatin1String(".lock"));
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor);
        throw SqliteError(SqliteError::Kind::Unusable,
                          QStringLiteral("it is in use by another process"));
    }
    m_lock = descriptor;
}

QString HistoryPlace::putAside()
{
    QString name = m_file + QLatin1String(asideMark) +
                   QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz"));
    for (const char *ending : endings) {
        const QByteArray from = QFile::encodeName(m_file + QLatin1String(ending));
        const QByteArray to = QFile::encodeName(name + QLatin1String(ending));
        if (::rename(from.constData(), to.constData()) != 0 && errno != ENOENT) {
            fail(QStringLiteral("it is damaged, and it cannot be renamed"));
        }
    }
    removeOldestAside();
    return name;
}

void HistoryPlace::removeOldestAside() const
{
    const QFileInfo info(m_file);
    const QString beginning = info.fileName() + QLatin1String(asideMark);
    QStringList names;
    // Their names have their times, so the oldest come first.
    for (const QString &name : info.absoluteDir().entryList(QDir::Files, QDir::Name)) {
        if (name.startsWith(beginning) && !name.endsWith(QLatin1String("-wal")) &&
            !name.endsWith(QLatin1String("-shm"))) {
            names.append(name);
        }
    }
    for (int i = 0; i < names.size() - maxPutAside; ++i) {
        for (const char *ending : endings) {
            QFile::remove(info.absoluteDir().filePath(names.at(i) + QLatin1String(ending)));
        }
    }
}
