# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Measures tavo-display on a private X server, beside another notification daemon and an empty window.

Prints a table of medians. What is not installed is left out.
"""

import argparse
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import tempfile
import time

from gi.repository import Gio, GLib

SETTLE = 0.5  # seconds of silence on the screen, before something is measured
LIMIT = 10.0  # seconds until a change counts as missing
LONG = "word " * 200_000
MODEL = "org.tavo.Model1"
HEAD = "/notifications/display/current"
QUEUE = "/org/freedesktop/Notifications"


class Screen:
    """A private X server, and when it changes."""

    def __init__(self, build):
        self._server = subprocess.Popen(["Xvfb", "-displayfd", "1", "-br", "-nolisten", "tcp",
                                         "-screen", "0", "1280x800x24"], stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, text=True)
        os.environ["DISPLAY"] = ":" + self._server.stdout.readline().strip()
        self._damage = subprocess.Popen([build / "benchmarks/tavo_damage"], stdout=subprocess.PIPE)
        os.set_blocking(self._damage.stdout.fileno(), False)
        self._text = b""
        while b"ready\n" not in self._read():
            time.sleep(0.01)

    def _read(self):
        self._text += self._damage.stdout.read() or b""
        return self._text

    def settle(self):
        """Waits until nothing changes any more."""
        while True:
            self._text = b""
            time.sleep(SETTLE)
            if not self._read():
                return

    def change(self, since):
        """The seconds from a monotonic time until the first change."""
        deadline = time.monotonic() + LIMIT
        while time.monotonic() < deadline:
            lines = self._read().split(b"\n")[:-1]
            if lines:
                return (int(lines[0]) - since) / 1e9
            time.sleep(0.0005)
        raise RuntimeError("nothing has changed on the screen")

    def close(self):
        self._damage.terminate()
        self._server.terminate()
        self._server.wait()


class Bus:
    """A private session bus, and a client that notifies."""

    def __init__(self):
        self._daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile",
                                         "--print-address"], stdout=subprocess.PIPE, text=True)
        self.address = self._daemon.stdout.readline().strip()
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.address
        flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
                 | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
        self._heads = []
        self._client = Gio.DBusConnection.new_for_address_sync(self.address, flags, None, None)

    def call(self, method, arguments):
        return self._client.call_sync("org.freedesktop.Notifications", QUEUE,
                                      "org.freedesktop.Notifications", method, arguments, None,
                                      Gio.DBusCallFlags.NO_AUTO_START, -1, None)

    def notify(self, text="Somebody rang"):
        values = ("bench", 0, "", "Door", text, [], {}, 0)
        return self.call("Notify", GLib.Variant("(susssasa{sv}i)", values)).unpack()[0]

    def dismiss(self, number):
        self.call("CloseNotification", GLib.Variant("(u)", (number,)))

    def follow_heads(self):
        """Has the host report what is on display, as it does to tavo-display."""
        self._client.signal_subscribe(MODEL, MODEL, "ValueChanged", None, HEAD, Gio.DBusSignalFlags.NONE,
                                      lambda *_: self._heads.append(time.monotonic_ns()))
        self._client.call_sync(MODEL, "/org/tavo/Model1", MODEL, "Subscribe",
                               GLib.Variant("(ss)", (HEAD, "value")), None,
                               Gio.DBusCallFlags.NONE, -1, None)

    def time_of_next_head(self, number):
        """Dismisses the message on display, and returns when the next one is reported."""
        while GLib.MainContext.default().iteration(False):
            pass
        self._heads.clear()
        self.dismiss(number)
        while not self._heads:
            GLib.MainContext.default().iteration(True)
        return self._heads[0]

    def wait_for_server(self):
        for _ in range(1000):
            try:
                return self.call("GetServerInformation", None)
            except GLib.Error:
                time.sleep(0.01)
        raise RuntimeError("no notification server")

    def close(self):
        self._client.close_sync(None)
        self._daemon.terminate()
        self._daemon.wait()


def memory(process):
    """The kilobytes of a process that are resident, with its libraries."""
    text = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    return int(text.split("VmRSS:")[1].split()[0])


def end(*processes):
    for process in processes:
        process.terminate()
        process.wait()


def latency(screen, bus, repetitions, text="Somebody rang"):
    """The median of the seconds from Notify to the first changed pixels."""
    times = []
    for _ in range(repetitions):
        screen.settle()
        start = time.monotonic_ns()
        number = bus.notify(text)
        times.append(screen.change(start))
        bus.dismiss(number)
    screen.settle()
    return statistics.median(times)


def head_latency(screen, bus, repetitions, before, text):
    """The median of the seconds from the host's signal that a message is on display to the first changed pixels.

    The message, which the host has had for a while, follows one of the same size.
    """
    times = []
    for _ in range(repetitions):
        first, second = bus.notify(before), bus.notify(text)
        screen.settle()
        start = bus.time_of_next_head(first)
        times.append(screen.change(start))
        bus.dismiss(second)
    screen.settle()
    return statistics.median(times)


def start_time(screen, command, repetitions):
    """Medians of the seconds to the first picture of a program, and of its memory."""
    times, sizes = [], []
    for _ in range(repetitions):
        screen.settle()
        start = time.monotonic_ns()
        process = subprocess.Popen(command, stderr=subprocess.DEVNULL)
        times.append(screen.change(start))
        screen.settle()
        sizes.append(memory(process))
        end(process)
    return statistics.median(times), statistics.median(sizes)


def measure_display(build, screen, repetitions):
    bus = Bus()
    modules = ["powermanager",
               {"name": "player", "config": {"mainDevice": "null", "notificationsDevice": "null"}},
               "notifications", "dbus"]
    with tempfile.NamedTemporaryFile("w", suffix=".json") as configuration:
        json.dump({"modules": modules}, configuration)
        configuration.flush()
        host = subprocess.Popen([build / "bin/tavo-host", "--config", configuration.name],
                                stderr=subprocess.DEVNULL)
        bus.wait_for_server()
        display = subprocess.Popen([build / "bin/tavo-display"], stderr=subprocess.DEVNULL)
        time.sleep(1)
        short = latency(screen, bus, repetitions)
        long = latency(screen, bus, repetitions, LONG)
        bus.follow_heads()
        head = head_latency(screen, bus, repetitions, "Nobody is there", "Somebody rang")
        long_head = head_latency(screen, bus, repetitions, "other " * 180_000, LONG)
        end(display)
        bus.notify()
        start, size = start_time(screen, [build / "bin/tavo-display"], repetitions)
        end(host)
    bus.close()
    return short, long, head, long_head, start, size


def measure_other(program, screen, repetitions):
    bus = Bus()
    process = subprocess.Popen([program], stderr=subprocess.DEVNULL)
    bus.wait_for_server()
    result = latency(screen, bus, repetitions)
    end(process)
    bus.close()
    return result


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--repetitions", type=int, default=9)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as runtime:
        os.environ.update(XDG_RUNTIME_DIR=runtime, XDG_CONFIG_HOME=runtime, QT_QPA_PLATFORM="xcb")
        screen = Screen(options.build)
        window = start_time(screen, [options.build / "benchmarks/tavo_window"], options.repetitions)
        short, long, head, long_head, start, size = measure_display(options.build, screen,
                                                                    options.repetitions)
        print(f"Notify to changed pixels          {short * 1000:6.2f} ms")
        if shutil.which("dunst"):
            other = measure_other("dunst", screen, options.repetitions)
            print(f"  to that of dunst                {short / other:6.2f}")
        print(f"  of a text of 1 MB to a short one {long / short:5.2f}")
        print(f"Next message to changed pixels    {head * 1000:6.2f} ms")
        print(f"  of a text of 1 MB to a short one {long_head / head:5.2f}")
        print(f"Start to the first picture        {start * 1000:6.1f} ms")
        print(f"  to that of an empty window      {start / window[0]:6.2f}")
        print(f"Memory                            {size / 1024:6.1f} MiB")
        print(f"  to that of an empty window      {size / window[1]:6.2f}")
        screen.close()


if __name__ == "__main__":
    main()
