# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""A host under load: the process, its log, and the connection to the load module in it."""

import collections
import json
import os
import re
import signal
import socket
import subprocess
import threading
import time

import ctypes

PR_SET_PDEATHSIG = 1
LIBC = ctypes.CDLL(None)
READY_TIMEOUT = 30.0
END_TIMEOUT = 30.0
MAX_LOG_LINES = 300
# Log lines that report a fault of the host itself, whatever the load did.
ALARMING = re.compile(r" FATAL |ASSERT|Id of stopped sound does not exist|Sanitizer|"
                      r"is published at .* already|index out of range|terminate called")


def end_with_parent():
    LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


class Host:
    """Calls on_event with the events of the load module, in a thread of its own."""

    def __init__(self, program, configuration, environment, socket_path, on_event):
        self.on_event = on_event
        self.alarms = []
        self.log = collections.deque(maxlen=MAX_LOG_LINES)
        self.log_lines = 0
        self.listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.listener.bind(str(socket_path))
        self.listener.listen(1)
        self.listener.settimeout(READY_TIMEOUT)
        self.process = subprocess.Popen(
            [program, "--config", str(configuration)], env=environment, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, start_new_session=True,
            preexec_fn=end_with_parent)
        self.log_thread = threading.Thread(target=self._read_log, daemon=True)
        self.log_thread.start()
        self.talk = None
        self.talk_thread = None

    @property
    def pid(self):
        return self.process.pid

    def is_running(self):
        return self.process.poll() is None

    def connect(self):
        try:
            self.talk = self.listener.accept()[0]
        except TimeoutError:
            raise RuntimeError("the load module doesn't answer:\n" + "\n".join(self.log)) from None
        self.talk_thread = threading.Thread(target=self._read_events, daemon=True)
        self.talk_thread.start()

    def say(self, **line):
        try:
            self.talk.sendall(json.dumps(line).encode() + b"\n")
        except OSError:
            pass  # the host has ended, which is noticed elsewhere

    def end(self):
        """Ends the host. Returns its exit status, or None if it had to be killed."""
        if self.is_running():
            os.kill(self.pid, signal.SIGTERM)
        try:
            status = self.process.wait(END_TIMEOUT)
        except subprocess.TimeoutExpired:
            self.kill()
            status = None
        self._close()
        return status

    def kill(self):
        if self.is_running():
            self.process.kill()
            self.process.wait()

    def _close(self):
        self.log_thread.join(5)
        if self.talk is not None:
            self.talk.close()
        self.listener.close()

    def _read_log(self):
        for line in self.process.stderr:
            text = line.decode(errors="replace").rstrip()
            self.log.append(text)
            self.log_lines += 1
            if ALARMING.search(text) and len(self.alarms) < 20:
                self.alarms.append(text)

    def _read_events(self):
        with self.talk.makefile("rb") as lines:
            try:
                for line in lines:
                    event = json.loads(line)
                    event["at"] = time.monotonic()
                    self.on_event(event)
            except (OSError, ValueError):
                pass  # a killed host leaves half a line
