// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

#include <vector>

/// How loud a recording is, in steps of 10 ms: the root of the mean square of the left channel's
/// samples, 1.0 being a square wave at full scale.
std::vector<double> loudnessOf(const QByteArray &recording);

/// The loudness of steps that lie within 1 dB of a level; the others are left out.
std::vector<double> stepsAt(const std::vector<double> &loudness, double level);

/// Which of the levels the recording stays at, one after another. Silence and what lies between the
/// levels is left out: a machine under load may lose time, but not loudness.
std::vector<double> levelsOf(const std::vector<double> &loudness,
                             const std::vector<double> &levels);
