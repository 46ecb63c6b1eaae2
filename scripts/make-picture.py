#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Draws a sunset over hills as a PNG file: make-picture.py FILE [WIDTH HEIGHT]"""

import math
import struct
import sys
import zlib


def scene(x, y):
    """Red, green and blue at a point; x and y run from 0 to 1."""
    for hill, (height, shade) in enumerate([(0.9, 25), (0.78, 45), (0.66, 70)]):
        if y > height + 0.05 * math.sin(9 * x + 2.5 * hill):
            return shade, shade + 10, shade + 30
    if math.hypot(x - 0.62, (y - 0.52) * 0.75) < 0.09:
        return 245, 226, 170
    return 90 + 160 * y, 60 + 110 * y, 140 - 60 * y


def grain(x, y):
    """The noise of a camera, the same in every run: 0 to 7."""
    return zlib.crc32(struct.pack(">II", x, y)) >> 29


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def picture(width, height):
    pixels = bytearray()
    for y in range(height):
        pixels.append(0)
        for x in range(width):
            noise = grain(x, y)
            pixels.extend(int(value) + noise for value in scene(x / width, y / height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(pixels, 9)) + chunk(b"IEND", b""))


if __name__ == "__main__":
    if len(sys.argv) not in (2, 4):
        sys.exit(__doc__)
    with open(sys.argv[1], "wb") as file:
        file.write(picture(*(int(word) for word in sys.argv[2:] or (320, 240))))
