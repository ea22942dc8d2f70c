# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""scripts/sound-server gives its command two devices, records them, and leaves nothing behind."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SERVER = str(ROOT / "scripts" / "sound-server")

from soundcheck import checks, recording

# Plays a tone on an ALSA device and prints when it began. The arguments are the device and the frequency.
PLAY = """
import ctypes, math, struct, sys, time
library, pcm = ctypes.CDLL("libasound.so.2"), ctypes.c_void_p()
assert library.snd_pcm_open(ctypes.byref(pcm), sys.argv[1].encode(), 0, 0) == 0
assert library.snd_pcm_set_params(pcm, 2, 3, 1, 48000, 1, 50000) == 0
step = 2 * math.pi * float(sys.argv[2]) / 48000
tone = b"".join(struct.pack("<h", round(8000 * math.sin(step * n))) for n in range(24000))
print(time.monotonic(), flush=True)
library.snd_pcm_writei.restype = ctypes.c_long
assert library.snd_pcm_writei(pcm, tone, ctypes.c_ulong(24000)) == 24000
assert library.snd_pcm_drain(pcm) == 0
assert library.snd_pcm_close(pcm) == 0
"""
TONE = 0.5  # seconds


def alive(process_id):
    try:
        state = pathlib.Path(f"/proc/{process_id}/stat").read_text()
    except OSError:
        return False
    return ") Z " not in state  # a zombie has ended


class SoundServerTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = dict(os.environ, TMPDIR=str(self.folder))

    def serve(self, *command):
        return subprocess.run([SERVER, *command], env=self.environment, timeout=60,
                              capture_output=True, text=True, check=False)

    def test_ends_with_the_status_of_the_command(self):
        self.assertEqual(self.serve("--", "sh", "-c", "exit 7").returncode, 7)

    def test_reports_a_command_that_does_not_exist(self):
        result = self.serve("--", "/no/such/command")
        self.assertEqual(result.returncode, 125)
        self.assertIn("/no/such/command", result.stderr)

    def test_keeps_the_command_away_from_the_sound_server_of_the_user(self):
        names = ("XDG_RUNTIME_DIR", "PULSE_SERVER", "PULSE_COOKIE", "PULSE_CLIENTCONFIG",
                 "ALSA_CONFIG_PATH")
        result = self.serve("--", "sh", "-c", "".join(f'echo "${name}";' for name in names))
        lines = result.stdout.splitlines()
        self.assertEqual(len(lines), len(names))
        for line in lines:
            self.assertIn(f"{self.folder}/tavo-sound-", line)

    def test_leaves_no_files_behind(self):
        self.assertEqual(self.serve("--", "true").returncode, 0)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_records_each_device_and_when_its_sound_was_heard(self):
        for device, frequency in (("main", 500), ("notifications", 1500)):
            with self.subTest(device=device):
                folder = self.folder / device
                result = self.serve("--record", str(folder), "--", sys.executable, "-c", PLAY,
                                    device, str(frequency))
                self.assertEqual(result.returncode, 0, result.stderr)
                tracks = recording.load(folder)
                track = tracks.pop(device)
                heard = track.band(frequency) > checks.AUDIBLE
                self.assertAlmostEqual(checks.seconds(heard), TONE, delta=0.05)
                self.assertLess(abs(track.times[heard][0] - float(result.stdout)), 0.5)
                for silent in tracks.values():
                    self.assertLess(max(silent.loudness()), checks.AUDIBLE)

    def start_sleeping(self):
        """Returns a server whose command sleeps, the id of that command, and the ids of the helpers."""
        server = subprocess.Popen(
            [SERVER, "--", "sh", "-c", "echo $$; exec sleep 60"], env=self.environment,
            stdout=subprocess.PIPE, text=True)
        self.addCleanup(server.stdout.close)
        command = int(server.stdout.readline())
        children = pathlib.Path(f"/proc/{server.pid}/task/{server.pid}/children").read_text()
        return server, command, {int(child) for child in children.split()} - {command}

    def test_ends_the_command_and_the_server_on_sigterm(self):
        server, command, helpers = self.start_sleeping()
        server.send_signal(signal.SIGTERM)
        self.assertEqual(server.wait(30), 128 + signal.SIGTERM)
        self.assertEqual([process for process in (command, *helpers) if alive(process)], [])
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_ends_the_sound_server_when_it_is_killed(self):
        server, command, helpers = self.start_sleeping()
        self.assertEqual(len(helpers), 1)
        server.kill()
        server.wait()
        os.kill(command, signal.SIGKILL)
        deadline = time.monotonic() + 10
        while any(map(alive, helpers)) and time.monotonic() < deadline:
            time.sleep(0.01)
        self.assertFalse(any(map(alive, helpers)))


if __name__ == "__main__":
    unittest.main()
