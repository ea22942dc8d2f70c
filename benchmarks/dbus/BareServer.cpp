// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The minimum of a notification server: sd-bus in a Qt event loop. It replies to Notify with the
// next number and to CloseNotification without a value. It stores nothing and sends no signals.

#include <QCoreApplication>
#include <QSocketNotifier>

#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstring>
#include <poll.h>

namespace {
int checked(int result)
{
    if (result < 0) {
        qFatal("%s", std::strerror(-result));
    }
    return result;
}

int notify(sd_bus_message *call, void *data, sd_bus_error * /*error*/)
{
    return sd_bus_reply_method_return(call, "u", ++*static_cast<std::uint32_t *>(data));
}

int closeNotification(sd_bus_message *call, void * /*data*/, sd_bus_error * /*error*/)
{
    return sd_bus_reply_method_return(call, nullptr);
}

const sd_bus_vtable methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", notify, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("CloseNotification", "u", "", closeNotification, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

/// Handles everything that has arrived and schedules the next call.
void serve(sd_bus *bus, QSocketNotifier &writable)
{
    while (checked(sd_bus_process(bus, nullptr)) > 0) {
    }
    writable.setEnabled((checked(sd_bus_get_events(bus)) & POLLOUT) != 0);
}
} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_NO_GLIB", "1");
    const QCoreApplication application(argc, argv);
    sd_bus *bus = nullptr;
    std::uint32_t lastId = 0;
    checked(sd_bus_open_user(&bus));
    checked(sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/Notifications",
                                     "org.freedesktop.Notifications", methods, &lastId));
    checked(sd_bus_request_name(bus, "org.freedesktop.Notifications", 0));

    QSocketNotifier readable(checked(sd_bus_get_fd(bus)), QSocketNotifier::Read);
    QSocketNotifier writable(readable.socket(), QSocketNotifier::Write);
    const auto onActivated = [bus, &writable] { serve(bus, writable); };
    QObject::connect(&readable, &QSocketNotifier::activated, onActivated);
    QObject::connect(&writable, &QSocketNotifier::activated, onActivated);
    serve(bus, writable);
    return QCoreApplication::exec();
}
