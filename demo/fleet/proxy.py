# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""A TCP proxy on a port of 127.0.0.1 that cuts, stalls and delays its connections."""

import asyncio
import threading


class Proxy:
    """Forwards to a port. Runs in a thread of its own; the functions may be called from any thread."""

    def __init__(self, target):
        self.target = target
        self.delay = 0.0  # seconds by which every piece is late
        self._stalled = False
        self._writers = set()
        self._loop = asyncio.new_event_loop()
        ready = threading.Event()
        threading.Thread(target=self._run, args=(ready,), daemon=True).start()
        ready.wait()

    def cut(self):
        """Breaks all connections at once."""
        self._loop.call_soon_threadsafe(self._cut)

    def stall(self, stalled):
        """While it stalls, connections stay open and nothing passes."""
        self._stalled = stalled

    def heal(self):
        self.delay = 0.0
        self._stalled = False

    def _run(self, ready):
        asyncio.set_event_loop(self._loop)
        server = self._loop.run_until_complete(
            asyncio.start_server(self._serve, "127.0.0.1", 0))
        self.port = server.sockets[0].getsockname()[1]
        ready.set()
        self._loop.run_forever()

    def _cut(self):
        for writer in self._writers:
            writer.transport.abort()

    async def _serve(self, reader, writer):
        try:
            up_reader, up_writer = await asyncio.open_connection("127.0.0.1", self.target)
        except OSError:
            writer.transport.abort()
            return
        self._writers |= {writer, up_writer}
        try:
            await asyncio.gather(self._forward(reader, up_writer),
                                 self._forward(up_reader, writer))
        finally:
            self._writers -= {writer, up_writer}

    async def _forward(self, reader, writer):
        try:
            while data := await reader.read(65536):
                if self.delay:
                    await asyncio.sleep(self.delay)
                while self._stalled:
                    await asyncio.sleep(0.02)
                writer.write(data)
                await writer.drain()
        except OSError:
            pass
        writer.transport.abort()
