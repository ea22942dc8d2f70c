// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Dice.h"
#include <core/tavo.h>

/// A value that hardly any node can make something of, nested so deep. No text in it names a module, a
/// requester or a sound: nobody could take it back again.
QVariant rubbish(Dice &dice, int depth);

/// Where to send it: anywhere where something is, and nowhere.
CMPath rubbishPath(Dice &dice);
