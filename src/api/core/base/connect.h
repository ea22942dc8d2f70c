// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMetaMethod>
#include <QMetaType>
#include <QObject>

#include <atomic>
#include <type_traits>

/// Returns whether a signal can be delivered to the receiver. If the call may be queued, the
/// meta-type system must know the type of each argument that is not a pointer.
template <typename Signal>
bool verifyConnectionSignalParameters(const QObject *sender, Signal signal, const QObject *receiver,
                                      Qt::ConnectionType type)
{
    const bool mayBeQueued = type == Qt::QueuedConnection || type == Qt::BlockingQueuedConnection ||
                             (type == Qt::AutoConnection && sender->thread() != receiver->thread());
    if (!mayBeQueued) {
        return true;
    }
    // Signals of one type have the same arguments, and what is known stays known.
    static std::atomic<bool> areKnown(false);
    if (areKnown) {
        return true;
    }
    const QMetaMethod method = QMetaMethod::fromSignal(signal);
    const QList<QByteArray> names = method.parameterTypes();
    for (int i = 0; i < names.size(); ++i) {
        if (!names.at(i).endsWith('*') && method.parameterType(i) == QMetaType::UnknownType) {
            return false;
        }
    }
    areKnown = true;
    return true;
}

/// Connects a signal to a slot. Asserts that the connection can be made.
template <typename Sender, typename Signal, typename Receiver, typename Slot>
QMetaObject::Connection tavoConnect(const Sender *sender, Signal signal, const Receiver *receiver,
                                    Slot slot, Qt::ConnectionType type = Qt::AutoConnection)
{
    Q_ASSERT(verifyConnectionSignalParameters(sender, signal, receiver, type));
    QMetaObject::Connection connection = QObject::connect(sender, signal, receiver, slot, type);
    Q_ASSERT(connection);
    return connection;
}
