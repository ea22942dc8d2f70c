// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <base/AttentionItem.h>
#include <base/MessageNode.h>

/// What a MessageNode shows of a notification.
namespace ItemRows {
TavoRoles text(const AttentionItem &item);

/// The first 64 of them.
QVector<MessageNode::Action> actions(const AttentionItem &item);
} // namespace ItemRows
