// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"

namespace {
const QString name = QStringLiteral("org.freedesktop.Notifications");
const QString object = QStringLiteral("/org/freedesktop/Notifications");

constexpr const char *pythonPrelude = R"(
import dbus, struct, sys
bus = dbus.SessionBus()
server = bus.get_object('org.freedesktop.Notifications', '/org/freedesktop/Notifications')
interface = dbus.Interface(server, 'org.freedesktop.Notifications')

def Notify(summary='Title', body='', replaces=0, actions=(), hints={}, timeout=0, app='', icon=''):
    return int(interface.Notify(app, dbus.UInt32(replaces), icon, summary, body,
                                dbus.Array(actions, signature='s'),
                                dbus.Dictionary(hints, signature='sv'), dbus.Int32(timeout)))

def CloseNotification(id):
    interface.CloseNotification(dbus.UInt32(id))

def error(function, *arguments, **named):
    try:
        return function(*arguments, **named)
    except dbus.DBusException as refused:
        return refused.get_dbus_name() + ': ' + refused.get_dbus_message()
)";

QVariantList rowsAt(const CMPath &path)
{
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, 0, -1, reply));
    return reply.value().toList();
}
} // namespace

DesktopTest::DesktopTest(const QVariantHash &config, const QString &busSettings)
    : m_bus(busSettings)
    , m_display(QStringLiteral(NOTIFICATIONS_MODULE_FILE), "notifications")
{
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
    QVariantHash whole = config;
    whole.insert(QStringLiteral("bus"), QStringLiteral("session"));
    m_module = std::make_unique<LoadedModule>(QStringLiteral(DBUS_MODULE_FILE), "dbus", whole);
    EXPECT_TRUE(isServing());
}

void DesktopTest::shareBus(QVariantHash config)
{
    unload();
    config.insert(QStringLiteral("bus"), m_bus.address());
    m_module = std::make_unique<LoadedModule>(QStringLiteral(DBUS_MODULE_FILE), "dbus", config);
    EXPECT_TRUE(isServing(2));
}

bool DesktopTest::isServing(int times)
{
    return waitFor([&] { return m_log.count("Serving org.freedesktop.Notifications") == times; },
                   std::chrono::seconds(20));
}

quint32 DesktopTest::notifySend(const QStringList &arguments)
{
    ClientProgram program(m_bus, "notify-send"_s, QStringList("--print-id"_s) + arguments);
    EXPECT_TRUE(program.succeeds()) << program.errors().toStdString();
    return program.output().trimmed().toUInt();
}

QString DesktopTest::result(const QString &method, const QStringList &arguments)
{
    ClientProgram program(m_bus, "gdbus"_s,
                          QStringList{"call"_s, "--session"_s, "--dest"_s, name, "--object-path"_s,
                                      object, "--method"_s, name + '.' + method, "--"_s} +
                              arguments);
    return (program.succeeds() ? program.output() : program.errors()).trimmed();
}

QString DesktopTest::python(const QString &script)
{
    // The system's Python, which has the dbus module.
    ClientProgram program(m_bus, "/usr/bin/python3"_s,
                          {"-c"_s, QString::fromLatin1(pythonPrelude) + script});
    return (program.succeeds() ? program.output() : program.errors()).trimmed();
}

std::unique_ptr<ClientProgram> DesktopTest::monitor()
{
    auto program = std::make_unique<ClientProgram>(
        m_bus, "gdbus"_s,
        QStringList{"monitor"_s, "--session"_s, "--dest"_s, name, "--object-path"_s, object});
    // gdbus subscribes to the signals before it asks for the owner.
    EXPECT_TRUE(program->writes("is owned by"_s)) << program->errors().toStdString();
    return program;
}

QString DesktopTest::closedSignal(quint32 id, int reason)
{
    return "NotificationClosed (uint32 %1, uint32 %2)"_s.arg(id).arg(reason);
}

CMPath DesktopTest::pathOf(quint32 id)
{
    return CMPath("/dbus/notifications"_s) + QString::number(id);
}

QVector<CMPath> DesktopTest::displayed()
{
    QVector<CMPath> paths;
    for (const QVariant &row : rowsAt(TavoNotificationDisplayQueuePath())) {
        paths.append(CMPath::fromQVariant(row));
    }
    return paths;
}

QString DesktopTest::titleOf(quint32 id)
{
    const auto entries = CMCatalog::tree(pathOf(id));
    return entries.empty() ? QString() : entries.front().title.toString();
}

TavoRoles DesktopTest::rowOf(quint32 id, int index)
{
    return TavoRoles(rowsAt(pathOf(id)).value(index).toHash());
}

int DesktopTest::rowCount(quint32 id)
{
    return rowsAt(pathOf(id)).size();
}
