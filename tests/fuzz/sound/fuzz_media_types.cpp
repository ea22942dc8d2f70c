// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Stream formats and sources: any text as a media type and as a location, and any bytes as the
// samples of a raw stream.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/ValueReader.h"
#include <base/SoundLocation.h>
#include <core/base/stream.h>
#include <playback/PcmFormat.h>

#include <cmath>
#include <vector>

namespace {
void checkSamples(const PcmFormat &format, const QByteArray &bytes)
{
    const int count = bytes.size() / format.bytesPerSample();
    std::vector<float> samples(std::size_t(count), 0.0F);
    decodePcm(format.encoding, bytes.constData(), samples.data(), count);
    // Floats are passed on unchanged.
    const bool isFloat =
        format.encoding == PcmEncoding::F32LE || format.encoding == PcmEncoding::F32BE;
    for (const float sample : samples) {
        FUZZ_CHECK(isFloat || std::fabs(sample) <= 1.0F, sample);
    }
}

void checkFormat(const QString &mediaType, const QByteArray &bytes)
{
    const Result<StreamFormat> parsed = parseStreamFormat(mediaType);
    if (const auto *failure = std::get_if<Failure>(&parsed)) {
        FUZZ_CHECK(failure->reason.contains(mediaType), failure->reason);
        return;
    }
    const auto &format = std::get<StreamFormat>(parsed);
    if (!format.pcm) {
        return;
    }
    const SoundFormat sound = format.pcm->sound;
    FUZZ_CHECK(sound.rate > 0 && sound.channels > 0, mediaType);
    FUZZ_CHECK(format.pcm->bytesPerFrame() == sound.channels * format.pcm->bytesPerSample(),
               mediaType);
    checkSamples(*format.pcm, bytes);
}

/// The location is a file, a URI of a server, or an error with a reason.
void checkLocation(const QString &name)
{
    const Result<SoundLocation> parsed = parseSoundLocation(name);
    if (const auto *failure = std::get_if<Failure>(&parsed)) {
        FUZZ_CHECK(!failure->reason.isEmpty(), name);
        return;
    }
    const auto &[path, url] = std::get<SoundLocation>(parsed);
    FUZZ_CHECK(path.isEmpty() != url.isEmpty(), name << " is " << path << ' ' << url.toString());
    FUZZ_CHECK(!url.isEmpty() || !isSoundUri(name) || path.startsWith('/'), name << " is " << path);
    if (!url.isEmpty()) {
        const QString scheme = url.scheme();
        FUZZ_CHECK(scheme == QLatin1String("http") || scheme == QLatin1String("https"), name);
        FUZZ_CHECK(!url.host().isEmpty(), name);
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
