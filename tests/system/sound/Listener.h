// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

class QProcess;

/// What was heard on a device, in times of the monotonic clock.
class Heard
{
public:
    static constexpr int rate = 48000;

    /// Stereo samples; begin is the time of the first one.
    Heard(const QByteArray &samples, double begin);

    struct Span
    {
        double begin;
        double end;
    };

    /// From the first sample that is not silent to the last one. Empty if all are silent.
    std::optional<Span> span() const;

    /// How many frames are not silent. Gaps that a late player left do not count, so this is
    /// exact even on a busy machine.
    int frames() const;

    /// How long a tone was heard, in milliseconds.
    double toneMs(int frequency) const;

    /// When a tone was heard. Ignores gaps of up to 200 ms.
    std::vector<Span> tones(int frequency) const;

    /// The median loudness between two moments, in dBFS. Digital silence is -100.
    double level(double begin, double end) const;

    /// The maximum of the samples, in 16 bit units.
    int peak() const;

private:
    std::vector<double> toneBlocks(int frequency) const;

    std::vector<short> m_samples; // the left channel; both are the same
    double m_begin;
};

/// Records one of the sound server's devices from its construction on.
///
/// Lives in the test's thread and reads in its event loop.
class Listener
{
public:
    explicit Listener(const QString &device);
    ~Listener();
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    /// Waits until everything that was heard up to that moment has been read.
    bool waitUntil(double moment);

    /// Waits until that much more has been heard.
    bool listenFor(double seconds);

    /// Waits until something other than silence is heard.
    bool waitForSound();

    Heard heard() const { return {m_bytes, m_begin}; }

private:
    void take();
    double end() const;

    std::unique_ptr<QProcess> m_recorder;
    QByteArray m_bytes;
    int m_silentBytes = 0; // from the beginning
    double m_begin;
};

/// The current time in seconds of the monotonic clock.
double monotonicNow();
