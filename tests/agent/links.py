# SPDX-License-Identifier: Apache-2.0
"""The way from one agent to the members of a store: it passes on, keeps everything back, or is slow."""
import asyncio
import threading
import urllib.parse


class Links:
    def __init__(self, urls):
        self.loop = asyncio.new_event_loop()
        self.delay = 0
        self.ready = threading.Event()
        self.targets = [urllib.parse.urlparse(url) for url in urls]
        threading.Thread(target=self.run, daemon=True).start()
        self.ready.wait()

    def run(self):
        asyncio.set_event_loop(self.loop)
        self.passes = asyncio.Event()
        self.passes.set()
        self.urls = [self.loop.run_until_complete(self.listen(target)) for target in self.targets]
        self.ready.set()
        self.loop.run_forever()

    async def listen(self, target):
        async def serve(reader, writer):
            try:
                await self.passes.wait()
                there, back = await asyncio.open_connection(target.hostname, target.port)
            except OSError:
                writer.close()
                return
            await asyncio.gather(self.carry(reader, back), self.carry(there, writer))
        server = await asyncio.start_server(serve, "127.0.0.1", 0)
        return "http://127.0.0.1:%d" % server.sockets[0].getsockname()[1]

    async def carry(self, source, sink):
        try:
            while data := await source.read(65536):
                await asyncio.sleep(self.delay)
                await self.passes.wait()
                sink.write(data)
                await sink.drain()
        except OSError:
            pass
        # A server that learns at once that nobody waits for the answer would not carry the request out.
        await asyncio.sleep(0.2)
        sink.close()

    # What is cut off is not lost: it arrives afterwards, as on a network that repeats.
    def cut(self):
        self.loop.call_soon_threadsafe(self.passes.clear)

    def slow(self, seconds):
        self.delay = seconds

    def mend(self):
        self.delay = 0
        self.loop.call_soon_threadsafe(self.passes.set)
