"""What a server, or what stands between it and the client, can do wrong, and what has to come of it."""

import gzip

from server import MEGABYTE

# What the completion gets: the record that the reply's body holds, nothing, or one of the two, where the platform decides.
RECORD, ABSENT, EITHER = "record", "absent", "either"


class Fault:
    """`play(connection, body)` is what the server does to a call whose good reply has this body."""

    def __init__(self, name, gets, play, when="request", posts=(1,), padding=0, row=None, body=None, refused=False,
                 forgettable=False):
        self.name, self.gets, self.play, self.when = name, gets, play, when
        # How many POSTs of the call the server may see.
        self.posts = posts
        # Letters behind the request's text; a server reads a large one in pieces.
        self.padding = padding
        # Where many stand together in the table.
        self.row = row or name
        # The good reply's body, where it is not another one for each try.
        self.body = body
        # Nobody listens at all.
        self.refused = refused
        # The platform may note a GET to be sent again while it still writes it, and then forget it (Qt 6.4, where the first
        # write fails): only the limit on silence ends that one.
        self.forgettable = forgettable


def head(status="200 OK", *lines):
    return "\r\n".join([f"HTTP/1.1 {status}", *lines, "\r\n"]).encode()


def whole(body, status="200 OK", *lines):
    """The whole of a good reply that announces its length."""
    return head(status, *lines, f"Content-Length: {len(body)}") + body


def chunked(body, size):
    pieces = (body[at:at + size] for at in range(0, len(body), size))
    return b"".join(b"%x\r\n%b\r\n" % (len(piece), piece) for piece in pieces) + b"0\r\n\r\n"


CHUNKED = head("200 OK", "Transfer-Encoding: chunked")
GZIP = "Content-Encoding: gzip"


def closing(name, gets, reply, **more):
    """The server sends bytes made from the good body, and closes."""
    return Fault(name, gets, lambda c, body: (c.send(reply(body)), c.close()), **more)


def open_(name, gets, reply):
    """The same, leaving the connection open: the client has to know the end by itself."""
    return Fault(name, gets, lambda c, body: c.send(reply(body)))


def connections():
    upload = {"when": "head", "padding": 20 * MEGABYTE}
    return [
        Fault("connection refused", ABSENT, None, posts=(0,), refused=True),
        Fault("closed before anything is read", ABSENT, lambda c, _: c.close(), "door", posts=(0,)),
        Fault("reset before anything is read", ABSENT, lambda c, _: c.reset(), "door", posts=(0,), forgettable=True),
        Fault("closed at once by a server that still reads", ABSENT, lambda c, _: c.half(), "door", posts=(0, 1)),
        Fault("closed in the middle of the request's head", ABSENT, lambda c, _: (c.take(60), c.close()), "door"),
        Fault("reset in the middle of the request's head", ABSENT, lambda c, _: (c.take(60), c.reset()), "door"),
        Fault("closed without an answer", ABSENT, lambda c, _: c.close()),
        Fault("reset without an answer", ABSENT, lambda c, _: c.reset()),
        Fault("closed in the middle of an upload", ABSENT, lambda c, _: (c.take(MEGABYTE), c.close()), **upload),
        Fault("reset in the middle of an upload", ABSENT, lambda c, _: (c.take(MEGABYTE), c.reset()), **upload),
        Fault("answered in the middle of an upload", RECORD, lambda c, body: c.send(whole(body, "413 Large")), **upload),
        Fault("a byte at a time", RECORD, lambda c, body: c.trickle(whole(body))),
        open_("another reply behind the reply", RECORD, lambda body: whole(body) + whole(b'{"status":"second"}')),
        Fault("reset after the whole reply was read", RECORD, lambda c, body: (c.send(whole(body)), c.take(1), c.reset())),
    ]


def lengths():
    def announced(*values):
        """Content-Length as a text, or as a number of bytes more than there are."""
        return lambda body: head("200 OK", *("Content-Length: " + (
            value if isinstance(value, str) else str(len(body) + value)) for value in values)) + body

    return [
        open_("length one byte short", ABSENT, announced(-1)),
        open_("length 0 before a body", ABSENT, announced("0")),
        closing("length too long, then closed", RECORD, announced(10)),
        closing("length negative", RECORD, announced("-5")),
        closing("length not a number", RECORD, announced("many")),
        closing("length beyond 64 bits", RECORD, announced("99999999999999999999999")),
        closing("length of many gigabytes", ABSENT, announced("99999999999")),
        closing("no length", RECORD, announced()),
        closing("two lengths, the first too long", RECORD, announced(9, 0)),
        closing("length and chunks", RECORD, lambda body: head(
            "200 OK", "Content-Length: 3", "Transfer-Encoding: chunked") + chunked(body, 9)),
        closing("length of a body in HTTP/1.0", RECORD, lambda body: b"HTTP/1.0 200 OK\r\n\r\n" + body),
    ]


def chunks():
    def chunk(size="%x", after=b"\r\n0\r\n\r\n"):
        return lambda body: CHUNKED + size.replace("%x", f"{len(body):x}").encode() + b"\r\n" + body + after

    return [
        open_("good chunks", RECORD, lambda body: CHUNKED + chunked(body, 7)),
        open_("chunks with a trailer", RECORD, chunk(after=b"\r\n0\r\nX-Trailer: yes\r\n\r\n")),
        closing("chunk size not a number", ABSENT, chunk("zz")),
        closing("chunk size negative", ABSENT, chunk("-5")),
        closing("chunk size beyond 64 bits", ABSENT, chunk("fffffffffffffffffffff")),
        closing("chunk larger than what comes", RECORD, chunk("ffff", b"")),
        closing("chunk smaller than what comes", ABSENT, chunk("5")),
        closing("chunk without a line end", RECORD, chunk(after=b"")),
        closing("no last chunk", RECORD, chunk(after=b"\r\n")),
        closing("unknown transfer coding", RECORD, lambda body: head("200 OK", "Transfer-Encoding: strange") + body),
    ]


def compressed():
    def packed(change=bytes, coding=GZIP):
        return lambda body: whole(change(gzip.compress(body)), "200 OK", coding)

    def flipped(at):
        def change(data):
            data = bytearray(data)
            data[at] ^= 0xFF
            return bytes(data)
        return packed(change)

    def bomb(megabytes):
        return lambda c, _: (c.send(head("200 OK", GZIP)), c.bomb(b'{"status":"', megabytes), c.close())

    return [
        open_("good gzip", RECORD, packed()),
        closing("gzip that is none", ABSENT, lambda body: whole(body, "200 OK", GZIP)),
        closing("gzip damaged in the middle", ABSENT, flipped(30)),
        closing("gzip with a wrong checksum", ABSENT, flipped(-8)),
        closing("gzip cut in half", ABSENT, packed(lambda data: data[:len(data) // 2])),
        closing("gzip said to be deflate", ABSENT, packed(lambda data: data[3:], "Content-Encoding: deflate")),
        closing("unknown content coding", RECORD, lambda body: whole(body, "200 OK", "Content-Encoding: strange")),
        Fault("gzip bomb of 300 MB", ABSENT, bomb(300)),
        Fault("63 MB in gzip that are no record", ABSENT, bomb(63)),
    ]


def sizes():
    def flooding(name, start, piece, times=-1):
        return Fault(name, ABSENT, lambda c, _: (c.send(start), c.flood(piece, times), c.close()))

    block = b"b" * MEGABYTE
    chunk = chunked(block, MEGABYTE).removesuffix(b"0\r\n\r\n")
    return [
        flooding("100 MB, announced", head("200 OK", "Content-Length: 104857600"), block, 100),
        flooding("100 MB, to the end of the connection", head(), block, 100),
        flooding("100 MB in chunks", CHUNKED, chunk, 100),
        flooding("60 MB that are no record", head("200 OK", "Content-Length: 62914560"), block, 60),
        flooding("endless body", head(), block),
        flooding("endless chunks", CHUNKED, chunk),
        flooding("endless trailer", CHUNKED + b"0\r\n", b"X-More: x\r\n"),
    ]


def heads():
    def only(name, reply):
        return closing(name, ABSENT, lambda _: reply)

    def header(name, line):
        return closing(name, RECORD, lambda body: whole(body, "200 OK", line))

    def before(name, start, gets=RECORD):
        return closing(name, gets, lambda body: start + whole(body))

    return [
        only("garbage", b"\x16\x03\x01 what is this\r\n\r\nnot HTTP\r\n"),
        only("empty lines", b"\r\n\r\n\r\n"),
        only("100 Continue and no reply", head("100 Continue")),
        only("101 Switching Protocols", head("101 Switching Protocols", "Upgrade: h2c")),
        closing("a body without a head", ABSENT, bytes),
        closing("HTTP/9.9", EITHER, lambda body: whole(body).replace(b"HTTP/1.1", b"HTTP/9.9")),
        header("a header of 100 kB", "X-Long: " + "x" * 100_000),
        header("a thousand headers", "\r\n".join(["X-More: x"] * 1000)),
        header("a header without a colon", "no colon here"),
        header("a folded header", "X-Folded: a\r\n b"),
        header("headers that ask for another protocol", 'Upgrade: h2c\r\nConnection: Upgrade\r\nAlt-Svc: h2=":1"'),
        header("a header that refreshes", "Refresh: 0; url=/api_login.php"),
        before("100 Continue before the reply", head("100 Continue")),
        before("103 Early Hints before the reply", head("103 Early Hints", "Link: </a>"), EITHER),
    ]


def answers(status, where, *lines, gets=RECORD):
    """A reply of a status with a good body, and one without."""
    def answer(which, count, expected):
        return closing(f"{status} {where}{which}", expected, lambda body: whole(body * count, f"{status} Reason", *lines),
                       row=f"{str(status)[0]}xx {where}{which}")
    return [answer("with a body", 1, gets), answer("without a body", 0, ABSENT)]


def statuses():
    every = [*range(200, 204), 205, 206, 226, 400, *range(402, 407), *range(408, 419), 421, 422, 425, 426, 428, 429, 431,
             451, *range(500, 506), 511, 599, 600, 999]
    found = [fault for status in every for fault in answers(status, "", "Retry-After: 0")]
    # These two have no body by their definition, whatever follows.
    found += [fault for status in (204, 304) for fault in answers(status, "", gets=ABSENT)]
    for scheme in ('Basic realm="a"', 'Digest realm="a", nonce="b", qop="auth"', "NTLM", "Negotiate", "Bearer"):
        found += answers(401, "", f"WWW-Authenticate: {scheme}") + answers(407, "", f"Proxy-Authenticate: {scheme}")
    return found


def redirects(port, elsewhere):
    targets = {
        "to the same address": "/api_login.php", "to another path": f"http://127.0.0.1:{port}/other",
        "to another host": f"http://127.0.0.1:{elsewhere}/api_login.php",
        "to another host, encrypted": f"https://127.0.0.1:{elsewhere}/", "to a file": "file:///etc/passwd",
        "to data": "data:application/json,{}", "to nowhere": "::::", "without a place": None,
    }
    return [fault for status in (300, 301, 302, 303, 305, 307, 308, 399) for where, target in targets.items()
            for fault in answers(status, where + ", ", *([f"Location: {target}"] if target else []))]


def endings(body, step):
    """A good reply that ends after each number of its bytes, every `step` bytes."""
    chunks_ = CHUNKED + chunked(body, 16)
    packed = whole(gzip.compress(body), "200 OK", GZIP)
    # Between the digits of a chunk's size and the end of its line the platform does not notice that a connection has
    # ended; the silences have that one.
    unnoticed = range(len(CHUNKED) + 2, chunks_.index(b"\n", len(CHUNKED)) + 1)
    # How many bytes hold the whole body; behind the last letter of a compressed one stand the end of its block and the sum.
    for kind, reply, full in (("", whole(body), len(whole(body))),
                              (" of a reply without a length", head() + body, len(head() + body)),
                              (" of a reply in chunks", chunks_, chunks_.rindex(b"}") + 1),
                              (" of a compressed reply", packed, len(packed) - 9)):
        for n in range(0, len(reply) + 1, step):
            if reply == chunks_ and n in unnoticed:
                continue
            # Behind the body's last byte the platform may still miss the reply's, or find a reset instead.
            closed = ABSENT if n < full else RECORD if n == full == len(reply) else EITHER
            for how, gets in (("close", closed), ("reset", ABSENT if n < full else EITHER)):
                yield Fault(f"{how} after {n} bytes{kind}", gets,
                            lambda c, _, sent=reply[:n], how=how: (c.send(sent), getattr(c, how)()),
                            row=f"{how} after n bytes{kind}", body=body)


def silences():
    """Servers that fall silent at some point: only the limit on silence ends these."""
    def after(name, sent=b""):
        return Fault("silent " + name, ABSENT, lambda c, _: (c.send(sent), c.silent()))

    announced = head("200 OK", "Content-Length: 100")
    return [
        Fault("silent from the start, reading nothing", ABSENT, lambda c, _: c.silent(), "door", posts=(0,)),
        Fault("silent after the request's head", ABSENT, lambda c, _: c.silent(), "head"),
        Fault("silent in the middle of an upload", ABSENT, lambda c, _: (c.take(MEGABYTE), c.silent()), "head",
              padding=20 * MEGABYTE),
        after("without an answer"),
        after("in the status line", b"HTTP/1.1 2"),
        after("in the head", b"HTTP/1.1 200 OK\r\nContent-Le"),
        after("after the head", announced),
        after("in the body", announced + b'{"status":'),
        after("in a chunk", CHUNKED + b"5\r\n{}"),
        after("before the last chunk", CHUNKED + b"2\r\n{}\r\n"),
        after("after a whole record that lacks a byte of its length", head("200 OK", "Content-Length: 3") + b"{}"),
        after("after a record without a length", head() + b"{}"),
        after("in compressed bytes", head("200 OK", GZIP) + b"\x1f\x8b"),
        after("after 100 Continue", head("100 Continue")),
        # The platform does not notice such an end.
        closing("closed in a chunk's size", EITHER, lambda body: CHUNKED + body),
    ]


def endless_heads(size=None):
    """Bytes that are no body and no progress, which the limit on silence ends too: so many, then silence, or without end. As
    long as they come the platform cannot let go of the connection, and its thread reads on."""
    def flooding(name, start, piece):
        times = -1 if size is None else size // len(piece)
        return Fault(name, ABSENT, lambda c, _: (c.send(start), c.flood(piece, times), c.silent()))

    return [
        flooding("endless status line", b"HTTP/1.1 200 ", b"OK OK OK "),
        flooding("endless header", b"HTTP/1.1 200 OK\r\nX-Long: ", b"xxxxxxxx"),
        flooding("endless headers", b"HTTP/1.1 200 OK\r\n", b"X-More: xxxxxxxxxxxxxxxxxxxxx\r\n"),
        flooding("endless empty lines", b"", b"\r\n"),
        flooding("endless 100 Continue", b"", head("100 Continue")),
        flooding("endless chunk size", CHUNKED, b"00000000"),
        flooding("endless chunk extension", CHUNKED + b"5;x=", b"xxxxxxxx"),
    ]
