# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Measures the host as a desktop's notification server, with a bare server as its floor.

Both run at the same time, each on its own bus, and take turns. Before each turn, both have finished their
work. Client, bus and server share one processor. Otherwise the scheduler would decide in each run whether
they do, which makes a round trip up to three times as long, and work after the reply would not count. Other
servers that are installed and run here are measured in the same way.
"""

import contextlib
import json
import os
import pathlib
import shutil
import statistics
import tempfile

from .bus import Bus, Failed

SIZES = [1, 1000, 10000, 100000]
PEER_SIZE = 10000
PEERS = {
    "mako": ["mako"],
    "dunst": ["dunst"],
    "lxqt-notificationd": ["lxqt-notificationd"],
    "xfce4-notifyd": ["/usr/lib/x86_64-linux-gnu/xfce4/notifyd/xfce4-notifyd",
                      "/usr/lib/xfce4/notifyd/xfce4-notifyd"],
}
NO_LIMIT = 1_000_000  # the maximum that can be configured; the host still counts

ROUNDS = 7  # of both servers in turns, at each size
CALLS_AT_ONCE = 2000  # in one round
CALLS_IN_TURN = 200
CLOSED_ONE_BY_ONE = 100
STARTS = 20
LARGE_BODIES = 20
LARGE_BODY = 2**20
START_SECONDS = 10
OPEN_TIMEOUT_MS = 600_000
PEER_OPEN_TIMEOUT_MS = 60_000


class Notifications:
    """The servers of a build folder, and the other servers on this machine."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()

    def run(self, repetitions, progress):
        """Medians over all repetitions: (figures by what and variant, figures by other server)."""
        seen, peers = {}, {}
        for repetition in range(repetitions):
            progress(f"repetition {repetition + 1} of {repetitions}: notifications across a bus")
            for key, value in self.measure().items():
                seen.setdefault(key, []).append(value)
            for peer, figures in self._peers().items():
                peers.setdefault(peer, []).append(figures)
        return medians(seen), {peer: medians(collected(figures)) for peer, figures in peers.items()}

    def measure(self):
        """Figures of one repetition: seconds, bytes, and ratios by (what, size)."""
        with self.host() as host:
            servers = {"tavo": host, "bare": self._bare()}
            with on_one_processor():
                figures = self._starts(servers)
                for size in SIZES:
                    figures.update(self._with_open(servers, size))
            for name, arguments in servers.items():
                figures[("ping", name)] = self._max_ping(arguments)
        return {**figures, **ratios_of(figures)}

    def _starts(self, servers):
        seen = {}
        with Bus(self.client()) as bus:
            for _ in range(STARTS):
                for name, arguments in servers.items():
                    seen.setdefault(("start", name), []).append(bus.start(arguments, START_SECONDS))
                    bus.stop_server()
        return medians(seen)

    def _with_open(self, servers, size):
        """How long a call takes while `size` notifications are open, and how long closing them."""
        figures, memory, seen = {}, {}, {}
        with contextlib.ExitStack() as stack:
            buses = {name: stack.enter_context(Bus(self.client())) for name in servers}
            for name, bus in buses.items():
                bus.start(servers[name], START_SECONDS)
                before = resting_bytes(bus)
                figures[("opening", name, size)] = bus.client.ask("open", size, OPEN_TIMEOUT_MS)["each"]
                memory[name] = (resting_bytes(bus) - before) / size
            for _ in range(ROUNDS):
                for name, bus in buses.items():
                    each = bus.client.ask("open", CALLS_AT_ONCE, OPEN_TIMEOUT_MS)["each"]
                    seen.setdefault(("many", name, size), []).append(each)
                    bus.server.wait_until_quiet()
                for name, bus in buses.items():
                    each = bus.client.ask("roundtrip", CALLS_IN_TURN)["median"]
                    seen.setdefault(("single", name, size), []).append(each)
                    bus.server.wait_until_quiet()
            figures.update(self._closing(buses["tavo"], size))
        return {**figures, **medians(seen), ("memory", size): memory["tavo"]}

    @staticmethod
    def _closing(bus, size):
        one = bus.client.ask("closeOne", CLOSED_ONE_BY_ONE)["median"]
        bus.server.wait_until_quiet()
        return {("closeOne", size): one,
                ("closing", "tavo", size): bus.client.ask("closeAll")["each"]}

    def _max_ping(self, arguments):
        """The maximum of seconds that a client waited while another one sent large bodies."""
        with Bus(self.client()) as bus:
            bus.start(arguments, START_SECONDS)
            other = bus.new_client()
            other.tell("ping")
            bus.client.ask("bodies", LARGE_BODIES, LARGE_BODY)
            return other.ask("")["max"]

    def _peers(self):
        """The figures of the other servers that are installed and start."""
        result = {}
        for name, places in PEERS.items():
            program = next(filter(None, map(shutil.which, places)), None)
            if program:
                with contextlib.suppress(Failed), on_one_processor(), Bus(self.client()) as bus:
                    bus.start([program], START_SECONDS)
                    result[name] = self._peer(bus)
        return result

    @staticmethod
    def _peer(bus):
        before = resting_bytes(bus)
        each = bus.client.ask("open", PEER_SIZE, PEER_OPEN_TIMEOUT_MS)
        single = bus.client.ask("roundtrip", CLOSED_ONE_BY_ONE)["median"]
        memory = (resting_bytes(bus) - before) / each["opened"]
        return {"opened": each["opened"], "each": each["each"], "single": single, "memory": memory}

    def client(self):
        return str(self.folder / "benchmarks/tavo_notify_client")

    def _bare(self):
        return [str(self.folder / "benchmarks/tavo_bare_server")]

    @contextlib.contextmanager
    def host(self, *more):
        """The arguments that start the host with the modules that a notification needs, and more."""
        limits = {"openNotifications": NO_LIMIT, "totalOpenNotifications": NO_LIMIT,
                  "requestsPerSecond": NO_LIMIT, "storedBytes": 2**30, "totalStoredBytes": 2**30}
        configuration = {"modules": ["powermanager", "player", "notifications", *more,
                                     {"name": "dbus", "config": {"limits": limits}}]}
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            json.dump(configuration, file)
            file.flush()
            yield [str(self.folder / "bin/tavo-host"), "--config", file.name]


@contextlib.contextmanager
def on_one_processor():
    """Programs that are started in this context share one processor."""
    processors = os.sched_getaffinity(0)
    os.sched_setaffinity(0, {min(processors)})
    try:
        yield
    finally:
        os.sched_setaffinity(0, processors)


def ratios_of(figures):
    """Ratios to the bare server, or to another figure of the host, by (what, size)."""
    many = {size: figures[("many", "tavo", size)] for size in SIZES}
    result = {("start", None): figures[("start", "tavo")] / figures[("start", "bare")],
              ("growth", None): many[100000] / many[1000]}
    for size in SIZES:
        for what in ("many", "single"):
            result[(what, size)] = figures[(what, "tavo", size)] / figures[(what, "bare", size)]
        result[("closeAll", size)] = (figures[("closing", "tavo", size)] /
                                      figures[("opening", "tavo", size)])
    return result


def resting_bytes(bus):
    bus.server.wait_until_quiet()
    return bus.server.private_bytes()


def collected(records):
    """Turns a list of records into a record of lists."""
    return {what: [record[what] for record in records] for what in records[0]}


def medians(seen):
    return {what: statistics.median(values) for what, values in seen.items()}
