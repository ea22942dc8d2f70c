// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/wayland/LayerPlacement.h"

#include <QGuiApplication>

#include <cstring>
#include <LayerShellQt/Shell>
#include <LayerShellQt/Window>
#include <wayland-client.h>

namespace {
using Mode = DisplayConfiguration::Mode;
using Layer = LayerShellQt::Window;

void on_registry_global(void *found, wl_registry * /*registry*/, uint32_t /*name*/,
                        const char *interface, uint32_t /*version*/)
{
    if (std::strcmp(interface, "zwlr_layer_shell_v1") == 0) {
        *static_cast<bool *>(found) = true;
    }
}

void on_registry_globalRemove(void * /*found*/, wl_registry * /*registry*/, uint32_t /*name*/) {}

/// Asked of the compositor itself: without the protocol, Qt reports a first picture and shows nothing.
bool hasLayerShell()
{
    wl_display *display = wl_display_connect(nullptr);
    if (display == nullptr) {
        return false;
    }
    bool isFound = false;
    constexpr wl_registry_listener listener{on_registry_global, on_registry_globalRemove};
    wl_registry *registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &listener, &isFound);
    wl_display_roundtrip(display);
    wl_registry_destroy(registry);
    wl_display_disconnect(display);
    return isFound;
}

Layer::Anchors anchorsOf(const DisplayConfiguration &configuration)
{
    const Layer::Anchors sides = Layer::Anchors(Layer::AnchorLeft) | Layer::AnchorRight;
    if (configuration.mode == Mode::Fullscreen) {
        return sides | Layer::AnchorTop | Layer::AnchorBottom;
    }
    const Layer::Anchor edge = configuration.isAtTop ? Layer::AnchorTop : Layer::AnchorBottom;
    if (configuration.mode == Mode::Banner) {
        return sides | edge;
    }
    const bool isMirrored = QGuiApplication::layoutDirection() == Qt::RightToLeft;
    const bool isAtRight = configuration.isAtEnd != isMirrored;
    return Layer::Anchors(edge) | (isAtRight ? Layer::AnchorRight : Layer::AnchorLeft);
}
} // namespace

void LayerPlacement::prepare(QWindow &window, const DisplayConfiguration &configuration,
                             bool isUrgent)
{
    window.setFlags(Qt::Window | Qt::FramelessWindowHint);
    Layer *layer = Layer::get(&window);
    layer->setLayer(isUrgent ? Layer::LayerOverlay : Layer::LayerTop);
    layer->setAnchors(anchorsOf(configuration));
    const int margin = configuration.mode == Mode::Corner ? configuration.margin : 0;
    layer->setMargins({margin, margin, margin, margin});
    layer->setExclusiveZone(configuration.mode == Mode::Fullscreen ? -1 : 0);
    // On demand, sway gives the keyboard to each message that comes.
    layer->setKeyboardInteractivity(Layer::KeyboardInteractivityNone);
    layer->setDesiredOutput(window.screen());
    layer->setScope(QStringLiteral("notification"));
}

void LayerPlacement::place(QWindow &window, const DisplayConfiguration &configuration,
                           const QRect &area, int height)
{
    window.resize(placedAt(configuration, area, height, false).size());
}

void LayerPlacement::prepareView(QWindow &window)
{
    window.setFlags(Qt::Window | Qt::FramelessWindowHint);
    Layer *layer = Layer::get(&window);
    layer->setLayer(Layer::LayerTop);
    layer->setAnchors({});
    layer->setKeyboardInteractivity(Layer::KeyboardInteractivityExclusive);
    layer->setDesiredOutput(window.screen());
    layer->setScope(QStringLiteral("notification"));
}

void LayerPlacement::placeView(QWindow &window, const QRect & /*area*/, const QSize &size)
{
    window.resize(size);
}

bool tavoDisplayUseLayerShell()
{
    if (!hasLayerShell()) {
        return false;
    }
    LayerShellQt::Shell::useLayerShell();
    return true;
}

Placement *tavoDisplayMakeLayerPlacement()
{
    return new LayerPlacement;
}
