"""A server on loopback that does to each connection what it is told, for the checks of the client's exchanges.

usage: server.py [CERTIFICATES]     (a folder of NAME.pem files, each a key with its chain)

It says its ports in a line of JSON and then takes commands, one line of JSON each, answering each with a line.
"""

import collections
import json
import socket
import sys
import threading

import script
import secrecy


class Server:
    def __init__(self, certificates):
        self.certificates = certificates
        self.changed = threading.Condition()
        # A socket that never listens keeps the port while nothing listens on it.
        self.keeper = bound(0)
        self.port = self.keeper.getsockname()[1]
        self.listener = None
        self.tls = None
        self.round = 0
        self.forget({})
        self.elsewhere = bound(0)
        self.elsewhere.listen()
        threading.Thread(target=self.count_visitors, daemon=True).start()
        self.listen({"on": True})

    # Commands: each takes and gives a dictionary.

    def forget(self, _):
        """Starts anew: no scripts, nothing counted, nothing held. Connections of before count no more."""
        with self.changed:
            self.round += 1
            self.scripts, self.door, self.released, self.seen = {}, None, set(), []
            self.visitors = 0
            self.changed.notify_all()
        return {}

    def script(self, command):
        """What happens on requests for a path: "steps" once "when" ("head", "request") has come."""
        self.scripts[command["path"]] = command
        return {}

    def doors(self, command):
        """What happens to every connection before anything is read from it; nothing after null."""
        self.door = command["steps"]
        return {}

    def encrypt(self, command):
        """How the following connections are encrypted, or null."""
        self.tls = secrecy.Secrecy(self.certificates, command["tls"]) if command["tls"] else None
        return {}

    def listen(self, command):
        if self.listener:
            # Closing alone would leave the thread in accept() with the port open.
            self.listener.shutdown(socket.SHUT_RDWR)
            self.listener.close()
            self.accepting.join()
            self.listener = None
        if command["on"]:
            self.listener = bound(self.port)
            self.listener.listen(1000)
            self.accepting = threading.Thread(target=self.accept, args=(self.listener,), daemon=True)
            self.accepting.start()
        return {}

    def arrival(self, command):
        """Waits until requests for a path have come whole."""
        with self.changed:
            came = self.changed.wait_for(lambda: self.whole()[command["path"]] >= command.get("times", 1), 60)
        return {"came": came}

    def release(self, command):
        """Lets the scripts of a path go on where they hold."""
        with self.changed:
            self.released.add(command["path"])
            self.changed.notify_all()
        return {}

    def report(self, _):
        """What has come since all was forgotten: requests by their first line, and what of each connection was read."""
        lines = collections.Counter(line for c in self.seen for line in c.first_lines())
        return {"lines": lines, "whole": self.whole(), "visitors": self.visitors,
                "connections": [{"handshake": c.handshake, "read": len(c.received), "hello": c.hello,
                                 "flight": c.flight_size, "done": c.done} for c in self.seen]}

    def whole(self):
        return collections.Counter(c.path for c in self.seen if c.is_whole())

    # What runs in threads.

    def accept(self, listener):
        while True:
            try:
                connection, _ = listener.accept()
            except OSError:
                return
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            served = script.Connection(self, connection, self.tls, self.round)
            with self.changed:
                self.seen.append(served)
            threading.Thread(target=served.serve, daemon=True).start()

    def count_visitors(self):
        while True:
            connection, _ = self.elsewhere.accept()
            self.visitors += 1
            connection.close()


def bound(port):
    socket_ = socket.socket()
    socket_.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    socket_.bind(("127.0.0.1", port))
    return socket_


def main():
    server = Server(sys.argv[1] if len(sys.argv) > 1 else None)
    print(json.dumps({"port": server.port, "elsewhere": server.elsewhere.getsockname()[1]}), flush=True)
    for line in sys.stdin:
        command = json.loads(line)
        print(json.dumps(getattr(server, command["do"])(command)), flush=True)


if __name__ == "__main__":
    threading.stack_size(256 * 1024)
    main()
