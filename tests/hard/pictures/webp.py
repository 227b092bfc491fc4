"""Pictures in WebP that are more than they seem (https://developers.google.com/speed/webp/docs/riff_container)."""

import struct

from bomb import Bomb


def chunk(kind, data):
    return kind + struct.pack("<I", len(data)) + data + b"\0" * (len(data) % 2)


def lossless(width, height):
    """One colour: every code has one symbol, so that no pixel takes a bit."""
    bits = [(0x2F, 8), (width - 1, 14), (height - 1, 14), (0, 1), (0, 3), (0, 1), (0, 1), (0, 1)]
    # Five codes of one symbol, which has one bit: the symbol 0.
    bits += [(1, 1), (0, 1), (0, 1), (0, 1)] * 5
    value = position = 0
    for number, width_in_bits in bits:
        value |= number << position
        position += width_in_bits
    # Later Qt takes nothing of less than 40 bytes for a picture.
    return chunk(b"VP8L", value.to_bytes(-(-position // 8), "little") + b"\0" * 16)


def size(width, height):
    return (width - 1).to_bytes(3, "little") + (height - 1).to_bytes(3, "little")


def riff(*chunks):
    return chunk(b"RIFF", b"WEBP" + b"".join(chunks))


def frame(width, height):
    head = bytes(6) + size(width, height) + (10).to_bytes(3, "little") + b"\0"
    return chunk(b"ANMF", head + lossless(width, height))


def extended(flags, width, height, *chunks):
    return riff(chunk(b"VP8X", bytes([flags, 0, 0, 0]) + size(width, height)), *chunks)


def moving(width, height, *frames):
    return extended(0x12, width, height, chunk(b"ANIM", bytes(6)), *frames)


def still(width, height):
    return riff(lossless(width, height))


def many_frames(count):
    return moving(1, 1, *[frame(1, 1)] * count)


def with_profile(size):
    return extended(0x20, 40, 40, chunk(b"ICCP", bytes(size)), lossless(40, 40))


def with_notes(size):
    return extended(0x0C, 40, 40, lossless(40, 40), chunk(b"EXIF", bytes(size)), chunk(b"XMP ", bytes(size)))


def with_chunks(count):
    return extended(0, 40, 40, chunk(b"TEST", b"") * count, lossless(40, 40))


def bombs(lossy):
    """`lossy` makes a picture with loss of a size."""
    yield Bomb("webp 16,383 x 16,383", False, still, 16383, 16383, quick=True)
    yield Bomb("webp 8,192 x 8,192", None, still, 8192, 8192, quick=True)
    yield Bomb("webp 6,000 x 5,000", None, still, 6000, 5000)
    yield Bomb("webp 5,000 x 4,000", None, still, 5000, 4000)
    yield Bomb("webp 4,000 x 3,000", True, still, 4000, 3000, quick=True)
    for width, height in ((16383, 1), (1, 16383), (16383, 9)):
        yield Bomb(f"webp {width} x {height}", True, still, width, height, quick=True)
    yield Bomb("webp 8,000 x 4,000, with loss", True, lossy, 8000, 4000)
    yield Bomb("webp 8,000 x 6,000, with loss", None, lossy, 8000, 6000)
    yield Bomb("webp of 300,000 frames", None, many_frames, 300000)
    yield Bomb("webp of 1,000,000 frames", None, many_frames, 1000000)
    yield Bomb("webp of 16,383 x 16,383, one small frame", False, moving, 16383, 16383, frame(1, 1))
    yield Bomb("webp of 5,000 x 4,000, moving", None, moving, 5000, 4000, frame(5000, 4000), frame(5000, 4000))
    yield Bomb("webp of 8,000 x 7,000, moving", None, moving, 8000, 7000, frame(8000, 7000))
    yield Bomb("webp with 40 MB of profile", None, with_profile, 40 << 20)
    yield Bomb("webp with 40 MB of notes", None, with_notes, 20 << 20)
    yield Bomb("webp of 1,000,000 unknown chunks", None, with_chunks, 1000000)
