// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/doctor/Finding.h"

/// Tries to open an ALSA device for playing, as the user that runs this program, and plays nothing.
Finding lookAtSoundDevice(const QString &subject, const QString &device);
