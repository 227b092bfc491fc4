"""Pictures in JPEG that are more than they seem (ITU-T T.81)."""

import struct

from bomb import Bomb

SEQUENTIAL, PROGRESSIVE = 0xC0, 0xC2


def segment(marker, data=b""):
    return struct.pack(">BBH", 0xFF, marker, len(data) + 2) + data


def tables():
    """All ones to multiply with; codes of one bit: no difference, end of block."""
    quantization = segment(0xDB, b"\0" + b"\1" * 64)
    code = lambda where, symbol: segment(0xC4, bytes([where, 1] + [0] * 15 + [symbol]))
    # A second code for the coefficients would be needed by nothing that is written here.
    return quantization + code(0x00, 0) + code(0x10, 0)


def frame(width, height, kind, sampling):
    parts = b"".join(bytes([i + 1, s, 0]) for i, s in enumerate(sampling))
    return segment(kind, struct.pack(">BHHB", 8, height, width, len(sampling)) + parts)


def scan(components, start=0, end=63, approximation=0):
    parts = b"".join(bytes([c, 0]) for c in components)
    return segment(0xDA, bytes([len(components)]) + parts + bytes([start, end, approximation]))


def blocks(width, height, sampling):
    most_h, most_v = max(s >> 4 for s in sampling), max(s & 15 for s in sampling)
    units = -(-width // (8 * most_h)) * -(-height // (8 * most_v))
    return units * sum((s >> 4) * (s & 15) for s in sampling)


def sequential(width, height, sampling=(0x11,), before=b"", data=None):
    """Grey all over, two bits a block."""
    if data is None:
        data = bytes(blocks(width, height, sampling) // 4 + 16)
    return (b"\xff\xd8" + before + tables() + frame(width, height, SEQUENTIAL, sampling)
            + scan(range(1, len(sampling) + 1)) + data + b"\xff\xd9")


def apart(width, height, sampling=(0x11,) * 3):
    """Each component in a scan of its own."""
    scans = b"".join(scan([i + 1]) + bytes(blocks(width, height, (s,)) // 4 + 16) for i, s in enumerate(sampling))
    return b"\xff\xd8" + tables() + frame(width, height, SEQUENTIAL, sampling) + scans + b"\xff\xd9"


def progressive(width, height, sampling=(0x11,), scans=1):
    """A first scan of one bit a block, then scans of the coefficients in which every block ends at once."""
    first = scan(range(1, len(sampling) + 1), 0, 0) + bytes(blocks(width, height, sampling) // 8 + 16)
    # The table's one code is now a run of 32,767 ends; its 14 more bits are all ones but for the marker's byte.
    count = -(-blocks(width, height, (0x11,)) // 16384)
    bits = "0" + "0" * 14
    packed = int(bits * count + "0" * (-15 * count % 8), 2).to_bytes(-(-15 * count // 8), "big")
    runs = segment(0xC4, bytes([0x10, 1] + [0] * 15 + [0xE0]))
    each = scan([1], 1, 63) + packed
    return (b"\xff\xd8" + tables() + frame(width, height, PROGRESSIVE, sampling) + first + runs + each * (scans - 1)
            + b"\xff\xd9")


def exif(directory):
    return segment(0xE1, b"Exif\0\0MM\0\x2a" + directory)


def with_segments(data, count):
    return sequential(40, 40, before=data * count)


def with_profile():
    parts = (segment(0xE2, b"ICC_PROFILE\0" + bytes([i, 255]) + bytes(65000)) for i in range(1, 256))
    return sequential(40, 40, before=b"".join(parts))


def large(size):
    """A file of this size whose data nobody needs."""
    return sequential(40, 40, data=bytes(100) + b"\xff\0" * (size // 2))


def bombs():
    half = (0x22, 0x11, 0x11)
    yield Bomb("jpeg 65,500 x 65,500", False, sequential, 65500, 65500, data=bytes(1000), quick=True)
    yield Bomb("jpeg 16,384 x 16,384", True, sequential, 16384, 16384, quick=True)
    yield Bomb("jpeg 16,384 x 16,384, three colours", True, sequential, 16384, 16384, (0x11,) * 3)
    yield Bomb("jpeg 16,384 x 16,384, four colours", True, sequential, 16384, 16384, (0x11,) * 4)
    yield Bomb("jpeg 16,384 x 16,384, cut at once", None, sequential, 16384, 16384, half, data=b"")
    for width, height in ((16384, 1), (1, 16384), (16384, 199), (300, 16384)):
        yield Bomb(f"jpeg {width} x {height}", True, sequential, width, height, half, quick=True)
    yield Bomb("jpeg 16,384 x 16,384, a scan a colour", None, apart, 16384, 16384)
    yield Bomb("jpeg 8,000 x 6,000, a scan a colour", None, apart, 8000, 6000)
    yield Bomb("jpeg 16,384 x 16,384, progressive", None, progressive, 16384, 16384, (0x11,) * 3, quick=True)
    yield Bomb("jpeg 8,000 x 6,000, progressive", True, progressive, 8000, 6000, half, 8)
    yield Bomb("jpeg 4,000 x 3,000, progressive", True, progressive, 4000, 3000, half, 10)
    yield Bomb("jpeg of 20,000 scans", None, progressive, 4000, 4000, scans=20000, quick=True)
    yield Bomb("jpeg of 400 scans", None, progressive, 16384, 4000, scans=400)
    yield Bomb("jpeg of 2,000 large scans", None, progressive, 8000, 8000, scans=2000)
    yield Bomb("jpeg of 1,000,000 comments", True, with_segments, segment(0xFE), 1000000, quick=True)
    yield Bomb("jpeg with 40 MB of comments", True, with_segments, segment(0xFE, b"x" * 65000), 620)
    yield Bomb("jpeg with 40 MB of notes", True, with_segments, exif(b"\0" * 65000), 620)
    yield Bomb("jpeg of 1,000,000 notes", True, with_segments, exif(b""), 1000000)
    yield Bomb("jpeg with a profile of 16 MB", True, with_profile)
    yield Bomb("jpeg of 60 MB", True, large, 60 << 20)
    yield Bomb("jpeg of 160,000 tables", None, with_segments, tables(), 160000)
    yield Bomb("jpeg torn by 1,000,000 comments", None, with_segments, segment(0xFE) + segment(0xE9), 1000000)
    yield Bomb("jpeg with notes in a circle", True, with_segments, exif(struct.pack(">IHI", 8, 0, 8)), 1, quick=True)
    yield Bomb("jpeg with notes of 65,535 entries", True, with_segments, exif(struct.pack(">IH", 8, 65535)), 1)
