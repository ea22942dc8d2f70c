// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/SimplePlayer.h"

#include "base/Printable.h"
#include "base/SoundLocation.h"
#include "simpleplayer/Log.h"
#include "simpleplayer/PlaybackLibrary.h"

#include <QMetaObject>

namespace {

/// What a FakePlayer plays: an empty sound, which never ends in a loop.
class Silence : public Playback
{
public:
    Silence(bool loop, Report report)
        : m_loop(loop)
        , m_report(std::move(report))
    {
    }

    std::optional<Failure> start() override
    {
        if (!m_loop) {
            m_report(std::nullopt);
        }
        return std::nullopt;
    }
    void pause() override {}
    void setGain(double /*gain*/, int /*fadeMs*/) override {}

private:
    const bool m_loop;
    const Report m_report;
};

Result<std::unique_ptr<Playback>> make(const PlayedSound *sound, const PlaybackOptions &options,
                                       const Playback::Report &report)
{
    if (sound == nullptr) {
        return std::make_unique<Silence>(options.loop, report);
    }
    return makePlayback(*sound, options, report);
}

} // namespace

SimplePlayer::SimplePlayer(const QString &id, std::unique_ptr<const PlayedSound> sound,
                           QObject *parent)
    : QObject(parent)
    , m_id(id)
    , m_sound(std::move(sound))
{
}

SimplePlayer::~SimplePlayer() = default;

bool SimplePlayer::play()
{
    switch (m_state) {
    case State::Ready:
        return prepare() && start();
    case State::Paused:
        return start();
    case State::Playing:
        return true;
    case State::Stopping:
    case State::Over:
        break;
    }
    LOG4CPLUS_WARN(simplePlayerLogger(), "Can't play " << logText(m_id) << ": it has ended before");
    m_state = State::Over;
    return false;
}

bool SimplePlayer::prepare()
{
    // Reports from the event loop, so that a pause, a stop or a failed play() may come first.
    const auto reportLater = [this](const std::optional<Failure> &failure) {
        QMetaObject::invokeMethod(
            this,
            [this, failure] {
                if (failure) {
                    reportError(failure->reason);
                } else {
                    reportEnd();
                }
            },
            Qt::QueuedConnection);
    };
    auto made = make(m_sound.get(), {loop, usage, limits}, reportLater);
    if (const auto *failure = std::get_if<Failure>(&made)) {
        return refuse(failure->reason);
    }
    m_playback = std::move(std::get<std::unique_ptr<Playback>>(made));
    m_playback->setGain(m_startGain, 0);
    return true;
}

bool SimplePlayer::start()
{
    if (const auto failure = m_playback->start()) {
        return refuse(failure->reason);
    }
    m_state = State::Playing;
    return true;
}

bool SimplePlayer::refuse(const QString &reason)
{
    LOG4CPLUS_ERROR(simplePlayerLogger(),
                    "Can't play " << logText(m_id) << ": " << printable(reason).toStdString());
    end(State::Over);
    return false;
}

void SimplePlayer::pause()
{
    if (m_state == State::Playing) {
        m_playback->pause();
        m_state = State::Paused;
    }
}

void SimplePlayer::stop()
{
    if (m_state == State::Stopping || m_state == State::Over) {
        return;
    }
    end(State::Stopping);
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_state == State::Stopping) {
                m_state = State::Over;
                Q_EMIT playbackStopped(m_id);
            }
        },
        Qt::QueuedConnection);
}

void SimplePlayer::setGain(double gain, int fadeMs)
{
    m_startGain = gain;
    if (m_playback != nullptr) {
        m_playback->setGain(gain, fadeMs);
    }
}

// An end during a pause is ignored: the playback reports it again when the sound is resumed.
void SimplePlayer::reportEnd()
{
    if (m_state == State::Playing) {
        end(State::Over);
        Q_EMIT playbackEnded(m_id);
    }
}

void SimplePlayer::reportError(const QString &error)
{
    if (m_state != State::Playing && m_state != State::Paused) {
        return;
    }
    end(State::Over);
    LOG4CPLUS_ERROR(simplePlayerLogger(), "Playing " << logText(m_id) << " broke off: "
                                                     << printable(error).toStdString());
    Q_EMIT playbackErrorReported(m_id, withoutUserInfo(error));
}

void SimplePlayer::end(State state)
{
    m_state = state;
    m_playback.reset();
}
