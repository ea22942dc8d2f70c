// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

/// Whether a code point is a control character, which could make a terminal do something.
constexpr bool isControl(uint character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}
