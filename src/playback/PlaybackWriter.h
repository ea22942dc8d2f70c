// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/AlsaDevice.h"
#include "playback/FrameSource.h"
#include "playback/FrameWindow.h"
#include "playback/GainRamp.h"
#include "playback/WakeEvent.h"
#include "simpleplayer/Playback.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class HttpFetch;

/// Writes frames from a source to a device, in a thread that exists only from start() until pause()
/// or the end of the sound.
///
/// Called in the player's thread; reports from its own thread.
class PlaybackWriter : public Playback
{
public:
    /// The fetch, if there is one, feeds the source.
    PlaybackWriter(std::unique_ptr<FrameSource> source, const QString &device,
                   const PlaybackOptions &options, Report report, std::unique_ptr<HttpFetch> fetch);
    ~PlaybackWriter() override;
    PlaybackWriter(const PlaybackWriter &) = delete;
    PlaybackWriter &operator=(const PlaybackWriter &) = delete;

    /// Waits until the source and the device are open and the first frames are written, but at most
    /// 250 ms. Later failures are reported.
    std::optional<Failure> start() override;
    void pause() override { interrupt(Command::Pause); }
    void setGain(double gain, int fadeMs) override { m_gain.set(gain, fadeMs); }

private:
    enum class Command { Play, Pause, Stop };
    enum class Step { GoOn, Interrupted, Ended, Failed };
    enum class Opening { Awaited, Opened, Failed, Late };

    std::optional<Failure> startThread();
    void interrupt(Command command);

    // In the writer's thread:
    void run();
    Step play();
    Step openAll();
    Step step();
    void fill(long room);
    bool rewind();
    Step send(long room);
    Step finishTail(long room);
    Step pad(long room);
    Step waitForInput();
    Step waitFor(long frames);
    Step fail(const Failure &failure);
    void keepPlace();
    bool playOut();
    void declareOpened();
    void finish(const std::optional<Failure> &failure);

    const std::unique_ptr<FrameSource> m_source;
    const QString m_deviceName;
    const bool m_loop;
    const int m_usage;
    const Report m_report;
    const std::unique_ptr<HttpFetch> m_fetch;
    bool m_fetchStarted = false;
    GainRamp m_gain;

    std::thread m_thread;
    std::atomic<Command> m_command = Command::Stop;
    WakeEvent m_wake;

    std::mutex m_mutex;
    std::condition_variable m_openingChanged;
    Opening m_opening = Opening::Awaited; // protected by the mutex
    Failure m_startFailure;               // set before the thread is joined

    // The following members belong to the writer's thread while there is one.
    AlsaDevice m_device;
    SoundFormat m_format;
    FrameWindow m_window;
    std::vector<float> m_output;
    bool m_sourceEnded = false;
    std::optional<Failure> m_sourceFailure; // reported when all earlier frames have been heard
    long m_padding = 0;                     // frames of silence written after the end
    Failure m_failure;
    bool m_finished = false; // the end has been reported
};
