"""A server on loopback that does to each connection what a script says, for the checks of the client's calls.

A script is a function of a connection; it runs at the door, once a request's head has come, or the whole request.
"""

import collections
import contextlib
import re
import socket
import ssl
import struct
import threading
import time
import zlib

FIRST_LINE = re.compile(rb"(?:POST|GET) /[^ \r\n]* HTTP/")
MEGABYTE = 1 << 20


class Server:
    """Tells `changed`, a condition, of what happens. Its port stays its own while nothing listens there."""

    def __init__(self, changed):
        self.changed = changed
        self.keeper = bound(0)
        self.port = self.keeper.getsockname()[1]
        self.listener = None
        # A second port, of which only visits are counted.
        self.elsewhere = bound(0)
        self.elsewhere.listen()
        # An ssl.SSLContext, where the following connections are to be encrypted.
        self.tls = None
        self.round = 0
        self.forget()
        threading.Thread(target=self._count_visitors, daemon=True).start()
        self.listen(True)

    def forget(self):
        """Starts anew: no scripts, nothing counted, nothing held. Connections of before count no more."""
        with self.changed:
            self.round += 1
            self.scripts, self.door, self.released, self.seen = {}, None, set(), []
            self.visitors = 0
            self.changed.notify_all()

    def script(self, path, play, when="request"):
        self.scripts[path] = play, when

    def listen(self, on):
        if self.listener:
            # Closing alone would leave the thread in accept() with the port open.
            self.listener.shutdown(socket.SHUT_RDWR)
            self.listener.close()
            self.accepting.join()
            self.listener = None
        if on:
            self.listener = bound(self.port)
            self.listener.listen(1000)
            self.accepting = threading.Thread(target=self._accept, args=(self.listener,), daemon=True)
            self.accepting.start()

    def release(self, path):
        """Lets the scripts of a path go on where they hold."""
        with self.changed:
            self.released.add(path)
            self.changed.notify_all()

    def lines(self):
        """The requests that came, by their first lines."""
        return collections.Counter(line for connection in self.seen for line in connection.first_lines())

    def has(self, path):
        return any(connection.path == path and connection.is_whole() for connection in self.seen)

    def _accept(self, listener):
        while True:
            try:
                connection, _ = listener.accept()
            except OSError:
                return
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            with self.changed:
                served = Connection(self, connection)
                self.seen.append(served)
            threading.Thread(target=served.serve, daemon=True).start()

    def _count_visitors(self):
        while True:
            connection, _ = self.elsewhere.accept()
            self.visitors += 1
            connection.close()


class Connection:
    def __init__(self, server, connection):
        self.server, self.connection = server, connection
        self.round, self.tls, self.door = server.round, server.tls, server.door
        self.received = bytearray()
        # None where nothing is encrypted, else whether both sides have agreed.
        self.handshake = None
        self.path = None
        # Bytes of the client's hello and of the answer to it, in a handshake that is broken off.
        self.hello = self.flight_size = 0
        self.ended = self.done = False

    def first_lines(self):
        """The requests that came over it, "POST /path"; a body holds no such line."""
        return [line.decode("latin-1").rpartition(" ")[0] for line in FIRST_LINE.findall(bytes(self.received))]

    def head(self):
        end = self.received.find(b"\r\n\r\n")
        return bytes(self.received[:end + 4]) if end >= 0 else None

    def is_whole(self):
        head = self.head()
        length = re.search(rb"(?i)\r\ncontent-length: *(\d+)", head or b"")
        return head is not None and len(self.received) >= len(head) + int(length.group(1) if length else 0)

    def serve(self):
        with contextlib.suppress(OSError):
            if self.door:
                self.door(self)
            else:
                self.answer()
            while self.read():
                pass
        self.connection.close()
        with self.server.changed:
            self.done = True
            self.server.changed.notify_all()

    def answer(self):
        if self.tls:
            self.handshake = False
            self.connection = self.tls.wrap_socket(self.connection, server_side=True)
            self.handshake = True
        while self.head() is None:
            if not self.read():
                return
        self.path = self.head().split(b" ")[1].decode("latin-1").partition("?")[0]
        play, when = self.server.scripts.get(self.path, (
            lambda connection: connection.send(b"HTTP/1.1 404 Not scripted\r\nContent-Length: 0\r\n\r\n"), "request"))
        while when == "request" and not self.is_whole():
            if not self.read():
                return
        with self.server.changed:
            self.server.changed.notify_all()
        play(self)

    def read(self, most=MEGABYTE):
        if self.ended:
            return 0
        data = self.connection.recv(most)
        self.received += data
        return len(data)

    # What scripts are made of.

    def send(self, data):
        self.connection.sendall(data)

    def trickle(self, data):
        """A byte at a time, each in a packet of its own."""
        for byte in data:
            self.connection.sendall(bytes([byte]))

    def flood(self, block, times=-1):
        """A block many times, or without end."""
        block *= max(1, 65536 // len(block)) if times < 0 else 1
        while times:
            self.connection.sendall(block)
            times -= 1

    def bomb(self, start, megabytes):
        """A text and many megabytes of one letter, compressed."""
        packer = zlib.compressobj(9, zlib.DEFLATED, 31)
        self.connection.sendall(packer.compress(start))
        for _ in range(megabytes):
            self.connection.sendall(packer.compress(b"a" * MEGABYTE))
        self.connection.sendall(packer.flush())

    def flight(self, context, count=None, changed=None):
        """The first `count` bytes of the server's answer to a TLS client's hello, with the byte at `changed` changed."""
        incoming, outgoing = ssl.MemoryBIO(), ssl.MemoryBIO()
        conversation = context.wrap_bio(incoming, outgoing, server_side=True)
        while not outgoing.pending:
            before = len(self.received)
            if not self.read():
                return
            incoming.write(self.received[before:])
            with contextlib.suppress(ssl.SSLWantReadError):
                conversation.do_handshake()
        answer = bytearray(outgoing.read())
        self.hello, self.flight_size = len(self.received), len(answer)
        if changed is not None and changed < len(answer):
            answer[changed] ^= 0xFF
        self.connection.sendall(answer[:count])

    def take(self, count):
        """Reads a number of bytes and no more."""
        goal = len(self.received) + count
        while len(self.received) < goal and self.read(goal - len(self.received)):
            pass

    def sip(self, bytes_a_second):
        """Leaves little room for what is not read yet, and reads the rest of the request slowly."""
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 65536)
        start, before = time.monotonic(), len(self.received)
        while not self.is_whole() and self.read(bytes_a_second // 20):
            time.sleep(max(0, start + (len(self.received) - before) / bytes_a_second - time.monotonic()))

    def hold(self):
        with self.server.changed:
            self.server.changed.wait_for(lambda: self.path in self.server.released or self.is_over())

    def silent(self):
        """Neither reads nor sends until the round is over."""
        with self.server.changed:
            self.server.changed.wait_for(self.is_over)
        self.close()

    def is_over(self):
        return self.round != self.server.round

    def half(self):
        """Sends no more, and still reads."""
        self.connection.shutdown(socket.SHUT_WR)

    def close(self):
        self.ended = True
        self.connection.close()

    def reset(self):
        """With a linger of zero the kernel sends a reset instead of an orderly end."""
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.close()


def bound(port):
    bound_socket = socket.socket()
    bound_socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    bound_socket.bind(("127.0.0.1", port))
    return bound_socket
