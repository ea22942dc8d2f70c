// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CrowdHost.h"
#include "GoodClient.h"
#include "Hostile.h"

#include <string>
#include <vector>

/// The measurements, as tables for docs/reliability.md, and the violations.
struct Report
{
    std::vector<Run> runs;
    std::vector<GoodClient::Wait> waits;      ///< while the crowd was there
    std::vector<GoodClient::Wait> afterwards; ///< after it had left
    long maxResidentKiB = 0;
    HostState before;
    HostState after;
    long rowsLeft = 0; ///< messages that the crowd has left on display
    GoodClient::Milliseconds settled{
        -1}; ///< how long it took until all was as before; negative: longer

    /// Lists what ran beside each wait that was longer than the limit.
    std::string tables(GoodClient::Milliseconds limit) const;
};

/// The longest wait of a kind, and the longest of all that were for the host.
GoodClient::Milliseconds longest(const std::vector<GoodClient::Wait> &waits, GoodClient::Kind kind);

/// A sentence for each kind of wait that failed or took longer than the limit.
std::vector<std::string> complaints(const std::vector<GoodClient::Wait> &waits,
                                    GoodClient::Milliseconds limit);
