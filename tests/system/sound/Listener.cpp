// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Listener.h"

#include "support/EventLoop.h"
#include "support/program/BoundProcess.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

constexpr int channels = 2;
constexpr int frameBytes = channels * int(sizeof(short));
constexpr std::chrono::seconds timeout{20};
constexpr int silentLevel = -100;
constexpr double fullScale = 32768;

// A tone of a multiple of 100 Hz has whole periods in a block.
constexpr int blockFrames = Heard::rate / 100;
constexpr double blockMs = 10;
constexpr double maxGap = 0.2;

// The mean square of the tone with that frequency.
double powerAt(int frequency, const short *samples)
{
    double real = 0;
    double imaginary = 0;
    for (int i = 0; i < blockFrames; ++i) {
        const double angle = 2 * M_PI * frequency * i / Heard::rate;
        real += samples[i] * std::cos(angle);
        imaginary += samples[i] * std::sin(angle);
    }
    return 2 * (real * real + imaginary * imaginary) / (double(blockFrames) * blockFrames);
}

double secondsOf(const QByteArray &samples)
{
    const int frames = samples.size() / frameBytes;
    return double(frames) / Heard::rate;
}

double meanSquare(const short *samples)
{
    double sum = 0;
    for (int i = 0; i < blockFrames; ++i) {
        sum += double(samples[i]) * samples[i];
    }
    return sum / blockFrames;
}

} // namespace

double monotonicNow()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

Heard::Heard(const QByteArray &samples, double begin)
    : m_samples(std::size_t(samples.size() / frameBytes))
    , m_begin(begin)
{
    for (std::size_t i = 0; i < m_samples.size(); ++i) {
        std::memcpy(&m_samples[i], samples.constData() + i * frameBytes, sizeof(short));
    }
}

std::optional<Heard::Span> Heard::span() const
{
    const auto isSound = [](short sample) { return sample != 0; };
    const auto first = std::find_if(m_samples.begin(), m_samples.end(), isSound);
    if (first == m_samples.end()) {
        return std::nullopt;
    }
    const auto last = std::find_if(m_samples.rbegin(), m_samples.rend(), isSound).base();
    return Span{m_begin + double(first - m_samples.begin()) / rate,
                m_begin + double(last - m_samples.begin()) / rate};
}

int Heard::frames() const
{
    return int(m_samples.size()) - int(std::count(m_samples.begin(), m_samples.end(), short(0)));
}

// The share of the tone in each block. Blocks where the tone begins or ends count in part.
std::vector<double> Heard::toneBlocks(int frequency) const
{
    std::vector<double> blocks;
    for (std::size_t i = 0; i + blockFrames <= m_samples.size(); i += blockFrames) {
        const double all = meanSquare(&m_samples[i]);
        blocks.push_back(all > 1 ? powerAt(frequency, &m_samples[i]) / all : 0);
    }
    return blocks;
}

double Heard::toneMs(int frequency) const
{
    double sum = 0;
    for (const double part : toneBlocks(frequency)) {
        sum += part * blockMs;
    }
    return sum;
}

std::vector<Heard::Span> Heard::tones(int frequency) const
{
    constexpr double half = 0.5;
    constexpr double blockSeconds = blockMs / 1000;
    std::vector<Span> spans;
    double moment = m_begin;
    for (const double part : toneBlocks(frequency)) {
        if (part > half && (spans.empty() || moment - spans.back().end > maxGap)) {
            spans.push_back({moment, moment + blockSeconds});
        } else if (part > half) {
            spans.back().end = moment + blockSeconds;
        }
        moment += blockSeconds;
    }
    return spans;
}

// The median of short blocks, so a block that a busy machine left silent does not matter.
double Heard::level(double begin, double end) const
{
    std::vector<double> levels;
    const auto frameAt = [this](double moment) { return long((moment - m_begin) * rate); };
    for (long i = std::max(0L, frameAt(begin));
         i + blockFrames <= std::min(long(m_samples.size()), frameAt(end)); i += blockFrames) {
        const double power = meanSquare(&m_samples[std::size_t(i)]) / (fullScale * fullScale);
        levels.push_back(power > 0 ? 10 * std::log10(power) : silentLevel);
    }
    if (levels.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    std::sort(levels.begin(), levels.end());
    return levels[levels.size() / 2];
}

int Heard::peak() const
{
    int peak = 0;
    for (const short sample : m_samples) {
        peak = std::max(peak, std::abs(int(sample)));
    }
    return peak;
}

Listener::Listener(const QString &device)
    : m_recorder(std::make_unique<BoundProcess>())
    , m_begin(std::numeric_limits<double>::infinity())
{
    const QString sink =
        device == QLatin1String("notifications") ? QStringLiteral("notif") : device;
    QObject::connect(m_recorder.get(), &QProcess::readyReadStandardOutput, m_recorder.get(),
                     [this] { take(); });
    m_recorder->start(
        QStringLiteral("parec"),
        {QStringLiteral("--device=%1.monitor").arg(sink), QStringLiteral("--raw"),
         QStringLiteral("--format=s16le"), QStringLiteral("--rate=%1").arg(Heard::rate),
         QStringLiteral("--channels=%1").arg(channels), QStringLiteral("--latency-msec=10")});
    if (!waitFor([this] { return !m_bytes.isEmpty(); }, timeout)) {
        throw std::runtime_error("nothing is heard of a device");
    }
}

Listener::~Listener()
{
    m_recorder->kill();
    m_recorder->waitForFinished();
}

// Audio can arrive late, but never early. So each piece gives an upper bound for the time of the
// first sample, and the lowest of these bounds is the best estimate.
void Listener::take()
{
    m_bytes += m_recorder->readAllStandardOutput();
    m_begin = std::min(m_begin, monotonicNow() - secondsOf(m_bytes));
}

double Listener::end() const
{
    return m_begin + secondsOf(m_bytes);
}

bool Listener::waitUntil(double moment)
{
    return waitFor([&] { return end() >= moment; }, timeout);
}

bool Listener::listenFor(double seconds)
{
    return waitUntil(end() + seconds);
}

bool Listener::waitForSound()
{
    return waitFor(
        [this] {
            while (m_silentBytes < m_bytes.size() && m_bytes.at(m_silentBytes) == 0) {
                ++m_silentBytes;
            }
            return m_silentBytes < m_bytes.size();
        },
        timeout);
}
