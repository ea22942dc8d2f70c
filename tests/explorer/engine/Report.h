// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Program.h"

#include <iosfwd>

namespace exploration {

/// Prints the findings as narrations, the notes, and the figures.
void report(const Options &options, const SystemFactory &factory, const Outcome &outcome,
            std::ostream &stream);

/// Narrates the sequence given in the options. Returns false if it ends with a finding or a death.
bool replay(const Options &options, const SystemFactory &factory, std::ostream &stream);

} // namespace exploration
