// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Has a crash of this process print the name of its thread, which is that of its module, before the process
/// ends by the signal as ever. Does nothing for a signal that already has a handler.
void installCrashReport();
