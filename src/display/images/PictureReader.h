// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "display/images/IconTheme.h"

#include <QImage>
#include <QSize>

/// The largest file of a picture, in bytes.
constexpr qint64 maxPictureBytes = 16 << 20;

/// The most pixels of a picture before it is scaled.
constexpr qint64 maxPicturePixels = qint64(1) << 24;

/// Reads the picture that a message names: an icon's name, an absolute path or a file: URI, at most as
/// large as the size. The sizes are checked before anything is decoded. A file that is not regular is not
/// read. An SVG that refers to other files or to servers, or that is too complex, is refused, and so is a JPEG of
/// more than 100 scans; of an animation, the first picture is read. Blocks; called from any thread.
Result<QImage> readPicture(const QString &source, const QSize &size, const IconTheme &icons);
