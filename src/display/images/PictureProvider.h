// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/images/IconTheme.h"
#include "display/message/Message.h"

#include <QMutex>
#include <QQuickImageProvider>

/// Gives QML the picture of the message on the screen, as "image://tavo/message/NUMBER", and the icons of
/// its buttons, as "image://tavo/icon/NAME". QML deletes the provider and calls requestImage() in a thread
/// of its own; all functions may be called from any thread.
class PictureProvider : public QQuickImageProvider
{
public:
    PictureProvider();

    void setPicture(const Picture &picture);
    void setIconTheme(const QString &theme);

    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;

private:
    QMutex m_mutex; ///< protects the members below
    Picture m_picture;
    QString m_iconTheme;
};
