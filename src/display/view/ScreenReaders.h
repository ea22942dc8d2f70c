// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QAccessible>
#include <QObject>
#include <QPointer>
#include <QWindow>

#include <functional>
#include <memory>

/// What speaks the messages to people who can't see them, by AT-SPI.
class ScreenReaders : public QObject, private QAccessible::ActivationObserver
{
    Q_OBJECT

public:
    /// Calls the function once, as soon as screen readers can find the program.
    explicit ScreenReaders(std::function<void()> connected);
    ~ScreenReaders() override;

    /// Has the item spoken as a notification: Qt reports no alerts, but readers speak a notification that is
    /// shown. Does nothing before the program can be found.
    void announce(QObject *item);

    /// Tells readers that the notification has ended that was announced last, if it has not ended yet.
    void end();

    // Of windows, Qt tells readers only which one gets the keyboard.

    /// Tells readers that there is this window, and from now on when it comes on the screen and goes.
    static void follow(QWindow *window);
    /// Destroys a window, which may be null, and tells readers that it has gone.
    static void destroy(std::unique_ptr<QWindow> window);

private Q_SLOTS:
    void on_accessibility_activated();

private:
    void accessibilityActiveChanged(bool active) override;
    void setConnected();

    const std::function<void()> m_connected;
    QPointer<QObject> m_announced;

    inline static bool s_isConnected = false; ///< can be found by readers
};
