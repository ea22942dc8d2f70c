# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The processes of a fleet: a broker, and devices that are a bus, a host and tavo-fleet each."""

import collections
import ctypes
import json
import os
import pathlib
import signal
import socket
import subprocess
import time

TIMEOUT = 60


def start(command, log, **options):
    """A process that ends with this one."""
    def bind():
        ctypes.CDLL(None).prctl(1, signal.SIGKILL)

    return subprocess.Popen(command, stdout=log, stderr=log, stdin=subprocess.DEVNULL,
                            preexec_fn=bind, **options)


def wait_until(condition, what):
    end = time.monotonic() + TIMEOUT
    while not condition():
        if time.monotonic() > end:
            raise RuntimeError(f"{what} takes too long")
        time.sleep(0.02)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Broker:
    """mosquitto, which keeps sessions on disk as a broker of a fleet would."""

    def __init__(self, folder):
        self.port = free_port()
        self.log = open(folder / "broker.log", "ab")
        self.configuration = folder / "mosquitto.conf"
        self.configuration.write_text(
            f"user root\nlistener {self.port} 127.0.0.1\nallow_anonymous true\n"
            f"persistence true\npersistence_location {folder}/\nautosave_interval 5\n"
            "max_queued_messages 0\n")
        self.process = None

    def start(self):
        self.process = start(["/usr/sbin/mosquitto", "-c", self.configuration], self.log)
        wait_until(self._listens, "the broker's start")

    def kill(self):
        self.process.kill()
        self.process.wait()

    def _listens(self):
        try:
            socket.create_connection(("127.0.0.1", self.port), 1).close()
            return True
        except OSError:
            return False


class Device:
    """A device of the fleet. tavo-fleet can be killed; bus and host stay."""

    def __init__(self, name, programs, folder, port, **configuration):
        """The folder of the programs, the one that gets the device's files, the broker's port, and what else
        tavo-fleet is configured with."""
        self.name = name
        self.programs = programs
        self.folder = folder / name
        self.folder.mkdir()
        self.log = open(self.folder / "fleet.log", "ab")
        self.bus = f"unix:path={self.folder}/bus"
        self.configuration = self.folder / "fleet.json"
        self.configuration.write_text(json.dumps({
            "device": name, "groups": ["all"], "bus": self.bus, "store": f"{self.folder}/fleet.db",
            "broker": {"url": f"mqtt://127.0.0.1:{port}", "keepAlive": 10,
                       "reconnect": {"min": 50, "max": 500}},
            **configuration}))
        self._start_bus()
        self._start_host()
        self.fleet = None

    def start(self):
        self.fleet = start([self.programs / "tavo-fleet", "--config", self.configuration],
                           self.log)

    def kill(self):
        if self.fleet.poll() is not None:
            raise RuntimeError(f"tavo-fleet has ended, with {self.fleet.returncode}")
        self.fleet.kill()
        self.fleet.wait()

    def messages(self):
        """How often each text is on the display's queue."""
        output = subprocess.run(
            [self.programs / "tavo", "--bus", self.bus, "list", "--json", "--count", "100000"],
            check=True, capture_output=True, timeout=TIMEOUT).stdout
        return collections.Counter(row["text"] for row in json.loads(output)["messages"])

    def _start_bus(self):
        configuration = self.folder / "bus.conf"
        configuration.write_text(
            "<busconfig><type>session</type>"
            f"<listen>{self.bus}</listen><auth>EXTERNAL</auth>"
            "<policy context='default'><allow send_destination='*' eavesdrop='true'/>"
            "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>")
        start(["dbus-daemon", "--nofork", "--nopidfile", f"--config-file={configuration}"],
              self.log)
        wait_until((self.folder / "bus").exists, "the bus's start")

    def _start_host(self):
        configuration = self.folder / "host.json"
        configuration.write_text(json.dumps({"modules": [
            "powermanager",
            {"name": "player", "config": {"mainDevice": "null", "notificationsDevice": "null"}},
            "notifications",
            {"name": "dbus", "config": {"bus": self.bus, "notifications": False,
                                        "limits": {"openNotifications": 100000,
                                                   "totalOpenNotifications": 100000}}}]}))
        log_name = self.folder / "host.log"
        start([self.programs / "tavo-host", "--config", configuration], open(log_name, "ab"),
              env=dict(os.environ, QT_NO_GLIB="1"))
        wait_until(lambda: b"Serving org.tavo.Model1" in log_name.read_bytes(),
                   f"the host's start, see {log_name},")
