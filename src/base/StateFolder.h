// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// Where the host keeps what outlasts a restart: $STATE_DIRECTORY for a service of the system, else tavo in
/// $XDG_STATE_HOME or ~/.local/state. It need not exist.
QString stateFolder();
