"""Drawing kit for the dash's larger pictures: shapes as signed distance functions.

A shape knows its bounding box and, for a point, its signed distance in pixels (negative
inside). Painting turns the distance at each pixel centre into coverage, so an edge gets
one pixel of anti-aliasing at the cost of one evaluation per pixel, which keeps the full
screen pictures quick to draw in plain Python. Pixel (i, j) covers [i, i + 1) x [j, j + 1);
its centre is (i + 0.5, j + 0.5).

Angles are in degrees on the screen: 0 points right and angles grow clockwise, since the
y axis points down (-90 is straight up).
"""

import math

# ---------------------------------------------------------------- shapes


class Shape:
    bbox = (0.0, 0.0, 0.0, 0.0)  # left, top, right, bottom

    def d(self, x, y):
        raise NotImplementedError

    def __or__(self, other):
        return Union(self, other)

    def __sub__(self, other):
        return Cut(self, other)


class Disc(Shape):
    def __init__(self, cx, cy, r):
        self.cx, self.cy, self.r = cx, cy, r
        self.bbox = (cx - r, cy - r, cx + r, cy + r)

    def d(self, x, y):
        return math.hypot(x - self.cx, y - self.cy) - self.r


class Ring(Shape):
    def __init__(self, cx, cy, r_in, r_out):
        self.cx, self.cy = cx, cy
        self.mid, self.half = (r_in + r_out) / 2, (r_out - r_in) / 2
        self.bbox = (cx - r_out, cy - r_out, cx + r_out, cy + r_out)

    def d(self, x, y):
        return abs(math.hypot(x - self.cx, y - self.cy) - self.mid) - self.half


def _seg_dist(px, py, x0, y0, x1, y1):
    dx, dy = x1 - x0, y1 - y0
    ll = dx * dx + dy * dy
    t = 0.0 if ll == 0 else max(0.0, min(1.0, ((px - x0) * dx + (py - y0) * dy) / ll))
    return math.hypot(px - x0 - t * dx, py - y0 - t * dy)


class Line(Shape):
    """A stroke of the given width along a polyline, with round ends and joins."""

    def __init__(self, points, width):
        self.pts = [tuple(p) for p in points]
        self.segs = list(zip(self.pts, self.pts[1:])) or [(self.pts[0], self.pts[0])]
        self.hw = width / 2
        xs = [p[0] for p in self.pts]
        ys = [p[1] for p in self.pts]
        self.bbox = (min(xs) - self.hw, min(ys) - self.hw, max(xs) + self.hw, max(ys) + self.hw)

    def d(self, x, y):
        return min(_seg_dist(x, y, x0, y0, x1, y1) for (x0, y0), (x1, y1) in self.segs) - self.hw


def seg(x0, y0, x1, y1, width):
    return Line([(x0, y0), (x1, y1)], width)


class Poly(Shape):
    """A filled polygon (even-odd)."""

    def __init__(self, points):
        self.pts = [tuple(p) for p in points]
        self.edges = list(zip(self.pts, self.pts[1:] + self.pts[:1]))
        xs = [p[0] for p in self.pts]
        ys = [p[1] for p in self.pts]
        self.bbox = (min(xs), min(ys), max(xs), max(ys))

    def d(self, x, y):
        inside = False
        best = 1e9
        for (x0, y0), (x1, y1) in self.edges:
            if (y0 > y) != (y1 > y) and x < x0 + (y - y0) * (x1 - x0) / (y1 - y0):
                inside = not inside
            best = min(best, _seg_dist(x, y, x0, y0, x1, y1))
        return -best if inside else best


class Box(Shape):
    """Rectangle from (l, t) to (r, b), corners rounded by radius."""

    def __init__(self, l, t, r, b, radius=0.0):
        self.cx, self.cy = (l + r) / 2, (t + b) / 2
        self.hx, self.hy = (r - l) / 2, (b - t) / 2
        self.rad = min(radius, self.hx, self.hy)
        self.bbox = (l, t, r, b)

    def d(self, x, y):
        qx = abs(x - self.cx) - self.hx + self.rad
        qy = abs(y - self.cy) - self.hy + self.rad
        out = math.hypot(max(qx, 0.0), max(qy, 0.0))
        return out + min(max(qx, qy), 0.0) - self.rad


class Arc(Shape):
    """Band between radii r_in and r_out from angle a0 clockwise to a1, square ends."""

    def __init__(self, cx, cy, r_in, r_out, a0, a1):
        self.cx, self.cy, self.r_in, self.r_out = cx, cy, r_in, r_out
        self.a0, self.span = a0, a1 - a0
        self.mid, self.half = (r_in + r_out) / 2, (r_out - r_in) / 2
        self.ends = []
        for a in (a0, a1):
            c, s = math.cos(math.radians(a)), math.sin(math.radians(a))
            self.ends.append((cx + c * r_in, cy + s * r_in, cx + c * r_out, cy + s * r_out))
        pts = [polar(cx, cy, r, a0 + self.span * k / 64) for k in range(65) for r in (r_in, r_out)]
        self.bbox = (min(p[0] for p in pts) - 1, min(p[1] for p in pts) - 1,
                     max(p[0] for p in pts) + 1, max(p[1] for p in pts) + 1)

    def d(self, x, y):
        dx, dy = x - self.cx, y - self.cy
        a = math.degrees(math.atan2(dy, dx))
        if (a - self.a0) % 360.0 <= self.span:
            return abs(math.hypot(dx, dy) - self.mid) - self.half
        return min(_seg_dist(x, y, *e) for e in self.ends)


class Union(Shape):
    def __init__(self, *shapes):
        self.shapes = shapes
        self.bbox = (min(s.bbox[0] for s in shapes), min(s.bbox[1] for s in shapes),
                     max(s.bbox[2] for s in shapes), max(s.bbox[3] for s in shapes))

    def d(self, x, y):
        return min(s.d(x, y) for s in self.shapes)


class Cut(Shape):
    def __init__(self, a, b):
        self.a, self.b = a, b
        self.bbox = a.bbox

    def d(self, x, y):
        return max(self.a.d(x, y), -self.b.d(x, y))


class Turned(Shape):
    """A shape turned by angle degrees (clockwise on the screen) about (cx, cy)."""

    def __init__(self, shape, cx, cy, angle):
        self.s, self.cx, self.cy = shape, cx, cy
        self.c, self.sn = math.cos(math.radians(angle)), math.sin(math.radians(angle))
        l, t, r, b = shape.bbox
        pts = [self._fwd(px, py) for px in (l, r) for py in (t, b)]
        self.bbox = (min(p[0] for p in pts), min(p[1] for p in pts),
                     max(p[0] for p in pts), max(p[1] for p in pts))

    def _fwd(self, x, y):
        dx, dy = x - self.cx, y - self.cy
        return self.cx + dx * self.c - dy * self.sn, self.cy + dx * self.sn + dy * self.c

    def d(self, x, y):
        dx, dy = x - self.cx, y - self.cy
        return self.s.d(self.cx + dx * self.c + dy * self.sn, self.cy - dx * self.sn + dy * self.c)


def polar(cx, cy, r, angle):
    a = math.radians(angle)
    return cx + math.cos(a) * r, cy + math.sin(a) * r


def radial(cx, cy, r0, r1, angle, width):
    """A stroke along a radius, from r0 out to r1."""
    x0, y0 = polar(cx, cy, r0, angle)
    x1, y1 = polar(cx, cy, r1, angle)
    return seg(x0, y0, x1, y1, width)


# ---------------------------------------------------------------- canvas


class Art:
    """RGB canvas with a coverage channel; colours are 0..255 floats."""

    def __init__(self, w, h, colour=(0, 0, 0), opaque=True):
        self.w, self.h = w, h
        self.rgb = [list(colour) for _ in range(w * h)]
        self.alpha = [1.0 if opaque else 0.0] * (w * h)

    def paint(self, shape, colour, opacity=1.0, mark=True):
        """Paints the shape; colour is a tuple or a function (x, y) -> tuple. With mark,
        the painted pixels become opaque in proportion to their coverage."""
        l, t, r, b = shape.bbox
        i0, j0 = max(0, int(math.floor(l)) - 1), max(0, int(math.floor(t)) - 1)
        i1, j1 = min(self.w - 1, int(math.ceil(r)) + 1), min(self.h - 1, int(math.ceil(b)) + 1)
        fn = colour if callable(colour) else None
        for j in range(j0, j1 + 1):
            y = j + 0.5
            for i in range(i0, i1 + 1):
                x = i + 0.5
                a = 0.5 - shape.d(x, y)
                if a <= 0.0:
                    continue
                a = min(a, 1.0) * opacity
                c = fn(x, y) if fn else colour
                k = j * self.w + i
                p = self.rgb[k]
                p[0] += (c[0] - p[0]) * a
                p[1] += (c[1] - p[1]) * a
                p[2] += (c[2] - p[2]) * a
                if mark:
                    self.alpha[k] = max(self.alpha[k], a)

    def crop(self, x, y, w, h):
        out = Art(w, h)
        for j in range(h):
            for i in range(w):
                out.rgb[j * w + i] = list(self.rgb[(y + j) * self.w + x + i])
                out.alpha[j * w + i] = self.alpha[(y + j) * self.w + x + i]
        return out

    def cutout(self, threshold=0.5):
        self.alpha = [1.0 if a >= threshold else 0.0 for a in self.alpha]

    def rgba(self):
        return [tuple(int(round(min(255.0, max(0.0, v)))) for v in p) + (int(round(a * 255)),)
                for p, a in zip(self.rgb, self.alpha)]


def mix(c0, c1, t):
    t = max(0.0, min(1.0, t))
    return tuple(a + (b - a) * t for a, b in zip(c0, c1))


# ---------------------------------------------------------------- stroke font
# Glyphs on a grid 4 units wide and 6 tall (cap height), y down, drawn as strokes with
# round ends. Corners are cut at 45 degrees: a squared, technical face that stays legible
# at a cap height of 6 pixels and scales to the big dial numbers.

GLYPHS = {
    "0": [[(1, 0), (3, 0), (4, 1), (4, 5), (3, 6), (1, 6), (0, 5), (0, 1), (1, 0)]],
    "1": [[(0.8, 1.2), (2, 0), (2, 6)]],
    "2": [[(0, 1), (1, 0), (3, 0), (4, 1), (4, 2.2), (0, 6), (4, 6)]],
    "3": [[(0, 1), (1, 0), (3, 0), (4, 1), (4, 2), (3, 3), (1.4, 3)],
          [(3, 3), (4, 4), (4, 5), (3, 6), (1, 6), (0, 5)]],
    "4": [[(3, 6), (3, 0), (0, 4), (0, 4.2), (4, 4.2)]],
    "5": [[(4, 0), (0.3, 0), (0, 3), (3, 3), (4, 4), (4, 5), (3, 6), (1, 6), (0, 5)]],
    "6": [[(3.6, 0), (1, 0), (0, 1), (0, 5), (1, 6), (3, 6), (4, 5), (4, 4), (3, 3), (0, 3)]],
    "7": [[(0, 0), (4, 0), (4, 1), (1.6, 6)]],
    "8": [[(1, 3), (0, 2), (0, 1), (1, 0), (3, 0), (4, 1), (4, 2), (3, 3), (1, 3),
           (0, 4), (0, 5), (1, 6), (3, 6), (4, 5), (4, 4), (3, 3)]],
    "9": [[(4, 3), (1, 3), (0, 2), (0, 1), (1, 0), (3, 0), (4, 1), (4, 5), (3, 6), (0.4, 6)]],
    "A": [[(0, 6), (0, 1.5), (1.5, 0), (2.5, 0), (4, 1.5), (4, 6)], [(0, 3.6), (4, 3.6)]],
    "B": [[(0, 3), (3, 3), (4, 2), (4, 1), (3, 0), (0, 0), (0, 6), (3, 6), (4, 5), (4, 4), (3, 3)]],
    "C": [[(4, 1), (3, 0), (1, 0), (0, 1), (0, 5), (1, 6), (3, 6), (4, 5)]],
    "D": [[(0, 0), (2.6, 0), (4, 1.4), (4, 4.6), (2.6, 6), (0, 6), (0, 0)]],
    "E": [[(4, 0), (0, 0), (0, 6), (4, 6)], [(0, 3), (3, 3)]],
    "F": [[(4, 0), (0, 0), (0, 6)], [(0, 3), (3, 3)]],
    "G": [[(4, 1), (3, 0), (1, 0), (0, 1), (0, 5), (1, 6), (3, 6), (4, 5), (4, 3.2), (2.2, 3.2)]],
    "H": [[(0, 0), (0, 6)], [(4, 0), (4, 6)], [(0, 3), (4, 3)]],
    "I": [[(1, 0), (1, 6)]],
    "J": [[(4, 0), (4, 5), (3, 6), (1, 6), (0, 5)]],
    "K": [[(0, 0), (0, 6)], [(4, 0), (0.4, 3.6)], [(1.6, 2.6), (4, 6)]],
    "L": [[(0, 0), (0, 6), (4, 6)]],
    "M": [[(0, 6), (0, 0), (2, 3), (4, 0), (4, 6)]],
    "N": [[(0, 6), (0, 0), (4, 6), (4, 0)]],
    "O": [[(1, 0), (3, 0), (4, 1), (4, 5), (3, 6), (1, 6), (0, 5), (0, 1), (1, 0)]],
    "P": [[(0, 6), (0, 0), (3, 0), (4, 1), (4, 2.2), (3, 3.2), (0, 3.2)]],
    "Q": [[(1, 0), (3, 0), (4, 1), (4, 5), (3, 6), (1, 6), (0, 5), (0, 1), (1, 0)],
          [(2.6, 4.4), (4.2, 6.2)]],
    "R": [[(0, 6), (0, 0), (3, 0), (4, 1), (4, 2.2), (3, 3.2), (0, 3.2)], [(2.2, 3.2), (4, 6)]],
    "S": [[(4, 1), (3, 0), (1, 0), (0, 1), (0, 2), (1, 3), (3, 3), (4, 4), (4, 5), (3, 6), (1, 6),
           (0, 5)]],
    "T": [[(0, 0), (4, 0)], [(2, 0), (2, 6)]],
    "U": [[(0, 0), (0, 5), (1, 6), (3, 6), (4, 5), (4, 0)]],
    "V": [[(0, 0), (2, 6), (4, 0)]],
    "W": [[(0, 0), (1, 6), (2, 2.5), (3, 6), (4, 0)]],
    "X": [[(0, 0), (4, 6)], [(4, 0), (0, 6)]],
    "Y": [[(0, 0), (2, 3), (4, 0)], [(2, 3), (2, 6)]],
    "Z": [[(0, 0), (4, 0), (0, 6), (4, 6)]],
    "x": [[(0.4, 2.4), (3.6, 6)], [(3.6, 2.4), (0.4, 6)]],
    "-": [[(0.2, 3.2), (2.8, 3.2)]],
    "/": [[(0, 6), (3, 0)]],
    ".": [[(0.5, 5.9), (0.5, 6)]],
    "*": [[(0.6, 0), (1.4, 0), (2, 0.6), (2, 1.4), (1.4, 2), (0.6, 2), (0, 1.4), (0, 0.6), (0.6, 0)]],
    "%": [[(0, 6), (4, 0)], [(0.3, 0.3), (1.1, 0.3), (1.1, 1.5), (0.3, 1.5), (0.3, 0.3)],
          [(2.9, 4.5), (3.7, 4.5), (3.7, 5.7), (2.9, 5.7), (2.9, 4.5)]],
    " ": [],
}
WIDTHS = {"*": 2, "1": 3, "I": 2, "-": 3, "/": 3, ".": 1, " ": 2.5}
TRACKING = 1.8  # units between glyphs


def text_width(s, cap, track=TRACKING):
    u = cap / 6.0
    return (sum(WIDTHS.get(ch, 4) for ch in s) + track * (len(s) - 1)) * u


def text(art, s, x, y, cap, colour, weight=None, align="l", track=TRACKING, mark=True):
    """Draws s with its cap top at y; align l, c or r about x. weight is the stroke width
    in pixels (a sixth of the cap height and at least 1.2 unless given)."""
    u = cap / 6.0
    w = weight if weight is not None else max(1.2, cap / 6.0)
    width = text_width(s, cap, track)
    x0 = x - {"l": 0.0, "c": width / 2, "r": width}[align]
    for ch in s:
        strokes = GLYPHS[ch]
        if strokes:
            lines = [Line([(x0 + px * u, y + py * u) for px, py in st], w) for st in strokes]
            art.paint(Union(*lines), colour, mark=mark)
        x0 += (WIDTHS.get(ch, 4) + track) * u
    return width
