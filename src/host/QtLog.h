// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMessageLogContext>
#include <QString>

/// Qt's message handler while the host runs: each message becomes a log record of the same level
/// under the logger "Qt", or "Qt.<category>" for a message of a category of its own.
void logQtMessage(QtMsgType type, const QMessageLogContext &context, const QString &message);
