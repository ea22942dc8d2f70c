// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/broker/Certificates.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/// A real MQTT broker, mosquitto, on a free port of 127.0.0.1. Ends with the object, and also if the
/// process ends.
class Broker
{
public:
    /// Lines for its configuration. By default everybody may do everything.
    static QString openToAll() { return QStringLiteral("allow_anonymous true\n"); }

    /// Returns when the broker accepts connections; throws when it does not start.
    explicit Broker(const QString &configuration = openToAll());

    /// One that speaks TLS only, with this certificate, and accepts only clients with a certificate
    /// of the same authority. Their common names are their user names, for the rules of `access`: a
    /// file for mosquitto's acl_file, or an empty string.
    Broker(const Certificates &certificates, const Identity &server, const QString &access = {});

    ~Broker();
    Broker(const Broker &) = delete;
    Broker &operator=(const Broker &) = delete;

    /// Stays the same when the broker is restarted.
    int port() const { return m_port; }
    /// "mqtt://127.0.0.1:PORT", or mqtts.
    QString uri() const;
    QString folder() const { return m_folder.path(); }
    /// What the broker has written so far.
    QString log() const;

    /// Stops it in an orderly way: it keeps what it was told to keep.
    void stop();
    /// As a power cut does.
    void kill();
    /// Starts a broker that has been stopped or killed; throws when it does not start.
    void start();
    bool isRunning() const { return m_process != nullptr; }

    /// Suspends the broker until resume(): connections stay open, and nothing is answered.
    void pause();
    void resume();

    /// Replaces the configuration, but for the port, from the next start on.
    void setConfiguration(const QString &configuration) { m_configuration = configuration; }
    const QString &configuration() const { return m_configuration; }

    qint64 processId() const { return m_process->processId(); }

private:
    bool tryToStart();

    QTemporaryDir m_folder;
    QString m_configuration;
    const bool m_hasTls = false;
    int m_port = 0;
    std::unique_ptr<QProcess> m_process;
};
