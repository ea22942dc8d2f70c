// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

class Hostile;

/// Something that a client does to harm others.
struct Attack
{
    /// The attacker: a client that may do everything, or one that the policy of the bus keeps out.
    enum class Who { Permitted, Outsider };

    const char *name;
    void (*run)(Hostile &); ///< until Hostile::goesOn() is false, or shorter
    Who who = Who::Permitted;
};

const std::vector<Attack> &attacks();
