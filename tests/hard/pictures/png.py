"""Pictures in PNG that are more than they seem (https://www.w3.org/TR/png/)."""

import functools
import random
import struct
import zlib

from bomb import Bomb

GREY, RGB, INDEXED, RGBA = 0, 2, 3, 6
CHANNELS = {GREY: 1, RGB: 3, INDEXED: 1, RGBA: 4}


def chunk(kind, data=b""):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


@functools.lru_cache(8)
def deflated_zeros(count, tail=b""):
    packer = zlib.compressobj(9)
    block = bytes(1 << 20)
    parts = [packer.compress(block) for _ in range(count >> 20)]
    return b"".join(parts) + packer.compress(bytes(count & 0xFFFFF) + tail) + packer.flush()


def png(width, height, colour=RGBA, depth=8, interlaced=False, before=b"", data=None, extra=0):
    """All black or clear; `before` stands before the picture's data, in which `extra` bytes are too many."""
    row = 1 + (width * CHANNELS[colour] * depth + 7) // 8
    if data is None:
        # The passes of an interlaced picture have more rows, each with a byte for its filter.
        data = deflated_zeros(row * height + (2 * (height + 8) if interlaced else 0) + extra)
    palette = chunk(b"PLTE", bytes(range(6))) if colour == INDEXED else b""
    header = struct.pack(">IIBBBBB", width, height, depth, colour, 0, 0, interlaced)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + palette + before + chunk(b"IDAT", data) + chunk(b"IEND")


def with_texts(count=180, each=8 << 20):
    packed = deflated_zeros(each)
    return png(40, 40, before=b"".join(chunk(b"zTXt", b"k%d\0\0" % i + packed) for i in range(count)))


def with_international_texts(count=120, each=8 << 20):
    packed = deflated_zeros(each)
    return png(40, 40, before=b"".join(chunk(b"iTXt", b"k%d\0\1\0\0\0" % i + packed) for i in range(count)))


def with_profile(size):
    return png(40, 40, before=chunk(b"iCCP", b"p\0\0" + deflated_zeros(size)))


def with_chunks(kind, count):
    return png(40, 40, before=chunk(kind) * count)


def torn(count):
    """Its data in chunks of one byte, each with a chunk after it that does not show."""
    whole = deflated_zeros(41 * 41 * 4)
    pieces = b"".join(chunk(b"IDAT", whole[i:i + 1]) + chunk(b"teSt") for i in range(len(whole) - 1))
    return png(40, 40, before=pieces + (chunk(b"IDAT") + chunk(b"teSt")) * count, data=whole[-1:])


def moving(frames):
    """Each frame has its control chunk."""
    def frame(i):
        control = struct.pack(">IIIIIHHBB", 2 * i, 1, 1, 0, 0, 1, 100, 0, 0)
        return chunk(b"fcTL", control) + chunk(b"fdAT", struct.pack(">I", 2 * i + 1) + data)

    data = zlib.compress(bytes(5))
    return png(40, 40, before=chunk(b"acTL", struct.pack(">II", frames, 0)) + b"".join(map(frame, range(frames))))


def large(width, height):
    """Noise, which does not shrink: a file nearly as large as its picture."""
    rows = random.Random(1).randbytes((1 + 3 * width) * 64)
    row = 1 + 3 * width
    noise = b"".join(b"\0" + rows[i * row + 1:(i + 1) * row] for i in range(64))
    packer = zlib.compressobj(0)
    data = b"".join(packer.compress(noise) for _ in range(height // 64)) + packer.flush()
    return png(width, height // 64 * 64, RGB, data=data)


def bombs():
    yield Bomb("png 30,000 x 30,000", False, png, 30000, 30000, data=bytes(1000), quick=True)
    yield Bomb("png 2^31 - 1 squared", False, png, 2**31 - 1, 2**31 - 1, data=bytes(1000), quick=True)
    yield Bomb("png 1 x 1,000,000", False, png, 1, 1000000)
    for width, height in ((16384, 1), (1, 16384), (16384, 7)):
        yield Bomb(f"png {width} x {height}", True, png, width, height, quick=True)
    yield Bomb("png 16,384 x 4,096 rgba", None, png, 16384, 4096)
    yield Bomb("png 8,192 x 8,192 rgb", None, png, 8192, 8192, RGB)
    yield Bomb("png 8,000 x 4,000 rgba", True, png, 8000, 4000, quick=True)
    yield Bomb("png 16,384 x 4,096 rgba, 16 bits", None, png, 16384, 4096, RGBA, 16)
    yield Bomb("png 8,192 x 4,096 rgba, 16 bits", None, png, 8192, 4096, RGBA, 16)
    yield Bomb("png 5,000 x 3,200 rgba, 16 bits", None, png, 5000, 3200, RGBA, 16)
    yield Bomb("png 8,192 x 8,192 grey", None, png, 8192, 8192, GREY)
    yield Bomb("png 8,000 x 4,000 grey", None, png, 8000, 4000, GREY)
    yield Bomb("png 8,192 x 8,192 grey, 16 bits", None, png, 8192, 8192, GREY, 16)
    yield Bomb("png 8,000 x 4,000 grey, 16 bits", None, png, 8000, 4000, GREY, 16)
    yield Bomb("png 16,384 x 4,096 indexed", None, png, 16384, 4096, INDEXED)
    yield Bomb("png 16,384 x 16,384 of one bit", None, png, 16384, 16384, GREY, 1)
    yield Bomb("png 8,000 x 6,000 of one bit", None, png, 8000, 6000, GREY, 1)
    yield Bomb("png 8,000 x 6,000 interlaced", None, png, 8000, 6000, RGB, interlaced=True)
    yield Bomb("png 4,000 x 3,000 interlaced", True, png, 4000, 3000, RGB, interlaced=True)
    yield Bomb("png 4,500 x 4,480 of 57 MB", None, large, 4500, 4480)
    yield Bomb("png 3,600 x 3,600 of 37 MB", None, large, 3600, 3600)
    yield Bomb("png of compressed texts", True, with_texts, quick=True)
    yield Bomb("png of international texts", True, with_international_texts)
    yield Bomb("png with a profile of 1 GB", True, with_profile, 1 << 30)
    yield Bomb("png of 200,000 frames", True, moving, 200000)
    yield Bomb("png of 1,000,000 empty chunks", None, with_chunks, b"IDAT", 1000000)
    yield Bomb("png of 500,000 unknown chunks", True, with_chunks, b"teSt", 500000)
    yield Bomb("png torn in 20 pieces", None, torn, 0, quick=True)
    yield Bomb("png torn in 2,000,000 pieces", None, torn, 2000000)
    yield Bomb("png with 1 GB after its last row", None, png, 40, 40, extra=1 << 30)
    yield Bomb("png with 16 GB after its last row", None, png, 40, 40, extra=1 << 34)
