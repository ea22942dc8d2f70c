# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""What a screen reader does: speaks the notifications that are shown, and presses a button of each.

Usage: screen_reader.py [BUTTON] [--look | --showing ROLE...]

Prints "listening", then for each notification "ROLE: NAME: DESCRIPTION", "progress bar: NAME" if it has one, and
"button NAME" for each of its buttons, and "ended" when it ends. Presses the button with the name BUTTON and prints "pressed". Needs the
accessibility bus of a desktop (at-spi-bus-launcher).

With --look, it goes through the objects of tavo-display instead, again and again, and prints "ROLE: NAME: DESCRIPTION"
for each that it has not seen before. Presses the button with the name BUTTON when it finds it.

With --showing, it prints instead "ROLE NAME 1" and "ROLE NAME 0" for each object of these roles that is shown and hidden.
"""
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

ARMED_MS = 600  # the buttons of what has just come do nothing for half a second
LOOK_MS = 200
BUS = "org.a11y.Bus"


def say(text):
    print(text, flush=True)


def parts(node, role):
    nodes = [node.get_child_at_index(i) for i in range(node.get_child_count())]
    return [child for child in nodes if child.get_role() == role]


def press(button):
    button.do_action(0)
    say("pressed")
    return GLib.SOURCE_REMOVE


def on_event(event):
    source = event.source
    if "--showing" in sys.argv:
        on_change(source, event.detail1)
        return
    if source.get_role() != Atspi.Role.NOTIFICATION:
        return
    if event.detail1 == 0:
        say("ended")
        return
    source.clear_cache()  # the same object has said something else before
    say(f"{source.get_role_name()}: {source.get_name()}: {source.get_description()}")
    for bar in parts(source, Atspi.Role.PROGRESS_BAR):
        say(f"{bar.get_role_name()}: {bar.get_name()}")
    for button in parts(source, Atspi.Role.PUSH_BUTTON):
        button.clear_cache()
        say(f"button {button.get_name()}")
        if button.get_name() in sys.argv[1:]:
            GLib.timeout_add(ARMED_MS, press, button)


def on_change(source, is_shown):
    if is_shown:
        source.clear_cache()
    role = source.get_role_name()
    if role in sys.argv:
        say(f"{role} {source.get_name()} {is_shown}")


def look(seen):
    desktop = Atspi.get_desktop(0)
    nodes = [desktop.get_child_at_index(i) for i in range(desktop.get_child_count())]
    nodes = [node for node in nodes if node and node.get_name() == "tavo-display"]
    while nodes:
        node = nodes.pop()
        try:
            node.clear_cache()
            text = f"{node.get_role_name()}: {node.get_name()}: {node.get_description()}"
            children = [node.get_child_at_index(i) for i in range(node.get_child_count())]
            if text not in seen:
                seen.add(text)
                say(text)
                if node.get_name() in sys.argv[1:]:
                    press(node)
        except GLib.Error:
            continue  # It has gone meanwhile.
        nodes += [child for child in children if child]
    return GLib.SOURCE_CONTINUE


def listen(connection, *_):
    connection.call_sync(BUS, "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
                         GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled",
                                                GLib.Variant("b", True))),
                         None, Gio.DBusCallFlags.NONE, -1, None)
    Atspi.init()
    if "--look" in sys.argv:
        GLib.timeout_add(LOOK_MS, look, set())
        say("listening")
        return None
    listener = Atspi.EventListener.new(on_event)
    listener.register("object:state-changed:showing")
    say("listening")
    return listener


listeners = []
Gio.bus_watch_name(Gio.BusType.SESSION, BUS, Gio.BusNameWatcherFlags.AUTO_START,
                   lambda *appeared: listeners.append(listen(*appeared)), None)
if "--showing" in sys.argv:
    Atspi.event_main()  # remembers roles and names, which can't be asked of objects that have gone
else:
    GLib.MainLoop().run()
