// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QLocalServer>
#include <QObject>

#include <functional>
#include <optional>

/// Lets another start of the program have this one show the history.
class HistoryRequests : public QObject
{
    Q_OBJECT

public:
    /// Listens at the socket, which no other process uses. Calls the function for each request; it returns
    /// whether there is a history.
    HistoryRequests(const QString &socket, std::function<bool()> open, QObject *parent = nullptr);

    /// Sends a request. Blocks until it is answered. Returns why there is nothing to show, if so.
    static std::optional<Failure> send(const QString &socket);

private Q_SLOTS:
    void on_server_newConnection();

private:
    const std::function<bool()> m_open;
    QLocalServer m_server;
};
