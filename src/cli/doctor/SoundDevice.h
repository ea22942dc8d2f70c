// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/doctor/Finding.h"

/// Checks that the current user can open an ALSA device for playback, without playing anything.
Finding lookAtSoundDevice(const QString &subject, const QString &device);
