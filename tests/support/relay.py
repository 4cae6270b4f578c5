#!/usr/bin/python3
"""Forwards FTP connections from 127.0.0.2 to a server at 127.0.0.1, byte for byte, so also with TLS.

Listens on a free control port and on a range of passive ports, which the server must be started with (--passive of
ftp_server.py). A client that uses EPSV then comes back to the relay for each data connection. Prints three lines once
it listens: the control port, and the first and last passive port. Runs until its stdin closes.

Each line of stdin is an order; the answer to it is one line:
  server PORT                           forward control connections to this port; answers "ok"
  cut DIRECTION BYTES FIRST TIMES       end data connections early: when more than BYTES come in the direction ("up" is
                                        to the server, "down" to the client), forward BYTES and close both sides with a
                                        plain FIN. Connections with more bytes than that are counted from 1; those from
                                        FIRST on are cut, TIMES of them. Replaces the order before; answers "ok"
  cuts                                  answers how many connections were cut in all

--delay holds every byte back, and each connection to the server, for so long in each direction. A client's own
connecting takes no time.
"""
import argparse
import asyncio
import contextlib
import random
import socket
import sys

HERE, SERVER = "127.0.0.2", "127.0.0.1"
PASSIVE_PORTS = 31
BLOCKS = range(20000, 32000, PASSIVE_PORTS + 1)  # below the ports that the kernel gives out
DIRECTIONS = ("up", "down")


class Relay:
    def __init__(self, delay):
        self.delay = delay
        self.server_port = None
        self.cut_direction, self.cut_bytes, self.cut_numbers = None, 0, range(0)
        self.long_connections = 0  # with more bytes than cut_bytes in cut_direction, since the order
        self.cuts = 0

    def obey(self, words):
        match words:
            case ["server", port]:
                self.server_port = int(port)
            case ["cut", direction, count, first, times] if direction in DIRECTIONS:
                self.cut_direction, self.cut_bytes = direction, int(count)
                self.cut_numbers = range(int(first), int(first) + int(times))
                self.long_connections = 0
            case ["cuts"]:
                return str(self.cuts)
            case _:
                raise ValueError(f"no such order: {words}")
        return "ok"

    def ends_now(self):
        """Asked once for each connection, when more bytes have come than a cut lets pass."""
        self.long_connections += 1
        ends = self.long_connections in self.cut_numbers
        self.cuts += ends
        return ends


class Connection:
    """One connection of a client, with the one to the server that belongs to it."""

    def __init__(self, relay, is_data):
        self.relay, self.is_data = relay, is_data
        self.counted = self.is_cut = False
        self.passed = dict.fromkeys(DIRECTIONS, 0)
        self.waiting = {direction: asyncio.Queue(maxsize=16) for direction in DIRECTIONS}

    async def run(self, client, server):
        ends = {"up": (client[0], server[1]), "down": (server[0], client[1])}
        try:
            async with asyncio.TaskGroup() as tasks:
                for direction, (reader, writer) in ends.items():
                    tasks.create_task(self.read(direction, reader))
                    tasks.create_task(self.write(direction, writer))
        except* OSError:  # one side has reset its connection: so is the other
            for writer in (client[1], server[1]):
                writer.transport.abort()
        finally:
            for writer in (client[1], server[1]):
                writer.close()

    async def read(self, direction, reader):
        while chunk := await reader.read(65536):
            if not self.is_cut:  # else it is thrown away, since closing with unread bytes would send RST
                await self.take(direction, chunk)
        await self.put(direction, b"")

    async def take(self, direction, chunk):
        before, self.passed[direction] = self.passed[direction], self.passed[direction] + len(chunk)
        relay = self.relay
        is_long = (self.is_data and not self.counted and direction == relay.cut_direction
                   and self.passed[direction] > relay.cut_bytes)
        if is_long:
            self.counted = True
            if relay.ends_now():
                self.is_cut = True
                chunk = chunk[:max(0, relay.cut_bytes - before)]
                await self.put(direction, chunk)
                for way in DIRECTIONS:
                    await self.put(way, b"")
                return
        await self.put(direction, chunk)

    async def put(self, direction, chunk):
        await self.waiting[direction].put((asyncio.get_running_loop().time() + self.relay.delay, chunk))

    async def write(self, direction, writer):
        loop = asyncio.get_running_loop()
        while True:
            due, chunk = await self.waiting[direction].get()
            if due > loop.time():
                await asyncio.sleep(due - loop.time())
            if not chunk:
                break
            writer.write(chunk)
            await writer.drain()
        with contextlib.suppress(OSError):
            writer.write_eof()


def listen(port):
    return socket.create_server((HERE, port), backlog=64)


def listen_on_range():
    """Sockets for a range of ports; no other relay can have it."""
    for first in random.sample(BLOCKS, len(BLOCKS)):
        with contextlib.ExitStack() as taken:
            try:
                sockets = [taken.enter_context(listen(first + i)) for i in range(PASSIVE_PORTS)]
            except OSError:
                continue
            taken.pop_all()
            return sockets
    sys.exit("no free range of ports")


async def run(delay):
    relay = Relay(delay)

    async def accept(is_data, reader, writer):
        port = writer.get_extra_info("sockname")[1] if is_data else relay.server_port
        await asyncio.sleep(delay)
        try:
            server = await asyncio.open_connection(SERVER, port)
        except OSError:
            writer.transport.abort()
            return
        await Connection(relay, is_data).run((reader, writer), server)

    control, passive = listen(0), listen_on_range()
    for is_data, sockets in ((False, [control]), (True, passive)):
        for listener in sockets:
            await asyncio.start_server(lambda r, w, is_data=is_data: accept(is_data, r, w), sock=listener)
    ports = [listener.getsockname()[1] for listener in (control, passive[0], passive[-1])]
    print(*ports, sep="\n", flush=True)
    orders = asyncio.StreamReader()
    await asyncio.get_running_loop().connect_read_pipe(lambda: asyncio.StreamReaderProtocol(orders), sys.stdin)
    while order := await orders.readline():
        print(relay.obey(order.decode().split()), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--delay", type=float, default=0, metavar="MS", help="milliseconds in each direction")
    asyncio.run(run(parser.parse_args().delay / 1000))


if __name__ == "__main__":
    main()
