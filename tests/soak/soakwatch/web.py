# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Serves the sounds over http on the loopback interface, sometimes with faults."""

import http.server
import pathlib
import random
import threading
import time


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, folder, seed):
        super().__init__(("127.0.0.1", 0), Handler)
        self.folder = pathlib.Path(folder)
        self.dice = random.Random(seed)
        threading.Thread(target=self.serve_forever, daemon=True).start()

    @property
    def address(self):
        return f"http://127.0.0.1:{self.server_address[1]}"

    def handle_error(self, request, client_address):
        pass  # a client that goes away is part of the load


class Handler(http.server.BaseHTTPRequestHandler):
    def log_message(self, *_):
        pass

    def do_GET(self):
        path = self.server.folder / self.path.lstrip("/")
        mood = self.server.dice.random()
        if not path.is_file() or mood < 0.1:
            self.send_error(404)
            return
        content = path.read_bytes()
        self.send_response(200)
        self.send_header("Content-Length", str(len(content)))
        self.end_headers()
        if mood < 0.2:
            self.wfile.write(content[:len(content) // 2])  # then closes the connection
        elif mood < 0.3:
            self.wfile.write(content[:len(content) // 2])
            self.wfile.flush()
            time.sleep(self.server.dice.uniform(0.05, 3))
        else:
            self.wfile.write(content)
