// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QTcpServer>
#include <QTcpSocket>

#include <string>

/// Answers every request on the loopback with the same bytes. Runs in the test's event loop.
class HttpServer
{
public:
    HttpServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { answer(); });
    }

    QString uri() const
    {
        return QStringLiteral("http://127.0.0.1:%1/sound").arg(m_server.serverPort());
    }

    /// Answers with a body and its length.
    void serve(const QByteArray &body)
    {
        m_answer = "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) +
                   "\r\n\r\n" + body;
    }

    /// Answers with these bytes; the connection stays open until close().
    void serveRaw(const QByteArray &answer) { m_answer = answer; }

    /// Answers the next request with these bytes instead.
    void serveOnce(const QByteArray &answer) { m_once = answer; }

    /// Sends more on the open connection.
    void send(const QByteArray &bytes) { m_connection->write(bytes); }

    void close() { m_connection->disconnectFromHost(); }

    bool hasAnswered() const { return m_answered; }

    /// The last request.
    std::string request() const { return m_request.toStdString(); }

private:
    void answer()
    {
        m_connection = m_server.nextPendingConnection();
        QObject::connect(m_connection, &QTcpSocket::readyRead, m_connection,
                         [this, connection = m_connection] {
                             m_request = connection->readAll();
                             if (!m_request.contains("\r\n\r\n")) {
                                 return;
                             }
                             connection->write(m_once.isNull() ? m_answer : m_once);
                             m_once = QByteArray();
                             m_answered = true;
                         });
    }

    QTcpServer m_server;
    QByteArray m_answer;
    QByteArray m_once;
    QByteArray m_request;
    QTcpSocket *m_connection = nullptr; // owned by the server
    bool m_answered = false;
};
