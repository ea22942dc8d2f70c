// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/records/enumerations.h>

/// Whether nobody has seen a notification with this state.
inline bool isMissed(TavoAttentionState::Enum state)
{
    return state == TavoAttentionState::Expired || state == TavoAttentionState::Silenced ||
           state == TavoAttentionState::LeftOpen;
}
