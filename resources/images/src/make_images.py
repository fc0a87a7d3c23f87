#!/usr/bin/env python3
"""Draws the toolkit's pictures and writes them as PNGs into resources/images/.

    python3 resources/images/src/make_images.py [--out DIR] [--sheet SHEET.png]

Only the standard library is used. Shapes are filled by 8 x 8 supersampling; everything
is composed over black, the colour behind the key bar and the calibration screen, so
that the anti-aliased edges survive the one-bit transparency of the device's images.
--sheet also writes a contact sheet, enlarged, with the colours cut to RGB565 as the
dash shows them.
"""

import argparse
import math
import os
import struct
import zlib

SS = 8  # samples per pixel along each axis

# Key faces
KEY_W, KEY_H = 64, 48
FACE = (2.0, 2.0, 62.0, 46.0)  # left, top, right, bottom
FACE_RADIUS = 7.0
BORDER = 1.5

BLACK = (0, 0, 0)
WHITE = (255, 255, 255)
FACE_UP = (38, 43, 51)
BORDER_UP = (112, 124, 138)
FACE_DOWN = (255, 176, 0)  # amber: reads in sunlight, and against the dark keys
BORDER_DOWN = (255, 226, 140)

# Round pictures of 20 x 20
SMALL = 20
HUB_RIM = (196, 202, 210)
HUB_FACE = (44, 49, 57)
CROSS_RING = (255, 48, 48)


# ---------------------------------------------------------------- shapes
# A shape is a function (x, y) -> bool over continuous pixel coordinates: pixel (i, j)
# covers [i, i + 1) x [j, j + 1).

def rounded_rect(l, t, r, b, radius):
    def inside(x, y):
        if x < l or x >= r or y < t or y >= b:
            return False
        cx = min(max(x, l + radius), r - radius)
        cy = min(max(y, t + radius), b - radius)
        return (x - cx) ** 2 + (y - cy) ** 2 <= radius * radius
    return inside


def disc(cx, cy, radius):
    return lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= radius * radius


def ring(cx, cy, r_in, r_out, keep=lambda x, y: True):
    def inside(x, y):
        d = (x - cx) ** 2 + (y - cy) ** 2
        return r_in * r_in <= d <= r_out * r_out and keep(x, y)
    return inside


def rect(l, t, r, b):
    return lambda x, y: l <= x < r and t <= y < b


def polygon(points):
    """Even-odd fill of a closed polygon."""
    edges = list(zip(points, points[1:] + points[:1]))

    def inside(x, y):
        hit = False
        for (x0, y0), (x1, y1) in edges:
            if (y0 > y) != (y1 > y) and x < x0 + (y - y0) * (x1 - x0) / (y1 - y0):
                hit = not hit
        return hit
    return inside


def union(*shapes):
    return lambda x, y: any(s(x, y) for s in shapes)


def turned(shape, cx, cy, quarter_turns):
    """The shape turned clockwise on the screen about (cx, cy) by 90 degrees a step."""
    def inside(x, y):
        dx, dy = x - cx, y - cy
        for _ in range(quarter_turns % 4):
            dx, dy = dy, -dx  # undo one clockwise quarter turn
        return shape(cx + dx, cy + dy)
    return inside


# ---------------------------------------------------------------- canvas

class Canvas:
    def __init__(self, w, h, colour=BLACK):
        self.w, self.h = w, h
        self.rgb = [list(colour) for _ in range(w * h)]
        self.alpha = [1.0] * (w * h)

    def fill(self, shape, colour, clear=False):
        """Paints the shape's coverage over the canvas; with clear, transparent first."""
        offsets = [(k + 0.5) / SS for k in range(SS)]
        for j in range(self.h):
            for i in range(self.w):
                n = sum(1 for oy in offsets for ox in offsets if shape(i + ox, j + oy))
                if n == 0:
                    continue
                a = n / (SS * SS)
                p = self.rgb[j * self.w + i]
                for c in range(3):
                    p[c] = p[c] * (1 - a) + colour[c] * a
                if clear:
                    self.alpha[j * self.w + i] = max(self.alpha[j * self.w + i], a)

    def cutout(self, threshold):
        """Transparent where nothing covers the pixel enough; the rest opaque as drawn over black."""
        for k, a in enumerate(self.alpha):
            self.alpha[k] = 1.0 if a >= threshold else 0.0

    def rgba(self):
        out = []
        for p, a in zip(self.rgb, self.alpha):
            out.append(tuple(int(round(v)) for v in p) + (int(round(a * 255)),))
        return out


def transparent_canvas(w, h):
    c = Canvas(w, h)
    c.alpha = [0.0] * (w * h)
    return c


# ---------------------------------------------------------------- PNG

def write_png(path, w, h, pixels, alpha=True):
    """8-bit RGBA (or RGB) PNG, byte for byte the same on every run."""
    raw = bytearray()
    for j in range(h):
        raw.append(0)
        for p in pixels[j * w:(j + 1) * w]:
            raw.extend(p[:4] if alpha else p[:3])

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    ihdr = struct.pack(">IIBBBBB", w, h, 8, 6 if alpha else 2, 0, 0, 0)
    data = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", ihdr) + chunk(b"IDAT", zlib.compress(bytes(raw), 9)) + \
        chunk(b"IEND", b"")
    tmp = path + ".tmp"
    with open(tmp, "wb") as f:
        f.write(data)
    os.replace(tmp, path)


# ---------------------------------------------------------------- pictures

CX, CY = KEY_W / 2, KEY_H / 2


def arrow_up():
    """Bold arrow: a wide head over a square-ended shaft, centred on the key."""
    head = polygon([(CX, 10.0), (CX + 13.0, 24.0), (CX - 13.0, 24.0)])
    shaft = rect(CX - 4.0, 23.0, CX + 4.0, 38.0)
    return union(head, shaft)


def arrow_back():
    """U-turn: from the bottom, right and round, then left into the head."""
    t = 6.0
    top, bottom = 14.0, 32.0  # upper edges of the two bars
    turn_x = 38.0
    cy = (top + bottom + t) / 2
    r_out = (bottom + t - top) / 2
    r_in = r_out - t
    return union(
        polygon([(13.0, top + t / 2), (26.0, top + t / 2 - 10.0), (26.0, top + t / 2 + 10.0)]),
        rect(25.0, top, turn_x, top + t),
        ring(turn_x, cy, r_in, r_out, keep=lambda x, y: x >= turn_x),
        rect(22.0, bottom, turn_x, bottom + t),
    )


def key_face(symbol, pressed, height=KEY_H):
    """A key face of KEY_W x height: the face keeps a 2-pixel black margin all round."""
    c = Canvas(KEY_W, height)
    l, t, r, b = FACE[0], FACE[1], FACE[2], height - (KEY_H - FACE[3])
    c.fill(rounded_rect(l, t, r, b, FACE_RADIUS), BORDER_DOWN if pressed else BORDER_UP)
    c.fill(rounded_rect(l + BORDER, t + BORDER, r - BORDER, b - BORDER, FACE_RADIUS - BORDER),
           FACE_DOWN if pressed else FACE_UP)
    if symbol is not None:
        c.fill(symbol, BLACK if pressed else WHITE)
    return c


def needle_boss():
    """Hub over the needle's pivot, centred on the image (the gauge centre is at 10, 10)."""
    c = transparent_canvas(SMALL, SMALL)
    c.fill(disc(10.0, 10.0, 9.2), HUB_RIM, clear=True)
    c.fill(disc(10.0, 10.0, 7.0), HUB_FACE)
    c.fill(disc(10.0, 10.0, 2.5), HUB_RIM)
    c.cutout(0.45)
    return c


def touch_cross():
    """Cross hairs through pixel (10, 10), the point the calibration samples."""
    c = transparent_canvas(SMALL, SMALL)
    c.fill(ring(10.5, 10.5, 5.2, 7.0), CROSS_RING, clear=True)
    c.fill(union(rect(10.0, 1.0, 11.0, 20.0), rect(1.0, 10.0, 20.0, 11.0)), WHITE, clear=True)
    c.cutout(0.3)
    return c


def pictures():
    up = arrow_up()
    symbols = {
        "up": up,
        "right": turned(up, CX, CY, 1),
        "down": turned(up, CX, CY, 2),
        "left": turned(up, CX, CY, 3),
        "back": arrow_back(),
    }
    out = {}
    for name, shape in symbols.items():
        out[name] = key_face(shape, False)
        out[name + "_s"] = key_face(shape, True)
    out["blank"] = key_face(None, False)
    out["needle_boss"] = needle_boss()
    out["touch_cross"] = touch_cross()
    return out


# ---------------------------------------------------------------- contact sheet

def as_dash(p, backdrop):
    """A pixel as the dash shows it: truncated to RGB565, transparent below alpha 128."""
    if p[3] < 128:
        return backdrop
    r, g, b = p[0] & 0xF8, p[1] & 0xFC, p[2] & 0xF8
    return (r | r >> 5, g | g >> 6, b | b >> 5)


def write_sheet(path, pics, scale=6):
    keys = ["up", "down", "left", "right", "back", "blank",
            "up_s", "down_s", "left_s", "right_s", "back_s"]
    small = ["needle_boss", "touch_cross"]
    gap, cols, small_scale, bar_scale = 8, 6, 12, 3
    cell_w, cell_h = KEY_W * scale + gap, KEY_H * scale + gap
    rows = (len(keys) + cols - 1) // cols
    small_h = SMALL * small_scale + gap
    bar_h = KEY_H * bar_scale + gap
    w, h = cols * cell_w + gap, gap + rows * cell_h + small_h + 2 * bar_h
    sheet = [(60, 60, 60)] * (w * h)

    def blit(img, x0, y0, s, backdrop):
        px = img.rgba()
        for j in range(img.h * s):
            row = (y0 + j) * w
            for i in range(img.w * s):
                sheet[row + x0 + i] = as_dash(px[(j // s) * img.w + i // s], backdrop)

    for k, name in enumerate(keys):
        blit(pics[name], gap + (k % cols) * cell_w, gap + (k // cols) * cell_h, scale, (0, 0, 0))
    # The round pictures over black and over blue, which shows where they are transparent.
    y0 = gap + rows * cell_h
    for k, (name, backdrop) in enumerate((n, b) for n in small for b in ((0, 0, 0), (0, 60, 120))):
        blit(pics[name], gap + k * (SMALL * small_scale + gap), y0, small_scale, backdrop)
    # The menu's key bar at a 320-pixel width, released and with keys 1 and 4 held.
    for n, bar in enumerate((["up", "down", "blank", "right", "back"],
                             ["up_s", "down", "blank", "right_s", "back"])):
        y0 = gap + rows * cell_h + small_h + n * bar_h
        for k, name in enumerate(bar):
            blit(pics[name], gap + k * KEY_W * bar_scale, y0, bar_scale, (0, 0, 0))
    write_png(path, w, h, sheet, alpha=False)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--out", default=os.path.dirname(here), help="folder for the PNGs")
    ap.add_argument("--sheet", help="also write a contact sheet here")
    args = ap.parse_args()
    pics = pictures()
    for name, img in sorted(pics.items()):
        write_png(os.path.join(args.out, name + ".png"), img.w, img.h, img.rgba())
    if args.sheet:
        write_sheet(args.sheet, pics)


if __name__ == "__main__":
    main()
