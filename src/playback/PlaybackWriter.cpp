// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/PlaybackWriter.h"

#include "playback/HttpFetch.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

// How long a start may block its caller.
constexpr std::chrono::milliseconds maxOpening{250};

// The same for a client's file, which may be slow on purpose. Many clients may have one, and the waits add up.
constexpr std::chrono::milliseconds maxClientOpening{50};

// The same while other threads hang: there may be more sounds like theirs.
constexpr std::chrono::milliseconds maxBesideHanging{20};

// How long an interruption waits for a thread in its source, which needs nobody: the device can be taken from it.
constexpr std::chrono::milliseconds maxReading{250};

// The same for a client's file.
constexpr std::chrono::milliseconds maxClientReading{20};

// How long a pause waits for a device to play the frames that it holds.
constexpr std::chrono::milliseconds maxPlayOut{500};

// How often the device and the stream's timeout are checked while a stream has no data.
constexpr int idleCheckMs = 250;

// A longer latency is taken for an error of the device.
constexpr long maxLatencySeconds = 2;

// How long the thread may take to end: longer than maxPlayOut, but shorter than an urgent sound may
// be delayed.
constexpr std::chrono::milliseconds maxEnding{750};

// The same for a thread that has not opened its device in time. One that is paused can go on only if it has ended.
constexpr std::chrono::milliseconds maxLateEnding{50};
constexpr std::chrono::milliseconds maxLatePause{400};

constexpr long msPerSecond = 1000;

class WriterPlayback : public Playback
{
public:
    explicit WriterPlayback(std::shared_ptr<PlaybackWriter> writer)
        : m_writer(std::move(writer))
    {
    }
    ~WriterPlayback() override { m_writer->stop(); }
    WriterPlayback(const WriterPlayback &) = delete;
    WriterPlayback &operator=(const WriterPlayback &) = delete;

    std::optional<Failure> start() override { return m_writer->start(); }
    void pause() override { m_writer->pause(); }
    void setGain(double gain, int fadeMs) override { m_writer->setGain(gain, fadeMs); }

private:
    const std::shared_ptr<PlaybackWriter> m_writer;
};

} // namespace

std::unique_ptr<Playback> PlaybackWriter::make(std::unique_ptr<FrameSource> source,
                                               const QString &device,
                                               const PlaybackOptions &options, const Report &report,
                                               std::unique_ptr<HttpFetch> fetch)
{
    return std::make_unique<WriterPlayback>(std::make_shared<PlaybackWriter>(
        std::move(source), device, options, report, std::move(fetch)));
}

PlaybackWriter::PlaybackWriter(std::unique_ptr<FrameSource> source, const QString &device,
                               const PlaybackOptions &options, const Report &report,
                               std::unique_ptr<HttpFetch> fetch)
    : m_source(std::move(source))
    , m_deviceName(device)
    , m_loop(options.loop)
    , m_usage(options.usage)
    , m_report(report)
    , m_fetch(std::move(fetch))
{
    m_source->isWanted = [this] {
        // A caller that waits can't do anything else, such as end it.
        declareOpened();
        return m_command != Command::Stop;
    };
}

PlaybackWriter::~PlaybackWriter() = default;

void PlaybackWriter::stop()
{
    if (!interrupt(Command::Stop)) {
        m_thread.detach();
    }
    m_fetch.reset();
    const std::lock_guard lock(m_mutex);
    m_report = nullptr;
}

std::optional<Failure> PlaybackWriter::start()
{
    // For a sound that was paused just now. If that was long ago, nobody waits again.
    if (!join(m_interrupted + openingTime())) {
        return Failure{
            QStringLiteral("The sound or its device \"%1\" doesn't respond").arg(m_deviceName)};
    }
    m_window.goBack(std::exchange(m_unheard, 0));
    if (m_finished) {
        m_report(std::nullopt);
        return std::nullopt;
    }
    if (auto failure = startThread()) {
        return failure;
    }
    if (m_fetch != nullptr && !m_fetchStarted) {
        m_fetchStarted = true;
        m_fetch->start(m_report);
    }
    return std::nullopt;
}

std::optional<Failure> PlaybackWriter::startThread()
{
    if (!m_wake.isValid()) {
        return Failure{QStringLiteral("There are no more file descriptors")};
    }
    if (HangingThread::areTooMany(m_source->file)) {
        return Failure{QStringLiteral("Too many sounds or devices don't respond")};
    }
    m_command = Command::Play;
    m_wake.clear();
    m_opening = Opening::Awaited;
    m_running = true;
    try {
        m_thread = std::thread(&PlaybackWriter::run, shared_from_this());
    } catch (const std::system_error &error) {
        m_running = false;
        return Failure{QStringLiteral("No thread can be started: ") + error.what()};
    }
    const auto limit = openingTime();
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, limit, [this] { return m_opening != Opening::Awaited; });
    if (m_opening == Opening::Awaited) {
        m_opening = Opening::Late;
    }
    if (m_opening != Opening::Failed) {
        return std::nullopt;
    }
    lock.unlock();
    m_thread.join();
    return m_startFailure;
}

// Returns false if the thread is left behind. It then ends whenever it can.
bool PlaybackWriter::interrupt(Command command)
{
    {
        std::unique_lock lock(m_mutex);
        m_command = command;
        m_wake.set();
        if (!m_leftBehind) {
            m_interrupted = std::chrono::steady_clock::now();
            awaitEnd(lock);
        }
    }
    return join(m_interrupted); // that is, if it has ended
}

void PlaybackWriter::awaitEnd(std::unique_lock<std::mutex> &lock)
{
    const auto readingTime = m_source->file ? maxClientReading : maxReading;
    if (!m_changed.wait_until(lock, m_interrupted + readingTime,
                              [this] { return !m_isInSource; })) {
        m_leftBehind.emplace(m_source->file);
        m_unheard = closeDevice();
        return;
    }
    const auto lateLimit = m_command == Command::Pause ? maxLatePause : maxLateEnding;
    const auto limit = m_opening == Opening::Late ? lateLimit : maxEnding;
    if (!m_changed.wait_until(lock, m_interrupted + limit, [this] { return !m_running; })) {
        m_leftBehind.emplace(std::nullopt);
    }
}

// Closes the device in place of the thread that hangs in the source, so that other sounds can have it. Returns how many
// of its frames were not heard; a sound server may have played some of them. Another thread does it, because the device
// may hang, too.
long PlaybackWriter::closeDevice()
{
    if (m_device == nullptr) {
        return 0;
    }
    std::packaged_task<long()> closing([device = std::move(m_device)] {
        const HangingThread hanging(std::nullopt);
        return device->closeAndCount();
    });
    std::future<long> unheard = closing.get_future();
    try {
        std::thread(std::move(closing)).detach();
    } catch (const std::system_error &) {
        return 0; // the task has closed the device at its end
    }
    return unheard.wait_for(maxEnding) == std::future_status::ready ? unheard.get() : 0;
}

// Returns false if the thread has not ended by then.
bool PlaybackWriter::join(std::chrono::steady_clock::time_point deadline)
{
    {
        std::unique_lock lock(m_mutex);
        if (!m_changed.wait_until(lock, deadline, [this] { return !m_running; })) {
            return false;
        }
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    return true;
}

std::chrono::milliseconds PlaybackWriter::openingTime()
{
    const std::lock_guard lock(m_mutex);
    const int own = m_leftBehind ? 1 : 0;
    if (HangingThread::count() > own) {
        return maxBesideHanging;
    }
    return m_source->file ? maxClientOpening : maxOpening;
}

void PlaybackWriter::run()
{
    const Step end = play();
    if (end == Step::Interrupted) {
        keepPlace();
    }
    m_device.reset();
    if (end == Step::Ended) {
        finish(m_sourceFailure);
    } else if (end == Step::Failed) {
        finish(m_failure);
    }
    const std::lock_guard lock(m_mutex);
    m_running = false;
    m_leftBehind.reset();
    m_changed.notify_one();
}

// Opens or reads the source, for which the thread doesn't need the device. Returns false if it has been interrupted; the
// device may have been taken then.
bool PlaybackWriter::inSource(const std::function<void()> &use)
{
    std::unique_lock lock(m_mutex);
    m_isInSource = m_command == Command::Play;
    if (m_isInSource) {
        lock.unlock();
        use();
        lock.lock();
        m_isInSource = false;
    }
    if (m_command == Command::Play) {
        return true;
    }
    m_changed.notify_one();
    return false;
}

void PlaybackWriter::keepPlace()
{
    if (m_command != Command::Pause || m_device == nullptr) {
        return;
    }
    if (!m_device->countsLate() || !playOut()) {
        m_window.goBack(m_device->closeAndCount() - m_padding);
    }
}

// For devices that can't count dropped frames: plays all frames in the buffer instead of dropping
// them. The buffer is short, and the caller waits, so nothing interrupts this.
bool PlaybackWriter::playOut()
{
    m_wake.clear();
    const auto deadline = std::chrono::steady_clock::now() + maxPlayOut;
    Step result = Step::GoOn;
    while (result == Step::GoOn && std::chrono::steady_clock::now() < deadline) {
        const Result<long> room = m_device->room();
        const auto *frames = std::get_if<long>(&room);
        result = frames != nullptr ? finishTail(*frames) : Step::Failed;
    }
    return result == Step::Ended;
}

void PlaybackWriter::finish(const std::optional<Failure> &failure)
{
    const std::lock_guard lock(m_mutex);
    if (m_opening == Opening::Awaited && failure) {
        m_opening = Opening::Failed;
        m_startFailure = *failure;
        m_changed.notify_one();
        return;
    }
    m_finished = true;
    if (m_report) {
        m_report(failure);
    }
}

void PlaybackWriter::declareOpened()
{
    const std::lock_guard lock(m_mutex);
    if (m_opening != Opening::Failed) {
        m_opening = Opening::Opened;
    }
    m_changed.notify_one();
}

PlaybackWriter::Step PlaybackWriter::play()
{
    Step result = openAll();
    while (result == Step::GoOn) {
        result = m_command == Command::Play ? step() : Step::Interrupted;
        // Only after the first step: waking the caller takes a large part of the time until the
        // sound is heard.
        declareOpened();
    }
    return result;
}

PlaybackWriter::Step PlaybackWriter::openAll()
{
    Result<FrameSource::Loading> loaded = FrameSource::Loading::Interrupted;
    const bool goesOn = inSource([&] { loaded = openSource(); });
    if (const auto *failure = std::get_if<Failure>(&loaded)) {
        return fail(*failure);
    }
    if (!goesOn || !FrameSource::isDone(loaded)) {
        return Step::Interrupted;
    }
    m_format = m_source->format();
    m_window.setChannels(m_format.channels);
    m_padding = 0;
    m_device = std::make_unique<AlsaDevice>();
    if (const auto failure = m_device->open(m_deviceName, m_format, m_usage)) {
        return fail(*failure);
    }
    if (m_loop) {
        m_device->keepTime();
    }
    return Step::GoOn;
}

Result<FrameSource::Loading> PlaybackWriter::openSource()
{
    Result<FrameSource::Loading> opened = m_source->open(m_wake);
    if (!FrameSource::isDone(opened) || !m_source->needsLoading()) {
        return opened;
    }
    // Loading depends on another program or a server, so the caller doesn't wait for it.
    declareOpened();
    return m_source->load(m_wake);
}

PlaybackWriter::Step PlaybackWriter::fail(const Failure &failure)
{
    m_failure = failure;
    return Step::Failed;
}

PlaybackWriter::Step PlaybackWriter::step()
{
    const Result<long> result = m_device->room();
    if (const auto *failure = std::get_if<Failure>(&result)) {
        return fail(*failure);
    }
    const long room = std::get<long>(result);
    if (const long lost = m_device->takeLost(); lost > 0) {
        m_window.goBack(lost - m_padding);
        m_padding = 0;
    }
    if (m_sourceEnded && m_window.unsent() == 0) {
        return finishTail(room);
    }
    const long surplus = m_device->held() - m_device->capacity() / 2;
    if (surplus > 0 || room == 0) {
        return waitFor(std::max(surplus, m_device->periodFrames()));
    }
    if (!inSource([&] { fill(room); })) {
        return Step::Interrupted;
    }
    if (m_window.unsent() > 0) {
        return send(room);
    }
    return m_sourceEnded ? Step::GoOn : waitForInput();
}

void PlaybackWriter::fill(long room)
{
    long wanted = room - m_window.unsent();
    bool rewound = false;
    while (wanted > 0 && !m_sourceEnded && m_command == Command::Play) {
        const FrameSource::Read read = m_source->read(m_window.spaceFor(wanted), wanted);
        if (std::holds_alternative<FrameSource::Waiting>(read)) {
            return;
        }
        if (const auto *frames = std::get_if<FrameSource::Frames>(&read)) {
            m_window.take(frames->count);
            wanted -= frames->count;
            rewound = false;
        } else if (const auto *failure = std::get_if<Failure>(&read)) {
            m_sourceFailure = *failure;
            m_sourceEnded = true;
        } else {
            // A source without frames would be rewound forever.
            rewound = m_loop && !rewound && rewind();
            m_sourceEnded = !rewound;
        }
    }
}

bool PlaybackWriter::rewind()
{
    const Result<bool> rewound = m_source->rewind();
    if (const auto *failure = std::get_if<Failure>(&rewound)) {
        m_sourceFailure = *failure;
        return false;
    }
    return std::get<bool>(rewound);
}

PlaybackWriter::Step PlaybackWriter::send(long room)
{
    const long frames = std::min(room, m_window.unsent());
    m_output.resize(std::size_t(frames * m_format.channels));
    m_gain.apply(m_window.next(), m_output.data(), frames, m_format.channels, m_window.position(),
                 m_format.rate);
    const Result<long> result = m_device->write(m_output.data(), frames);
    if (const auto *failure = std::get_if<Failure>(&result)) {
        return fail(*failure);
    }
    const long written = std::get<long>(result);
    m_window.sent(written, m_device->capacity());
    // If the device has room but takes nothing, it needs some time.
    return written > 0 ? Step::GoOn : waitFor(m_device->periodFrames());
}

// Waits until the last frame has been heard. Devices count whole periods, so silence is written
// after the last frames. Then waits for the part of the latency that is not in the device's buffer.
PlaybackWriter::Step PlaybackWriter::finishTail(long room)
{
    if (m_padding < 2 * m_device->periodFrames() && room > 0) {
        return pad(room);
    }
    const long unheard = m_device->held() - m_padding;
    if (unheard > 0) {
        return waitFor(unheard);
    }
    const long remaining =
        std::min(m_device->latency() - m_padding, m_format.rate * maxLatencySeconds);
    if (remaining > 0 && waitFor(remaining) == Step::Interrupted) {
        return Step::Interrupted;
    }
    return Step::Ended;
}

PlaybackWriter::Step PlaybackWriter::pad(long room)
{
    const long frames = std::min(room, 2 * m_device->periodFrames() - m_padding);
    m_output.assign(std::size_t(frames * m_format.channels), 0.0F);
    const Result<long> written = m_device->write(m_output.data(), frames);
    if (const auto *failure = std::get_if<Failure>(&written)) {
        return fail(*failure);
    }
    m_padding += std::get<long>(written);
    return Step::GoOn;
}

PlaybackWriter::Step PlaybackWriter::waitForInput()
{
    declareOpened();
    m_wake.waitForInput(m_source->inputDescriptor(), idleCheckMs);
    return m_command == Command::Play ? Step::GoOn : Step::Interrupted;
}

// Waits for the duration of the frames.
PlaybackWriter::Step PlaybackWriter::waitFor(long frames)
{
    const long ms = frames * msPerSecond / m_format.rate + 1;
    return m_wake.wait(int(ms)) ? Step::Interrupted : Step::GoOn;
}
