// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ImageScaler.h"

namespace {
/// Some pictures of the largest size. They take about 50 ms.
constexpr std::size_t maxWaitingBytes = 4 * ImageData::maxBytes;
} // namespace

ImageScaler::ImageScaler()
{
    m_thread.setObjectName(QStringLiteral("dbus-images"));
    m_scaling.moveToThread(&m_thread);
}

ImageScaler::~ImageScaler()
{
    m_thread.quit();
    m_thread.wait();
}

bool ImageScaler::scale(const ImageData &image, const Use &use)
{
    if (m_waitingBytes + image.bytes() > maxWaitingBytes) {
        return false;
    }
    m_waitingBytes += image.bytes();
    if (!m_thread.isRunning()) {
        m_thread.start();
    }
    const auto finish = [this, use, bytes = image.bytes()](const TavoImage &scaled) {
        m_waitingBytes -= bytes;
        use(scaled);
    };
    QMetaObject::invokeMethod(&m_scaling, [this, image, finish] {
        QMetaObject::invokeMethod(&m_home, [finish, scaled = image.scaled()] { finish(scaled); });
    });
    return true;
}
