// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/ServedConnection.h"

#include <poll.h>

#include <QAbstractEventDispatcher>

ServedConnection::ServedConnection(const QString &address, std::function<void()> onLost)
    : m_onLost(std::move(onLost))
    , m_connection(sdbus::createSessionBusConnectionWithAddress(address.toStdString()))
{
    const int descriptor = m_connection->getEventLoopPollData().fd;
    m_readable = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    m_writable = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Write);
    QObject::connect(m_readable.get(), &QSocketNotifier::activated, &m_context,
                     [this] { serve(); });
    QObject::connect(m_writable.get(), &QSocketNotifier::activated, &m_context,
                     [this] { serve(); });
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                     &m_context, [this] { watch(); });
}

void ServedConnection::serve()
{
    try {
        while (m_connection->processPendingRequest()) {
        }
        watch();
    } catch (const sdbus::Error &) {
        m_readable->setEnabled(false);
        m_writable->setEnabled(false);
        m_onLost();
    }
}

void ServedConnection::watch()
{
    if (m_readable->isEnabled()) {
        m_writable->setEnabled((m_connection->getEventLoopPollData().events & POLLOUT) != 0);
    }
}
