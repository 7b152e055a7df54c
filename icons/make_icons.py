#!/usr/bin/env python3
"""Draws the driver's icon at the six sizes the host asks for and writes icons/icon-<id>.png.

A blue droplet over a stream running across brown rock layers, on a pale sky. Each pixel is the average of
a grid of samples, so edges are smooth at every size. Standard library only; the output is deterministic.
Run from anywhere: python3 icons/make_icons.py
"""
import math
import os
import struct
import zlib

SIZES = {1086: 256, 1085: 128, 1084: 64, 1083: 48, 1001: 32, 1081: 16}

SKY_TOP, SKY_BOTTOM = (232, 244, 252), (200, 226, 245)
LAYERS = [(0.60, (176, 122, 69)), (0.76, (139, 90, 43)), (0.88, (107, 66, 38))]  # top edge, colour
STREAM = (60, 141, 216)
DROP, DROP_DARK, DROP_EDGE = (58, 140, 222), (30, 96, 176), (22, 70, 140)
HIGHLIGHT = (255, 255, 255)

TIP_Y, CENTRE_X, CENTRE_Y, RADIUS = 0.08, 0.5, 0.40, 0.19


def in_drop(x, y, shrink):
    """Whether (x, y) lies in the droplet (a circle with a cone up to its tip), made `shrink` thinner."""
    r = RADIUS - shrink
    tip = TIP_Y + shrink / math.sin(math.asin(RADIUS / (CENTRE_Y - TIP_Y)))
    if (x - CENTRE_X) ** 2 + (y - CENTRE_Y) ** 2 <= r * r:
        return True
    d = CENTRE_Y - tip
    if y < tip or r <= 0 or d <= r:
        return False
    half = math.asin(r / d)
    y_tangent = tip + d * math.cos(half) ** 2
    return y <= y_tangent and abs(x - CENTRE_X) <= (y - tip) * math.tan(half)


def mix(a, b, t):
    return tuple(p + (q - p) * t for p, q in zip(a, b))


def sample(x, y, edge):
    """The colour at (x, y) in the unit square; `edge` is the droplet's outline width."""
    colour = mix(SKY_TOP, SKY_BOTTOM, y)
    for top, layer in LAYERS:
        if y >= top + 0.015 * math.sin(2 * math.pi * (x * 1.3 + top)):
            colour = layer
    stream = 0.63 + 0.025 * math.sin(2 * math.pi * 1.5 * x)
    if abs(y - stream) <= 0.035:
        colour = STREAM
    if in_drop(x, y, 0.0):
        colour = DROP_EDGE
        if in_drop(x, y, edge):
            colour = mix(DROP, DROP_DARK, max(0.0, min(1.0, (y - 0.25) / 0.35)))
            if ((x - 0.43) / 0.05) ** 2 + ((y - 0.36) / 0.08) ** 2 <= 1.0:
                colour = mix(colour, HIGHLIGHT, 0.65)
    return colour


def render(size):
    grid = 8 if size <= 64 else 4
    edge = max(0.02, 1.2 / size)  # at least about a pixel wide
    rows = []
    for j in range(size):
        row = bytearray([0])  # filter type: none
        for i in range(size):
            total = [0.0, 0.0, 0.0]
            for sj in range(grid):
                for si in range(grid):
                    c = sample((i + (si + 0.5) / grid) / size, (j + (sj + 0.5) / grid) / size, edge)
                    total = [t + v for t, v in zip(total, c)]
            row += bytes(round(t / grid**2) for t in total) + b"\xff"
        rows.append(bytes(row))
    return b"".join(rows)


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def write_png(path, size, pixels):
    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)  # 8-bit RGBA
    with open(path, "wb") as out:
        out.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(pixels, 9)) +
                  chunk(b"IEND", b""))


if __name__ == "__main__":
    here = os.path.dirname(os.path.abspath(__file__))
    for ident, size in SIZES.items():
        write_png(os.path.join(here, f"icon-{ident}.png"), size, render(size))
