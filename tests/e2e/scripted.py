"""A server on loopback whose replies a test gives, wrong ones too, and which keeps every request to the byte."""

import socket
import threading

# The port that scripted.cmake builds in.
SCRIPTED_PORT = 18473
LISTING = ('{"paquetes":[{"tracking":"T1","descripcion":"Libros","estado":"recibido"}],'
           '"cotizaciones":[{"origen":"Miami","descripcion":"Silla","estado":"pendiente"}]}')


class Request:
    def __init__(self, head, body):
        self.line, *headers = head.decode("latin-1").split("\r\n")
        self.method, self.path, *_ = self.line.split(" ")
        self.headers = [tuple(part.strip() for part in header.split(":", 1)) for header in headers if header]
        self.body = body

    def header(self, name):
        return next((value for key, value in self.headers if key.lower() == name.lower()), None)


class Held(bytes):
    """Bytes behind which the connection stays open, and silent."""


class ScriptedServer:
    """Answers each request with what `script` makes of it: the bytes to send, or None to close without a word. Port 0
    takes a free one; `tls` is the context of a server that speaks TLS. Use as a context, or call `close`."""

    def __init__(self, port, script, tls=None):
        self.script, self.tls = script, tls
        self.requests, self.held = [], []
        self.socket = socket.create_server(("127.0.0.1", port))
        self.port = self.socket.getsockname()[1]
        self.thread = threading.Thread(target=self._accept, daemon=True)
        self.thread.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Listens no longer."""
        if self.socket.fileno() >= 0:
            self.socket.shutdown(socket.SHUT_RDWR)
            self.thread.join()
            self.socket.close()
        for connection in self.held:
            connection.close()

    def _accept(self):
        while True:
            try:
                connection, _ = self.socket.accept()
            except OSError:
                return
            threading.Thread(target=self._serve, args=(connection,), daemon=True).start()

    def _serve(self, connection):
        try:
            if self.tls:
                connection = self.tls.wrap_socket(connection, server_side=True)
            answer = self.answer(connection)
        except OSError:
            answer = None
        if isinstance(answer, Held):
            self.held.append(connection)
        else:
            connection.close()

    def answer(self, connection):
        """Reads a request and sends the script's answer."""
        received = b""
        while b"\r\n\r\n" not in received:
            more = connection.recv(65536)
            if not more:
                return None
            received += more
        head, body = received.split(b"\r\n\r\n", 1)
        request = Request(head, b"")
        parts, missing = [body], int(request.header("Content-Length") or 0) - len(body)
        while missing > 0:
            parts.append(connection.recv(min(missing, 1 << 20)))
            if not parts[-1]:
                return None
            missing -= len(parts[-1])
        request.body = b"".join(parts)
        self.requests.append(request)
        answer = self.script(request)
        connection.sendall(answer or b"")
        return answer

    def posts(self):
        return [r for r in self.requests if r.method == "POST"]


def reply(body, status="200 OK", headers=""):
    data = body.encode()
    return f"HTTP/1.1 {status}\r\nContent-Length: {len(data)}\r\nConnection: close\r\n{headers}\r\n".encode() + data


def company(request, customer="ana@x"):
    """Only this one may sign in. Forms are refused, so that they keep what was typed."""
    if request.method == "GET":
        return reply(LISTING)
    if request.path == "/api_login.php" and f'"{customer}"'.encode() in request.body:
        return reply('{"status":"success","id":"42","nombre":"Ana"}')
    return reply('{"status":"error","message":"Otra vez","nombreCompleto":"Ana MRV-42"}')
