// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QObject>

#include <functional>

class QDBusVirtualObject;

/// Publishes Qt's accessible objects on the accessibility bus where Qt 5.15 does not.
///
/// Qt connects to that bus asynchronously, unless an X server names its address, but publishes its objects
/// at once, on a connection that does not exist yet, and never tries again. So on Wayland no screen reader
/// would find the program. Owned by the application.
class AccessibilityBus : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// To be called whenever Qt reports that accessibility is active, which it also does when it has
    /// connected. The function is called as soon as screen readers can find the program.
    void publish(const std::function<void()> &published);

private Q_SLOTS:
    void on_application_embedded();
    void on_embedding_failed(const QDBusError &error);

private:
    bool publishObjects(QDBusConnection &bus);
    void embedApplication(const QDBusConnection &bus);

    QDBusVirtualObject *m_adaptor = nullptr; ///< Qt's, if it had to be published
    std::function<void()> m_published;
};

/// What the program finds in this library.
extern "C" Q_DECL_EXPORT void tavoDisplayPublishAccessibles(const std::function<void()> &published);
