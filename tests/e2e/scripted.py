"""A server whose replies a story gives, and which keeps every request to the byte."""

import socket
import threading


class Request:
    def __init__(self, head, body):
        self.line, *headers = head.decode("latin-1").split("\r\n")
        self.headers = [tuple(part.strip() for part in header.split(":", 1)) for header in headers if header]
        self.body = body

    def header(self, name):
        return next((value for key, value in self.headers if key.lower() == name.lower()), None)


class ScriptedServer:
    """Answers each request with what `script` makes of it: the bytes to send, or None to close without a word."""

    def __init__(self, port, script):
        self.script = script
        self.requests = []
        self.connections = 0
        self.socket = socket.create_server(("127.0.0.1", port))
        threading.Thread(target=self._accept, daemon=True).start()

    def close(self):
        self.socket.close()

    def _accept(self):
        while True:
            try:
                connection, _ = self.socket.accept()
            except OSError:
                return
            self.connections += 1
            threading.Thread(target=self._serve, args=(connection,), daemon=True).start()

    def _serve(self, connection):
        with connection:
            received = b""
            while b"\r\n\r\n" not in received:
                more = connection.recv(65536)
                if not more:
                    return
                received += more
            head, body = received.split(b"\r\n\r\n", 1)
            request = Request(head, body)
            while len(request.body) < int(request.header("Content-Length") or 0):
                request.body += connection.recv(65536)
            self.requests.append(request)
            answer = self.script(request)
            if answer is not None:
                connection.sendall(answer)

    def posts(self):
        return [r for r in self.requests if r.line.startswith("POST")]


def reply(body, status="200 OK", headers=""):
    data = body.encode()
    return f"HTTP/1.1 {status}\r\nContent-Length: {len(data)}\r\nConnection: close\r\n{headers}\r\n".encode() + data
