// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Dice.h"
#include <core/tavo.h>

/// A deeply nested value that hardly any node accepts. No string in it is the name of a module, a
/// requester or a sound, since nobody could release that again.
QVariant rubbish(Dice &dice, int depth);

/// A path to send it to, with or without a node.
CMPath rubbishPath(Dice &dice);
