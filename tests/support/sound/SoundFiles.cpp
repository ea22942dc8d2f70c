// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/sound/SoundFiles.h"

#include <QFile>

#include <sndfile.h>

#include <cmath>
#include <numeric>
#include <stdexcept>

std::vector<short> countingSamples(int count)
{
    std::vector<short> samples(std::size_t(count), 0);
    std::iota(samples.begin(), samples.end(), short(1));
    return samples;
}

std::vector<short> sineSamples(int count, int rate, int frequency)
{
    constexpr double amplitude = 10000;
    std::vector<short> samples;
    samples.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i) {
        samples.push_back(short(amplitude * std::sin(2 * M_PI * frequency * i / rate)));
    }
    return samples;
}

std::vector<float> asFloats(const std::vector<short> &samples)
{
    constexpr float scale = 32768.0F;
    std::vector<float> floats;
    floats.reserve(samples.size());
    for (const short sample : samples) {
        floats.push_back(float(sample) / scale);
    }
    return floats;
}

void writeSound(const QString &path, int format, int rate, const std::vector<short> &samples,
                int channels)
{
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = format;
    SNDFILE *file = sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info);
    if (!file) {
        throw std::runtime_error("a sound file can't be made: " + std::string(sf_strerror(file)));
    }
    sf_write_short(file, samples.data(), sf_count_t(samples.size()));
    sf_close(file);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("can't read " + path.toStdString());
    }
    return file.readAll();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw std::runtime_error("can't write " + path.toStdString());
    }
}
