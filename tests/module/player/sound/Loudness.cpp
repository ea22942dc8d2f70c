// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/player/sound/Loudness.h"

#include "support/sound/SoundServer.h"

#include <cmath>
#include <cstring>

namespace {
constexpr int stepFrames = SoundServer::rate / 100;
constexpr int frameBytes = SoundServer::channels * int(sizeof(short));
constexpr int stepBytes = stepFrames * frameBytes;
constexpr double fullScale = 32768.0;

/// A level of fewer steps is part of a fade.
constexpr int minSteps = 3;

double loudnessOfStep(const char *bytes)
{
    double sum = 0;
    for (int frame = 0; frame < stepFrames; ++frame, bytes += frameBytes) {
        short sample = 0;
        std::memcpy(&sample, bytes, sizeof sample);
        sum += double(sample) * sample;
    }
    return std::sqrt(sum / stepFrames) / fullScale;
}

bool isAt(double loudness, double level)
{
    return loudness > 0 && std::abs(20 * std::log10(loudness / level)) <= 1.0;
}
} // namespace

std::vector<double> loudnessOf(const QByteArray &recording)
{
    std::vector<double> loudness;
    loudness.reserve(std::size_t(recording.size() / stepBytes));
    for (int at = 0; at + stepBytes <= recording.size(); at += stepBytes) {
        loudness.push_back(loudnessOfStep(recording.constData() + at));
    }
    return loudness;
}

std::vector<double> stepsAt(const std::vector<double> &loudness, double level)
{
    std::vector<double> steps;
    for (const double step : loudness) {
        if (isAt(step, level)) {
            steps.push_back(step);
        }
    }
    return steps;
}

std::vector<double> levelsOf(const std::vector<double> &loudness, const std::vector<double> &levels)
{
    std::vector<double> stays;
    double current = 0;
    int steps = 0;
    for (const double step : loudness) {
        for (const double level : levels) {
            if (!isAt(step, level)) {
                continue;
            }
            steps = level == current ? steps + 1 : 1;
            current = level;
            const bool isNew = steps == minSteps && (stays.empty() || stays.back() != level);
            if (isNew) {
                stays.push_back(level);
            }
        }
    }
    return stays;
}
