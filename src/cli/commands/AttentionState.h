// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <client/TavoClient.h>
#include <core/tavo.h>

#include <functional>

/// What the module for attention tells of itself.
struct AttentionState
{
    TavoAttentionDoNotDisturb doNotDisturb;
    TavoAttentionRules rules;
    TavoAttentionHistory history;
    int missed = 0;

    QVariantHash toHash() const;
};

/// Receives the state, or why it can't be read: a host without the module has no such node.
using AttentionReceiver = std::function<void(const AttentionState &state, const CMError &error)>;

/// Reads the state and calls the receiver once, unless the context is deleted first.
void readAttention(TavoClient &client, QObject *context, const AttentionReceiver &receiver);

/// Such as "on until 07:00 (by the schedule)". Texts of programs are shortened and safe to print.
QString doNotDisturbText(const TavoAttentionDoNotDisturb &state);
