// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

class QProcess;

/// What was heard on a device, by the monotonic clock.
class Heard
{
public:
    static constexpr int rate = 48000;

    /// Stereo samples; begin is when the first was heard.
    Heard(const QByteArray &samples, double begin);

    struct Span
    {
        double begin;
        double end;
    };

    /// From the first sample that is no silence to the last; none when there is only silence.
    std::optional<Span> span() const;

    /// How many frames are no silence. Silence that a late player left between them doesn't count,
    /// so this is exact however busy the machine is.
    int frames() const;

    /// How long a tone was heard, in milliseconds.
    double toneMs(int frequency) const;

    /// The spans of a tone, gaps of up to 200 ms left out.
    std::vector<Span> tones(int frequency) const;

    /// The usual loudness between two moments, in dBFS; that of digital silence is -100.
    double level(double begin, double end) const;

    /// The loudest sample, in 16 bit units.
    int peak() const;

private:
    std::vector<double> toneBlocks(int frequency) const;

    std::vector<short> m_samples; // the left channel; both are the same
    double m_begin;
};

/// Listens to one of the sound server's devices from its making on.
///
/// Thread: the test's, whose event loop takes in what is heard.
class Listener
{
public:
    explicit Listener(const QString &device);
    ~Listener();
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    /// Waits until what was heard up to that moment is here.
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
    int m_silentBytes = 0; // from the beginning on
    double m_begin;
};

/// Seconds on the monotonic clock.
double monotonicNow();
