// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

#include <vector>

/// The loudness of a recording in steps of 10 ms: the root mean square of the left channel's
/// samples. 1.0 is a square wave at full scale.
std::vector<double> loudnessOf(const QByteArray &recording);

/// The steps whose loudness is within 1 dB of a level.
std::vector<double> stepsAt(const std::vector<double> &loudness, double level);

/// The levels at which the recording stays, one after another. Ignores silence and the steps
/// between the levels: a machine under load may lose time, but not loudness.
std::vector<double> levelsOf(const std::vector<double> &loudness,
                             const std::vector<double> &levels);
