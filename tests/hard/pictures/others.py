"""Pictures in GIF and BMP that are more than they seem, and what is no picture whatever its name says."""

import gzip
import struct

from bomb import Bomb


def gif(width, height, frame, frames=1):
    """A GIF of one colour whose frames' codes end at once (https://www.w3.org/Graphics/GIF/spec-gif89a.txt)."""
    head = b"GIF89a" + struct.pack("<HHBBB", width, height, 0x80, 0, 0) + bytes(6)
    # The codes: clear, colour 0, end.
    each = b"\x2c" + struct.pack("<HHHHB", 0, 0, *frame, 0) + b"\x02\x02\x44\x01\x00"
    return head + each * frames + b"\x3b"


def bmp(width, height, bits=8, compression=1, data=b"\0\1" * 64):
    palette = bytes(1024) if bits == 8 else b""
    offset = 54 + len(palette)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, compression, len(data), 0, 0, 0, 0)
    return b"BM" + struct.pack("<IHHI", offset + len(data), 0, 0, offset) + info + palette + data


def svg(body=b""):
    return b'<svg xmlns="http://www.w3.org/2000/svg" width="40" height="40">' + body + b"</svg>"


def svg_of_entities():
    grown = b"".join(b'<!ENTITY %c "%s">' % (i + 1, b"&%c;" % i * 10) for i in range(97, 106))
    return b'<!DOCTYPE svg [<!ENTITY a "aaaaaaaaaa">' + grown + b"]>" + svg(b"<text>&j;</text>")


def compressed_svg():
    return gzip.compress(svg(b" " * (100 << 20)))


def bombs():
    yield Bomb("gif of 65,535 x 65,535, one small frame", False, gif, 65535, 65535, (1, 1), quick=True)
    yield Bomb("gif of 5,700 x 5,700, one small frame", None, gif, 5700, 5700, (1, 1))
    yield Bomb("gif 8,192 x 8,192", None, gif, 8192, 8192, (8192, 8192))
    yield Bomb("gif 5,700 x 5,700", None, gif, 5700, 5700, (5700, 5700))
    yield Bomb("gif 4,000 x 4,000", None, gif, 4000, 4000, (4000, 4000))
    yield Bomb("gif 16,384 x 1", None, gif, 16384, 1, (16384, 1), quick=True)
    yield Bomb("gif of 500,000 frames", None, gif, 16, 16, (16, 16), 500000)
    yield Bomb("bmp 16,384 x 16,384", False, bmp, 16384, 16384, quick=True)
    yield Bomb("bmp 8,192 x 8,192", None, bmp, 8192, 8192)
    yield Bomb("bmp 8,192 x 8,192 in 32 bits", None, bmp, 8192, 8192, 32, 0, bytes(1000))
    yield Bomb("bmp 16,384 x 1", None, bmp, 16384, 1, quick=True)
    yield Bomb("bmp 40 x -2^31", False, bmp, 40, -2**31)
    yield Bomb("svg", False, svg, quick=True)
    yield Bomb("svg of entities", False, svg_of_entities)
    yield Bomb("compressed svg", False, compressed_svg)
    yield Bomb("text", False, bytes, b"not a picture\n" * 1000, quick=True)
    yield Bomb("one byte", False, bytes, b"\xff")
    yield Bomb("zeros", False, bytes, 1 << 20)
    for name, start in (("tiff", b"II*\0\x08\0\0\0"), ("icon", b"\0\0\1\0\1\0\0\0"), ("mng", b"\x8aMNG\r\n\x1a\n"),
                        ("xpm", b"/* XPM */\n"), ("pbm", b"P6 60000 60000 255\n"), ("icns", b"icns\0\0\1\0")):
        yield Bomb(name, False, bytes, start + bytes(4000))
