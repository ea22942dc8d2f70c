// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Stream formats and sources: any text as a media type and as a place, and any bytes as the samples
// of a raw stream.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/ValueReader.h"

#include <core/base/stream.h>
#include <playback/Location.h>
#include <playback/PcmFormat.h>

#include <cmath>
#include <vector>

namespace {
void checkSamples(const PcmFormat &format, const QByteArray &bytes)
{
    const int count = bytes.size() / format.bytesPerSample();
    std::vector<float> samples(std::size_t(count), 0.0F);
    decodePcm(format.encoding, bytes.constData(), samples.data(), count);
    // Floats are passed on as they are.
    const bool isFloat =
        format.encoding == PcmEncoding::F32LE || format.encoding == PcmEncoding::F32BE;
    for (const float sample : samples) {
        FUZZ_CHECK(isFloat || std::fabs(sample) <= 1.0F, sample);
    }
}

void checkFormat(const QString &mediaType, const QByteArray &bytes)
{
    const StreamFormat format = parseStreamFormat(mediaType);
    FUZZ_CHECK(!format.pcm || format.error.isEmpty(), mediaType);
    if (!format.pcm) {
        FUZZ_CHECK(format.error.isEmpty() || format.error.contains(mediaType), format.error);
        return;
    }
    const SoundFormat sound = format.pcm->sound;
    FUZZ_CHECK(sound.rate > 0 && sound.channels > 0, mediaType);
    FUZZ_CHECK(format.pcm->bytesPerFrame() == sound.channels * format.pcm->bytesPerSample(),
               mediaType);
    checkSamples(*format.pcm, bytes);
}

/// Exactly one of path, URL and error.
void checkLocation(const QString &text)
{
    const Location location = parseLocation(text);
    const int found = int(!location.path.isEmpty()) + int(!location.url.isEmpty()) +
                      int(!location.error.isEmpty());
    FUZZ_CHECK(found == 1, text << " is " << location.path << ' ' << location.url.toString() << ' '
                                << location.error);
    if (!location.url.isEmpty()) {
        const QString scheme = location.url.scheme();
        FUZZ_CHECK(scheme == QLatin1String("http") || scheme == QLatin1String("https"), text);
        FUZZ_CHECK(!location.url.host().isEmpty(), text);
    }
}
} // namespace

void fuzzOne(ByteReader &input)
{
    ValueReader values(input);
    const QString mediaType = values.text();
    const QString place = values.text();
    checkFormat(mediaType, input.rest());
    checkLocation(place);
    checkLocation(mediaType);
}
