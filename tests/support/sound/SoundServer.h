// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

/// What is heard on one of the server's devices, from its making until take().
class Recording
{
public:
    /// Returns when the recorder listens.
    explicit Recording(const QString &device);
    ~Recording();
    Recording(const Recording &) = delete;
    Recording &operator=(const Recording &) = delete;

    /// Ends the recording: 16 bit little-endian stereo at 48000 Hz.
    QByteArray take();

private:
    QProcess m_recorder;
};

/// A private sound server with two devices that nobody hears, "notifications" and "main", known to
/// ALSA in this process by these names. Ends with the object, and with the process at the latest.
class SoundServer
{
public:
    static constexpr int rate = 48000;
    static constexpr int channels = 2;

    /// Returns when the server takes connections; throws when it doesn't come to that.
    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer &) = delete;
    SoundServer &operator=(const SoundServer &) = delete;

    /// Ends the server as a crash would.
    void kill();

    /// Starts it again, at the same place, once it has ended.
    void startAgain() { start(); }

    /// What pactl prints when asked so; throws when it fails.
    static QByteArray ask(const QStringList &arguments);

private:
    void writeConfiguration();
    void start();
    bool answers() const;

    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_server;
};
