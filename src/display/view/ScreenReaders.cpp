// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/ScreenReaders.h"

#include "display/platform/PlatformLibrary.h"
#include <core/base/connect.h>

#include <QGuiApplication>

namespace {
void report(QObject *object, QAccessible::Event type)
{
    QAccessibleEvent event(object, type);
    QAccessible::updateAccessibility(&event);
}
} // namespace

ScreenReaders::ScreenReaders(std::function<void()> connected)
    : m_connected(std::move(connected))
{
    QAccessible::installActivationObserver(this);
    if (QAccessible::isActive()) {
        ScreenReaders::accessibilityActiveChanged(true);
    }
}

ScreenReaders::~ScreenReaders()
{
    QAccessible::removeActivationObserver(this);
}

void ScreenReaders::announce(QObject *item)
{
    if (s_isConnected) {
        report(item, QAccessible::ObjectShow);
        m_announced = item;
    }
}

void ScreenReaders::end()
{
    if (m_announced) {
        report(m_announced, QAccessible::ObjectHide);
        m_announced.clear();
    }
}

void ScreenReaders::follow(QWindow *window)
{
    report(window, QAccessible::ObjectCreated);
    tavoConnect(window, &QWindow::visibleChanged, window, [window](bool isVisible) {
        if (s_isConnected) {
            report(window, isVisible ? QAccessible::ObjectShow : QAccessible::ObjectHide);
        }
    });
}

void ScreenReaders::destroy(std::unique_ptr<QWindow> window)
{
    if (!window) {
        return;
    }
    window->destroy(); // hides it first
    report(window.get(), QAccessible::ObjectDestroyed);
}

void ScreenReaders::accessibilityActiveChanged(bool active)
{
    if (active) { // Qt makes its objects when it has told its observers.
        QMetaObject::invokeMethod(this, &ScreenReaders::on_accessibility_activated,
                                  Qt::QueuedConnection);
    }
}

void ScreenReaders::on_accessibility_activated()
{
    auto *publish = platformFunction<void(const std::function<void()> &)>(
        "accessibility", "tavoDisplayPublishAccessibles");
    if (publish != nullptr) {
        publish([this] { setConnected(); });
    } else {
        setConnected();
    }
}

void ScreenReaders::setConnected()
{
    if (s_isConnected) {
        return;
    }
    s_isConnected = true;
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        if (window->isVisible()) {
            report(window, QAccessible::ObjectShow);
        }
    }
    m_connected();
}
