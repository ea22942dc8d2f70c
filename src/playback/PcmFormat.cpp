// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/PcmFormat.h"

#include <QHash>
#include <QStringList>
#include <QtEndian>

#include <array>
#include <cstring>
#include <iterator>

namespace {

struct NamedEncoding
{
    const char *name;
    PcmEncoding encoding;
};

constexpr std::array encodings{
    NamedEncoding{"U8", PcmEncoding::U8},       NamedEncoding{"S8", PcmEncoding::S8},
    NamedEncoding{"S16LE", PcmEncoding::S16LE}, NamedEncoding{"S16BE", PcmEncoding::S16BE},
    NamedEncoding{"S24LE", PcmEncoding::S24LE}, NamedEncoding{"S24BE", PcmEncoding::S24BE},
    NamedEncoding{"S32LE", PcmEncoding::S32LE}, NamedEncoding{"S32BE", PcmEncoding::S32BE},
    NamedEncoding{"F32LE", PcmEncoding::F32LE}, NamedEncoding{"F32BE", PcmEncoding::F32BE},
};

// The registered linear types, which are big-endian.
constexpr std::array linearTypes{
    NamedEncoding{"audio/l8", PcmEncoding::U8},
    NamedEncoding{"audio/l16", PcmEncoding::S16BE},
    NamedEncoding{"audio/l24", PcmEncoding::S24BE},
};

constexpr std::array fileTypes{
    "audio/wav", "audio/x-wav",  "audio/wave", "audio/vnd.wave",  "audio/flac", "audio/x-flac",
    "audio/ogg", "audio/vorbis", "audio/opus", "application/ogg", "audio/mpeg", "audio/mp3",
};

std::optional<PcmEncoding> find(const NamedEncoding *begin, const NamedEncoding *end,
                                const QString &name)
{
    for (const NamedEncoding *entry = begin; entry != end; ++entry) {
        if (name.compare(QLatin1String(entry->name), Qt::CaseInsensitive) == 0) {
            return entry->encoding;
        }
    }
    return std::nullopt;
}

bool isFileType(const QString &type)
{
    for (const char *known : fileTypes) {
        if (type == QLatin1String(known)) {
            return true;
        }
    }
    return false;
}

QHash<QString, QString> parseParameters(const QStringList &parts)
{
    QHash<QString, QString> parameters;
    for (const QString &part : parts) {
        QString value = part.section(QLatin1Char('='), 1).trimmed();
        value.remove(QLatin1Char('"'));
        parameters.insert(part.section(QLatin1Char('='), 0, 0).trimmed().toLower(), value);
    }
    return parameters;
}

Failure refuse(const QString &mediaType, const QString &why)
{
    return {QStringLiteral("The stream format \"%1\" %2").arg(mediaType, why)};
}

Result<StreamFormat> readPcm(const QString &mediaType, PcmEncoding encoding,
                             const QHash<QString, QString> &parameters)
{
    const int rate = parameters.value(QStringLiteral("rate")).toInt();
    if (rate < SoundFormat::minRate || rate > SoundFormat::maxRate) {
        return refuse(mediaType, QStringLiteral("needs a rate, such as rate=48000"));
    }
    const int channels = parameters.value(QStringLiteral("channels"), QStringLiteral("1")).toInt();
    if (channels < 1 || channels > SoundFormat::maxChannels) {
        return refuse(mediaType, QStringLiteral("has no usable number of channels"));
    }
    return StreamFormat{PcmFormat{encoding, {rate, channels}}};
}

template <typename Integer>
void decodeIntegers(const char *bytes, float *samples, long count, bool bigEndian)
{
    constexpr float scale = 1.0F / (1U << (8 * sizeof(Integer) - 1));
    for (long i = 0; i < count; ++i, bytes += sizeof(Integer)) {
        const Integer value =
            bigEndian ? qFromBigEndian<Integer>(bytes) : qFromLittleEndian<Integer>(bytes);
        samples[i] = float(value) * scale;
    }
}

void decode24(const char *bytes, float *samples, long count, bool bigEndian)
{
    for (long i = 0; i < count; ++i, bytes += 3) {
        const auto high = quint32(uchar(bytes[bigEndian ? 0 : 2]));
        const auto middle = quint32(uchar(bytes[1]));
        const auto low = quint32(uchar(bytes[bigEndian ? 2 : 0]));
        // Shifted into the upper bits, so that the sign bit is in its place.
        const auto value = qint32(high << 24 | middle << 16 | low << 8);
        samples[i] = float(value) / 2147483648.0F;
    }
}

void decodeFloats(const char *bytes, float *samples, long count, bool bigEndian)
{
    for (long i = 0; i < count; ++i, bytes += sizeof(float)) {
        const quint32 bits =
            bigEndian ? qFromBigEndian<quint32>(bytes) : qFromLittleEndian<quint32>(bytes);
        std::memcpy(&samples[i], &bits, sizeof bits);
    }
}

void decodeUnsigned(const char *bytes, float *samples, long count)
{
    constexpr int middle = 128;
    for (long i = 0; i < count; ++i) {
        samples[i] = float(int(uchar(bytes[i])) - middle) / float(middle);
    }
}

} // namespace

int PcmFormat::bytesPerSample() const
{
    switch (encoding) {
    case PcmEncoding::U8:
    case PcmEncoding::S8:
        return 1;
    case PcmEncoding::S16LE:
    case PcmEncoding::S16BE:
        return 2;
    case PcmEncoding::S24LE:
    case PcmEncoding::S24BE:
        return 3;
    default:
        return 4;
    }
}

Result<StreamFormat> parseStreamFormat(const QString &mediaType)
{
    QStringList parts = mediaType.split(QLatin1Char(';'));
    const QString type = parts.takeFirst().trimmed().toLower();
    const QHash<QString, QString> parameters = parseParameters(parts);

    if (const auto linear = find(std::begin(linearTypes), std::end(linearTypes), type)) {
        return readPcm(mediaType, *linear, parameters);
    }
    if (type == QLatin1String("audio/x-raw")) {
        if (const auto encoding = find(std::begin(encodings), std::end(encodings),
                                       parameters.value(QStringLiteral("format")))) {
            return readPcm(mediaType, *encoding, parameters);
        }
        return refuse(mediaType, QStringLiteral("names no known sample format"));
    }
    if (isFileType(type)) {
        return StreamFormat{};
    }
    return refuse(mediaType, QStringLiteral("is not known"));
}

void decodePcm(PcmEncoding encoding, const char *bytes, float *samples, long count)
{
    switch (encoding) {
    case PcmEncoding::U8:
        return decodeUnsigned(bytes, samples, count);
    case PcmEncoding::S8:
        return decodeIntegers<qint8>(bytes, samples, count, false);
    case PcmEncoding::S16LE:
    case PcmEncoding::S16BE:
        return decodeIntegers<qint16>(bytes, samples, count, encoding == PcmEncoding::S16BE);
    case PcmEncoding::S24LE:
    case PcmEncoding::S24BE:
        return decode24(bytes, samples, count, encoding == PcmEncoding::S24BE);
    case PcmEncoding::S32LE:
    case PcmEncoding::S32BE:
        return decodeIntegers<qint32>(bytes, samples, count, encoding == PcmEncoding::S32BE);
    case PcmEncoding::F32LE:
    case PcmEncoding::F32BE:
        return decodeFloats(bytes, samples, count, encoding == PcmEncoding::F32BE);
    }
}
