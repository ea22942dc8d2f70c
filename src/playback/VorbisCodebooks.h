// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ogg/ogg.h>

/// Returns false for a Vorbis setup header whose codebooks are broken, or larger than those of any encoder. The
/// decoder must not see it: some bytes of header can make it take gigabytes of memory, and more of the stack than
/// there is.
bool hasUsualCodebooks(const ogg_packet &setup);
