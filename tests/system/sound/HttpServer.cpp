// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HttpServer.h"

#include <QHostAddress>
#include <QTcpSocket>

#include <stdexcept>

namespace {

QString uriAt(quint16 port, const QString &name)
{
    return QStringLiteral("http://127.0.0.1:%1/%2").arg(port).arg(name);
}

} // namespace

HttpServer::HttpServer()
{
    if (!m_server.listen(QHostAddress::LocalHost)) {
        throw std::runtime_error("no port for an http server");
    }
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { accept(); });
}

QString HttpServer::serve(const QString &name, const QByteArray &bytes)
{
    m_files['/' + name.toLatin1()] = {bytes, bytes.size()};
    return uri(name);
}

QString HttpServer::stalling(const QString &name, const QByteArray &bytes, int served)
{
    m_files['/' + name.toLatin1()] = {bytes, served, false};
    return uri(name);
}

QString HttpServer::breakingOff(const QString &name, const QByteArray &bytes)
{
    m_files['/' + name.toLatin1()] = {bytes, bytes.size() / 2};
    return uri(name);
}

QString HttpServer::closed()
{
    // A port that was just free.
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return uriAt(server.serverPort(), QStringLiteral("closed.wav"));
}

void HttpServer::accept()
{
    QTcpSocket *socket = m_server.nextPendingConnection();
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
        // The first line is enough, and it comes in one piece.
        const QByteArray request = socket->readLine();
        socket->readAll();
        if (request.startsWith("GET /silent.wav ")) {
            return;
        }
        const File *file = find(request);
        socket->write(answerWith(file));
        if (file == nullptr || file->closes) {
            socket->disconnectFromHost();
        }
    });
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
}

const HttpServer::File *HttpServer::find(const QByteArray &request) const
{
    const auto file = m_files.find(request.split(' ').value(1));
    return file == m_files.end() ? nullptr : &file->second;
}

QByteArray HttpServer::answerWith(const File *file)
{
    if (file == nullptr) {
        return "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    }
    return "HTTP/1.1 200 OK\r\nContent-Type: audio/wav\r\nContent-Length: " +
           QByteArray::number(file->bytes.size()) + "\r\nConnection: close\r\n\r\n" +
           file->bytes.left(file->served);
}

QString HttpServer::uri(const QString &name) const
{
    return uriAt(m_server.serverPort(), name);
}
