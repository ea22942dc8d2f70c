// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/records/rows.h>

#include <QByteArray>

#include <cstddef>
#include <optional>

class BusReader;

/// A picture as desktop clients send it: the hint "image-data". A value; copies share the pixels.
class ImageData
{
public:
    /// Of what a client sends.
    static constexpr std::size_t maxBytes = 16 << 20;
    /// Of the scaled picture; with four bytes for each pixel, this is at most 256 KiB.
    static constexpr int maxSide = 256;

    /// Reads the variant of the hint. Copies nothing, and returns nothing, if it has another type, more
    /// than maxBytes, or fewer than its sizes claim.
    static std::optional<ImageData> read(BusReader &reader);

    /// The picture with at most maxSide pixels on each side. Takes some milliseconds for a large one. Called
    /// from any thread.
    TavoImage scaled() const;

    std::size_t bytes() const { return std::size_t(m_bytes.size()); }
    std::size_t scaledBytes() const;

private:
    struct Size
    {
        int width;
        int height;
    };

    Size scaledSize() const;
    void append(QByteArray &pixels, const Size &scaled, int x, int y) const;

    int m_width = 0;
    int m_height = 0;
    int m_stride = 0; ///< bytes from one row to the next
    int m_channels = 0;
    bool m_hasAlpha = false;
    QByteArray m_bytes;
};
