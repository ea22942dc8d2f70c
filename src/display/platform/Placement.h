// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/DisplayConfiguration.h"

#include <QRect>
#include <QWindow>

#include <memory>

class QScreen;

/// Puts the window on the screen in the way of the platform.
class Placement
{
public:
    virtual ~Placement() = default;

    /// Called before the window is created on the platform, each time.
    virtual void prepare(QWindow &window, const DisplayConfiguration &configuration,
                         bool isUrgent) = 0;

    /// Gives the window its size, and its place in this area of the screen.
    virtual void place(QWindow &window, const DisplayConfiguration &configuration,
                       const QRect &area, int height) = 0;

    /// The same for a window that a person opens: it is in the middle and gets the keyboard.
    virtual void prepareView(QWindow &window);
    virtual void placeView(QWindow &window, const QRect &area, const QSize &size);

    /// Whether a window can change its size while it is on the screen.
    virtual bool canResize() const { return true; }

    /// Whether a window can be hidden and shown again, after raise().
    virtual bool canHide() const { return false; }

    /// Whether a window has to be created anew when it becomes urgent or not.
    virtual bool dependsOnUrgency() const { return false; }

    /// Whether the window always covers the screen, whatever the mode.
    virtual bool isWholeScreen() const { return false; }

    /// Called before there is an application. On Wayland, finds out what the compositor can do.
    static void preparePlatform();

    /// For the platform that the application runs on.
    static std::unique_ptr<Placement> create();
};

/// The screen that the configuration names, or the primary one; null if there is none.
QScreen *findScreen(const DisplayConfiguration &configuration);

/// The rectangle of a message in an area.
QRect placedAt(const DisplayConfiguration &configuration, const QRect &area, int height,
               bool isMirrored);
