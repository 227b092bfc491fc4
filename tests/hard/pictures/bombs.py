"""Pictures that are more than they seem, and what is no picture whatever its name says.

Those in JPEG and WebP with loss are made from small good ones by changing their sizes or repeating their parts. PNG:
https://www.w3.org/TR/png/, WebP: https://developers.google.com/speed/webp/docs/riff_container, JPEG: ITU-T T.81, GIF:
https://www.w3.org/Graphics/GIF/spec-gif89a.txt.
"""

import collections
import functools
import struct
import zlib

# Its name, whether it has to show (None: as it may), and what makes its bytes.
Bomb = collections.namedtuple("Bomb", "name shows make")
LARGE = 16384


def chunk(kind, data=b""):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


@functools.lru_cache(4)
def deflated_zeros(count):
    packer = zlib.compressobj(9)
    parts = [packer.compress(bytes(1 << 20)) for _ in range(count >> 20)]
    return b"".join(parts) + packer.compress(bytes(count & 0xFFFFF)) + packer.flush()


def png(width, height, colour=6, interlaced=0, before=b"", data=None, extra=0):
    """Black or clear, grey (0), in colour (2) or that and clear (6); `before` stands before the picture's data, in which
    `extra` bytes are too many."""
    row = 1 + width * {0: 1, 2: 3, 6: 4}[colour]
    if data is None:
        # The passes of an interlaced picture have more rows, each with a byte for its filter.
        data = deflated_zeros(row * height + interlaced * 2 * (height + 8) + extra)
    header = struct.pack(">IIBBBBB", width, height, 8, colour, 0, 0, interlaced)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + before + chunk(b"IDAT", data) + chunk(b"IEND")


def small_png(*kinds, count=1):
    """With further chunks."""
    return png(40, 40, before=b"".join(chunk(*kind) for kind in kinds) * count)


def torn_png():
    """Its data in chunks of one byte, each with a chunk after it that does not show."""
    whole = deflated_zeros(41 * 41 * 4)
    pieces = b"".join(chunk(b"IDAT", whole[i:i + 1]) + chunk(b"teSt") for i in range(len(whole) - 1))
    return png(40, 40, before=pieces + (chunk(b"IDAT") + chunk(b"teSt")) * 200000, data=whole[-1:])


def pngs():
    for width, height in ((LARGE, 1), (1, LARGE), (LARGE, 7), (8000, 4000)):
        yield Bomb(f"png {width} x {height}", True, lambda width=width, height=height: png(width, height))
    yield Bomb("png 4,000 x 3,000 interlaced", True, lambda: png(4000, 3000, 2, interlaced=1))
    yield Bomb("png of compressed texts", True,
               lambda: small_png((b"zTXt", b"k\0\0" + deflated_zeros(8 << 20)), count=180))
    yield Bomb("png with a profile of 512 MB", True, lambda: small_png((b"iCCP", b"p\0\0" + deflated_zeros(1 << 29))))
    yield Bomb("png torn in 200,000 pieces", None, torn_png)
    yield Bomb("png with 512 MB after its last row", None, lambda: png(40, 40, extra=1 << 29))
    yield Bomb("png in the largest file", True, lambda: png(40, 40).ljust(64 << 20, b"\0"))


def segment(marker, data=b""):
    return struct.pack(">BBH", 0xFF, marker, len(data) + 2) + data


def exif(directory):
    return segment(0xE1, b"Exif\0\0MM\0*" + directory)


def jpeg(good, size=None, segments=b""):
    """A good one with another size, and with segments after its first two bytes."""
    if size:
        frame = max(good.find(b"\xff\xc0"), good.find(b"\xff\xc2"))
        good = good[:frame + 5] + struct.pack(">HH", *reversed(size)) + good[frame + 9:]
    return good[:2] + segments + good[2:]


def jpegs(baseline, progressive):
    def add(name, shows, *arguments, **more):
        return Bomb("jpeg " + name, shows, lambda: jpeg(*arguments, **more))

    for size in ((LARGE, LARGE), (LARGE, 1), (1, LARGE), (300, LARGE)):
        yield add(f"{size[0]} x {size[1]}", None, baseline, size)
    # Of coefficients just few enough.
    yield add("8,000 x 6,000, progressive", True, progressive, (8000, 6000))
    yield add("of 1,000,000 comments", True, baseline, segments=segment(0xFE) * 1000000)
    yield add("with 40 MB of notes", True, baseline, segments=exif(b"\0" * 65000) * 620)
    yield add("with notes in a circle", True, baseline, segments=exif(struct.pack(">IHI", 8, 0, 8)))


def riff(kind, data):
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
    return riff(b"VP8L", value.to_bytes(-(-position // 8), "little") + b"\0" * 16)


def webp(width, height, *chunks, flags=None):
    """One chunk, or with flags an extended picture of more."""
    sides = (width - 1).to_bytes(3, "little") + (height - 1).to_bytes(3, "little")
    first = b"" if flags is None else riff(b"VP8X", bytes([flags, 0, 0, 0]) + sides)
    return riff(b"RIFF", b"WEBP" + first + b"".join(chunks or [lossless(width, height)]))


def moving_webp(width, height, frame, count):
    head = bytes(6) + (frame - 1).to_bytes(3, "little") * 2 + (10).to_bytes(3, "little") + b"\0"
    each = riff(b"ANMF", head + lossless(frame, frame))
    return webp(width, height, riff(b"ANIM", bytes(6)), *[each] * count, flags=0x12)


def webps():
    yield Bomb("webp 16,383 x 16,383", False, lambda: webp(16383, 16383))
    yield Bomb("webp 8,192 x 8,192", None, lambda: webp(8192, 8192))
    for width, height in ((4000, 3000), (16383, 1), (1, 16383), (16383, 9)):
        yield Bomb(f"webp {width} x {height}", True, lambda width=width, height=height: webp(width, height))
    yield Bomb("webp of 100,000 frames", None, lambda: moving_webp(1, 1, 1, 100000))
    yield Bomb("webp of 16,383 x 16,383, one small frame", False, lambda: moving_webp(16383, 16383, 1, 1))
    yield Bomb("webp with 40 MB of a profile", None,
               lambda: webp(40, 40, riff(b"ICCP", bytes(40 << 20)), lossless(40, 40), flags=0x20))


def gif(side, frames):
    """Of one colour, in frames of one pixel, whose codes (clear, colour 0, end) end at once."""
    head = b"GIF89a" + struct.pack("<HHBBB", side, side, 0x80, 0, 0) + bytes(6)
    return head + (b"\x2c" + struct.pack("<HHHHB", 0, 0, 1, 1, 0) + b"\x02\x02\x44\x01\x00") * frames + b"\x3b"


def bmp(width, height):
    """In 8 bits, with runs."""
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 8, 1, 128, 0, 0, 0, 0)
    return b"BM" + struct.pack("<IHHI", 1206, 0, 0, 1078) + info + bytes(1024) + b"\0\1" * 64


def others():
    svg = b'<svg xmlns="http://www.w3.org/2000/svg" width="40" height="40"></svg>'
    for name, shows, data in (
            ("gif of 4,600 x 4,600, 100,000 small frames", True, gif(4600, 100000)),
            ("bmp 16,384 x 16,384", False, bmp(LARGE, LARGE)),
            ("bmp 40 x -2^31", False, bmp(40, -2**31)),
            ("no picture: svg", False, svg)):
        yield Bomb(name, shows, lambda data=data: data)


def all_bombs(folder):
    """From the good pictures in a folder."""
    yield from pngs()
    yield from jpegs(*((folder / f"jpeg-{name}").read_bytes() for name in ("baseline", "progressive")))
    yield from webps()
    yield from others()
    for name in add_good(folder):
        yield Bomb(f"good picture: {name}", True, (folder / name).read_bytes)


def add_good(folder):
    """What Qt does not write: an interlaced PNG, a moving WebP, a JPEG on its side. Returns their names."""
    lying = exif(b"\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0")
    good = {"png-interlaced": png(29, 17, 0, interlaced=1), "webp-moving": moving_webp(16, 16, 16, 2),
            "jpeg-lying": jpeg((folder / "jpeg-baseline").read_bytes(), segments=lying)}
    for name, data in good.items():
        (folder / name).write_bytes(data)
    return good
