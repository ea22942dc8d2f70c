// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>
#include <QTcpServer>

#include <map>

/// An http server on the loopback address that knows some files, and one that it never answers for.
///
/// Thread: the test's, whose event loop drives it.
class HttpServer
{
public:
    HttpServer();

    /// Serves the bytes at the name from now on; gives their URI.
    QString serve(const QString &name, const QByteArray &bytes);

    /// The URI of a file that isn't there.
    QString missing() const { return uri(QStringLiteral("missing.wav")); }

    /// The URI of a file for which a request is taken and left waiting.
    QString silent() const { return uri(QStringLiteral("silent.wav")); }

    /// Serves the headers and so many bytes of the body, and then nothing more.
    QString stalling(const QString &name, const QByteArray &bytes, int served);

    /// Serves the first half of the body and closes the connection.
    QString breakingOff(const QString &name, const QByteArray &bytes);

    /// The URI of a file behind a port at which nobody listens.
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
