// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/platform/FocusKey.h"

#include <QObject>
#include <QSocketNotifier>

struct xcb_connection_t;

/// Grabs the key on a connection of its own.
class X11FocusKey : public QObject, public FocusKey
{
    Q_OBJECT

public:
    X11FocusKey();
    ~X11FocusKey() override;

    void follow(const QKeySequence &key, QWindow *window) override;

private Q_SLOTS:
    void on_notifier_activated();

private:
    void grab(const QKeySequence &key);
    quint8 keycode(quint32 keysym) const;
    quint32 focusedWindow() const;
    void setFocus(quint32 window);

    xcb_connection_t *m_connection;
    quint32 m_root = 0;
    quint8 m_keycode = 0; ///< 0: nothing is grabbed
    quint32 m_window = 0;
    quint32 m_previous =
        0; ///< had the keyboard before the message; 0: the message does not have it
    std::unique_ptr<QSocketNotifier> m_notifier;
};

/// What the program finds in this library, which is loaded only on X11. To be deleted by the caller.
extern "C" Q_DECL_EXPORT FocusKey *tavoDisplayMakeFocusKey();
