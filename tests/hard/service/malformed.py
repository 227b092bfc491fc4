"""Requests that are not HTTP, not JSON, or not the protocol: each is refused or not answered, and none counts."""

import concurrent.futures
import json
import socket

from program import PATIENCE, RECORDS, head, post_bytes

AT_ONCE = 16
QUOTATION = json.dumps(RECORDS["api_cotizar.php"]).encode()
GOOD = [head("GET", "api_paquetes.php?user_id=2") + b"\r\n",
        post_bytes("api_cotizar.php", QUOTATION),
        post_bytes("api_auto.php", json.dumps(RECORDS["api_auto.php"]).encode())]


def post_with(headers, body=QUOTATION):
    return head("POST", "api_cotizar.php") + headers + b"\r\n" + body


JSON = b"Content-Type: application/json\r\n"
LENGTH = b"Content-Length: %d\r\n" % len(QUOTATION)
CHUNK = b"%x\r\n%b\r\n0\r\n\r\n" % (len(QUOTATION), QUOTATION)
CHUNKED = JSON + b"Transfer-Encoding: chunked\r\n"
# None of these may end in a row.
NOT_HTTP = [
    b"", b"\r\n", b"\r\n\r\n", b"\0" * 64, b"\xff" * 4096,
    b"GET", b"GET\r\n\r\n", b"GET /\r\n\r\n", b" / HTTP/1.1\r\n\r\n",
    b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03" + bytes(range(256)),  # a TLS client's first words
    b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n",
    b"POST /api_cotizar.php HTTP/0.9\r\n\r\n",
    b"POST /api_cotizar.php\r\n\r\n" + QUOTATION,
    GOOD[1].replace(b"HTTP/1.1", b"HTTP/9.9"),
    GOOD[1].replace(b"HTTP/1.1", b"SMTP/1.1"),
    GOOD[1].replace(b"POST", b"P OST"),
    GOOD[1].replace(b"POST", b"post"),
    GOOD[1].replace(b"POST", b"PO\0ST"),
    GOOD[1].replace(b"\r\n", b"\n"),
    GOOD[1].replace(b"\r\n", b"\r"),
    GOOD[1].replace(b"/api_cotizar.php", b"/api_cotizar.php\0"),
    GOOD[1].replace(b"/api_cotizar.php", b"/" + b"a" * 100_000),
    GOOD[1].replace(b"Host: 127.0.0.1\r\n", b""),
    GOOD[1].replace(b"Host:", b"X: " + b"a" * 200_000 + b"\r\nHost:"),
    GOOD[1].replace(b"Host: 127", b"Host: evil.example\r\nHost: 127"),
    post_with(JSON),
    post_with(JSON + b"Content-Length: -1\r\n"),
    post_with(JSON + b"Content-Length: x\r\n"),
    post_with(JSON + b"Content-Length: 0\r\n"),
    post_with(JSON + b"Content-Length: 5\r\n"),
    post_with(JSON + b"Content-Length: %d\r\n" % (len(QUOTATION) + 1)),
    post_with(JSON + b"Content-Length: 9223372036854775807\r\n"),
    post_with(JSON + b"Content-Length: 18446744073709551616\r\n"),
    post_with(JSON + b"Content-Length: 33554433\r\n", b" " * 100_000),
    post_with(LENGTH),
    post_with(LENGTH + b"Content-Type: text/plain\r\n"),
    post_with(LENGTH + JSON + b"Content-Encoding: gzip\r\n"),
    post_with(CHUNKED),
    post_with(CHUNKED, b""),
    post_with(CHUNKED, b"-1\r\n" + QUOTATION),
    post_with(CHUNKED, b"ffffffffffffffff\r\n" + QUOTATION),
    post_with(CHUNKED, b"zz\r\n"),
    post_with(CHUNKED, CHUNK[:-5]),
    post_with(CHUNKED, b"5\r\n{\"a\":\r\n"),
    post_with(CHUNKED, b"0\r\n\r\n"),
]

# None of these is a JSON text.
NOT_JSON = [
    b"", b" ", b"\0", b"nul", b"True", b"{", b"}", b"{]", b"[}", b"{}{}", b"{},", b'{"a"}', b'{"a":}', b'{"a":1,}',
    b'{,"a":1}', b"{'a':1}", b'{a:1}', b'{"a":1}//', b'/**/{"a":1}', b'{"a":NaN}', b'{"a":Infinity}', b'{"a":-}',
    b'{"a":01}', b'{"a":+1}', b'{"a":1.}', b'{"a":.1}', b'{"a":0x1}', b'{"a":1e}', b'{"a":1e999}', b'{"a":"\x01"}',
    b'{"a":"\n"}', b'{"a":"\\x"}', b'{"a":"\\u12"}', b'{"a":"\\ud800"}', b'{"a":"\xff"}', b'{"a":"\xc0\x80"}',
    b'{"a":"\xed\xa0\x80"}', b'{"a":"\xf4\x90\x80\x80"}', b'{"a":"\xc3', b"\xfe\xff\x00{\x00}",
    b"\xef\xbb\xbf\xef\xbb\xbf{}", b"[" * 100_000, b'{"a":' * 100_000, b"[" * 100_000 + b"]" * 100_000,
]
WRONG = {str: (1, 1.5, None, True, [], {}, ["a"]),
         int: ("1", 1.5, 1e300, 2**64, None, False, [], {}),
         float: ("1", None, True, [], {})}


def rows(program):
    return tuple(program.count(t) for t in ("customers", "quotations", "vehicle_requests", "recovery_requests"))


def is_json(text):
    """By another reader, which takes a little more than the service has to; nothing that it refuses may pass."""
    def refuse(constant):
        raise ValueError(constant)
    try:
        json.loads(text.removeprefix(b"\xef\xbb\xbf").decode("utf-8"), parse_constant=refuse)
        return True
    except (ValueError, RecursionError):
        return False


def mutate(random, data, protect=0):
    """A few bytes of it changed, dropped, doubled or moved, from place `protect` on."""
    data = bytearray(data)
    for _ in range(random.choice((1, 1, 1, 2, 4, 16))):
        at = random.randrange(protect, len(data) + 1)
        kind = random.randrange(5)
        if kind == 0:
            data[at:at + 1] = bytes([random.randrange(256)])
        elif kind == 1:
            del data[at:at + random.choice((1, 1, 4, 40))]
        elif kind == 2:
            data[at:at] = random.choice((b"\r\n", b"\0", b"\"", b"\\", b" ", b"\xff", b":", b"{", b"9" * 30))
        elif kind == 3:
            start = random.randrange(protect, len(data) + 1)
            data[at:at] = data[start:start + 20]
        else:
            del data[max(at, protect + 1):]
        if len(data) <= protect:
            break
    return bytes(data)


def refused(reply):
    return reply.closed() or (400 <= reply.status < 500 and reply.sound() and reply.json()["status"] == "error")


def check_fixed(tally, program):
    before = rows(program)
    for data in NOT_HTTP:
        reply = program.exchange(data, whole=False)
        tally.note("not HTTP", refused(reply), f"{data[:80]!r}: {reply}")
    for path in RECORDS:
        for body in NOT_JSON:
            reply = program.exchange(post_bytes(path, body))
            tally.note("not JSON", reply.status == 400 and reply.sound(), f"{path} {body[:60]!r}: {reply}")
    tally.note("refused without a trace", rows(program) == before, f"{before} rows became {rows(program)}")


def wrong_records(path):
    """The endpoint's record cut at every byte, and with each field missing or of another type."""
    good = RECORDS[path]
    text = json.dumps(good, ensure_ascii=False).encode()
    for length in range(len(text)):
        yield text[:length]
    for key, value in good.items():
        yield json.dumps({k: v for k, v in good.items() if k != key}).encode()
        kind = float if key in ("peso", "valor") else type(value)
        for wrong in WRONG[kind]:
            yield json.dumps({**good, key: wrong}).encode()


def check_records(tally, program):
    before = rows(program)
    for path in RECORDS:
        for body in wrong_records(path):
            reply = program.exchange(post_bytes(path, body))
            tally.note("not the endpoint's record", reply.status == 400 and reply.sound(),
                       f"{path} {body!r}: {reply}")
    tally.note("refused without a trace", rows(program) == before, f"{before} rows became {rows(program)}")


def check_damage(tally, program, random, tries):
    heads = [mutate(random, GOOD[number % len(GOOD)]) for number in range(tries)]
    # What asks for a password takes long on purpose.
    quick = [path for path in RECORDS if path not in ("api_login.php", "api_registro.php")]
    bodies = [(path, mutate(random, json.dumps(RECORDS[path], ensure_ascii=False).encode()))
              for path in (quick * tries)[:tries]]
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        for data, reply in zip(heads, pool.map(lambda data: program.exchange(data, whole=False), heads)):
            tally.note("HTTP with damage", reply.closed() or (reply.sound() and reply.status < 500),
                       f"{data!r}: {reply}")
        for (path, body), reply in zip(bodies, pool.map(lambda pair: program.exchange(post_bytes(*pair)), bodies)):
            right = (200, 400) if is_json(body) else (400,)
            tally.note("JSON with damage", reply.status in right and reply.sound(),
                       f"{path} {body!r}: {reply}")


def check_stalled(tally, program, count):
    """Connections that stay open without finishing what they began keep others waiting only for a while."""
    stalled = [socket.create_connection(("127.0.0.1", program.port), PATIENCE) for _ in range(count)]
    for number, connection in enumerate(stalled):
        connection.sendall(GOOD[1][:number * 7 % (len(GOOD[1]) - 1)])
    reply = program.get("api_paquetes.php?user_id=2")
    tally.note("behind stalled connections", reply.good(), repr(reply))
    for connection in stalled:
        connection.close()


def check(tally, program, random, long):
    check_fixed(tally, program)
    check_records(tally, program)
    check_damage(tally, program, random, 20_000 if long else 800)
    check_stalled(tally, program, 50 if long else 8)
    tally.note("still there afterwards", program.alive() and program.get("api_paquetes.php?user_id=1").good())
    tally.note("nothing to complain about", program.errors() == "", program.errors())
