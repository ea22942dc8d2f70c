// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/platform/Placement.h"

/// On Wayland, by the layer-shell protocol: urgent messages above full-screen windows, others below them.
class LayerPlacement : public Placement
{
public:
    void prepare(QWindow &window, const DisplayConfiguration &configuration,
                 bool isUrgent) override;
    void place(QWindow &window, const DisplayConfiguration &configuration, const QRect &area,
               int height) override;

    void prepareView(QWindow &window) override;
    void placeView(QWindow &window, const QRect &area, const QSize &size) override;
    bool canResize() const override { return false; }
    bool dependsOnUrgency() const override { return true; }
};

// What the program finds in this library, which is loaded only on Wayland.

/// Whether the compositor has the protocol. If so, the application that is made next uses it.
extern "C" Q_DECL_EXPORT bool tavoDisplayUseLayerShell();

/// To be deleted by the caller.
extern "C" Q_DECL_EXPORT Placement *tavoDisplayMakeLayerPlacement();
