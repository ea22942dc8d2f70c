// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/SoundSource.h"

#include "base/SoundLocation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
/// Stops reading endless input here. The host's own limit may be far lower.
constexpr int maxInputBytes = 32 << 20;

ExitFailure noInput(const QByteArray &what, int error)
{
    return {ExitCode::NoInput,
            QStringLiteral("%1 can't be read: %2")
                .arg(QString::fromUtf8(what), QString::fromLocal8Bit(std::strerror(error)))};
}

Result<SoundSource, ExitFailure> readInput()
{
    if (isatty(STDIN_FILENO) == 1) {
        return ExitFailure{ExitCode::NoInput,
                           QStringLiteral("standard input is the terminal: send a sound file "
                                          "to it, as in: tavo sound - < chime.flac")};
    }
    QByteArray input;
    std::array<char, 1 << 16> buffer{};
    for (;;) {
        const ssize_t size = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (size < 0 && errno != EINTR) {
            return noInput("standard input", errno);
        }
        if (size == 0) {
            break;
        }
        input.append(buffer.data(), int(std::max<ssize_t>(size, 0)));
        if (input.size() > maxInputBytes) {
            return ExitFailure{ExitCode::NoInput,
                               QStringLiteral("standard input has more than %1 MiB: put the "
                                              "sound into a file, and name that")
                                   .arg(maxInputBytes >> 20)};
        }
    }
    if (input.isEmpty()) {
        return ExitFailure{ExitCode::NoInput, QStringLiteral("standard input is empty")};
    }
    return SoundSource{TavoNotificationPlayerItemType::Data, QString::fromLatin1(input.toBase64())};
}

/// Why the file can't be played, as an errno; 0 if it probably can. Does not open the file: that would
/// take a FIFO's data away from the host.
int fileError(const QByteArray &name)
{
    struct stat status = {};
    if (stat(name.constData(), &status) != 0) {
        return errno;
    }
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    return access(name.constData(), R_OK) == 0 ? 0 : errno;
}

QByteArray currentFolder()
{
    char *folder = getcwd(nullptr, 0);
    QByteArray result(folder);
    free(folder);
    return result;
}
} // namespace

QString fileUri(const QByteArray &name, const QByteArray &folder)
{
    const QByteArray absolute = name.startsWith('/') ? name : folder + '/' + name;
    return QStringLiteral("file://") + QString::fromLatin1(absolute.toPercentEncoding("/"));
}

Result<SoundSource, ExitFailure> soundSource(const Options &options)
{
    const QByteArray name = QByteArray::fromStdString(options.file);
    const bool isStream = !options.streamFormat.empty();
    if (name == "-") {
        if (isStream) {
            return ExitFailure{ExitCode::Usage,
                               QStringLiteral("a stream can't be read from standard input: "
                                              "make a FIFO with mkfifo, and name that")};
        }
        return readInput();
    }
    const auto type =
        isStream ? TavoNotificationPlayerItemType::Stream : TavoNotificationPlayerItemType::Uri;
    if (const QString text = QString::fromUtf8(name); isSoundUri(text)) {
        return SoundSource{type, text};
    }
    if (const int error = fileError(name)) {
        return noInput(name, error);
    }
    return SoundSource{type, fileUri(name, currentFolder())};
}
