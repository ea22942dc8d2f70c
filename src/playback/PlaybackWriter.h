// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/AlsaDevice.h"
#include "playback/FrameSource.h"
#include "playback/FrameWindow.h"
#include "playback/GainRamp.h"
#include "playback/WakeEvent.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// Carries frames from a source to a device, in a thread that exists only while it does so: from
/// start() to the sound's end, pause() or stop().
///
/// Thread: that of the Playback, which owns it; the end is reported in the writer's own.
class PlaybackWriter
{
public:
    /// Told once when the sound has ended: with an empty text when it was heard to its end. Called
    /// in the writer's thread.
    using Report = std::function<void(const QString &error)>;

    PlaybackWriter(std::unique_ptr<FrameSource> source, const QString &device, Report report);
    ~PlaybackWriter();
    PlaybackWriter(const PlaybackWriter &) = delete;
    PlaybackWriter &operator=(const PlaybackWriter &) = delete;

    /// What the first start() is to go by.
    void configure(bool loop, int usage);

    /// Begins, or goes on after a pause. Waits until source and device are open and the device has
    /// what the source has at once, but at most 250 ms; after that, what goes wrong is reported.
    /// False: they can't be opened; startError() says why, nothing is reported, and it may be tried
    /// again.
    bool start();
    QString startError() const { return m_startError; }

    /// Falls silent and keeps the place.
    void pause() { interrupt(Command::Pause); }

    /// Falls silent for good.
    void stop() { interrupt(Command::Stop); }

    void setGain(double gain, int fadeMs) { m_gain.set(gain, fadeMs); }

private:
    enum class Command { Play, Pause, Stop };
    enum class Step { GoOn, Interrupted, Ended, Failed };
    enum class Opening { Awaited, Opened, Failed, Late };

    void interrupt(Command command);

    // In the writer's thread:
    void run();
    Step play();
    Step openAll();
    Step begin();
    Step step();
    void fill(long room);
    Step send(long room);
    Step finishTail(long room);
    Step pad(long room);
    Step waitForInput();
    Step waitFor(long frames);
    Step fail(const QString &error);
    void keepPlace();
    bool playOut();
    void declareOpened();
    void finish(const QString &error);

    const std::unique_ptr<FrameSource> m_source;
    const QString m_deviceName;
    const Report m_report;
    bool m_loop = false;
    int m_usage = 0;
    GainRamp m_gain;

    std::thread m_thread;
    std::atomic<Command> m_command = Command::Stop;
    WakeEvent m_wake;

    std::mutex m_mutex;
    std::condition_variable m_openingChanged;
    Opening m_opening = Opening::Awaited; // guarded
    QString m_startError;                 // set before the thread is joined

    // What follows belongs to the writer's thread while there is one.
    AlsaDevice m_device;
    SoundFormat m_format;
    FrameWindow m_window;
    std::vector<float> m_output;
    bool m_sourceEnded = false;
    QString m_sourceError; // reported when what came before has been heard
    long m_padding = 0;    // frames of silence written after the last
    QString m_error;
    bool m_finished = false; // the end has been reported
};
