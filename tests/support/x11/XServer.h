// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"

#include <QImage>
#include <QProcess>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QVector>

#include <chrono>
#include <functional>
#include <memory>

struct xcb_connection_t;

/// A private X server with a black screen, and a person in front of it, who sees pixels and has a pointer
/// and a keyboard. Ends with the object.
class XServer
{
public:
    static constexpr std::chrono::seconds s_timeout{20};

    /// Returns when the server accepts connections; throws if it does not start.
    explicit XServer(const QString &screen = QStringLiteral("1280x800x24"));
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    /// For the variable DISPLAY.
    QString name() const { return m_name; }

    QImage picture() const;

    /// Waits until the picture fulfils the condition. Looks again whenever the screen changes.
    bool waitForPicture(const std::function<bool(const QImage &)> &condition) const;

    /// The windows on the screen.
    QVector<QRect> windows() const;
    bool waitForWindows(const std::function<bool(const QVector<QRect> &)> &condition) const;

    void movePointer(const QPoint &point);
    void click(const QPoint &point);
    /// Presses and releases the keys with these numbers of X11, the last one while the others are held.
    void press(const QVector<quint32> &keysyms);

    /// Opens a window that has the keyboard, as the program that the person uses.
    quint32 openOtherWindow(const QRect &place);
    quint32 focusedWindow() const;

private:
    bool waitForChange(const std::function<bool()> &condition) const;
    quint8 keycode(quint32 keysym) const;
    void fake(quint8 type, quint8 detail, const QPoint &point = {}) const;

    std::unique_ptr<QProcess> m_process;
    QString m_name;
    xcb_connection_t *m_connection = nullptr;
    quint32 m_root = 0;
    QSize m_size;
};
