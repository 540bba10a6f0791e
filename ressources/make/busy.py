#!/usr/bin/env python3
"""Draws ../busy.gif, the animation of a file that is being imported.

It is ImportRun.svg with its bright arc going round: a filled disc, so that the white arc stands
out on light, dark and selected rows alike. A GIF pixel is either opaque or clear, so only the
disc's rim is hard, and that is why the picture has twice the size at which lists show it.
"""

import math
import pathlib
import struct

SIZE = 32
UNIT = SIZE / 16  # the drawing's coordinates are those of the 16 x 16 icons
FRAMES = 12
DELAY = 8  # hundredths of a second
DISC = (0x86, 0x60, 0xE0)
DISC_RADIUS = 7 * UNIT
ARC_RADIUS = 4 * UNIT
HALF_STROKE = 1 * UNIT
TRACK_OPACITY = 0.35
ARC_ANGLE = math.pi / 2
SAMPLES = 8  # per axis of a pixel

CLEAR = 0
SHADES = 31  # palette entries 1 to SHADES run from the disc's colour to white


def on_arc(x, y, start):
    """Whether the point is on the arc with round ends that goes clockwise from start."""
    angle = (math.atan2(y, x) - start) % (2 * math.pi)
    if angle <= ARC_ANGLE:
        return abs(math.hypot(x, y) - ARC_RADIUS) <= HALF_STROKE
    return any(
        math.hypot(x - ARC_RADIUS * math.cos(end), y - ARC_RADIUS * math.sin(end)) <= HALF_STROKE
        for end in (start, start + ARC_ANGLE)
    )


def pixel(column, row, start):
    inside = 0
    white = 0.0
    for i in range(SAMPLES * SAMPLES):
        x = column + (i % SAMPLES + 0.5) / SAMPLES - SIZE / 2
        y = row + (i // SAMPLES + 0.5) / SAMPLES - SIZE / 2
        radius = math.hypot(x, y)
        if radius > DISC_RADIUS:
            continue
        inside += 1
        if on_arc(x, y, start):
            white += 1
        elif abs(radius - ARC_RADIUS) <= HALF_STROKE:
            white += TRACK_OPACITY
    if inside * 2 < SAMPLES * SAMPLES:
        return CLEAR
    return 1 + round(white / inside * (SHADES - 1))


def compress(pixels, code_size):
    """GIF's variable-width LZW, in sub-blocks."""
    clear, end = 1 << code_size, (1 << code_size) + 1
    table, width = {}, code_size + 1
    bits, bit_count, data = 0, 0, bytearray()

    def emit(code):
        nonlocal bits, bit_count
        bits |= code << bit_count
        bit_count += width
        while bit_count >= 8:
            data.append(bits & 0xFF)
            bits >>= 8
            bit_count -= 8

    def restart():
        nonlocal table, width
        table = {(value,): value for value in range(clear)}
        width = code_size + 1

    restart()
    emit(clear)
    run = ()
    for value in pixels:
        longer = run + (value,)
        if longer in table:
            run = longer
            continue
        emit(table[run])
        code = len(table) + 2
        table[longer] = code
        if code == 1 << width:
            width += 1
        if code == 4095:
            emit(clear)
            restart()
        run = (value,)
    emit(table[run])
    emit(end)
    if bit_count:
        data.append(bits & 0xFF)

    blocks = bytearray([code_size])
    for start in range(0, len(data), 255):
        block = data[start : start + 255]
        blocks += bytes([len(block)]) + block
    return bytes(blocks + b"\0")


def palette():
    colours = bytearray(DISC)  # the clear entry; the disc's colour bleeds least when scaled
    for shade in range(SHADES):
        share = shade / (SHADES - 1)
        colours += bytes(round(part + (255 - part) * share) for part in DISC)
    return bytes(colours)


def main():
    depth = SHADES.bit_length()
    gif = b"GIF89a" + struct.pack("<HHBBB", SIZE, SIZE, 0xF0 | (depth - 1), CLEAR, 0) + palette()
    gif += b"\x21\xff\x0bNETSCAPE2.0\x03\x01" + struct.pack("<H", 0) + b"\0"  # for ever
    for frame in range(FRAMES):
        start = -math.pi / 2 + frame * 2 * math.pi / FRAMES
        pixels = [pixel(i % SIZE, i // SIZE, start) for i in range(SIZE * SIZE)]
        keep_and_transparent = 1 << 2 | 1
        gif += b"\x21\xf9\x04" + struct.pack("<BHBB", keep_and_transparent, DELAY, CLEAR, 0)
        gif += b"\x2c" + struct.pack("<HHHHB", 0, 0, SIZE, SIZE, 0) + compress(pixels, depth)
    pathlib.Path(__file__).resolve().parent.with_name("busy.gif").write_bytes(gif + b"\x3b")


main()
