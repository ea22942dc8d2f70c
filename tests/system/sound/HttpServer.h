// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>
#include <QTcpServer>

#include <map>

/// An http server on the loopback address that serves some files, and one file for which it never
/// responds.
///
/// Lives in the test's thread and runs in its event loop.
class HttpServer
{
public:
    HttpServer();

    /// Serves the bytes under this name and returns their URI.
    QString serve(const QString &name, const QByteArray &bytes);

    /// The URI of a file that does not exist.
    QString missing() const { return uri(QStringLiteral("missing.wav")); }

    /// The URI of a file for which requests are accepted but not answered.
    QString silent() const { return uri(QStringLiteral("silent.wav")); }

    /// Serves the headers and `served` bytes of the body, then stalls.
    QString stalling(const QString &name, const QByteArray &bytes, int served);

    /// Serves the first half of the body, then closes the connection.
    QString breakingOff(const QString &name, const QByteArray &bytes);

    /// The URI of a file at a port where nobody listens.
    static QString closed();

private:
    struct File
    {
        QByteArray bytes;
        int served; // of the bytes
        bool closes = true;
    };

    void accept();
    const File *find(const QByteArray &request) const;
    static QByteArray answerWith(const File *file);
    QString uri(const QString &name) const;

    QTcpServer m_server;
    std::map<QByteArray, File> m_files;
};
