// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/accessibility/AccessibilityBus.h"

#include <private/qguiapplication_p.h>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>

#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

namespace {
const QString registryService = QStringLiteral("org.a11y.atspi.Registry");
const QString registryPath = QStringLiteral("/org/a11y/atspi/registry");
const QString accessiblePath = QStringLiteral("/org/a11y/atspi/accessible");
const QString rootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
const QString cachePath = QStringLiteral("/org/a11y/atspi/cache");

/// An object of a program, as AT-SPI names it.
struct Reference
{
    QString service;
    QDBusObjectPath path;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Reference &reference)
{
    argument.beginStructure();
    argument << reference.service << reference.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Reference &reference)
{
    argument.beginStructure();
    argument >> reference.service >> reference.path;
    argument.endStructure();
    return argument;
}
} // namespace

Q_DECLARE_METATYPE(Reference)

void AccessibilityBus::publish(const std::function<void()> &published)
{
    QDBusConnection bus(QStringLiteral("a11y")); // Qt's
    if (!bus.isConnected() || m_adaptor != nullptr) {
        return;
    }
    m_published = published;
    if (publishObjects(bus)) {
        embedApplication(bus);
    } else {
        m_published(); // Qt has done it.
    }
}

/// Returns false if the objects are already there.
bool AccessibilityBus::publishObjects(QDBusConnection &bus)
{
    auto *bridge =
        dynamic_cast<QObject *>(QGuiApplicationPrivate::platformIntegration()->accessibility());
    auto *adaptor = bridge == nullptr ? nullptr : bridge->findChild<QDBusVirtualObject *>();
    if (adaptor == nullptr ||
        !bus.registerVirtualObject(accessiblePath, adaptor, QDBusConnection::SubPath)) {
        return false;
    }
    m_adaptor = adaptor;
    for (QObject *child : bridge->children()) {
        if (child->inherits("QSpiDBusCache")) {
            bus.registerObject(cachePath, child, QDBusConnection::ExportAdaptors);
        }
    }
    bus.connect(registryService, registryPath, registryService,
                QStringLiteral("EventListenerRegistered"), adaptor,
                SLOT(eventListenerRegistered(QString, QString)));
    bus.connect(registryService, registryPath, registryService,
                QStringLiteral("EventListenerDeregistered"), adaptor,
                SLOT(eventListenerDeregistered(QString, QString)));
    return true;
}

void AccessibilityBus::embedApplication(const QDBusConnection &bus)
{
    qDBusRegisterMetaType<Reference>();
    QDBusMessage call = QDBusMessage::createMethodCall(registryService, rootPath,
                                                       QStringLiteral("org.a11y.atspi.Socket"),
                                                       QStringLiteral("Embed"));
    call << QVariant::fromValue(Reference{bus.baseService(), QDBusObjectPath(rootPath)});
    bus.callWithCallback(call, this, SLOT(on_application_embedded()),
                         SLOT(on_embedding_failed(QDBusError)));
}

void AccessibilityBus::on_application_embedded()
{
    // Makes Qt read which events are listened to.
    QMetaObject::invokeMethod(m_adaptor, "eventListenerRegistered", Q_ARG(QString, QString()),
                              Q_ARG(QString, QString()));
    m_published();
}

void AccessibilityBus::on_embedding_failed(const QDBusError &error)
{
    qWarning("Screen readers can't find the program: %s", qUtf8Printable(error.message()));
}

void tavoDisplayPublishAccessibles(const std::function<void()> &published)
{
    static auto *s_bus = new AccessibilityBus(qGuiApp);
    s_bus->publish(published);
}
