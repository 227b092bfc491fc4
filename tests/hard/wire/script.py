"""One connection of the scripted server: what came over it, and the steps that it is put through."""

import base64
import re
import socket
import struct
import time
import zlib

FIRST_LINE = re.compile(rb"(?:POST|GET) /[^ \r\n]* HTTP/")
MEGABYTE = 1 << 20


class Connection:
    def __init__(self, server, connection, tls, round_):
        self.server, self.connection, self.tls, self.round = server, connection, tls, round_
        self.received = bytearray()
        # None where nothing is encrypted, else whether both sides have agreed.
        self.handshake = None
        self.path = None
        # Bytes of the client's hello and of the answer to it, in a handshake that is broken off.
        self.hello = self.flight_size = 0
        self.ended = self.done = False

    def first_lines(self):
        """The requests that came, "POST /path", over one connection; a body holds no such line."""
        return [line.decode("latin-1").rpartition(" ")[0] for line in FIRST_LINE.findall(bytes(self.received))]

    def head(self):
        end = self.received.find(b"\r\n\r\n")
        return bytes(self.received[:end + 4]) if end >= 0 else None

    def is_whole(self):
        head = self.head()
        if head is None:
            return False
        length = re.search(rb"(?i)\r\ncontent-length: *(\d+)", head)
        return len(self.received) >= len(head) + int(length.group(1) if length else 0)

    def serve(self):
        try:
            if self.server.door is not None:
                self.play(self.server.door)
            else:
                self.answer()
            while self.read():
                pass
        except OSError:
            pass
        finally:
            self.connection.close()
            self.done = True

    def answer(self):
        if self.tls:
            self.handshake = False
            self.connection = self.tls.shake_hands(self.connection)
            self.handshake = True
        while self.head() is None:
            if not self.read():
                return
        self.path = self.head().split(b" ")[1].decode("latin-1").partition("?")[0]
        command = self.server.scripts.get(self.path, {"steps": [["send", base64.b64encode(
            b"HTTP/1.1 404 Not scripted\r\nContent-Length: 0\r\n\r\n").decode()]]})
        while command.get("when", "request") == "request" and not self.is_whole():
            if not self.read():
                return
        with self.server.changed:
            self.server.changed.notify_all()
        self.play(command["steps"])

    def read(self, most=MEGABYTE):
        if self.ended:
            return 0
        data = self.connection.recv(most)
        self.received += data
        return len(data)

    def play(self, steps):
        for name, *arguments in steps:
            getattr(self, name)(*arguments)

    # Steps

    def send(self, data):
        self.connection.sendall(base64.b64decode(data))

    def trickle(self, data):
        """A byte at a time, each in a packet of its own."""
        for byte in base64.b64decode(data):
            self.connection.sendall(bytes([byte]))

    def pace(self, data, seconds):
        """The same with a pause before each byte."""
        for byte in base64.b64decode(data):
            time.sleep(seconds)
            self.connection.sendall(bytes([byte]))

    def flood(self, data, times):
        """A block many times, or without end."""
        block = base64.b64decode(data)
        block *= max(1, 65536 // len(block)) if times < 0 else 1
        while times:
            self.connection.sendall(block)
            times -= 1

    def bomb(self, start, megabytes):
        """A text and many megabytes of one letter, packed."""
        packer = zlib.compressobj(9, zlib.DEFLATED, 31)
        self.connection.sendall(packer.compress(base64.b64decode(start)))
        for _ in range(megabytes):
            self.connection.sendall(packer.compress(b"a" * MEGABYTE))
        self.connection.sendall(packer.flush())

    def flight(self, count, spoilt):
        """So many bytes of the answer to a client's hello, all where negative, and one of them spoilt where not."""
        def receive():
            before = len(self.received)
            if not self.read():
                raise ConnectionError
            return bytes(self.received[before:])

        answer = bytearray(self.tls.first_flight(receive))
        self.hello, self.flight_size = len(self.received), len(answer)
        if 0 <= spoilt < len(answer):
            answer[spoilt] ^= 0xFF
        self.connection.sendall(answer if count < 0 else answer[:count])

    def take(self, count):
        """Reads a number of bytes and no more."""
        goal = len(self.received) + count
        while len(self.received) < goal and self.read(goal - len(self.received)):
            pass

    def sip(self, bytes_a_second):
        """Reads the rest of the request slowly."""
        start, before = time.monotonic(), len(self.received)
        while not self.is_whole() and self.read(bytes_a_second // 20):
            time.sleep(max(0, start + (len(self.received) - before) / bytes_a_second - time.monotonic()))

    def narrow(self):
        """Leaves little room for what is not read yet."""
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 65536)

    def hold(self):
        with self.server.changed:
            self.server.changed.wait_for(lambda: self.path in self.server.released or self.round != self.server.round)

    def silent(self):
        """Neither reads nor sends until the client has gone."""
        self.connection.settimeout(0.1)
        while self.round == self.server.round:
            try:
                # An end that comes behind unread bytes is not seen here; the round's end is.
                if not self.connection.recv(1, socket.MSG_PEEK):
                    break
            except TimeoutError:
                continue
            time.sleep(0.1)
        self.close()

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
