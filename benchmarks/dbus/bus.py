# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""A private bus with a notification server and clients that measure it."""

import json
import os
import pathlib
import select
import subprocess
import tempfile
import time

# Like a session bus, with the same limits, but without services to activate.
CONFIGURATION = """<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <limit name="max_message_size">134217728</limit>
  <limit name="max_replies_per_connection">50000</limit>
</busconfig>
"""
QUIET_SECONDS = 0.05


class Failed(RuntimeError):
    """A program ended or did not start."""


class Process:
    """A program on the bus."""

    def __init__(self, arguments, environment, **descriptors):
        self.process = subprocess.Popen(arguments, env=environment, stderr=subprocess.DEVNULL,
                                        text=True, **descriptors)

    def stop(self):
        self.process.terminate()
        self.process.wait()

    def private_bytes(self):
        """Memory that no other process shares."""
        lines = self._of("smaps_rollup").splitlines()[1:]
        sizes = {name[:-1]: int(value) for name, value, *_ in map(str.split, lines)}
        return 1024 * (sizes["Private_Clean"] + sizes["Private_Dirty"])

    def processor_seconds(self):
        """The processor time of all threads that run."""
        threads = pathlib.Path(f"/proc/{self.process.pid}/task").iterdir()
        return 1e-9 * sum(int((thread / "schedstat").read_text().split()[0]) for thread in threads)

    def wait_until_quiet(self):
        """Waits until the program has finished its earlier work."""
        last = None
        while last != (last := self._ticks()):
            time.sleep(QUIET_SECONDS)

    def _ticks(self):
        return self._of("stat").rsplit(")", 1)[1].split()[11:13]

    def _of(self, name):
        try:
            return pathlib.Path(f"/proc/{self.process.pid}/{name}").read_text()
        except OSError as error:
            raise Failed(f"{self.process.args[0]} ended") from error


class Client(Process):
    """A client that runs commands and prints how long they took."""

    def __init__(self, program, environment):
        super().__init__([program], environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def tell(self, *words):
        print(*words, file=self.process.stdin, flush=True)

    def answer(self, seconds=None):
        """Reads the answer, a JSON object. Raises Failed if the client ends or is too slow."""
        readable = select.select([self.process.stdout], [], [], seconds)[0]
        line = self.process.stdout.readline() if readable else ""
        if not line:
            raise Failed("no answer")
        return json.loads(line)

    def ask(self, *words):
        self.tell(*words)
        return self.answer()


class Bus:
    """A bus daemon, a server and a client. All of them end with the context."""

    def __init__(self, client_program):
        self.client_program = client_program
        self.server = None
        self.client = None
        self._folder = tempfile.TemporaryDirectory()
        self._processes = []
        self._environment = None

    def __enter__(self):
        try:
            self._start_daemon()
            self.client = self.new_client()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self._processes):
            process.stop()
        self._folder.cleanup()

    def new_client(self):
        return self._begun(Client(self.client_program, self._environment))

    def start(self, arguments, seconds):
        """Starts the server and returns the seconds until it owned its name."""
        self.client.ask("await")
        before = time.clock_gettime(time.CLOCK_MONOTONIC)
        self.server = self._begun(Process(arguments, self._environment, stdout=subprocess.DEVNULL))
        return self.client.answer(seconds)["owned"] - before

    def stop_server(self):
        self._processes.remove(self.server)
        self.server.stop()

    def _start_daemon(self):
        folder = pathlib.Path(self._folder.name)
        file, socket = folder / "bus.conf", folder / "bus"
        file.write_text(CONFIGURATION.format(socket=socket))
        # No program reads the user's configuration or data.
        self._environment = {**os.environ, "DBUS_SESSION_BUS_ADDRESS": f"unix:path={socket}",
                             "XDG_CONFIG_HOME": str(folder), "XDG_DATA_HOME": str(folder)}
        daemon = self._begun(Process(
            ["dbus-daemon", "--nofork", "--nopidfile", "--print-address", f"--config-file={file}"],
            self._environment, stdout=subprocess.PIPE))
        if not daemon.process.stdout.readline():  # printed once it listens
            raise Failed("the bus doesn't start")

    def _begun(self, process):
        self._processes.append(process)
        return process
