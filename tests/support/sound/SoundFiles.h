// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

/// Sounds in which each frame shows its position, so that lost and repeated frames are found.

/// Counts up from 1: exact as 16 bit samples and as floats, and never silent.
std::vector<short> countingSamples(int count);

/// A sine, for formats that do not preserve samples exactly.
std::vector<short> sineSamples(int count, int rate, int frequency);

/// The same as floats, as devices take them.
std::vector<float> asFloats(const std::vector<short> &samples);

/// Writes a mono sound file in a format of libsndfile (SF_FORMAT_WAV | SF_FORMAT_PCM_16, ...).
void writeSound(const QString &path, int format, int rate, const std::vector<short> &samples,
                int channels = 1);

QByteArray readFile(const QString &path);
void writeFile(const QString &path, const QByteArray &bytes);
