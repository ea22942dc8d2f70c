// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QKeySequence>
#include <QWindow>

#include <memory>

/// A key that gives the message the keyboard, for people without a pointer. Nothing else gives it: a message
/// never takes the keyboard by itself. When the message goes, the window that had the keyboard before gets it
/// back.
class FocusKey
{
public:
    virtual ~FocusKey() = default;

    /// While the window exists, the key works; it belongs to other programs otherwise. No window: nothing is
    /// shown.
    virtual void follow(const QKeySequence &key, QWindow *window) = 0;

    /// For X11; null on other platforms, where no program can grab a key.
    static std::unique_ptr<FocusKey> create();
};
