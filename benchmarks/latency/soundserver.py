# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""A private PulseAudio server on the device "sound", for players that need one."""

import ctypes
import shutil
import signal
import subprocess
import time

READY_TIMEOUT = 10.0
PR_SET_PDEATHSIG = 1
LIBC = ctypes.CDLL(None)


class SoundServer:
    """Runs as long as the context. `runs` is False if PulseAudio is not installed.

    Between sounds the device is closed, so each sound opens it again. Its buffer is 50 ms, like that of
    our players.
    """

    def __init__(self, folder, environment):
        self.folder = folder / "pulse"
        self.folder.mkdir(mode=0o700)
        client = self.folder / "client.conf"
        client.write_text("autospawn = no\nenable-shm = no\n")
        self.environment = dict(
            environment, XDG_RUNTIME_DIR=str(self.folder), PULSE_RUNTIME_PATH=str(self.folder),
            PULSE_STATE_PATH=str(self.folder), PULSE_SERVER=f"unix:{self.folder}/native",
            PULSE_COOKIE=f"{self.folder}/cookie", PULSE_CLIENTCONFIG=str(client))
        self.process = None
        self.runs = False

    def __enter__(self):
        if not (shutil.which("pulseaudio") and shutil.which("paplay")):
            return self
        with (self.folder / "log").open("wb") as log:
            self.process = subprocess.Popen(
                ["pulseaudio", "-n", "--daemonize=no", "--disable-shm=yes", "--exit-idle-time=-1",
                 "--disallow-exit=yes", "--use-pid-file=no", "--realtime=no",
                 "--high-priority=no", "--log-target=stderr",
                 "-L", f"module-native-protocol-unix socket={self.folder}/native auth-anonymous=1",
                 "-L", "module-alsa-sink sink_name=sound device=sound rate=48000 channels=2 "
                       "fragments=5 fragment_size=1920",
                 "-L", "module-suspend-on-idle timeout=0"],
                env=self.environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                preexec_fn=lambda: LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL))
        self.runs = self.answers()
        return self

    def __exit__(self, *_):
        if self.process:
            self.process.terminate()
            self.process.wait()

    def answers(self):
        deadline = time.monotonic() + READY_TIMEOUT
        while time.monotonic() < deadline and self.process.poll() is None:
            listed = subprocess.run(["pactl", "list", "short", "sinks"], env=self.environment,
                                    stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                    stderr=subprocess.DEVNULL, check=False).stdout
            if b"SUSPENDED" in listed:
                return True
            time.sleep(0.05)
        return False
