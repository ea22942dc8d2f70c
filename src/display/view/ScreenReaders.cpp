// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/ScreenReaders.h"

#include "display/platform/PlatformLibrary.h"

ScreenReaders::ScreenReaders(std::function<void()> connected)
    : m_connected(std::move(connected))
{
    QAccessible::installActivationObserver(this);
    if (QAccessible::isActive()) {
        accessibilityActiveChanged(true);
    }
}

ScreenReaders::~ScreenReaders()
{
    QAccessible::removeActivationObserver(this);
}

void ScreenReaders::announce(QObject *item)
{
    if (m_isConnected) {
        QAccessibleEvent event(item, QAccessible::ObjectShow);
        QAccessible::updateAccessibility(&event);
        m_announced = item;
    }
}

void ScreenReaders::end()
{
    if (m_announced) {
        QAccessibleEvent event(m_announced, QAccessible::ObjectHide);
        QAccessible::updateAccessibility(&event);
        m_announced.clear();
    }
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
    if (!m_isConnected) {
        m_isConnected = true;
        m_connected();
    }
}
