"""Writes the pixels of a PNG for Artwork: pixels.py BYTE_ORDER IN OUT, with BYTE_ORDER little or big.

The file has four 32-bit numbers: the width, the height, whether there is transparency, and 0. The pixels follow as 0xAARRGGBB.
All numbers are in the byte order of the target. The PNG has 8 bits a channel, with or without alpha, and rows without filters
(https://www.w3.org/TR/png/).
"""

import pathlib
import struct
import sys
import zlib


def chunks(png):
    at = 8
    while at < len(png):
        length, kind = struct.unpack_from(">I4s", png, at)
        yield kind, png[at + 8:at + 8 + length]
        at += 12 + length


def pixels(png, order):
    parts = list(chunks(png))
    width, height, depth, colours, *_, interlaced = struct.unpack(">IIBBBBB", dict(parts)[b"IHDR"])
    channels = {2: 3, 6: 4}.get(colours)
    if depth != 8 or not channels or interlaced:
        raise SystemExit("not a PNG with 8 bits of red, green and blue")
    rows = zlib.decompress(b"".join(data for kind, data in parts if kind == b"IDAT"))
    stride = 1 + channels * width
    if any(rows[::stride]):
        raise SystemExit("a row has a filter")
    source = b"".join(rows[at + 1:at + stride] for at in range(0, len(rows), stride))
    out = bytearray(b"\xFF" * (4 * width * height))
    # Blue first in memory if the target is little endian, alpha first if it is big endian.
    places = (2, 1, 0, 3) if order == "little" else (1, 2, 3, 0)
    for channel in range(channels):
        out[places[channel]::4] = source[channel::channels]
    return struct.pack("<4I" if order == "little" else ">4I", width, height, channels == 4, 0) + out


if __name__ == "__main__":
    byte_order, png_file, pixel_file = sys.argv[1:]
    pathlib.Path(pixel_file).write_bytes(pixels(pathlib.Path(png_file).read_bytes(), byte_order))
