// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"

#include <functional>

/// Called with a reply, in the thread that gave it. The value is invalid for an error.
using OnAnswer = std::function<void(bool accepted, const QVariant &value)>;

/// Sends a request and records it. From any thread, also without an event loop.
void sendRequest(Ledger &ledger, RequestKind kind, const CMPath &path, const QVariant &value,
                 const OnAnswer &onAnswer = {});

/// Reads rows in the same way.
void sendRowsRequest(Ledger &ledger, const CMPath &path, const OnAnswer &onAnswer = {});

/// Cancels a display notification.
void sendDisplayCancel(Ledger &ledger, const CMPath &path);

/// Cancels the first `count` display notifications, whatever they are.
void sendDisplayCancels(Ledger &ledger, int count);

/// Opens a display notification and records its path.
void sendDisplayOpen(Ledger &ledger, RequestKind kind, const QVariant &value);

/// Names the node of a closed message, so that the node is removed with this notification.
void nameMessage(Ledger &ledger, const CMPath &message);

void sendSound(Ledger &ledger, const TavoNotificationPlayerItem &item, bool observed);
void sendSoundCancel(Ledger &ledger, const QString &id);
