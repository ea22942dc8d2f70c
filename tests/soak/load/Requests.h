// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Ledger.h"

#include <functional>

/// Told of an answer, in the thread that gave it. The value is invalid for an error.
using OnAnswer = std::function<void(bool accepted, const QVariant &value)>;

/// Raises a request that the ledger books, from any thread, without one that turns an event loop.
void raise(Ledger &ledger, RequestKind kind, const CMPath &path, const QVariant &value,
           const OnAnswer &onAnswer = {});

/// Reads rows in the same way.
void raiseRowsRequest(Ledger &ledger, const CMPath &path, const OnAnswer &onAnswer = {});

/// Takes a display notification away, by a cancel.
void raiseDisplayCancel(Ledger &ledger, const CMPath &path);

/// Takes the first of them away, whatever they are.
void raiseDisplayCancels(Ledger &ledger, int most);

/// Opens one and books what the answer names.
void raiseDisplayOpen(Ledger &ledger, RequestKind kind, const QVariant &value);

/// Names a closed message's node, so that the node goes with this notification.
void raiseCleaning(Ledger &ledger, const CMPath &message);

void raiseSound(Ledger &ledger, const TavoNotificationPlayerItem &item, bool observed);
void raiseSoundCancel(Ledger &ledger, const QString &id);
