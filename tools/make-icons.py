#!/usr/bin/env python3
"""Draws the toolkit's small icons and writes them as .ico files (32 bit, one image per size).

    tools/make-icons.py [FOLDER]       default: toolkit/orvatool/resources
    tools/make-icons.py --sheet FILE   one PNG with every image, enlarged, to look at

An icon is a list of (shape, paint) layers, painted from the bottom up. A shape is a test whether a point belongs to it,
in pixels of the image; edges that should be crisp are put on whole pixels by `snap`, so every size is drawn for itself.
"""
import struct
import sys
import zlib
from pathlib import Path

SIZES = (16, 20, 24, 32, 48)
SAMPLES = 8  # a pixel's cover is counted on a grid of 8 x 8 points


def rounded(left, top, right, bottom, radius):
    def inside(x, y):
        if not (left <= x <= right and top <= y <= bottom):
            return False
        dx = max(left + radius - x, x - (right - radius), 0)
        dy = max(top + radius - y, y - (bottom - radius), 0)
        return dx * dx + dy * dy <= radius * radius

    return inside


def box(left, top, right, bottom):
    return lambda x, y: left <= x <= right and top <= y <= bottom


def disc(cx, cy, radius):
    return lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= radius * radius


def polygon(*points):
    def inside(x, y):
        odd = False
        for (x1, y1), (x2, y2) in zip(points, points[1:] + points[:1]):
            if (y1 > y) != (y2 > y) and x < (x2 - x1) * (y - y1) / (y2 - y1) + x1:
                odd = not odd
        return odd

    return inside


def minus(shape, hole):
    return lambda x, y: shape(x, y) and not hole(x, y)


def union(*shapes):
    return lambda x, y: any(shape(x, y) for shape in shapes)


def flat(rgb):
    return lambda _: rgb


def gradient(top, bottom):
    return lambda t: tuple(a + (b - a) * t for a, b in zip(top, bottom))


def product(size):
    """A ring on a blue tile, with a connection leaving it to the right: the O of the name as a pipe end."""
    unit = size / 16
    edge = snap(0.5 * unit) if size > 20 else 0
    middle = size / 2
    outer, inner = 5.0 * unit, 2.75 * unit
    half = max(1, snap(1.1 * unit))
    return [
        (rounded(edge, edge, size - edge, size - edge, 3.2 * unit), gradient((46, 126, 196), (16, 68, 128))),
        (minus(disc(middle, middle, outer), disc(middle, middle, inner)), flat((255, 255, 255))),
        (box(middle, middle - half, size - edge, middle + half), flat((255, 176, 46))),
        (disc(middle, middle, 1.5 * unit), flat((255, 176, 46))),
    ]


def property_(size):
    """A label on a string hole."""
    unit = size / 16
    left, right = snap(1 * unit), size - snap(1 * unit)
    top, bottom = snap(4 * unit), size - snap(4 * unit)
    line = max(1, snap(0.9 * unit))
    middle = (top + bottom) / 2
    nose = left + (bottom - top) / 2

    def tag(inset):
        return polygon(
            (left + inset * 1.4, middle),
            (nose + inset * 0.4, top + inset),
            (right - inset, top + inset),
            (right - inset, bottom - inset),
            (nose + inset * 0.4, bottom - inset),
        )

    rows = [middle - snap(1 * unit) - line / 2, middle + snap(1 * unit) - line / 2]
    bars = union(*(box(nose + 2.6 * unit, snap(y), right - 2 * line - 0.4 * unit, snap(y) + line) for y in rows))
    return [
        (tag(0), flat((34, 96, 160))),
        (tag(line), gradient((236, 246, 255), (190, 221, 248))),
        (disc(nose + 0.4 * unit, middle, 1.25 * unit), flat((34, 96, 160))),
        (bars, flat((96, 140, 186))),
    ]


def property_group(size):
    """A folder."""
    unit = size / 16
    left, right = snap(1 * unit), size - snap(1 * unit)
    top, bottom = snap(3 * unit), size - snap(2 * unit)
    tab, front = snap(7 * unit), snap(6 * unit)
    line = max(1, snap(0.9 * unit))
    back = union(
        rounded(left, top, tab, bottom, unit),
        rounded(left, top + snap(1.6 * unit), right, bottom, unit),
    )
    return [
        (back, flat((166, 112, 20))),
        (box(left + line, top + line, tab - line, front), flat((242, 194, 90))),
        (box(left + line, top + snap(1.6 * unit) + line, right - line, front), flat((242, 194, 90))),
        (box(left + line, front, right - line, bottom - line), gradient((255, 226, 150), (245, 192, 84))),
    ]


def constant_text(size):
    """A capital T on a sheet."""
    unit = size / 16
    left, right = snap(2 * unit), size - snap(2 * unit)
    top, bottom = snap(1 * unit), size - snap(1 * unit)
    line = max(1, snap(0.9 * unit))
    stroke = max(2, 2 * snap(1 * unit))
    middle = size // 2
    arm_top, arm_left = snap(4 * unit), snap(4.6 * unit)
    foot = size - snap(3.6 * unit)
    return [
        (rounded(left, top, right, bottom, 1.4 * unit), flat((98, 108, 120))),
        (rounded(left + line, top + line, right - line, bottom - line, 0.6 * unit),
         gradient((255, 255, 255), (232, 236, 241))),
        (box(arm_left, arm_top, size - arm_left, arm_top + max(2, snap(1.7 * unit))), flat((38, 110, 70))),
        (box(middle - stroke / 2, arm_top, middle + stroke / 2, foot), flat((38, 110, 70))),
    ]


ICONS = {
    "product": product,
    "property": property_,
    "property_group": property_group,
    "constant_text": constant_text,
}


def snap(length):
    return int(length + 0.5)


def cover(shape, x, y):
    step = 1 / SAMPLES
    hits = sum(
        shape(x + (i + 0.5) * step, y + (j + 0.5) * step) for j in range(SAMPLES) for i in range(SAMPLES)
    )
    return hits / (SAMPLES * SAMPLES)


def render(layers, size):
    """Rows from top to bottom of (red, green, blue, alpha), straight alpha, 0 to 255."""
    rows = []
    for y in range(size):
        row = []
        for x in range(size):
            red = green = blue = alpha = 0.0  # premultiplied
            for shape, paint in layers:
                part = cover(shape, x, y)
                if part:
                    r, g, b = paint((y + 0.5) / size)
                    red, green, blue = (old * (1 - part) + new * part for old, new in ((red, r), (green, g), (blue, b)))
                    alpha = alpha * (1 - part) + part
            straight = (min(255, round(channel / alpha)) if alpha else 0 for channel in (red, green, blue))
            row.append((*straight, round(alpha * 255)))
        rows.append(row)
    return rows


def dib(rows):
    """The image as an .ico file stores it: header with double height, colours bottom up, then the mask."""
    size = len(rows)
    colours = b"".join(struct.pack("4B", b, g, r, a) for row in reversed(rows) for r, g, b, a in row)
    stride = (size + 31) // 32 * 4
    mask = b""
    for row in reversed(rows):
        bits = int("".join("0" if pixel[3] else "1" for pixel in row).ljust(stride * 8, "0"), 2)
        mask += bits.to_bytes(stride, "big")
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, len(colours) + len(mask), 0, 0, 0, 0)
    return header + colours + mask


def ico(images):
    data = [dib(image) for image in images]
    offset = 6 + 16 * len(images)
    head = struct.pack("<HHH", 0, 1, len(images))
    for image, blob in zip(images, data):
        head += struct.pack("<BBBBHHII", len(image), len(image), 0, 0, 1, 32, len(blob), offset)
        offset += len(blob)
    return head + b"".join(data)


def png(width, height, pixels):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    raw = b"".join(b"\0" + bytes(channel for pixel in row for channel in pixel) for row in pixels)
    head = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(raw)) + chunk(b"IEND", b"")


def sheet(pictures, zoom=5):
    """Every image on white and on the blue of a selection, enlarged."""
    cell = max(SIZES) * zoom + 10
    width, height = cell * len(SIZES), cell * len(pictures) * 2
    canvas = [[(255, 255, 255)] * width for _ in range(height)]
    for line, images in enumerate(image for image in pictures for _ in range(2)):
        ground = (255, 255, 255) if line % 2 == 0 else (0, 120, 215)
        for y in range(line * cell, (line + 1) * cell):
            canvas[y] = [ground] * width
        for column, image in enumerate(images):
            for y in range(len(image) * zoom):
                for x in range(len(image) * zoom):
                    *rgb, alpha = image[y // zoom][x // zoom]
                    mixed = tuple((c * alpha + g * (255 - alpha)) // 255 for c, g in zip(rgb, ground))
                    canvas[line * cell + 5 + y][column * cell + 5 + x] = mixed
    return png(width, height, canvas)


def main(arguments):
    pictures = {name: [render(draw(size), size) for size in SIZES] for name, draw in ICONS.items()}
    if arguments[:1] == ["--sheet"]:
        Path(arguments[1]).write_bytes(sheet(list(pictures.values())))
        return
    default = Path(__file__).resolve().parent.parent / "toolkit/orvatool/resources"
    folder = Path(arguments[0]) if arguments else default
    for name, images in pictures.items():
        (folder / f"{name}.ico").write_bytes(ico(images))


if __name__ == "__main__":
    main(sys.argv[1:])
