// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

/// The values of the requests sent to the module. Each is made once and sent often.
namespace SoundRequests {
CMPath revokePath();

QVariant enqueue(const QString &id, int priority, bool valid, bool responds);
QVariant cancel(const QString &id);
QVariant revoke(int type, TavoPowerManagerResources::Enum resource);

/// The name of an item in requests.
QString name(int id);
} // namespace SoundRequests
