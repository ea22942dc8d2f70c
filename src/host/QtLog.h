// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMessageLogContext>
#include <QString>

/// Qt's message handler while the host runs: logs each message at its level to the logger "Qt", or
/// "Qt.<category>" if it has a category. A fatal message, after which Qt aborts, is also printed on
/// standard error, whatever the log levels are.
void logQtMessage(QtMsgType type, const QMessageLogContext &context, const QString &message);
