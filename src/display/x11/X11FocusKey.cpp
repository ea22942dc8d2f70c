// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/x11/X11FocusKey.h"

#include <core/base/connect.h>

#include <cstdlib>
#include <xcb/xcb.h>

namespace {
constexpr quint32 firstFunctionKeysym = 0xffbe;

/// 0 for keys other than letters, digits and function keys.
quint32 keysymOf(int key)
{
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35) {
        return firstFunctionKeysym + quint32(key - Qt::Key_F1);
    }
    if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        return quint32(key - Qt::Key_A + 'a');
    }
    return key >= Qt::Key_0 && key <= Qt::Key_9 ? quint32(key) : 0;
}

quint16 modifiersOf(int key)
{
    struct Modifier
    {
        int qt;
        quint16 x11;
    };
    quint16 modifiers = 0;
    for (const Modifier modifier :
         {Modifier{Qt::SHIFT, XCB_MOD_MASK_SHIFT}, Modifier{Qt::CTRL, XCB_MOD_MASK_CONTROL},
          Modifier{Qt::ALT, XCB_MOD_MASK_1}, Modifier{Qt::META, XCB_MOD_MASK_4}}) {
        if ((key & modifier.qt) != 0) {
            modifiers = quint16(modifiers | modifier.x11);
        }
    }
    return modifiers;
}
} // namespace

X11FocusKey::X11FocusKey()
    : m_connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(m_connection) != 0) {
        return;
    }
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection),
                                                   QSocketNotifier::Read);
    tavoConnect(m_notifier.get(), &QSocketNotifier::activated, this,
                &X11FocusKey::on_notifier_activated);
}

X11FocusKey::~X11FocusKey()
{
    m_notifier.reset();
    xcb_disconnect(m_connection);
}

void X11FocusKey::follow(const QKeySequence &key, QWindow *window)
{
    if (m_notifier == nullptr) {
        return;
    }
    if (m_keycode != 0) {
        xcb_ungrab_key(m_connection, m_keycode, m_root, XCB_MOD_MASK_ANY);
        m_keycode = 0;
    }
    const bool hadFocus = m_previous != 0;
    m_window = window == nullptr ? 0 : quint32(window->winId());
    if (m_window != 0) {
        grab(key);
    } else if (hadFocus) {
        setFocus(std::exchange(m_previous, 0));
    }
    xcb_flush(m_connection);
}

void X11FocusKey::grab(const QKeySequence &key)
{
    const quint32 keysym = keysymOf(key[0] & ~int(Qt::KeyboardModifierMask));
    m_keycode = keysym == 0 ? 0 : keycode(keysym);
    if (m_keycode == 0) {
        return;
    }
    // Whatever Caps Lock and Num Lock are.
    for (const int locks :
         {0, int(XCB_MOD_MASK_LOCK), int(XCB_MOD_MASK_2), XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2}) {
        xcb_grab_key(m_connection, 1, m_root, quint16(modifiersOf(key[0]) | locks), m_keycode,
                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    }
}

quint8 X11FocusKey::keycode(quint32 keysym) const
{
    const xcb_setup_t *setup = xcb_get_setup(m_connection);
    const auto count = quint8(setup->max_keycode - setup->min_keycode + 1);
    const std::unique_ptr<xcb_get_keyboard_mapping_reply_t, void (*)(void *)> mapping(
        xcb_get_keyboard_mapping_reply(
            m_connection, xcb_get_keyboard_mapping(m_connection, setup->min_keycode, count),
            nullptr),
        std::free);
    if (mapping == nullptr) {
        return 0;
    }
    const xcb_keysym_t *keysyms = xcb_get_keyboard_mapping_keysyms(mapping.get());
    for (int i = 0; i < xcb_get_keyboard_mapping_keysyms_length(mapping.get()); ++i) {
        if (keysyms[i] == keysym) {
            return quint8(setup->min_keycode + i / mapping->keysyms_per_keycode);
        }
    }
    return 0;
}

quint32 X11FocusKey::focusedWindow() const
{
    const std::unique_ptr<xcb_get_input_focus_reply_t, void (*)(void *)> focus(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr),
        std::free);
    return focus == nullptr ? quint32(XCB_INPUT_FOCUS_POINTER_ROOT) : focus->focus;
}

void X11FocusKey::setFocus(quint32 window)
{
    xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    xcb_flush(m_connection);
}

void X11FocusKey::on_notifier_activated()
{
    while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
        constexpr quint8 sentByOthers = 0x80;
        if ((event->response_type & ~sentByOthers) == XCB_KEY_PRESS && m_window != 0) {
            const quint32 focused = focusedWindow();
            if (focused != m_window) {
                m_previous = focused;
                setFocus(m_window);
            }
        }
        std::free(event);
    }
    if (xcb_connection_has_error(m_connection) != 0) {
        m_notifier->setEnabled(false); // Qt ends the program.
    }
}

FocusKey *tavoDisplayMakeFocusKey()
{
    return new X11FocusKey;
}
