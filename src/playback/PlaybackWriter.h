// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/AlsaDevice.h"
#include "playback/FrameSource.h"
#include "playback/FrameWindow.h"
#include "playback/GainRamp.h"
#include "playback/HangingThread.h"
#include "playback/WakeEvent.h"
#include "simpleplayer/Playback.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class HttpFetch;

/// Writes frames from a source to a device, in a thread that exists only from start() until pause()
/// or the end of the sound.
///
/// Called in the player's thread; reports from its own thread. Owned by the playback that make()
/// returns, and by its thread: a thread that hangs in a device or a file system is left behind, and ends when it can.
/// Nobody waits longer than 250 ms, or 20 ms if the file is a client's, for one that hangs in a file system; its device
/// is closed then. Nobody waits longer than 750 ms for a device.
class PlaybackWriter : public std::enable_shared_from_this<PlaybackWriter>
{
public:
    using Report = Playback::Report;

    /// The fetch, if there is one, feeds the source.
    static std::unique_ptr<Playback> make(std::unique_ptr<FrameSource> source,
                                          const QString &device, const PlaybackOptions &options,
                                          const Report &report, std::unique_ptr<HttpFetch> fetch);

    PlaybackWriter(std::unique_ptr<FrameSource> source, const QString &device,
                   const PlaybackOptions &options, const Report &report,
                   std::unique_ptr<HttpFetch> fetch);
    ~PlaybackWriter();
    PlaybackWriter(const PlaybackWriter &) = delete;
    PlaybackWriter &operator=(const PlaybackWriter &) = delete;

    /// Waits until the source and the device are open and the first frames are written, but at most
    /// 250 ms, 50 ms for a client's file, and 20 ms while another thread hangs. Later failures are
    /// reported. Fails if its own thread hangs since the pause, or if too many others hang.
    std::optional<Failure> start();
    void pause() { interrupt(Command::Pause); }
    void setGain(double gain, int fadeMs) { m_gain.set(gain, fadeMs); }

    /// Ends the sound. Nothing is reported any more, and nothing but the destructor may be called.
    void stop();

private:
    enum class Command { Play, Pause, Stop };
    enum class Step { GoOn, Interrupted, Ended, Failed };
    enum class Opening { Awaited, Opened, Failed, Late };

    std::optional<Failure> startThread();
    bool interrupt(Command command);
    void awaitEnd(std::unique_lock<std::mutex> &lock);
    long closeDevice();
    bool join(std::chrono::steady_clock::time_point deadline);
    std::chrono::milliseconds openingTime();

    // In the writer's thread:
    void run();
    bool inSource(const std::function<void()> &use);
    Step play();
    Step openAll();
    Result<FrameSource::Loading> openSource();
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
    Report m_report; // protected by the mutex in the writer's thread; empty once it is stopped
    std::unique_ptr<HttpFetch> m_fetch; // until it is stopped
    bool m_fetchStarted = false;
    GainRamp m_gain;

    std::thread m_thread;
    std::atomic<Command> m_command = Command::Stop;
    WakeEvent m_wake;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_running = false; // protected by the mutex, like the next ones
    bool m_isInSource = false;
    std::optional<HangingThread> m_leftBehind; // while it runs after an interruption
    std::chrono::steady_clock::time_point m_interrupted;
    long m_unheard = 0; // of the frames that the device held when it was taken from the thread
    Opening m_opening = Opening::Awaited;
    Failure m_startFailure; // set before the thread is joined

    // The following members belong to the writer's thread while there is one.
    std::unique_ptr<AlsaDevice>
        m_device; // if it is open; taken from a thread that is left behind in the source
    SoundFormat m_format;
    FrameWindow m_window;
    std::vector<float> m_output;
    bool m_sourceEnded = false;
    std::optional<Failure> m_sourceFailure; // reported when all earlier frames have been heard
    long m_padding = 0;                     // frames of silence written after the end
    Failure m_failure;
    bool m_finished = false; // the end has been reported
};
