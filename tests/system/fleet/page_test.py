#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The page of the fleet in a real browser, with a real broker. scripts/page-test runs this."""

import json
import pathlib
import socket
import subprocess
import tempfile
import time
import unittest
import urllib.error
import urllib.request

import paho.mqtt.client as mqtt

PAGE = pathlib.Path(__file__).resolve().parents[3] / "data/fleet/page"
TIMEOUT = 30


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(condition):
    """What the condition gives when that is true; fails after the timeout."""
    end = time.monotonic() + TIMEOUT
    while not (value := condition()):
        assert time.monotonic() < end, "the timeout is over"
        time.sleep(0.05)
    return value


def is_listening(port):
    try:
        socket.create_connection(("127.0.0.1", port), 1).close()
        return True
    except OSError:
        return False


class Browser:
    """Chromium without a window, by the protocol of WebDriver."""

    def __init__(self, port):
        self.address = f"http://127.0.0.1:{port}"
        arguments = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"]
        session = self._ask("POST", "/session", {"capabilities": {"alwaysMatch": {
            "goog:loggingPrefs": {"browser": "ALL"}, "goog:chromeOptions": {"args": arguments}}}})
        self.address += "/session/" + session["sessionId"]

    def open(self, url):
        self._ask("POST", "/url", {"url": url})

    def run(self, script, *arguments):
        return self._ask("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def log(self):
        return self._ask("POST", "/se/log", {"type": "browser"})

    def close(self):
        self._ask("DELETE", "")

    def _ask(self, method, path, body=None):
        request = urllib.request.Request(
            self.address + path, method=method, headers={"Content-Type": "application/json"},
            data=None if body is None else json.dumps(body).encode())
        with urllib.request.urlopen(request, timeout=120) as answer:
            return json.load(answer)["value"]


class Device:
    """A device that answers each call with that it is shown or sounding."""

    def __init__(self, name, port):
        self.name = name
        self.calls = []
        self.ignored = 0
        self.client = mqtt.Client(name, protocol=mqtt.MQTTv5)
        self.client.on_message = self._take
        self.client.will_set(self.topic("online"), "0", 1, True)
        self.client.connect("127.0.0.1", port)
        self.client.subscribe(self.topic("call"), 1)
        self.client.loop_start()
        self.publish("info", {"groups": ["site"]})
        self.publish("online", 1)

    def topic(self, what):
        return f"tavo/v1/{self.name}/{what}"

    def publish(self, what, value):
        self.client.publish(self.topic(what), json.dumps(value), 1, True).wait_for_publish(TIMEOUT)

    def vanish(self):
        """Without a goodbye."""
        self.client.loop_stop()
        self.client.socket().close()

    def _take(self, _client, _data, message):
        call = json.loads(message.payload)
        self.calls.append(call)
        if len(self.calls) <= self.ignored:
            return
        outcome = "sounding" if call["call"] == "sound" else "shown"
        answer = {"id": call["id"], "device": self.name, outcome: True}
        self.client.publish(self.topic("answer/" + call["from"]), json.dumps(answer), 1)


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.driver_port = free_port()
        cls.driver = subprocess.Popen(["chromedriver", f"--port={cls.driver_port}"],
                                      stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for(lambda: is_listening(cls.driver_port))
        cls.browser = Browser(cls.driver_port)

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        cls.driver.terminate()
        cls.driver.wait()
        cls.folder.cleanup()

    def setUp(self):
        self.broker_port, self.page_port = free_port(), free_port()
        self.start_broker()
        # Debian's mosquitto has no WebSocket listener; this serves the page, too.
        self.proxy = subprocess.Popen(
            ["websockify", "--web", PAGE, f"127.0.0.1:{self.page_port}",
             f"127.0.0.1:{self.broker_port}"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for(lambda: is_listening(self.page_port))
        self.browser.open(f"http://127.0.0.1:{self.page_port}/index.html"
                          f"?broker=ws://127.0.0.1:{self.page_port}/")

    def tearDown(self):
        for process in (self.proxy, self.broker):
            process.terminate()
            process.wait()

    def start_broker(self):
        configuration = pathlib.Path(self.folder.name) / "mosquitto.conf"
        configuration.write_text(f"user root\nlistener {self.broker_port} 127.0.0.1\n"
                                 "allow_anonymous true\n")
        self.broker = subprocess.Popen(["/usr/sbin/mosquitto", "-c", configuration],
                                       stderr=subprocess.DEVNULL)
        wait_for(lambda: is_listening(self.broker_port))

    def connect(self):
        self.browser.run("document.getElementById('connect').click()")
        wait_for(lambda: self.status() == "connected")

    def status(self):
        return self.browser.run("return document.getElementById('status').textContent")

    def cell(self, device, name):
        return self.browser.run(
            "return document.querySelector(`tr[data-device='${arguments[0]}'] "
            "[data-cell='${arguments[1]}']`)?.textContent", device, name)

    def click(self, device, label):
        self.browser.run(
            "for (const button of document.querySelectorAll("
            "`tr[data-device='${arguments[0]}'] button`)) {"
            " if (button.textContent === arguments[1]) button.click(); }", device, label)

    def test_shows_devices_and_what_they_show(self):
        hall = Device("hall", self.broker_port)
        hostile = "<img src=x onerror=\"document.title='taken'\">"
        hall.publish("state/display", {"shown": True, "title": hostile})
        self.connect()
        wait_for(lambda: self.cell("hall", "state") == "online")
        wait_for(lambda: self.cell("hall", "shows") == hostile)
        self.assertEqual(self.cell("hall", "groups"), "site")
        self.assertEqual(self.browser.run("return document.title"), "Fleet")
        hall.publish("state/display", {"shown": False})
        wait_for(lambda: self.cell("hall", "shows") == "")
        hall.publish("state/sound", {"sounding": True})
        wait_for(lambda: self.cell("hall", "plays") == "a sound")
        attic = Device("attic", self.broker_port)
        wait_for(lambda: self.cell("attic", "state") == "online")
        self.assertEqual(
            self.browser.run("return [...document.querySelectorAll('tr[data-device]')]"
                             ".map(row => row.dataset.device)"), ["attic", "hall"])
        hall.vanish()
        wait_for(lambda: self.cell("hall", "state") == "away")
        self.assertEqual(
            self.browser.run("return getComputedStyle(document.querySelector("
                             "`tr[data-device='hall'] [data-cell='plays']`)).visibility"), "hidden")
        attic.vanish()

    def test_rings_a_device_until_it_answers(self):
        hall = Device("hall", self.broker_port)
        hall.ignored = 1
        self.connect()
        wait_for(lambda: self.cell("hall", "state") == "online")
        self.click("hall", "Ring")
        wait_for(lambda: self.cell("hall", "answer") == "sounding")
        self.assertEqual([call["sound"] for call in hall.calls], ["bell", "bell"])
        self.assertEqual(hall.calls[0]["id"], hall.calls[1]["id"])
        hall.vanish()

    def test_comes_back_with_the_broker(self):
        self.connect()
        self.broker.kill()
        self.broker.wait()
        wait_for(lambda: self.status() != "connected")
        self.start_broker()
        wait_for(lambda: self.status() == "connected")
        hall = Device("hall", self.broker_port)
        wait_for(lambda: self.cell("hall", "state") == "online")
        hall.vanish()

    def test_takes_what_is_not_json_and_large_states(self):
        hall = Device("hall", self.broker_port)
        hall.publish("state/display", {"shown": True, "title": "x" * 200000})
        for payload in (b"{", b"\xff\xfe", b"null", b"[]", b""):
            hall.client.publish("tavo/v1/hall/state/sound", payload, 1).wait_for_publish(TIMEOUT)
        self.connect()
        wait_for(lambda: self.cell("hall", "shows") == "x" * 200000)
        self.assertEqual(self.status(), "connected")
        self.assertEqual([entry for entry in self.browser.log() if entry["level"] == "SEVERE"], [])
        hall.vanish()


if __name__ == "__main__":
    unittest.main()
