#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""A door bell in Python: plays a sound through the host, prints how it ends, and shows a message.

Usage: doorbell.py SOUND        (needs the Debian package python3-gi)
"""

import pathlib
import sys
import uuid

from gi.repository import Gio, GLib

RESPONSES = {1: "Started", 2: "Finished", 3: "Cancelled", 4: "Failed"}


class Doorbell:
    def __init__(self, sound):
        self.sound = sound
        self.id = str(uuid.uuid4())  # another bell may ring at the same time
        self.loop = GLib.MainLoop()
        self.failed = False
        # G_BUS_TYPE_SYSTEM reaches the host of a device.
        self.host = Gio.DBusProxy.new_for_bus_sync(
            Gio.BusType.SESSION, Gio.DBusProxyFlags.NONE, None,
            "org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1", None)
        self.host.connect("g-signal", self.on_signal)
        self.host.connect("notify::g-name-owner", self.on_owner_changed)

    def call(self, method, signature=None, *arguments):
        """Calls the host and waits for its reply. Throws GLib.Error, with the reason, on an error."""
        values = GLib.Variant(signature, arguments) if signature else None
        return self.host.call_sync(method, values, Gio.DBusCallFlags.NONE, -1, None).unpack()

    def ring(self):
        # The host makes a node for this program, and reports there what becomes of the sound.
        (self.inbox,) = self.call("OpenInbox")
        item = {
            "id": GLib.Variant("s", self.id),
            "content": GLib.Variant("s", self.sound),
            "priority": GLib.Variant("i", 2),  # high
            "playbackResponsePath": GLib.Variant("s", self.inbox),
        }
        value = GLib.Variant("a{sv}", {"notificationPlayerItem": GLib.Variant("a{sv}", item)})
        self.call("Call", "(sv)", "/notifications/player/enqueue", value)
        self.loop.run()

    def on_signal(self, _proxy, _sender, signal, arguments):
        if signal != "Received" or arguments.unpack()[0] != self.inbox:
            return
        value = arguments.unpack()[1]
        response = value.get("notificationPlayerResponse", {}) if isinstance(value, dict) else {}
        if response.get("id") != self.id:
            return  # anybody can send to an inbox
        print(RESPONSES.get(response.get("type"), "Unknown"), flush=True)
        if response.get("type") != 1:
            self.show()

    def show(self):
        item = {
            "title": GLib.Variant("s", "Door"),
            "message": GLib.Variant("s", "Somebody rang"),
            "timeout": GLib.Variant("i", 10000),
        }
        value = GLib.Variant("a{sv}", {"notificationDisplayItem": GLib.Variant("a{sv}", item)})
        try:
            self.call("Call", "(sv)", "/notifications/display/open", value)
        except GLib.Error as error:
            self.fail(error.message)
        self.loop.quit()

    def on_owner_changed(self, proxy, _property):
        if proxy.get_name_owner() is None:
            self.fail("the host has gone")

    def fail(self, reason):
        print(f"doorbell: {reason}", file=sys.stderr)
        self.failed = True
        self.loop.quit()


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.strip())
    try:
        doorbell = Doorbell(str(pathlib.Path(sys.argv[1]).absolute()))
        doorbell.ring()
    except GLib.Error as error:
        sys.exit(f"doorbell: {error.message}")
    sys.exit(doorbell.failed)


if __name__ == "__main__":
    main()
