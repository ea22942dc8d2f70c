// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

class BusReader;
struct NotifyCall;

/// The hints of a desktop notification: its urgency, its sound and others.
namespace NotifyHints {
/// Reads the dictionary of hints. An unknown hint, and one of another type than expected, is skipped.
void read(NotifyCall &call, BusReader &reader);
} // namespace NotifyHints
