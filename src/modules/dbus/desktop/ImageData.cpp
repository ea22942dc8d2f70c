// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ImageData.h"

#include <bus/BusReader.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace {
constexpr int bitsPerSample = 8;
constexpr int opaqueChannels = 3;
constexpr int alphaChannels = 4;
constexpr int scaledChannels = 4;
constexpr int opaque = 255;

/// The first source pixel of a scaled one; the next one's is where it ends.
int sourceOf(int scaled, int scaledSide, int side)
{
    return int(std::int64_t(scaled) * side / scaledSide);
}
} // namespace

std::optional<ImageData> ImageData::read(BusReader &reader)
{
    if (!reader.enterStructVariant("iiibiiay")) {
        return std::nullopt;
    }
    ImageData image;
    image.m_width = reader.readInt32();
    image.m_height = reader.readInt32();
    image.m_stride = reader.readInt32();
    image.m_hasAlpha = reader.readBoolean();
    const int bits = reader.readInt32();
    image.m_channels = reader.readInt32();
    const QByteArray bytes = reader.viewBytes();
    reader.leave();
    reader.leave();
    const bool hasChannels = image.m_channels == alphaChannels ||
                             (image.m_channels == opaqueChannels && !image.m_hasAlpha);
    const std::int64_t rowBytes = std::int64_t(image.m_width) * image.m_channels;
    if (bits != bitsPerSample || !hasChannels || image.m_width < 1 || image.m_height < 1 ||
        image.m_stride < rowBytes) {
        return std::nullopt;
    }
    // The last row may be without padding.
    const std::int64_t needed = std::int64_t(image.m_height - 1) * image.m_stride + rowBytes;
    if (needed > std::int64_t(maxBytes) || needed > bytes.size()) {
        return std::nullopt;
    }
    image.m_bytes = QByteArray(bytes.constData(), int(needed));
    return image;
}

ImageData::Size ImageData::scaledSize() const
{
    const int longest = std::max(m_width, m_height);
    if (longest <= maxSide) {
        return {m_width, m_height};
    }
    const auto scaled = [longest](int side) {
        return int(std::max<std::int64_t>(std::int64_t(side) * maxSide / longest, 1));
    };
    return {scaled(m_width), scaled(m_height)};
}

std::size_t ImageData::scaledBytes() const
{
    const Size size = scaledSize();
    return std::size_t(size.width) * std::size_t(size.height) * scaledChannels;
}

TavoImage ImageData::scaled() const
{
    const Size size = scaledSize();
    QByteArray pixels;
    pixels.reserve(int(scaledBytes()));
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            append(pixels, size, x, y);
        }
    }
    return TavoImage().setWidth(size.width).setHeight(size.height).setPixels(pixels);
}

/// Appends the mean of the source pixels that one scaled pixel covers. A colour counts as much as it is
/// opaque.
void ImageData::append(QByteArray &pixels, const Size &scaled, int x, int y) const
{
    const int left = sourceOf(x, scaled.width, m_width);
    const int right = std::max(sourceOf(x + 1, scaled.width, m_width), left + 1);
    const int top = sourceOf(y, scaled.height, m_height);
    const int bottom = std::max(sourceOf(y + 1, scaled.height, m_height), top + 1);
    std::array<std::uint64_t, opaqueChannels> colours{};
    std::uint64_t opacity = 0;
    for (int row = top; row < bottom; ++row) {
        const auto *source = reinterpret_cast<const std::uint8_t *>(m_bytes.constData()) +
                             std::int64_t(row) * m_stride + std::int64_t(left) * m_channels;
        for (int column = left; column < right; ++column, source += m_channels) {
            const std::uint64_t weight = m_hasAlpha ? source[opaqueChannels] : opaque;
            for (std::size_t i = 0; i < colours.size(); ++i) {
                colours[i] += weight * source[i];
            }
            opacity += weight;
        }
    }
    for (const std::uint64_t colour : colours) {
        pixels.append(char(opacity == 0 ? 0 : colour / opacity));
    }
    const auto count = std::uint64_t(right - left) * std::uint64_t(bottom - top);
    pixels.append(char(opacity / count));
}
