// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// An ALSA device without hardware that notes when its first sample was heard:
//     type stopwatch
//     heard "/path"   optional; a file that gets a line each time a sound is heard after an opening
// Like hardware, it accepts one format only, 16-bit stereo at 48000 Hz, and plays in real time. A
// sound is heard when its first frame that is not silence is due. Times are nanoseconds of
// CLOCK_MONOTONIC.

#include "../Moment.h"

#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>
#include <alsa/pcm_ioplug.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/timerfd.h>
#include <unistd.h>

namespace {

constexpr std::int64_t nsPerSecond = 1'000'000'000;
constexpr unsigned rate = 48000;
constexpr unsigned channels = 2;

// As much memory as drivers usually give to a stream.
constexpr unsigned maxBufferBytes = 65536;

class StopwatchPcm
{
public:
    explicit StopwatchPcm(const std::string &heardPath)
    {
        if (!heardPath.empty()) {
            m_heardFile =
                ::open(heardPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        }
        m_plug.version = SND_PCM_IOPLUG_VERSION;
        m_plug.name = "Stopwatch";
        m_plug.flags = SND_PCM_IOPLUG_FLAG_BOUNDARY_WA;
        m_plug.callback = &callbacks;
        m_plug.private_data = this;
        m_plug.poll_fd = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
        m_plug.poll_events = POLLIN;
        wakeAt(1);
    }
    ~StopwatchPcm()
    {
        ::close(m_plug.poll_fd);
        if (m_heardFile >= 0) {
            ::close(m_heardFile);
        }
    }
    StopwatchPcm(const StopwatchPcm &) = delete;
    StopwatchPcm &operator=(const StopwatchPcm &) = delete;

    int create(snd_pcm_t **pcm, const char *name, snd_pcm_stream_t stream, int mode)
    {
        const int result = snd_pcm_ioplug_create(&m_plug, name, stream, mode);
        if (result < 0) {
            return result;
        }
        *pcm = m_plug.pcm;
        return constrain();
    }

private:
    static StopwatchPcm *of(snd_pcm_ioplug_t *plug)
    {
        return static_cast<StopwatchPcm *>(plug->private_data);
    }

    int constrain()
    {
        const std::array<unsigned, 2> access{SND_PCM_ACCESS_RW_INTERLEAVED,
                                             SND_PCM_ACCESS_MMAP_INTERLEAVED};
        const unsigned format = SND_PCM_FORMAT_S16_LE;
        snd_pcm_ioplug_set_param_list(&m_plug, SND_PCM_IOPLUG_HW_ACCESS, access.size(),
                                      access.data());
        snd_pcm_ioplug_set_param_list(&m_plug, SND_PCM_IOPLUG_HW_FORMAT, 1, &format);
        const auto set = [this](int what, unsigned low, unsigned high) {
            return snd_pcm_ioplug_set_param_minmax(&m_plug, what, low, high);
        };
        set(SND_PCM_IOPLUG_HW_RATE, rate, rate);
        set(SND_PCM_IOPLUG_HW_CHANNELS, channels, channels);
        set(SND_PCM_IOPLUG_HW_PERIODS, 2, 1024);
        set(SND_PCM_IOPLUG_HW_PERIOD_BYTES, 128, maxBufferBytes / 2);
        return set(SND_PCM_IOPLUG_HW_BUFFER_BYTES, 256, maxBufferBytes);
    }

    int setSoftware(const snd_pcm_sw_params_t *params)
    {
        return snd_pcm_sw_params_get_avail_min(params, &m_minRoom);
    }

    int prepare()
    {
        m_running = false;
        m_written = 0;
        m_played = 0;
        m_sound = -1;
        wakeAt(1);
        return 0;
    }

    int start()
    {
        m_running = true;
        m_started = momentNow();
        noteHeard();
        return 0;
    }

    int stop()
    {
        m_running = false;
        return 0;
    }

    snd_pcm_sframes_t transfer(const snd_pcm_channel_area_t *areas, snd_pcm_uframes_t offset,
                               snd_pcm_uframes_t frames)
    {
        const auto *bytes =
            static_cast<const char *>(areas->addr) + (areas->first + areas->step * offset) / 8;
        const auto *end = bytes + frames * frameBytes;
        const auto *sound = std::find_if(bytes, end, [](char byte) { return byte != 0; });
        if (m_sound < 0 && sound != end) {
            m_sound = m_written + (sound - bytes) / long(frameBytes);
        }
        m_written += long(frames);
        if (m_running) {
            noteHeard();
        }
        return snd_pcm_sframes_t(frames);
    }

    void noteHeard()
    {
        if (m_noted || m_sound < 0 || m_heardFile < 0) {
            return;
        }
        m_noted = true;
        std::array<char, 32> line{};
        const int length = std::snprintf(line.data(), line.size(), "%" PRId64 "\n",
                                         std::max(m_started, dueAt(m_sound)));
        if (::write(m_heardFile, line.data(), std::size_t(length)) != length) {
            std::perror("stopwatch");
        }
    }

    std::int64_t dueAt(long frame) const { return m_started + frame * nsPerSecond / rate; }

    snd_pcm_sframes_t pointer()
    {
        if (!m_running) {
            return m_played;
        }
        const long due = long((momentNow() - m_started) * rate / nsPerSecond);
        m_played = std::min(due, m_written);
        return due > m_written ? -EPIPE : m_played;
    }

    // The descriptor is readable when there is room, or when everything has been heard.
    int poll(unsigned short *events)
    {
        *events = POLLOUT;
        if (!m_running || pointer() < 0) {
            return 0;
        }
        const long held = m_written - m_played;
        const bool draining = m_plug.state == SND_PCM_STATE_DRAINING;
        const long missing = draining ? held : long(m_minRoom) + held - long(m_plug.buffer_size);
        if (missing <= 0) {
            return 0;
        }
        *events = 0;
        wakeAt(dueAt(m_played + missing + 1));
        return 0;
    }

    void wakeAt(std::int64_t time) const
    {
        itimerspec when{};
        when.it_value.tv_sec = time / nsPerSecond;
        when.it_value.tv_nsec = time % nsPerSecond;
        timerfd_settime(m_plug.poll_fd, TFD_TIMER_ABSTIME, &when, nullptr);
    }

    static constexpr std::size_t frameBytes = sizeof(std::int16_t) * channels;
    static const snd_pcm_ioplug_callback_t callbacks;

    snd_pcm_ioplug_t m_plug{};
    int m_heardFile = -1;
    snd_pcm_uframes_t m_minRoom = 1; // the player is woken when there is room for so many frames
    bool m_running = false;
    bool m_noted = false;
    std::int64_t m_started = 0;
    // Since prepare(), in frames:
    long m_written = 0;
    long m_played = 0;
    long m_sound = -1; // the first frame that is not silence
};

const snd_pcm_ioplug_callback_t StopwatchPcm::callbacks = [] {
    snd_pcm_ioplug_callback_t result{};
    result.start = [](snd_pcm_ioplug_t *plug) { return of(plug)->start(); };
    result.stop = [](snd_pcm_ioplug_t *plug) { return of(plug)->stop(); };
    result.pointer = [](snd_pcm_ioplug_t *plug) { return of(plug)->pointer(); };
    result.transfer = [](snd_pcm_ioplug_t *plug, const snd_pcm_channel_area_t *areas,
                         snd_pcm_uframes_t offset, snd_pcm_uframes_t frames) {
        return of(plug)->transfer(areas, offset, frames);
    };
    result.sw_params = [](snd_pcm_ioplug_t *plug, snd_pcm_sw_params_t *params) {
        return of(plug)->setSoftware(params);
    };
    result.prepare = [](snd_pcm_ioplug_t *plug) { return of(plug)->prepare(); };
    result.poll_revents = [](snd_pcm_ioplug_t *plug, pollfd *, unsigned, unsigned short *events) {
        return of(plug)->poll(events);
    };
    result.close = [](snd_pcm_ioplug_t *plug) {
        delete of(plug);
        return 0;
    };
    return result;
}();

} // namespace

extern "C" SND_PCM_PLUGIN_DEFINE_FUNC(stopwatch)
{
    static_cast<void>(root);
    std::string heard;
    snd_config_iterator_t entry = nullptr;
    snd_config_iterator_t next = nullptr;
    snd_config_for_each(entry, next, conf)
    {
        const snd_config_t *node = snd_config_iterator_entry(entry);
        const char *id = nullptr;
        const char *text = nullptr;
        if (snd_config_get_id(node, &id) >= 0 && std::strcmp(id, "heard") == 0 &&
            snd_config_get_string(node, &text) >= 0) {
            heard = text;
        }
    }
    // Deleted by its close callback, which the library calls for a device that it has created.
    auto device = std::make_unique<StopwatchPcm>(heard);
    const int result = device->create(pcmp, name, stream, mode);
    if (result >= 0) {
        device.release(); // NOLINT(bugprone-unused-return-value)
    }
    return result;
}

extern "C" {
SND_PCM_PLUGIN_SYMBOL(stopwatch)
}
