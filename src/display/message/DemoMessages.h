// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/message/MessageSource.h"

#include <QTimer>

/// Shows every look without a host, one message after the other, and ends.
class DemoMessages : public MessageSource
{
    Q_OBJECT

public:
    explicit DemoMessages(QObject *parent = nullptr);

    void start() override;
    void close(const CMPath &path) override;
    void activate(const CMPath &action) override;

Q_SIGNALS:
    void finished();

private Q_SLOTS:
    void on_timer_timeout();

private:
    void showNext();

    int m_next = 0;
    QTimer m_timer;
};
