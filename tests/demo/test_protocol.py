"""docs/protocol.md: its examples are sent to the demo service, and its request is compared with one of the app's transport."""

import json
import os
import pathlib
import re
import socket
import subprocess
import threading
import unittest

from demo import PATIENCE, DemoTest

PAGE = (pathlib.Path(__file__).resolve().parents[2] / "docs" / "protocol.md").read_text()
BLOCKS = re.findall(r"^```(\w+)\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL)
ENDPOINTS = re.findall(r"^## (api_\w+\.php)$", PAGE, re.MULTILINE)
ADDRESS = "http://127.0.0.1:8473/"


class ProtocolTest(DemoTest):
    def test_examples_are_answered_as_shown(self):
        self.start()
        examples = [(block, BLOCKS[at + 1]) for at, (kind, block) in enumerate(BLOCKS) if kind == "sh"]
        for command, (kind, reply) in examples:
            with self.subTest(command):
                self.assertEqual((kind, command.count(ADDRESS)), ("json", 1))
                done = subprocess.run(["sh", "-euc", command.replace(ADDRESS, f"http://127.0.0.1:{self.port}/")],
                                      stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=PATIENCE, check=False)
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertEqual(json.loads(done.stdout), json.loads(reply))
                if "\n" not in reply.strip():
                    self.assertEqual(done.stdout.strip(), reply.strip())
        asked = "".join(command for command, _ in examples)
        self.assertEqual([endpoint for endpoint in ENDPOINTS if endpoint not in asked], [])
        self.assertEqual(len(ENDPOINTS), 8)

    def test_request_is_as_shown(self):
        shown = next(block for kind, block in BLOCKS if kind == "http")
        head, _, body = shown.strip().partition("\n\n")
        record = json.loads(body)
        server = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(server.close)
        sent = []

        def answer():
            connection, _ = server.accept()
            with connection:
                connection.settimeout(PATIENCE)
                while not sent or not sent[0].endswith(b"}"):
                    sent[:] = [b"".join(sent) + connection.recv(65536)]
                connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}")

        thread = threading.Thread(target=answer)
        thread.start()
        subprocess.run([os.environ["MAROVENDA_CHECK"], "--quiet", "--base", f"http://127.0.0.1:{server.getsockname()[1]}/",
                        record["email"]], stdout=subprocess.DEVNULL, timeout=PATIENCE, check=False,
                       env={**os.environ, "MAROVENDA_CHECK_PASSWORD": record["password"]})
        thread.join(PATIENCE)
        sent_head, _, sent_body = sent[0].decode().partition("\r\n\r\n")
        self.assertEqual(sent_body, body)

        def lines(text):
            # What depends on the address, the language and the version of Qt.
            return sorted(re.sub(r"^((?:Host|Accept-(?:Encoding|Language)): ).*", r"\1", line) for line in text.splitlines())
        self.assertEqual(lines(sent_head), lines(head))


if __name__ == "__main__":
    unittest.main()
