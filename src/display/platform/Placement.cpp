// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/platform/Placement.h"

#include "display/platform/PlatformLibrary.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace {
using MakeLayerPlacement = Placement *();

/// Set if the compositor has layers for messages.
MakeLayerPlacement *s_makeLayerPlacement = nullptr;

/// On X11 and wherever a window may say where it wants to be.
class WindowPlacement : public Placement
{
public:
    explicit WindowPlacement(Qt::WindowFlags flags)
        : m_flags(flags)
    {
    }

    void prepare(QWindow &window, const DisplayConfiguration & /*configuration*/,
                 bool /*isUrgent*/) override
    {
        window.setFlags(Qt::Window | Qt::FramelessWindowHint | m_flags);
    }

    void place(QWindow &window, const DisplayConfiguration &configuration, const QRect &area,
               int height) override
    {
        window.setGeometry(placedAt(configuration, area, height,
                                    QGuiApplication::layoutDirection() == Qt::RightToLeft));
    }

    bool canHide() const override { return m_flags.testFlag(Qt::X11BypassWindowManagerHint); }

private:
    const Qt::WindowFlags m_flags;
};

/// The whole screen, where there is nothing but this program or no other way to be seen. It has the
/// keyboard.
class FullscreenPlacement : public Placement
{
public:
    void prepare(QWindow &window, const DisplayConfiguration & /*configuration*/,
                 bool /*isUrgent*/) override
    {
        window.setFlags(Qt::Window | Qt::FramelessWindowHint);
        window.setWindowStates(Qt::WindowFullScreen);
    }

    void place(QWindow &window, const DisplayConfiguration & /*configuration*/, const QRect &area,
               int /*height*/) override
    {
        window.setGeometry(area);
    }

    void prepareView(QWindow &window) override { prepare(window, {}, false); }

    void placeView(QWindow &window, const QRect &area, const QSize & /*size*/) override
    {
        window.setGeometry(area);
    }

    bool isWholeScreen() const override { return true; }
};
} // namespace

void Placement::preparePlatform()
{
    if (qgetenv("QT_QPA_PLATFORM") != "wayland") {
        return;
    }
    auto *use = platformFunction<bool()>("wayland", "tavoDisplayUseLayerShell");
    if (use != nullptr && use()) {
        s_makeLayerPlacement =
            platformFunction<MakeLayerPlacement>("wayland", "tavoDisplayMakeLayerPlacement");
    }
}

std::unique_ptr<Placement> Placement::create()
{
    if (s_makeLayerPlacement != nullptr) {
        return std::unique_ptr<Placement>(s_makeLayerPlacement());
    }
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("xcb")) {
        // No window manager may give it the keyboard, or a frame.
        return std::make_unique<WindowPlacement>(Qt::WindowDoesNotAcceptFocus |
                                                 Qt::X11BypassWindowManagerHint);
    }
    if (platform == QLatin1String("offscreen")) {
        return std::make_unique<WindowPlacement>(Qt::WindowFlags());
    }
    return std::make_unique<FullscreenPlacement>();
}

void Placement::prepareView(QWindow &window)
{
    window.setFlags(Qt::Window);
}

void Placement::placeView(QWindow &window, const QRect &area, const QSize &size)
{
    QRect place(QPoint(), size);
    place.moveCenter(area.center());
    window.setGeometry(place);
}

QScreen *findScreen(const DisplayConfiguration &configuration)
{
    const QList<QScreen *> screens = QGuiApplication::screens();
    const auto found = std::find_if(screens.begin(), screens.end(), [&](const QScreen *screen) {
        return screen->name() == configuration.screen;
    });
    return found == screens.end() ? QGuiApplication::primaryScreen() : *found;
}

QRect placedAt(const DisplayConfiguration &configuration, const QRect &area, int height,
               bool isMirrored)
{
    using Mode = DisplayConfiguration::Mode;
    if (configuration.mode == Mode::Fullscreen) {
        return area;
    }
    const bool isBanner = configuration.mode == Mode::Banner;
    const int margin = isBanner ? 0 : configuration.margin;
    const QRect inner = area.marginsRemoved({margin, margin, margin, margin});
    const QSize size(isBanner ? inner.width() : qMin(configuration.width, inner.width()),
                     qMin(height, inner.height()));
    QRect place(inner.topLeft(), size);
    if (configuration.isAtEnd != isMirrored) {
        place.moveRight(inner.right());
    }
    if (!configuration.isAtTop) {
        place.moveBottom(inner.bottom());
    }
    return place;
}
