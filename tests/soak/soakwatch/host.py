# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""A host under load: the process, its log, and the talk with the load module in it."""

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
READY_WITHIN = 30.0
END_WITHIN = 30.0
LOG_KEPT = 300
# Each of these says that something went wrong in the host itself, whatever the load did.
ALARMING = re.compile(r" FATAL |ASSERT|Id of stopped sound does not exist|Sanitizer|"
                      r"is published at .* already|index out of range|terminate called")


def end_with_parent():
    LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


class Host:
    """Its events arrive through on_event, in a thread of its own."""

    def __init__(self, program, configuration, environment, socket_path, on_event):
        self.on_event = on_event
        self.alarms = []
        self.log = collections.deque(maxlen=LOG_KEPT)
        self.log_lines = 0
        self.listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.listener.bind(str(socket_path))
        self.listener.listen(1)
        self.listener.settimeout(READY_WITHIN)
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
            pass  # it has ended, which is found elsewhere

    def end(self):
        """Asks it to end; its exit status, or None when it had to be killed."""
        if self.is_running():
            os.kill(self.pid, signal.SIGTERM)
        try:
            status = self.process.wait(END_WITHIN)
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
                pass  # a host that is killed leaves half a line
