// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/attention/HistoryRequests.h"

#include <core/base/connect.h>

#include <QLocalSocket>

namespace {
constexpr int timeoutMs = 5000;
constexpr char opened = '1';
constexpr char noHistory = '0';
} // namespace

HistoryRequests::HistoryRequests(const QString &socket, std::function<bool()> open, QObject *parent)
    : QObject(parent)
    , m_open(std::move(open))
{
    tavoConnect(&m_server, &QLocalServer::newConnection, this,
                &HistoryRequests::on_server_newConnection);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    QLocalServer::removeServer(socket); // left behind by one that was killed
    if (!m_server.listen(socket)) {
        qWarning("tavo-display --history will not work: %s",
                 qUtf8Printable(m_server.errorString()));
    }
}

std::optional<Failure> HistoryRequests::send(const QString &socket)
{
    QLocalSocket request;
    request.connectToServer(socket);
    char answer = 0;
    if (!request.waitForConnected(timeoutMs) || !request.waitForReadyRead(timeoutMs) ||
        !request.getChar(&answer)) {
        return Failure{QStringLiteral("the running one does not respond")};
    }
    return answer == opened ? std::optional<Failure>()
                            : Failure{QStringLiteral("the host keeps no history: its module "
                                                     "attention is not loaded")};
}

void HistoryRequests::on_server_newConnection()
{
    while (QLocalSocket *request = m_server.nextPendingConnection()) {
        tavoConnect(request, &QLocalSocket::disconnected, request, &QObject::deleteLater);
        request->putChar(m_open() ? opened : noHistory);
        request->disconnectFromServer();
    }
}
