// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

/// Records one of the server's devices from its construction until take().
class Recording
{
public:
    /// Returns when the recording has started.
    explicit Recording(const QString &device);
    ~Recording();
    Recording(const Recording &) = delete;
    Recording &operator=(const Recording &) = delete;

    /// Ends the recording and returns it: 16 bit little-endian stereo at 48000 Hz.
    QByteArray take();

private:
    QProcess m_recorder;
};

/// A private sound server with two inaudible devices, known to ALSA in this process as
/// "notifications" and "main". Ends with the object, and also if the process ends.
class SoundServer
{
public:
    static constexpr int rate = 48000;
    static constexpr int channels = 2;

    /// Returns when the server accepts connections. Throws if it does not start.
    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer &) = delete;
    SoundServer &operator=(const SoundServer &) = delete;

    /// Kills the server, as a crash would.
    void kill();

    /// Starts the server again at the same address, after it has ended.
    void startAgain() { start(); }

    /// What pactl prints with these arguments. Throws on error.
    static QByteArray ask(const QStringList &arguments);

private:
    void writeConfiguration();
    void start();
    bool answers() const;

    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_server;
};
