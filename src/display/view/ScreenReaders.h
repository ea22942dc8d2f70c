// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QAccessible>
#include <QObject>
#include <QPointer>

#include <functional>

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

private Q_SLOTS:
    void on_accessibility_activated();

private:
    void accessibilityActiveChanged(bool active) override;
    void setConnected();

    const std::function<void()> m_connected;
    QPointer<QObject> m_announced;
    bool m_isConnected = false;
};
