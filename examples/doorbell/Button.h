// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <memory>

/// A button that Linux reports as an input device, such as /dev/input/by-path/platform-gpio-keys-event.
///
/// Lives in the worker's thread, whose event loop waits for the button.
class Button : public QObject
{
    Q_OBJECT

public:
    /// Opens the device. Throws a std::runtime_error that gives the reason if that fails.
    Button(const QString &device, QObject *parent);
    ~Button() override;

Q_SIGNALS:
    void pressed();

    /// The device has gone, for example because it was unplugged.
    void lost();

private:
    void on_descriptor_ready();

    int m_descriptor = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
