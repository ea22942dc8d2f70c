// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/seeds/SeedFolder.h"
#include "fuzz/seeds/Seeds.h"
#include "fuzz/support/ValueWriter.h"
#include "support/sound/SoundFiles.h"

#include <sndfile.h>

namespace {
constexpr int soundFrames = 300;

struct Format
{
    const char *name;
    int format;
    int rate;
};

const Format formats[] = {
    {"wav-16", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000},
    {"wav-8", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 8000},
    {"wav-24", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 96000},
    {"wav-float", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100},
    {"wav-adpcm", SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM, 22050},
    {"wav-extensible", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 48000},
    {"flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 44100},
    {"flac-24", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 48000},
    {"vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100},
    {"opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000},
    {"mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100},
};

/// The first bytes of an input tell the playback's fuzzer what to do with the rest.
QByteArray playback(int kind, bool loop, const QByteArray &commands, const char *mediaType)
{
    ValueWriter writer;
    writer.byte(kind);
    writer.byte(int(loop));
    writer.byte(commands.size());
    writer.raw(commands);
    writer.text(QString::fromLatin1(mediaType));
    return writer.bytes();
}

void writePlaybacks(const SeedFolder &folder, const QByteArray &name, const QByteArray &sound)
{
    folder.write(name, playback(0, false, {}, "") + sound);
    folder.write(name + "-file", playback(1, false, QByteArray("\x00\x01", 2), "") + sound);
    folder.write(name + "-stream", playback(2, true, QByteArray("\x03", 1), "audio/wav") + sound);
}
} // namespace

void writeSoundSeeds(const QString &corpus)
{
    const SeedFolder sounds(corpus, "fuzz_sound");
    const SeedFolder playbacks(corpus, "fuzz_playback");
    for (const Format &format : formats) {
        for (const int channels : {1, 2}) {
            const QByteArray name = format.name + QByteArray(channels == 1 ? "-mono" : "-stereo");
            const QString file = sounds.path(name.constData());
            writeSound(file, format.format, format.rate,
                       sineSamples(soundFrames * channels, format.rate, 1000), channels);
            const QByteArray whole = readFile(file);
            if (channels == 1) {
                writePlaybacks(playbacks, format.name, whole);
                sounds.write(format.name + QByteArray("-cut-off"),
                             whole.left(whole.size() * 2 / 3));
            }
        }
    }
    const QByteArray samples(400, '\x11');
    const char *rawTypes[] = {"audio/L16;rate=48000;channels=2", "audio/L8;rate=8000",
                              "audio/x-raw;format=F32LE;rate=44100",
                              "audio/x-raw;format=S24BE;rate=1"};
    for (const char *type : rawTypes) {
        playbacks.write("raw-" + QByteArray(type).replace('/', '-').replace(';', '-'),
                        playback(2, false, QByteArray("\x00\x01\x02\x03", 4), type) + samples);
    }
}
