// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// An ALSA device without hardware that behaves as its configuration says and writes what was heard,
// and nothing else, to a file:
//     type scripted
//     behaviour "plain"   see Script
//     heard "/path"
// It keeps time by the clock and counts what it has played in steps, as devices do.

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>
#include <alsa/pcm_ioplug.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr long stepsPerSecond = 200;
constexpr long eventFrames = 4000; // when something happens, in frames heard

struct Script
{
    bool busy = false;     // can't be opened
    bool slow = false;     // takes longer to open than a player waits
    bool fixed = false;    // takes nothing but 16 bit stereo at 44100 Hz
    bool vanishes = false; // is gone after a while
    bool underruns = false;
    bool suspends = false;
    bool forgets = false; // what it held when it was suspended
};

Script parseScript(const std::string &behaviour)
{
    const auto has = [&](const char *word) { return behaviour.find(word) != std::string::npos; };
    return {has("busy"),      has("slow"),     has("fixed"),  has("vanishes"),
            has("underruns"), has("suspends"), has("forgets")};
}

class ScriptedPcm
{
public:
    ScriptedPcm(const Script &script, const std::string &heardPath)
        : m_script(script)
        , m_heardFile(std::fopen(heardPath.c_str(), "ab"))
    {
        m_plug.version = SND_PCM_IOPLUG_VERSION;
        m_plug.name = "Scripted";
        m_plug.flags = SND_PCM_IOPLUG_FLAG_BOUNDARY_WA;
        m_plug.callback = &callbacks;
        m_plug.private_data = this;
        m_plug.poll_fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        m_plug.poll_events = POLLIN;
    }
    ~ScriptedPcm()
    {
        std::fclose(m_heardFile);
        ::close(m_plug.poll_fd);
    }
    ScriptedPcm(const ScriptedPcm &) = delete;
    ScriptedPcm &operator=(const ScriptedPcm &) = delete;

    int create(snd_pcm_t **pcm, const char *name, snd_pcm_stream_t stream, int mode)
    {
        const int result = snd_pcm_ioplug_create(&m_plug, name, stream, mode);
        if (result < 0)
            return result;
        *pcm = m_plug.pcm;
        return constrain();
    }

private:
    static ScriptedPcm *of(snd_pcm_ioplug_t *plug)
    {
        return static_cast<ScriptedPcm *>(plug->private_data);
    }

    int constrain()
    {
        // ALSA's conversions write through a memory map, which it makes up itself.
        const unsigned access[] = {SND_PCM_ACCESS_RW_INTERLEAVED, SND_PCM_ACCESS_MMAP_INTERLEAVED};
        const unsigned format = m_script.fixed ? SND_PCM_FORMAT_S16_LE : SND_PCM_FORMAT_FLOAT_LE;
        snd_pcm_ioplug_set_param_list(&m_plug, SND_PCM_IOPLUG_HW_ACCESS, 2, access);
        snd_pcm_ioplug_set_param_list(&m_plug, SND_PCM_IOPLUG_HW_FORMAT, 1, &format);
        const auto set = [this](int what, unsigned low, unsigned high) {
            snd_pcm_ioplug_set_param_minmax(&m_plug, what, low, high);
        };
        set(SND_PCM_IOPLUG_HW_RATE, m_script.fixed ? 44100 : 4000, m_script.fixed ? 44100 : 192000);
        set(SND_PCM_IOPLUG_HW_CHANNELS, m_script.fixed ? 2 : 1, m_script.fixed ? 2 : 8);
        set(SND_PCM_IOPLUG_HW_PERIODS, 2, 1024);
        return snd_pcm_ioplug_set_param_minmax(&m_plug, SND_PCM_IOPLUG_HW_PERIOD_BYTES, 64, 65536);
    }

    int prepare()
    {
        if (m_gone)
            return -ENODEV;
        m_frames.clear();
        m_heard = 0;
        m_running = false;
        return 0;
    }

    int start()
    {
        m_running = true;
        m_started = Clock::now();
        m_startedAt = m_heard;
        return 0;
    }

    snd_pcm_sframes_t pointer()
    {
        if (!m_running)
            return m_heard;
        const auto step = std::chrono::nanoseconds(std::chrono::seconds(1)) / stepsPerSecond;
        const long steps = long((Clock::now() - m_started) / step);
        const long due = m_startedAt + steps * long(m_plug.rate) / stepsPerSecond;
        hear(std::min(due, written()));
        if (m_total >= eventFrames) {
            if (m_script.vanishes) {
                m_gone = true;
                return -ENODEV;
            }
            if (m_script.underruns && !m_happened) {
                m_happened = true;
                hear(written());
                return -EPIPE;
            }
            if (m_script.suspends && !m_happened) {
                m_happened = true;
                m_running = false;
                snd_pcm_ioplug_set_state(&m_plug, SND_PCM_STATE_SUSPENDED);
                return m_heard;
            }
        }
        return due > written() ? -EPIPE : m_heard;
    }

    int resume()
    {
        if (m_script.forgets)
            return -ENOSYS;
        snd_pcm_ioplug_set_state(&m_plug, SND_PCM_STATE_RUNNING);
        return start();
    }

    snd_pcm_sframes_t transfer(const snd_pcm_channel_area_t *areas, snd_pcm_uframes_t offset,
                               snd_pcm_uframes_t frames)
    {
        const auto *bytes =
            static_cast<const char *>(areas->addr) + (areas->first + areas->step * offset) / 8;
        m_frames.insert(m_frames.end(), bytes, bytes + frames * frameBytes());
        return snd_pcm_sframes_t(frames);
    }

    std::size_t frameBytes() const
    {
        return std::size_t(snd_pcm_format_physical_width(m_plug.format)) / 8 * m_plug.channels;
    }
    long written() const { return long(m_frames.size() / frameBytes()); }

    void hear(long upTo)
    {
        if (upTo <= m_heard)
            return;
        std::fwrite(m_frames.data() + std::size_t(m_heard) * frameBytes(), frameBytes(),
                    std::size_t(upTo - m_heard), m_heardFile);
        std::fflush(m_heardFile);
        m_total += upTo - m_heard;
        m_heard = upTo;
    }

    static const snd_pcm_ioplug_callback_t callbacks;

    const Script m_script;
    std::FILE *m_heardFile;
    snd_pcm_ioplug_t m_plug{};
    std::vector<char> m_frames; // written since prepare()
    long m_heard = 0;           // of them
    long m_total = 0;           // heard since it was opened
    bool m_running = false;
    Clock::time_point m_started;
    long m_startedAt = 0;
    bool m_happened = false;
    bool m_gone = false;
};

const snd_pcm_ioplug_callback_t ScriptedPcm::callbacks = [] {
    snd_pcm_ioplug_callback_t result{};
    result.start = [](snd_pcm_ioplug_t *plug) { return of(plug)->start(); };
    result.stop = [](snd_pcm_ioplug_t *) { return 0; };
    result.pointer = [](snd_pcm_ioplug_t *plug) { return of(plug)->pointer(); };
    result.transfer = [](snd_pcm_ioplug_t *plug, const snd_pcm_channel_area_t *areas,
                         snd_pcm_uframes_t offset, snd_pcm_uframes_t frames) {
        return of(plug)->transfer(areas, offset, frames);
    };
    result.prepare = [](snd_pcm_ioplug_t *plug) { return of(plug)->prepare(); };
    result.resume = [](snd_pcm_ioplug_t *plug) { return of(plug)->resume(); };
    result.close = [](snd_pcm_ioplug_t *plug) {
        delete of(plug);
        return 0;
    };
    return result;
}();

constexpr std::chrono::milliseconds slowOpening{400};

} // namespace

extern "C" SND_PCM_PLUGIN_DEFINE_FUNC(scripted)
{
    static_cast<void>(root);
    std::string behaviour;
    std::string heard;
    snd_config_iterator_t entry = nullptr;
    snd_config_iterator_t next = nullptr;
    snd_config_for_each(entry, next, conf)
    {
        const snd_config_t *node = snd_config_iterator_entry(entry);
        const char *id = nullptr;
        const char *text = nullptr;
        if (snd_config_get_id(node, &id) < 0 || snd_config_get_string(node, &text) < 0)
            continue;
        if (std::strcmp(id, "behaviour") == 0)
            behaviour = text;
        else if (std::strcmp(id, "heard") == 0)
            heard = text;
    }
    const Script script = parseScript(behaviour);
    if (script.slow)
        std::this_thread::sleep_for(slowOpening);
    if (script.busy)
        return -EBUSY;
    // Deleted by its close callback, which the library calls for a device that it has created.
    auto device = std::make_unique<ScriptedPcm>(script, heard);
    const int result = device->create(pcmp, name, stream, mode);
    if (result >= 0)
        device.release(); // NOLINT(bugprone-unused-return-value)
    return result;
}

extern "C" {
SND_PCM_PLUGIN_SYMBOL(scripted)
}
