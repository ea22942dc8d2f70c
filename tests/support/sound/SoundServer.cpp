// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/sound/SoundServer.h"

#include "support/program/BoundProcess.h"
#include "support/sound/SoundFiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <stdexcept>

namespace {

constexpr int startLimitMs = 10000;
constexpr int endLimitMs = 5000;
constexpr unsigned long pollMs = 10;

QString sinkOf(const QString &device)
{
    return device == QLatin1String("notifications") ? QStringLiteral("notif") : device;
}

QString nullSink(const QString &name)
{
    return QStringLiteral("module-null-sink sink_name=%1 format=s16le rate=%2 channels=%3 "
                          "norewinds=1")
        .arg(name)
        .arg(SoundServer::rate)
        .arg(SoundServer::channels);
}

void end(QProcess &process)
{
    if (process.state() == QProcess::NotRunning) {
        return;
    }
    process.terminate();
    if (!process.waitForFinished(endLimitMs)) {
        process.kill();
        process.waitForFinished(endLimitMs);
    }
}

} // namespace

Recording::Recording(const QString &device)
{
    m_recorder.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_recorder.start(QStringLiteral("parec"),
                     {QStringLiteral("--device=%1.monitor").arg(sinkOf(device)),
                      QStringLiteral("--raw"), QStringLiteral("--format=s16le"),
                      QStringLiteral("--rate=%1").arg(SoundServer::rate),
                      QStringLiteral("--channels=%1").arg(SoundServer::channels),
                      QStringLiteral("--latency-msec=10")});
    // The monitor also sends silence, so the first bytes show that the recorder has started.
    if (!m_recorder.waitForReadyRead(startLimitMs)) {
        throw std::runtime_error("nothing can be recorded");
    }
}

Recording::~Recording()
{
    end(m_recorder);
}

QByteArray Recording::take()
{
    end(m_recorder);
    return m_recorder.readAllStandardOutput();
}

SoundServer::SoundServer()
{
    writeConfiguration();
    start();
}

SoundServer::~SoundServer()
{
    end(*m_server);
}

void SoundServer::kill()
{
    m_server->kill();
    m_server->waitForFinished(endLimitMs);
}

void SoundServer::writeConfiguration()
{
    const QString runtime = m_folder.filePath(QStringLiteral("runtime"));
    QDir().mkpath(runtime + QStringLiteral("/pulse"));
    for (const QString &folder : {runtime, runtime + QStringLiteral("/pulse")}) {
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    const QString configuration = m_folder.filePath(QStringLiteral("asound.conf"));
    writeFile(configuration, "</usr/share/alsa/alsa.conf>\n"
                             "pcm.notifications { type pulse device \"notif\" }\n"
                             "pcm.main { type pulse device \"main\" }\n");
    qputenv("HOME", QFile::encodeName(runtime));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
    qputenv("PULSE_RUNTIME_PATH", QFile::encodeName(runtime) + "/pulse");
    qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(runtime) + "/pulse/native");
    qputenv("ALSA_CONFIG_PATH", QFile::encodeName(configuration));
}

void SoundServer::start()
{
    const QString socket = qEnvironmentVariable("PULSE_RUNTIME_PATH") + QStringLiteral("/native");
    m_server = std::make_unique<BoundProcess>();
    m_server->setProcessChannelMode(QProcess::MergedChannels);
    m_server->setStandardOutputFile(m_folder.filePath(QStringLiteral("server.log")));
    // With shared memory the server crashed, and with rewinds it reported the end of a sound
    // late.
    m_server->start(
        QStringLiteral("pulseaudio"),
        {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
         QStringLiteral("--disable-shm=yes"), QStringLiteral("--exit-idle-time=-1"),
         QStringLiteral("--disallow-exit=yes"), QStringLiteral("--use-pid-file=no"),
         QStringLiteral("--realtime=no"), QStringLiteral("--high-priority=no"),
         QStringLiteral("--log-target=stderr"), QStringLiteral("-L"),
         QStringLiteral("module-native-protocol-unix socket=%1 auth-anonymous=1").arg(socket),
         QStringLiteral("-L"), nullSink(QStringLiteral("notif")), QStringLiteral("-L"),
         nullSink(QStringLiteral("main"))});
    QElapsedTimer elapsed;
    elapsed.start();
    while (!answers()) {
        if (m_server->state() == QProcess::NotRunning || elapsed.hasExpired(startLimitMs)) {
            throw std::runtime_error("the sound server doesn't start");
        }
        QThread::msleep(pollMs);
    }
}

QByteArray SoundServer::ask(const QStringList &arguments)
{
    QProcess query;
    query.start(QStringLiteral("pactl"), arguments);
    if (!query.waitForFinished(startLimitMs) || query.exitCode() != 0) {
        throw std::runtime_error("the sound server refuses " +
                                 arguments.join(QLatin1Char(' ')).toStdString() + ": " +
                                 query.readAllStandardError().toStdString());
    }
    return query.readAllStandardOutput();
}

// The socket exists before the sinks do.
bool SoundServer::answers() const
{
    QProcess query;
    query.setStandardErrorFile(QProcess::nullDevice());
    query.start(QStringLiteral("pactl"),
                {QStringLiteral("set-default-sink"), QStringLiteral("main")});
    return query.waitForFinished(startLimitMs) && query.exitCode() == 0;
}
