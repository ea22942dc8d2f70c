// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

class TavoConfiguration;

/// How to reach a broker, and as whom.
///
/// Files are read for each connection, so they may change while the program runs. If a file is named without a
/// folder, it is one of the service manager's credentials, in $CREDENTIALS_DIRECTORY.
struct MqttSettings
{
    QString host;
    int port = 0;
    bool isEncrypted = true;

    QString caFile; ///< whose certificates count; empty: those that the system trusts
    QString certificateFile;
    QString keyFile;
    QString user;
    QString passwordFile; ///< its first line counts

    int keepAliveSeconds = 60; ///< a silent broker is noticed within this time
    int minReconnectMs = 1000;
    int maxReconnectMs = 60000;

    // Set by the program:
    QString clientId;
    int sessionSeconds =
        0; ///< how long the broker keeps messages for a client that is away; 0: not at all
    /// libmosquitto sends a ping after this time without traffic, and waits as long for the reply.
    int pingSeconds() const { return keepAliveSeconds / 2; }

    /// Reads the keys of a section: url (mqtts://HOST[:PORT], or mqtt:// for an unencrypted connection), ca,
    /// certificate, key, user, passwordFile, keepAlive, reconnect.min, reconnect.max. Throws a
    /// std::runtime_error that names the key.
    static MqttSettings read(TavoConfiguration section);

    /// The same for an URL only. Throws a std::runtime_error.
    static MqttSettings fromUrl(const QString &url);
};
