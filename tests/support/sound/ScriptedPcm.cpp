// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// An ALSA device without hardware that behaves as its configuration says. It writes to a file what
// was heard, and nothing else:
//     type scripted
//     behaviour "plain"   see Script
//     heard "/path"
// It plays at the speed of the clock and reports its position in steps, as hardware does.

#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>
#include <alsa/pcm_ioplug.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds slowOpening{400};
constexpr std::chrono::milliseconds hangingOpening{6000};
constexpr std::chrono::milliseconds slowClosing{1000};
constexpr std::chrono::milliseconds hangingClosing{2500};

constexpr long stepsPerSecond = 200;
constexpr long eventFrames = 4000; // after how many frames something happens
constexpr long distance = 48000;   // by how many frames a distant device is heard later

struct Script
{
    bool busy = false;         // can't be opened
    bool denied = false;       // may not be opened
    bool forbidden = false;    // the same with another error
    bool missing = false;      // does not exist
    bool unconfigured = false; // the same with another error
    bool broken = false;       // can't be opened for another reason
    bool slow = false;         // takes longer to open than a player waits
    bool hangs = false;        // takes far longer
    bool fixed = false;        // takes only 16 bit stereo at 44100 Hz
    bool picky = false;        // takes no format
        // After a while:
    bool vanishes = false;  // is gone
    bool unplugged = false; // is gone, which only its state shows
    bool stalls = false;    // stops playing
    bool underruns = false;
    bool dies = false; // does not come back from that
    bool suspends = false;
    bool sleeps = false;  // the same, which only its state shows
    bool forgets = false; // loses what it held when it was suspended
        // All the time:
    bool hesitates = false;  // takes nothing at every second attempt
    bool chokes = false;     // takes nothing at any attempt
    bool wantsSound = false; // is gone when it is given silence
    bool distant = false;    // is heard later than it reports
    bool clueless = false;   // can't report how much later
    bool clings = false;     // takes some time to close
    bool sticks = false;     // takes far longer
    bool exclusive = false;  // is busy while it is open
};

Script parseScript(const std::string &behaviour)
{
    const auto has = [&](const char *word) { return behaviour.find(word) != std::string::npos; };
    Script script;
    script.busy = has("busy");
    script.denied = has("denied");
    script.forbidden = has("forbidden");
    script.missing = has("missing");
    script.unconfigured = has("unconfigured");
    script.broken = has("broken");
    script.stalls = has("stalls");
    script.slow = has("slow");
    script.hangs = has("hangs");
    script.fixed = has("fixed");
    script.picky = has("picky");
    script.vanishes = has("vanishes");
    script.unplugged = has("unplugged");
    script.underruns = has("underruns");
    script.dies = has("dies");
    script.suspends = has("suspends");
    script.sleeps = has("sleeps");
    script.forgets = has("forgets");
    script.hesitates = has("hesitates");
    script.chokes = has("chokes");
    script.wantsSound = has("wants_sound");
    script.distant = has("distant");
    script.clueless = has("clueless");
    script.clings = has("clings");
    script.sticks = has("sticks");
    script.exclusive = has("exclusive");
    return script;
}

int openingError(const Script &script)
{
    return script.busy           ? -EBUSY
           : script.denied       ? -EACCES
           : script.forbidden    ? -EPERM
           : script.missing      ? -ENODEV
           : script.unconfigured ? -ENXIO
           : script.broken       ? -EIO
                                 : 0;
}

// A "moody" device behaves differently each time it is opened, mostly well. An "alternating" one is
// busy every other time.
std::string behaviourOf(const std::string &configured)
{
    if (configured.find("alternates") != std::string::npos) {
        static std::atomic<bool> busyNext{false};
        return busyNext.exchange(!busyNext) ? "busy" : "plain";
    }
    if (configured.find("moody") == std::string::npos) {
        return configured;
    }
    constexpr std::array<const char *, 8> moods{
        "busy",      "slow",     "slow_busy",        "fixed",
        "underruns", "suspends", "suspends_forgets", "vanishes"};
    constexpr unsigned oftener = 11; // good turns for each bad one
    static std::atomic<unsigned> opened{0};
    const unsigned turn = opened++;
    return turn % oftener == 0 ? moods[turn / oftener % moods.size()] : "plain";
}

// Whether the exclusive device is open.
std::atomic<bool> isTaken{false};

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
        m_plug.callback = script.distant || script.clueless ? &callbacksWithDelay : &callbacks;
        m_plug.private_data = this;
        m_plug.poll_fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        m_plug.poll_events = POLLIN;
    }
    ~ScriptedPcm()
    {
        std::fclose(m_heardFile);
        ::close(m_plug.poll_fd);
        if (m_script.exclusive) {
            isTaken = false;
        }
    }
    ScriptedPcm(const ScriptedPcm &) = delete;
    ScriptedPcm &operator=(const ScriptedPcm &) = delete;

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
    static ScriptedPcm *of(snd_pcm_ioplug_t *plug)
    {
        return static_cast<ScriptedPcm *>(plug->private_data);
    }

    int constrain()
    {
        // ALSA's conversions write through a memory map, which ALSA emulates.
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

    int setHardware() const { return m_script.picky ? -EINVAL : 0; }

    void close() const
    {
        if (m_script.clings) {
            std::this_thread::sleep_for(slowClosing);
        }
        if (m_script.sticks) {
            std::this_thread::sleep_for(hangingClosing);
        }
    }

    int prepare()
    {
        if (m_gone) {
            return -ENODEV;
        }
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
        if (m_lost) {
            return -ENODEV;
        }
        if (!m_running || (m_script.stalls && m_total >= eventFrames)) {
            return m_heard;
        }
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
                m_gone = m_script.dies;
                hear(written());
                return -EPIPE;
            }
            if (m_script.suspends && !m_happened) {
                m_happened = true;
                m_gone = m_script.dies;
                m_running = false;
                snd_pcm_ioplug_set_state(&m_plug, SND_PCM_STATE_SUSPENDED);
                return m_heard;
            }
        }
        return due > written() ? -EPIPE : m_heard;
    }

    int resume()
    {
        if (m_script.forgets) {
            return -ENOSYS;
        }
        snd_pcm_ioplug_set_state(&m_plug, SND_PCM_STATE_RUNNING);
        return start();
    }

    snd_pcm_sframes_t transfer(const snd_pcm_channel_area_t *areas, snd_pcm_uframes_t offset,
                               snd_pcm_uframes_t frames)
    {
        const auto *bytes =
            static_cast<const char *>(areas->addr) + (areas->first + areas->step * offset) / 8;
        if (m_script.chokes) {
            return -EPIPE;
        }
        if (m_script.hesitates && (m_hesitated = !m_hesitated)) {
            return -EAGAIN;
        }
        if (m_script.wantsSound && isSilent(bytes, frames * frameBytes())) {
            m_lost = true;
            return -ENODEV;
        }
        if (!m_happened && written() >= eventFrames && (m_script.sleeps || m_script.unplugged)) {
            m_happened = true;
            m_running = false;
            snd_pcm_ioplug_set_state(&m_plug, m_script.sleeps ? SND_PCM_STATE_SUSPENDED
                                                              : SND_PCM_STATE_DISCONNECTED);
        }
        m_frames.insert(m_frames.end(), bytes, bytes + frames * frameBytes());
        return snd_pcm_sframes_t(frames);
    }

    static bool isSilent(const char *bytes, std::size_t count)
    {
        return std::all_of(bytes, bytes + count, [](char byte) { return byte == 0; });
    }

    int delay(snd_pcm_sframes_t *frames) const
    {
        if (m_script.clueless) {
            return -EIO;
        }
        *frames = written() - m_heard + distance;
        return 0;
    }

    std::size_t frameBytes() const
    {
        return std::size_t(snd_pcm_format_physical_width(m_plug.format)) / 8 * m_plug.channels;
    }
    long written() const { return m_heard + long(m_frames.size() / frameBytes()); }

    void hear(long upTo)
    {
        if (upTo <= m_heard) {
            return;
        }
        const std::size_t bytes = std::size_t(upTo - m_heard) * frameBytes();
        std::fwrite(m_frames.data(), 1, bytes, m_heardFile);
        std::fflush(m_heardFile);
        m_frames.erase(m_frames.begin(), m_frames.begin() + std::ptrdiff_t(bytes));
        m_total += upTo - m_heard;
        m_heard = upTo;
    }

    static const snd_pcm_ioplug_callback_t callbacks;
    static const snd_pcm_ioplug_callback_t callbacksWithDelay;

    const Script m_script;
    std::FILE *m_heardFile;
    snd_pcm_ioplug_t m_plug{};
    std::vector<char> m_frames; // written but not yet heard
    long m_heard = 0;           // since prepare()
    long m_total = 0;           // heard since it was opened
    bool m_running = false;
    Clock::time_point m_started;
    long m_startedAt = 0;
    bool m_happened = false;
    bool m_gone = false; // and can't be prepared again
    bool m_lost = false; // and can't report how far it has played
    bool m_hesitated = false;
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
    result.hw_params = [](snd_pcm_ioplug_t *plug, snd_pcm_hw_params_t *) {
        return of(plug)->setHardware();
    };
    result.prepare = [](snd_pcm_ioplug_t *plug) { return of(plug)->prepare(); };
    result.resume = [](snd_pcm_ioplug_t *plug) { return of(plug)->resume(); };
    result.close = [](snd_pcm_ioplug_t *plug) {
        of(plug)->close();
        delete of(plug);
        return 0;
    };
    return result;
}();

const snd_pcm_ioplug_callback_t ScriptedPcm::callbacksWithDelay = [] {
    snd_pcm_ioplug_callback_t result = callbacks;
    result.delay = [](snd_pcm_ioplug_t *plug, snd_pcm_sframes_t *frames) {
        return of(plug)->delay(frames);
    };
    return result;
}();

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
        if (snd_config_get_id(node, &id) < 0 || snd_config_get_string(node, &text) < 0) {
            continue;
        }
        if (std::strcmp(id, "behaviour") == 0) {
            behaviour = text;
        } else if (std::strcmp(id, "heard") == 0) {
            heard = text;
        }
    }
    const Script script = parseScript(behaviourOf(behaviour));
    if (script.exclusive && isTaken.exchange(true)) {
        return -EBUSY;
    }
    if (script.slow) {
        std::this_thread::sleep_for(slowOpening);
    }
    if (script.hangs) {
        std::this_thread::sleep_for(hangingOpening);
    }
    if (const int error = openingError(script); error != 0) {
        return error;
    }
    // Deleted by its close callback, which ALSA calls for devices that it has created.
    auto device = std::make_unique<ScriptedPcm>(script, heard);
    const int result = device->create(pcmp, name, stream, mode);
    if (result >= 0) {
        device.release(); // NOLINT(bugprone-unused-return-value)
    }
    return result;
}

extern "C" {
SND_PCM_PLUGIN_SYMBOL(scripted)
}
