// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HttpServer.h"

#include <stdexcept>

#include <QHostAddress>
#include <QTcpSocket>

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
    m_files['/' + name.toLatin1()] = bytes;
    return uri(name);
}

QString HttpServer::closed()
{
    // A port that was free a moment ago.
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return uriAt(server.serverPort(), QStringLiteral("closed.wav"));
}

void HttpServer::accept()
{
    QTcpSocket *socket = m_server.nextPendingConnection();
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
        // The first line says all that matters; it comes in one piece.
        const QByteArray answer = answerTo(socket->readLine());
        socket->readAll();
        if (!answer.isEmpty()) {
            socket->write(answer);
            socket->disconnectFromHost();
        }
    });
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
}

QByteArray HttpServer::answerTo(const QByteArray &request) const
{
    const QByteArray name = request.split(' ').value(1);
    if (name == "/silent.wav") {
        return {};
    }
    const auto file = m_files.find(name);
    if (file == m_files.end()) {
        return "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    }
    return "HTTP/1.1 200 OK\r\nContent-Type: audio/wav\r\nContent-Length: " +
           QByteArray::number(file->second.size()) + "\r\nConnection: close\r\n\r\n" + file->second;
}

QString HttpServer::uri(const QString &name) const
{
    return uriAt(m_server.serverPort(), name);
}
