// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ImageData.h"

#include <QObject>
#include <QThread>

#include <cstddef>
#include <functional>

/// Scales pictures in a thread of its own, which starts with the first one.
///
/// Used in the worker's thread. The destructor may wait until the pictures that are waiting are scaled.
class ImageScaler
{
public:
    using Use = std::function<void(const TavoImage &)>;

    ImageScaler();
    ~ImageScaler();

    Q_DISABLE_COPY_MOVE(ImageScaler)

    /// Scales a picture, and then calls the function from the event loop of the worker's thread. False if
    /// too many bytes are waiting already.
    bool scale(const ImageData &image, const Use &use);

private:
    std::size_t m_waitingBytes = 0;
    QObject m_home;    ///< in the worker's thread
    QObject m_scaling; ///< in the thread
    QThread m_thread;
};
