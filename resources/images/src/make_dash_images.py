#!/usr/bin/env python3
"""Draws the dash application's pictures and writes them as PNGs into resources/images/.

    python3 resources/images/src/make_dash_images.py [--out DIR] [--sheet SHEET.png]

Standard library only. The key faces come from make_images.py, so that they match the
toolkit's keys; dials, backgrounds and icons are drawn with dashart.py. Every picture is
composed over the colour it sits on in the dash, then cut to one-bit transparency.

The dial geometry below is the gauge code's: the pivot, the radius of the needle tip and
the angle of the scale's ends are fixed there, and the printed scales follow them. --sheet
writes, besides the contact sheet, SHEET-mock.png: screens put together as the code does,
with needles at the scale ends and stand-ins where the code prints texts, to check that a
needle reads right against the printed scale.
"""

import argparse
import math
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import make_images as mi  # noqa: E402
from dashart import (Arc, Art, Box, Disc, Line, Poly, Ring, Turned, Union, mix, polar,  # noqa: E402
                     radial, seg, text, text_width)

# ---------------------------------------------------------------- palette

PAGE_BG = (8, 10, 14)        # page, large faces, list body
DIAL_BG = (19, 23, 29)       # face of the cell dial
DIAL_RIM = (62, 72, 86)
PANEL = (9, 11, 15)          # read-out window
PANEL_EDGE = (46, 54, 66)
TRACK = (44, 52, 64)         # scale base line, inner arcs
BRACKET = (38, 44, 54)
WHITE = (244, 246, 250)
LIGHT = (170, 180, 192)      # minor ticks, small labels
GREY = (120, 130, 144)
AMBER = (255, 176, 0)
RED = (226, 28, 28)
DARK_RED = (120, 14, 14)
BLUE = (80, 168, 255)
HUB_RIM = mi.HUB_RIM
HUB_FACE = mi.HUB_FACE

# ---------------------------------------------------------------- geometry
# Cell dial, 147 x 115, drawn at (X + 4, Y + 2) of its cell. The needle's pivot is the
# cell's (X + 72, Y + 107), the dial's pixel (68, 105); tip radius 98; the arc runs from
# -130 to -50 degrees, the scale proper from -126 (start) to -54 (end), the middle value
# straight up at -90. The code prints the scale numbers with their top left corners at
# (18, 33), (117, 33) and (68, 18) of the dial and trims everything on the front layer
# below dial row 55, so the needle shows from about radius 50 outwards.
Q_W, Q_H = 147, 115
Q_CX, Q_CY = 68.0, 105.0
Q_TIP = 98.0
Q_A0, Q_A1 = -130.0, -50.0     # ends of the needle's travel
Q_S0, Q_S1 = -126.0, -54.0     # scale start and end
Q_ICON = (45, 27)              # top left of the 48 x 36 icon on the dial

# Tachometer, 320 x 240 at (0, 0): pivot (151, 137), tip radius 134, 0 rpm at 134 degrees
# (lower left), 9000 rpm at 361 (just below the right-hand horizontal): 227 degrees for
# 9000 rpm. The needle travels on to 365 for a value past the scale.
T_CX, T_CY, T_TIP = 151.0, 137.0, 134.0
T_MAX = 9000.0
T_REDLINE = 7500.0


def tacho_angle(rpm):
    return 134.0 + rpm * 227.0 / T_MAX


# Speedometer, 240 x 240 at (40, 0): pivot (120, 120), the picture's centre, tip radius 100,
# 0 at 141 degrees (lower left), 250 at 403 = 43 (lower right): 262 degrees for 250.
S_CX, S_CY, S_TIP = 120.0, 120.0, 100.0
S_MAX = 250.0


def speedo_angle(v):
    return 141.0 + v * 262.0 / S_MAX


# Shared large dial, 320 x 240 at (4, 2): pivot (156, 138) of the picture, the display's
# (160, 140); tip radius 125; start at -147, end at -34, middle at -90.5 degrees (113 for the
# scale); needle travel -151 to -30. The code prints the numbers centred on the picture's
# (50, 80), (275, 80) and (160, 40).
L_CX, L_CY, L_TIP = 156.0, 138.0, 125.0
L_S0, L_S1 = -147.0, -34.0
L_A0, L_A1 = -151.0, -30.0

# Driver information light: lamp centres in the overlay, which stands at (4, 2): on the
# display (30, 210) and (296, 210), radius 22 with the glow, clear of every text of the large
# gauges.
LAMPS = ((26.5, 208.5), (292.5, 208.5))

# List screens: title band above the accent line.
LIST_HEAD = 38


# ---------------------------------------------------------------- helpers

def hub(art, cx, cy, r=9.0):
    art.paint(Disc(cx, cy, r), HUB_RIM)
    art.paint(Disc(cx, cy, r - 2.2), HUB_FACE)
    art.paint(Disc(cx, cy, r * 0.28), HUB_RIM)


def ticks(art, cx, cy, angles, r0, r1, width, colour):
    for a in angles:
        art.paint(radial(cx, cy, r0, r1, a, width), colour)


def scale_number(art, s, cx, cy, r_in, angle, cap, colour, weight, track=1.8):
    """A scale number centred on the radius at angle, its box just inside radius r_in."""
    hw, hh = text_width(s, cap, track) / 2, cap / 2
    a = math.radians(angle)
    r = r_in - (hw * abs(math.cos(a)) + hh * abs(math.sin(a)))
    x, y = polar(cx, cy, r, angle)
    text(art, s, x, y - hh, cap, colour, weight=weight, align="c", track=track)


def frange(a, b, n):
    """n + 1 values from a to b."""
    return [a + (b - a) * k / n for k in range(n + 1)]


# ---------------------------------------------------------------- cell dial and page

def quad_dial():
    c = Art(Q_W, Q_H, PAGE_BG)
    c.paint(Box(0, 0, Q_W, Q_H, 9), DIAL_RIM)
    c.paint(Box(1.3, 1.3, Q_W - 1.3, Q_H - 1.3, 7.8), DIAL_BG)
    cx, cy = Q_CX + 0.5, Q_CY + 0.5  # the code's pivot is the centre of pixel (68, 105)
    # Travel past the scale ends, where the needle turns red.
    c.paint(Arc(cx, cy, 97.5, 104.5, Q_A0, Q_S0), DARK_RED)
    c.paint(Arc(cx, cy, 97.5, 104.5, Q_S1, Q_A1), DARK_RED)
    c.paint(Arc(cx, cy, 103.0, 104.5, Q_S0, Q_S1), TRACK)
    # Sixteen steps: long marks at start, middle and end, medium at the quarters.
    angles = frange(Q_S0, Q_S1, 16)
    ticks(c, cx, cy, [a for k, a in enumerate(angles) if k % 4], 98.0, 104.0, 1.3, LIGHT)
    ticks(c, cx, cy, [angles[4], angles[12]], 95.0, 104.0, 2.0, WHITE)
    ticks(c, cx, cy, [angles[0], angles[8], angles[16]], 92.5, 104.0, 2.6, WHITE)
    # Read-out window for the value (right edge at 88) and the unit (from 105).
    c.paint(Box(21, 79, 144, 112, 5), PANEL_EDGE)
    c.paint(Box(22, 80, 143, 111, 4), PANEL)
    c.paint(seg(97.5, 85, 97.5, 106, 1.0), PANEL_EDGE)
    return c


def page_background():
    """Behind the cells: near black, with faint corner brackets that mark the four dial
    places; a dial covers its brackets, so they show only where a cell is empty."""
    c = Art(320, 240, PAGE_BG)
    arm, w = 12.0, 1.5
    for x0 in (0, 160):
        for y0 in (0, 120):
            l, t, r, b = x0 + 4 + 0.75, y0 + 2 + 0.75, x0 + 151 - 0.75, y0 + 117 - 0.75
            for (px, py, sx, sy) in ((l, t, 1, 1), (r, t, -1, 1), (l, b, 1, -1), (r, b, -1, -1)):
                c.paint(Line([(px + sx * arm, py), (px, py), (px, py + sy * arm)], w), BRACKET)
    return c


# ---------------------------------------------------------------- icons

def thermometer(c, x, top, bulb_y, fill=RED, r=4.2, scale_marks=3):
    """Upright thermometer: white outline, coloured column and bulb."""
    c.paint(Line([(x, top), (x, bulb_y)], 5.6) | Disc(x, bulb_y, r), WHITE)
    c.paint(Line([(x, top), (x, bulb_y)], 2.8) | Disc(x, bulb_y, r - 1.5), DIAL_BG)
    mid = top + (bulb_y - top) * 0.42
    c.paint(Line([(x, mid), (x, bulb_y)], 1.6) | Disc(x, bulb_y, r - 2.2), fill)
    for k in range(scale_marks):
        yy = top + 2.0 + k * 3.2
        c.paint(seg(x + 3.6, yy, x + 6.2, yy, 1.3), WHITE)


def wave(x0, x1, y, amp=1.6, period=7.0, width=2.0):
    n = max(2, int((x1 - x0) * 2))
    pts = [(x0 + (x1 - x0) * k / n, y + amp * math.sin(2 * math.pi * (x1 - x0) * k / n / period))
           for k in range(n + 1)]
    return Line(pts, width)


def cog_shape(cx, cy, r_tip, r_root, teeth, hole, tooth_w):
    parts = [Disc(cx, cy, r_root)]
    for k in range(teeth):
        a = 360.0 * k / teeth - 90.0
        tooth = Box(cx - tooth_w / 2, cy - r_tip, cx + tooth_w / 2, cy - r_root + 1.5, 0.8)
        parts.append(Turned(tooth, cx, cy, a + 90.0))
    return Union(*parts) - Disc(cx, cy, hole)


def wheel(c, cx, cy, r, spokes=5, tyre=None):
    tyre = tyre if tyre is not None else max(2.6, r * 0.3)
    c.paint(Disc(cx, cy, r), WHITE)
    c.paint(Disc(cx, cy, r - tyre), DIAL_BG)
    c.paint(Ring(cx, cy, r - tyre - 1.4, r - tyre - 0.2), LIGHT)
    for k in range(spokes):
        c.paint(radial(cx, cy, 0, r - tyre - 0.5, -90 + 360.0 * k / spokes, 1.6), WHITE)
    c.paint(Disc(cx, cy, max(1.8, r * 0.2)), WHITE)


def arrow_head(x, y, angle, size):
    """Triangle with its point at (x, y), pointing along angle."""
    a = math.radians(angle)
    bx, by = x - math.cos(a) * size, y - math.sin(a) * size
    px, py = -math.sin(a) * size * 0.6, math.cos(a) * size * 0.6
    return Poly([(x, y), (bx + px, by + py), (bx - px, by - py)])


def icon_cog(c):
    c.paint(cog_shape(24, 15, 13.5, 10.2, 8, 4.4, 4.6), WHITE)


def icon_two_wheels(c):
    c.paint(seg(13, 15, 35, 15, 3.0), GREY)
    c.paint(Box(21, 12, 27, 18, 1.5), GREY)  # differential
    wheel(c, 11, 15, 9.5, spokes=4, tyre=3.0)
    wheel(c, 37, 15, 9.5, spokes=4, tyre=3.0)


def icon_driven_wheel(c):
    wheel(c, 24, 17, 11.0)
    # Drive: a turning arrow over the top.
    c.paint(Arc(24, 17, 13.6, 15.8, -165, -35), AMBER)
    hx, hy = polar(24, 17, 14.7, -12)
    c.paint(arrow_head(hx, hy, 78, 6.5), AMBER)


def icon_wheel(c):
    wheel(c, 24, 15, 13.8)


def icon_coolant(c):
    thermometer(c, 24, 1.5, 17.5, fill=RED, r=4.6)
    c.paint(wave(4, 16.5, 21, amp=1.5), BLUE)
    c.paint(wave(31.5, 44, 21, amp=1.5), BLUE)
    c.paint(wave(4, 44, 27, amp=1.5), BLUE)


def icon_exhaust(c):
    thermometer(c, 7, 2, 20, r=4.2)
    # Tail pipe with a flared end, heat rising.
    c.paint(seg(16, 23, 37, 23, 5.6), WHITE)
    c.paint(Poly([(36, 18.8), (44.5, 16.5), (44.5, 29.5), (36, 27.2)]), WHITE)
    c.paint(seg(16, 23, 36, 23, 2.0), GREY)
    for x in (22, 29, 36):
        pts = [(x + 1.4 * math.sin(2 * math.pi * (14 - y) / 6.0), y) for y in frange(3, 14, 22)]
        c.paint(Line(pts, 1.9), AMBER)


def icon_oil(c):
    thermometer(c, 6, 2, 20, r=4.0)
    # Oil can: body, lid, handle, spout, a drop.
    c.paint(Box(14, 15, 32, 27, 2.0), WHITE)
    c.paint(Box(19, 11.5, 25, 15.5, 1.0), WHITE)
    c.paint(Line([(14.5, 17), (11.5, 17.5), (11.5, 23.5), (14.5, 24)], 1.8), WHITE)
    c.paint(Poly([(31, 16), (44.5, 9.5), (45.5, 11.5), (32, 20.5)]), WHITE)
    c.paint(Disc(44.3, 19.5, 2.4) | Poly([(42.0, 18.8), (44.3, 14.2), (46.6, 18.8)]), AMBER)


def icon_fuel(c):
    c.paint(Box(9, 3, 27, 28, 2.2), WHITE)
    c.paint(Box(12, 6, 24, 13, 1.2), DIAL_BG)
    c.paint(Box(6, 26.5, 30, 29.5, 1.0), WHITE)
    # Hose from the top of the pump to the nozzle, hanging at the side.
    c.paint(Line([(27, 8), (33, 8), (36, 11), (36, 21), (38.5, 23.5)], 2.2), WHITE)
    c.paint(Poly([(35.5, 21.5), (42.5, 20.5), (44.5, 25.5), (37.5, 26.5)]), WHITE)
    c.paint(seg(38, 18, 43.5, 14, 2.0), WHITE)  # lever
    c.paint(Box(14.5, 16.5, 21.5, 19, 0.6), AMBER)


def icon_intake(c):
    thermometer(c, 6, 2, 20, r=4.0)
    for y in (8.0, 15.0, 22.0):
        c.paint(seg(14, y, 26.5, y, 2.2), BLUE)
        c.paint(arrow_head(31, y, 0, 5.0), BLUE)
    # Bell mouth of the intake, opening to the left.
    c.paint(Line([(34, 2.5), (36.5, 6.5), (40, 9.5), (46, 10)], 2.4), WHITE)
    c.paint(Line([(34, 27.5), (36.5, 23.5), (40, 20.5), (46, 20)], 2.4), WHITE)


def icon_injector(c):
    cx = 24.0
    c.paint(Box(cx - 6, 1.5, cx + 6, 7.5, 1.2), WHITE)           # connector
    c.paint(Box(cx - 11, 2.5, cx - 5, 6, 0.8), WHITE)            # clip
    c.paint(Box(cx - 4.5, 7, cx + 4.5, 18, 1.0), WHITE)          # body
    c.paint(seg(cx - 4.5, 10.5, cx + 4.5, 10.5, 1.2), DIAL_BG)   # seal grooves
    c.paint(seg(cx - 4.5, 15, cx + 4.5, 15, 1.2), DIAL_BG)
    c.paint(Poly([(cx - 3.2, 18), (cx + 3.2, 18), (cx + 1.4, 22.5), (cx - 1.4, 22.5)]), WHITE)
    for a in (60, 75, 90, 105, 120):
        c.paint(radial(cx, 22.5, 2.5, 8.0, a, 1.5), AMBER)


def icon_spark(c):
    y = 15.0
    c.paint(Box(1.5, y - 2.2, 6, y + 2.2, 0.8), WHITE)            # terminal
    c.paint(Box(5.5, y - 5, 20, y + 5, 2.0), WHITE)               # insulator
    for x in (9.0, 12.5, 16.0):
        c.paint(seg(x, y - 5.2, x, y + 5.2, 1.1), DIAL_BG)
    c.paint(Box(19.5, y - 7.5, 27, y + 7.5, 1.0), WHITE)          # hex
    c.paint(seg(23.25, y - 7.5, 23.25, y + 7.5, 1.0), DIAL_BG)
    c.paint(Box(26.5, y - 4, 34, y + 4, 0.5), LIGHT)              # thread
    for x in (29.5, 32):
        c.paint(seg(x, y - 4, x, y + 4, 1.0), DIAL_BG)
    c.paint(seg(34, y, 37.5, y, 1.6), WHITE)                      # electrode
    c.paint(Poly([(41.5, 10), (47, 16), (43.2, 16.2), (45.5, 23.5), (39.2, 16.3), (42.6, 16)]),
            AMBER)


def icon_nitrous(c):
    y = 17.0
    c.paint(Line([(9, y), (31, y)], 15.0), WHITE)                 # bottle lying down
    c.paint(Box(24.5, y - 7.6, 27.5, y + 7.6), BLUE)              # band
    c.paint(Box(38, y - 2.6, 41.5, y + 2.6, 0.6), WHITE)          # neck
    c.paint(Box(41, y - 5, 46, y + 5, 1.0), WHITE)                # valve
    c.paint(seg(43.5, y - 5, 43.5, y - 11, 1.8), WHITE)           # stem
    c.paint(seg(39.5, y - 11.5, 47.5, y - 11.5, 2.4), AMBER)      # hand wheel


def icon_throttle(c):
    cx, cy = 21.0, 15.0
    c.paint(Box(cx - 15, cy - 2.5, cx - 12, cy + 2.5), WHITE)     # flange stubs
    c.paint(Disc(cx, cy, 13.5), WHITE)
    c.paint(Disc(cx, cy, 10.2), DIAL_BG)
    c.paint(radial(cx, cy, -9.0, 9.0, -40, 2.8), AMBER)           # butterfly plate
    c.paint(Disc(cx, cy, 2.0), WHITE)                             # spindle
    c.paint(Line([(cx + 13.5, cy), (cx + 18, cy), (cx + 24, cy - 8)], 2.4), WHITE)  # lever
    c.paint(Disc(cx + 24, cy - 8, 2.6), WHITE)


def icon_gearbox(c):
    thermometer(c, 7, 2, 20, r=4.2)
    c.paint(cog_shape(31, 15, 12.5, 9.5, 8, 3.8, 4.2), WHITE)


def gear_shift(c, colour=WHITE):
    """Shift gate: three lanes joined across the middle, knob in first."""
    for x in (12.0, 24.0, 36.0):
        c.paint(seg(x, 6, x, 28, 2.8), colour)
    c.paint(seg(12, 17, 36, 17, 2.8), colour)
    c.paint(Disc(12, 6, 4.6), AMBER)


ICONS = [
    ("image_Dignp", None),
    ("image_G2C5Y", icon_cog),
    ("image_7ec7Y", icon_two_wheels),
    ("image_jQsOg", icon_driven_wheel),
    ("image_hDMQf", icon_wheel),
    ("image_lfeNI", icon_coolant),
    ("image_p2_xQ", icon_exhaust),
    ("image_i3_Lp", icon_oil),
    ("image_N27F7", icon_fuel),
    ("image_sayNy", icon_intake),
    ("image_cwEU3", icon_injector),
    ("image_7Uoz3", icon_spark),
    ("image_WQMEm", icon_nitrous),
    ("image_7ZIgv", icon_throttle),
    ("image_WziCr", icon_gearbox),
]


def icons(dial):
    """The dial's icons: each on the piece of dial that it covers, so that it sits on the
    face without a seam whether drawn opaque or with its transparency."""
    out = {}
    for name, draw in ICONS:
        c = dial.crop(Q_ICON[0], Q_ICON[1], 48, 36)
        if draw:
            draw(c)
        out[name] = c
    # The gear panel's icon stands on the front layer over the page background.
    g = Art(48, 36, PAGE_BG, opaque=False)
    gear_shift(g)
    g.cutout(0.5)
    out["image_qMjyV"] = g
    return out


# ---------------------------------------------------------------- large faces

def tachometer():
    c = Art(320, 240, PAGE_BG)
    cx, cy = T_CX + 0.5, T_CY + 0.5
    a_end = tacho_angle(T_MAX)
    c.paint(Arc(cx, cy, 84.0, 85.5, tacho_angle(0) - 4, a_end + 4), TRACK)
    c.paint(Arc(cx, cy, 131.5, 136.0, tacho_angle(0), a_end), TRACK)
    c.paint(Arc(cx, cy, 116.0, 136.0, tacho_angle(T_REDLINE), a_end), RED)
    c.paint(Arc(cx, cy, 126.0, 136.0, a_end, a_end + 4), DARK_RED)
    c.paint(Arc(cx, cy, 126.0, 136.0, tacho_angle(0) - 4, tacho_angle(0)), DARK_RED)
    for k in range(0, 37):
        rpm = k * 250.0
        a = tacho_angle(rpm)
        if k % 4 == 0:
            c.paint(radial(cx, cy, 112.0, 136.0, a, 4.2), WHITE)
        elif k % 2 == 0:
            c.paint(radial(cx, cy, 121.0, 136.0, a, 2.6), WHITE)
        else:
            c.paint(radial(cx, cy, 127.0, 136.0, a, 1.6), LIGHT)
    for k in range(10):
        scale_number(c, str(k), cx, cy, 108.0, tacho_angle(k * 1000.0), 18,
                     RED if k * 1000 >= T_REDLINE else WHITE, 3.0)
    text(c, "RPM", cx, 84, 11, AMBER, weight=2.0, align="c")
    text(c, "x1000", cx, 100, 8, LIGHT, weight=1.5, align="c")
    text(c, "2-STEP", 3, 33, 7, GREY, weight=1.4)
    text(c, "LIMIT", 240, 157.5, 7, GREY, weight=1.4, align="r")
    hub(c, cx, cy, 10.0)
    return c


def speedometer():
    c = Art(240, 240, PAGE_BG)
    cx, cy = S_CX + 0.5, S_CY + 0.5
    a0, a1 = speedo_angle(0), speedo_angle(S_MAX)
    c.paint(Arc(cx, cy, 103.5, 107.5, a0, a1), TRACK)
    c.paint(Arc(cx, cy, 60.0, 61.5, a0 - 4, a1 + 4), TRACK)
    c.paint(Arc(cx, cy, 99.0, 107.5, a0 - 4, a0), DARK_RED)
    c.paint(Arc(cx, cy, 99.0, 107.5, a1, a1 + 4), DARK_RED)
    for v in range(0, 251, 5):
        a = speedo_angle(v)
        if v % 25 == 0:
            c.paint(radial(cx, cy, 88.0, 107.5, a, 3.2), WHITE)
        else:
            c.paint(radial(cx, cy, 99.0, 107.5, a, 1.5), LIGHT)
    for v in range(0, 251, 25):
        scale_number(c, str(v), cx, cy, 85.0, speedo_angle(v), 10, WHITE, 1.9, track=1.5)
    text(c, "MPH", 151, 205, 9, AMBER, weight=1.7)
    hub(c, cx, cy, 9.0)
    return c


def large_dial():
    c = Art(320, 240, PAGE_BG)
    cx, cy = L_CX + 0.5, L_CY + 0.5
    c.paint(Arc(cx, cy, 100.0, 101.5, L_A0, L_A1), TRACK)
    c.paint(Arc(cx, cy, 126.5, 131.0, L_S0, L_S1), TRACK)
    c.paint(Arc(cx, cy, 120.0, 131.0, L_A0, L_S0), DARK_RED)
    c.paint(Arc(cx, cy, 120.0, 131.0, L_S1, L_A1), DARK_RED)
    angles = frange(L_S0, L_S1, 16)
    for k, a in enumerate(angles):
        if k % 8 == 0:
            c.paint(radial(cx, cy, 108.0, 131.0, a, 4.0), WHITE)
        elif k % 4 == 0:
            c.paint(radial(cx, cy, 114.0, 131.0, a, 2.8), WHITE)
        else:
            c.paint(radial(cx, cy, 121.0, 131.0, a, 1.6), LIGHT)
    # Window of the large value, which the code right-aligns at the picture's x 261; the
    # driver light's lamps stand left and right of it.
    c.paint(Box(84, 172, 268, 237, 7), PANEL_EDGE)
    c.paint(Box(85.3, 173.3, 266.7, 235.7, 5.8), PANEL)
    hub(c, cx, cy, 10.0)
    return c


def driver_light():
    """Two lamps in the lower corners, on the front layer over the large faces; all else
    transparent. The picture stands at (4, 2), so its last two rows fall below the screen
    and are left empty."""
    c = Art(320, 240, PAGE_BG, opaque=False)
    for cx, cy in LAMPS:
        for r in frange(22.0, 17.5, 5):  # glow, fading out into the face
            c.paint(Disc(cx, cy, r), mix(PAGE_BG, AMBER, 0.22 + (22.0 - r) * 0.06))
        c.paint(Disc(cx, cy, 17.5), (70, 76, 86))
        c.paint(Disc(cx, cy, 15.5), AMBER)
        c.paint(Disc(cx, cy - 3.0, 8.0), (255, 214, 110))
        c.paint(Disc(cx, cy - 7.5, 2.2), PAGE_BG)
        c.paint(Box(cx - 1.9, cy - 3.2, cx + 1.9, cy + 8.8, 0.9), PAGE_BG)
    c.cutout(0.5)
    return c


# ---------------------------------------------------------------- list, splash

def list_background():
    c = Art(320, 240, PAGE_BG)
    c.paint(Box(0, 0, 320, LIST_HEAD), lambda x, y: mix((30, 36, 46), (18, 22, 29), y / LIST_HEAD))
    c.paint(Box(0, LIST_HEAD, 320, LIST_HEAD + 2), AMBER)
    c.paint(Box(3, 43, 317, 238, 6), (34, 40, 50))
    c.paint(Box(4.2, 44.2, 315.8, 236.8, 4.8), (12, 14, 19))
    return c


def splash():
    c = Art(320, 240, PAGE_BG)
    cx, cy, r = 160.5, 146.0, 104.0
    # A sweep of scale from slate through amber into red, over the top of the screen.
    a0, a1 = 200.0, 340.0

    def sweep(x, y):
        a = math.degrees(math.atan2(y - cy, x - cx)) % 360.0
        t = (a - a0) / (a1 - a0)
        return mix(TRACK, AMBER, t / 0.7) if t < 0.7 else mix(AMBER, RED, (t - 0.7) / 0.2)

    c.paint(Arc(cx, cy, r - 6, r, a0, a1), sweep)
    for k in range(29):
        a = a0 + (a1 - a0) * k / 28
        long = k % 4 == 0
        c.paint(radial(cx, cy, r - (22 if long else 15), r - 8, a, 3.0 if long else 1.5),
                WHITE if long else LIGHT)
    # Needle at the edge of the red.
    x1, y1 = polar(cx, cy, r - 12, a0 + (a1 - a0) * 0.84)
    c.paint(seg(cx, cy, x1, y1, 4.0), AMBER)
    hub(c, cx, cy, 10.0)
    cap, gap = 22, 7.0
    w1, w2 = text_width("MOTOR", cap), text_width("DASH", cap)
    x0 = 160.5 - (w1 + gap + w2) / 2
    text(c, "MOTOR", x0, 170, cap, WHITE, weight=3.8)
    text(c, "DASH", x0 + w1 + gap, 170, cap, AMBER, weight=3.8)
    c.paint(Box(x0, 199, x0 + w1 + gap + w2, 200.5), TRACK)
    text(c, "MOTORSPORT DATA DISPLAY", 160.5, 207, 6, GREY, weight=1.3, align="c")
    return c


# ---------------------------------------------------------------- key faces

def shifted(shape, dy):
    return lambda x, y: shape(x, y - dy)


def quad_key_symbols():
    """Symbols of the 64 x 44 keys, centred on (32, 22); predicates of make_images."""
    cx, cy = mi.KEY_W / 2, 22.0
    up = shifted(mi.arrow_up(), -2.0)
    small_up = mi.union(mi.polygon([(0.0, -10.0), (9.0, 0.0), (-9.0, 0.0)]),
                        mi.rect(-3.0, -1.0, 3.0, 10.0))

    def at(shape, x0, y0, flip=False):
        return lambda x, y: shape(x - x0, (y0 - y) if flip else (y - y0))

    def cog(x, y):
        dx, dy = x - cx, y - cy
        r = math.hypot(dx, dy)
        if r < 5.0 or r > 14.5:
            return False
        if r <= 11.0:
            return True
        a = (math.degrees(math.atan2(dy, dx)) + 90.0) % 45.0
        half = math.degrees(math.atan2(2.6, r))
        return a < half or a > 45.0 - half

    def pencil(x, y):
        # Along the diagonal from the lower left (tip) to the upper right.
        u, v = ((x - cx) + (y - cy)) / math.sqrt(2), ((x - cx) - (y - cy)) / math.sqrt(2)
        # v runs from the tip (-) to the cap (+); u across.
        if -15.0 <= v <= -8.5:
            return abs(u) <= (v + 15.0) * 4.4 / 6.5
        if -7.5 <= v <= 10.5:
            return abs(u) <= 4.4
        if 11.5 <= v <= 15.0:
            return abs(u) <= 4.4
        return False

    return {
        "left": mi.turned(up, cx, cy, 3),
        "right": mi.turned(up, cx, cy, 1),
        "settings": cog,
        "edit": pencil,
        "updown": mi.union(at(small_up, cx - 10.0, cy), at(small_up, cx + 10.0, cy, flip=True)),
        "back": shifted(mi.arrow_back(), -2.0),
        "plus": mi.union(mi.rect(cx - 11.0, cy - 3.0, cx + 11.0, cy + 3.0),
                         mi.rect(cx - 3.0, cy - 11.0, cx + 3.0, cy + 11.0)),
        "minus": mi.rect(cx - 11.0, cy - 3.0, cx + 11.0, cy + 3.0),
    }


QUAD_KEYS = [
    ("image_qjmfs", "left"),
    ("image_RECQ9", "right"),
    ("image_dcZTj", None),
    ("image_lOIDC", "settings"),
    ("image_EZbDq", "edit"),
    ("image_l_nCU", "updown"),
    ("image_K8cmV", "back"),
    ("image_EXOMT", "plus"),
    ("image_Ydt_p", "minus"),
]
CELL_KEYS = ["image_wCdZ6", "image_oTmS_", "image_t5QYq", "image_3u2p7"]


def key_faces():
    out = {}
    sym = quad_key_symbols()
    for name, s in QUAD_KEYS:
        out[name] = mi.key_face(sym[s] if s else None, False, height=44)
    for n, name in enumerate(CELL_KEYS, 1):
        out[name] = cell_key(n)
    # Menu keys 3 and 4, 64 x 48 like the toolkit's, released and held.
    cx, cy = mi.KEY_W / 2, mi.KEY_H / 2
    minus = mi.rect(cx - 11.0, cy - 3.0, cx + 11.0, cy + 3.0)
    plus = mi.union(minus, mi.rect(cx - 3.0, cy - 11.0, cx + 3.0, cy + 11.0))
    out["image_490GI"] = mi.key_face(minus, False)
    out["image_VQaX3"] = mi.key_face(minus, True)
    out["image_vAbsy"] = mi.key_face(plus, False)
    out["image_XC7_v"] = mi.key_face(plus, True)
    return out


def cell_key(n):
    """Four cells as on the page, cell n filled amber, the others outlined."""
    face = mi.key_face(None, False, height=44)
    cx, cy = mi.KEY_W / 2, 22.0
    w, h, g = 15.0, 10.0, 2.0
    for k in range(4):
        l = cx - w - g / 2 + (k % 2) * (w + g)
        t = cy - h - g / 2 + (k // 2) * (h + g)
        if k + 1 == n:
            face.fill(mi.rounded_rect(l, t, l + w, t + h, 1.5), AMBER)
        else:
            face.fill(mi.rounded_rect(l, t, l + w, t + h, 1.5), mi.WHITE)
            face.fill(mi.rounded_rect(l + 1.5, t + 1.5, l + w - 1.5, t + h - 1.5, 0.5), mi.FACE_UP)
    return face


# ---------------------------------------------------------------- all

def pictures():
    dial = quad_dial()
    out = {"image_2WXZO": dial, "image_NZET6": page_background()}
    out.update(icons(dial))
    out["image_ECwkf"] = tachometer()
    out["image_zIYEQ"] = speedometer()
    out["image_Gc7B6"] = large_dial()
    out["image__EYpb"] = driver_light()
    out["image_LAbHh"] = list_background()
    out["image_wKxru"] = splash()
    out.update(key_faces())
    return out


# ---------------------------------------------------------------- sheets

def as_dash(p, backdrop):
    return mi.as_dash(p, backdrop)


class Sheet:
    def __init__(self, w, h, colour=(60, 60, 60)):
        self.w, self.h = w, h
        self.px = [colour] * (w * h)

    def blit(self, img, x0, y0, s=1, backdrop=(255, 0, 255), invariant=False):
        """The picture as the dash shows it; invariant leaves transparent pixels alone."""
        px = img.rgba()
        for j in range(img.h * s):
            y = y0 + j
            if not 0 <= y < self.h:
                continue
            row = y * self.w
            for i in range(img.w * s):
                x = x0 + i
                if not 0 <= x < self.w:
                    continue
                p = px[(j // s) * img.w + i // s]
                if invariant and p[3] < 128:
                    continue
                self.px[row + x] = as_dash(p, backdrop)

    def write(self, path):
        mi.write_png(path, self.w, self.h, self.px, alpha=False)


def write_sheet(path, pics):
    big = ["image_NZET6", "image_ECwkf", "image_Gc7B6", "image__EYpb", "image_LAbHh",
           "image_wKxru"]
    icon_names = [n for n, _ in ICONS] + ["image_qMjyV"]
    keys = [n for n, _ in QUAD_KEYS] + CELL_KEYS + ["image_490GI", "image_VQaX3",
                                                     "image_vAbsy", "image_XC7_v"]
    gap = 8
    w = gap + 3 * (320 + gap)
    y = gap
    rows = [(big[:3], 1), (big[3:], 1)]
    h = gap + 3 * (240 + gap) + 3 * (36 * 3 + gap) + 3 * (48 * 2 + gap)
    sh = Sheet(w, h)
    for names, s in rows:
        for k, n in enumerate(names):
            sh.blit(pics[n], gap + k * (320 + gap), y, s, backdrop=(255, 0, 255))
        y += 240 + gap
    sh.blit(pics["image_zIYEQ"], gap, y)
    sh.blit(pics["image_2WXZO"], gap + 248, y, 2)
    y += 240 + gap
    for k, n in enumerate(icon_names):
        col, row = k % 6, k // 6
        sh.blit(pics[n], gap + col * (48 * 3 + gap), y + row * (36 * 3 + gap), 3)
    y += 3 * (36 * 3 + gap)
    for k, n in enumerate(keys):
        col, row = k % 7, k // 7
        sh.blit(pics[n], gap + col * (64 * 2 + gap), y + row * (48 * 2 + gap), 2)
    sh.write(path)


# -------- mock screens: the pictures put together as the gauge code does

def needle(sh, cx, cy, tip, width, colour):
    line = seg(cx + 0.5, cy + 0.5, tip[0] + 0.5, tip[1] + 0.5, width)
    l, t, r, b = line.bbox
    ix, iy = int(math.floor(l)) - 1, int(math.floor(t)) - 1
    a = Art(int(r - l) + 4, int(b - t) + 4, (0, 0, 0), opaque=False)
    a.paint(seg(cx + 0.5 - ix, cy + 0.5 - iy, tip[0] + 0.5 - ix, tip[1] + 0.5 - iy, width), colour)
    for j in range(a.h):
        for i in range(a.w):
            if a.alpha[j * a.w + i] >= 0.5 and 0 <= iy + j < sh.h and 0 <= ix + i < sh.w:
                sh.px[(iy + j) * sh.w + ix + i] = tuple(int(v) for v in a.rgb[j * a.w + i])


def label(sh, s, x, y, size, colour, align="l", valign="t"):
    """Stand-in for a text of the code: caps of about 0.7 of the font size."""
    s = s.upper()
    cap = max(5.0, size * 0.7)
    top = y + size * 0.15 if valign == "t" else y - cap / 2
    width = text_width(s, cap)
    x0 = x - {"l": 0, "c": width / 2, "r": width}[align]
    ix, iy = int(math.floor(x0)) - 2, int(math.floor(top)) - 2
    a = Art(int(width) + 6, int(cap) + 6, (0, 0, 0), opaque=False)
    text(a, s, x0 - ix, top - iy, cap, colour, weight=max(1.1, cap / 7.0))
    for j in range(a.h):
        for i in range(a.w):
            if a.alpha[j * a.w + i] >= 0.5 and 0 <= iy + j < sh.h and 0 <= ix + i < sh.w:
                sh.px[(iy + j) * sh.w + ix + i] = tuple(int(v) for v in a.rgb[j * a.w + i])


def quad_tip(X, Y, v, lo, hi):
    d = (v - lo) * 72.0 / (hi - lo) + 4.0
    d = min(max(d, 0.0), 80.0)
    a = (d - 130.0) * 0.01745
    return math.floor(X + 72 + math.cos(a) * 98), math.floor(Y + 107 + math.sin(a) * 98)


def large_tip(v, lo, hi, cx, cy, radius, span, top, offset):
    d = (v - lo) * span / (hi - lo) + 4.0
    d = top if d > top else (d if d > 0 else 0.0)
    a = (d - offset) * 0.01745
    return math.floor(math.cos(a) * radius + cx), math.floor(math.sin(a) * radius + cy)


def mock_quad(sh, pics, ox, oy, values):
    page = pics["image_NZET6"]
    sh.blit(page, ox, oy)
    cells = [(0, 0), (160, 0), (0, 120), (160, 120)]
    icons_ = ["image_lfeNI", "image_p2_xQ", "image_Dignp", "image_7ZIgv"]
    titles = ["COOLANT TEMP", "EGT1", "OIL PRESSURE", "TPS"]
    units = ["*C", "*C", "PSI", "%"]
    for (X, Y), v, ic, title, unit in zip(cells, values, icons_, titles, units):
        if v is None:
            continue
        sh.blit(pics["image_2WXZO"], ox + X + 4, oy + Y + 2)
        sh.blit(pics[ic], ox + X + 49, oy + Y + 29)
        label(sh, "0", ox + X + 22, oy + Y + 35, 10, WHITE)
        label(sh, "100", ox + X + 121, oy + Y + 35, 10, WHITE)
        label(sh, "50", ox + X + 72, oy + Y + 20, 10, WHITE)
        tip = quad_tip(X, Y, v, 0.0, 100.0)
        colour = (255, 252, 0) if 0 <= v <= 100 else (255, 0, 0)
        peak = quad_tip(X, Y, 80.0, 0.0, 100.0)
        for t, c, wdt in ((peak, (0, 252, 0), 1.6), (tip, colour, 3.0)):
            # Only the part above the cut at Y + 57 shows.
            x0, y0 = ox + X + 72, oy + Y + 107
            x1, y1 = ox + t[0], oy + t[1]
            k = (y0 - (oy + Y + 56.5)) / (y0 - y1)
            needle(sh, x0 + (x1 - x0) * k - 0.5, oy + Y + 56, (x1, y1), wdt, c)
        label(sh, title, ox + X + 72, oy + Y + 60, 12, WHITE, align="c")
        label(sh, unit, ox + X + 109, oy + Y + 97, 14, WHITE, valign="c")
        label(sh, "%.0f" % v, ox + X + 92, oy + Y + 87, 24, (255, 252, 0), align="r")
        label(sh, "80", ox + X + 134, oy + Y + 55, 10, (0, 252, 0))
        label(sh, "12", ox + X + 7, oy + Y + 55, 10, (0, 252, 0))
    label(sh, "USB", ox + 318, oy + 1, 8, (0, 252, 0), align="r")
    label(sh, "Logging", ox + 318, oy + 11, 8, (255, 0, 0), align="r")
    label(sh, "Eject", ox + 318, oy + 21, 8, (255, 0, 0), align="r")


def write_mock(path, pics):
    gap = 8
    w, h = gap + 3 * (320 + gap), gap + 3 * (240 + gap) + 44 * 2 + gap
    sh = Sheet(w, h)
    # Row 1: a quad page (needles at start, middle, end, past the end), and one with an empty cell.
    mock_quad(sh, pics, gap, gap, [0.0, 50.0, 100.0, 120.0])
    mock_quad(sh, pics, gap + 328, gap, [25.0, None, 75.0, -10.0])
    # Tachometer at 0, 4500 and 9000 rpm, limit at 7500.
    ox, oy = gap + 656, gap
    sh.blit(pics["image_NZET6"], ox, oy)
    sh.blit(pics["image_ECwkf"], ox, oy)
    for v, c in ((7500, (48, 252, 0)), (0, (255, 252, 0)), (4500, (255, 252, 0)), (9000, (255, 252, 0))):
        t = large_tip(v, 0, 9000, 151, 137, 134, 227, 235, 230)
        needle(sh, ox + 151, oy + 137, (ox + t[0], oy + t[1]), 5.0, c)
    label(sh, " 4500", ox + 265, oy + 174, 60, (255, 252, 0), align="r")
    label(sh, "  512", ox + 2, oy + 45, 12, WHITE)
    label(sh, " 7500", ox + 245, oy + 155, 12, WHITE)
    sh.blit(pics["image__EYpb"], ox + 4, oy + 2, invariant=True)
    # Row 2: speedometer, large dial, list screen.
    ox, oy = gap, gap + 248
    sh.blit(pics["image_NZET6"], ox, oy)
    sh.blit(pics["image_zIYEQ"], ox + 40, oy)
    for v, c in ((0, (255, 252, 0)), (125, (255, 252, 0)), (250, (255, 252, 0)), (90, (255, 152, 48))):
        t = large_tip(v, 0, 250, 160, 120, 100, 262, 270, 223)
        needle(sh, ox + 160, oy + 120, (ox + t[0], oy + t[1]), 5.0, c)
    label(sh, "  125", ox + 185, oy + 183, 40, (255, 252, 0), align="r")
    label(sh, "   90", ox + 150, oy + 155, 16, WHITE)
    ox = gap + 328
    sh.blit(pics["image_NZET6"], ox, oy)
    sh.blit(pics["image_Gc7B6"], ox + 4, oy + 2)
    label(sh, "-2.00", ox + 54, oy + 82, 14, WHITE, align="c")
    label(sh, "2.00", ox + 279, oy + 82, 14, WHITE, align="c")
    label(sh, "0.00", ox + 164, oy + 42, 14, WHITE, align="c")
    for v in (-2.0, 0.0, 2.0, 1.2):
        t = large_tip(v, -2.0, 2.0, 160, 140, 125, 113, 121, 151)
        needle(sh, ox + 160, oy + 140, (ox + t[0], oy + t[1]), 5.0,
               (0, 252, 0) if v == 1.2 else (255, 252, 0))
    label(sh, "ACCEL G", ox + 34, oy + 152, 20, WHITE)
    label(sh, "GS", ox + 199, oy + 152, 20, WHITE)
    label(sh, "DECEL", ox + 6, oy + 132, 14, (0, 252, 0))
    label(sh, "ACCEL", ox + 274, oy + 132, 14, (0, 252, 0))
    label(sh, "-0.80", ox + 10, oy + 110, 17, (0, 252, 0))
    label(sh, "1.20", ox + 289, oy + 110, 17, (0, 252, 0))
    label(sh, " 0.35", ox + 265, oy + 174, 60, (255, 252, 0), align="r")
    sh.blit(pics["image__EYpb"], ox + 4, oy + 2, invariant=True)
    ox = gap + 656
    sh.blit(pics["image_LAbHh"], ox, oy)
    label(sh, "KNOCK SPARK RESULTS", ox + 160, oy + 10, 22, WHITE, align="c")
    for n in range(8):
        label(sh, "KNOCK RETARD CYL%d" % (n + 1), ox + 10, oy + 47 + 15 * n, 12, (255, 248, 232))
        label(sh, "-1.50", ox + 310, oy + 47 + 15 * n, 12, (255, 248, 232), align="r")
    # Row 3: splash with its version text, the quad page in edit mode with the key bar.
    ox, oy = gap, gap + 496
    sh.blit(pics["image_wKxru"], ox + 1, oy)
    label(sh, "V6.50", ox + 300, oy + 210, 10, (255, 240, 216), align="r")
    ox = gap + 328
    mock_quad(sh, pics, ox, oy, [60.0, 30.0, 90.0, 45.0])
    for k, n in enumerate(["image_Ydt_p", "image_EXOMT", "image_oTmS_", "image_dcZTj", "image_K8cmV"]):
        sh.blit(pics[n], ox + 64 * k, oy + 240 - 44)
    for k, n in enumerate(["image_qjmfs", "image_RECQ9", "image_dcZTj", "image_lOIDC", "image_EZbDq"]):
        sh.blit(pics[n], gap + 656 + 64 * k, oy)
    for k, n in enumerate(["image_qjmfs", "image_RECQ9", "image_l_nCU", "image_dcZTj", "image_EZbDq"]):
        sh.blit(pics[n], gap + 656 + 64 * k, oy + 52)
    for k, n in enumerate(["up", "down", "image_490GI", "image_vAbsy", "back"]):
        img = pics.get(n)
        if img is None:
            continue
        sh.blit(img, gap + 656 + 64 * k, oy + 104)
    for k, n in enumerate(["up", "down", "image_VQaX3", "image_XC7_v", "back"]):
        img = pics.get(n)
        if img is not None:
            sh.blit(img, gap + 656 + 64 * k, oy + 160)
    sh.write(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--out", default=os.path.dirname(here), help="folder for the PNGs")
    ap.add_argument("--sheet", help="also write a contact sheet here, and SHEET-mock.png")
    args = ap.parse_args()
    pics = pictures()
    for name, img in sorted(pics.items()):
        mi.write_png(os.path.join(args.out, name + ".png"), img.w, img.h, img.rgba())
    if args.sheet:
        write_sheet(args.sheet, pics)
        toolkit = mi.pictures()
        toolkit.update(pics)
        stem, ext = os.path.splitext(args.sheet)
        write_mock(stem + "-mock" + (ext or ".png"), toolkit)


if __name__ == "__main__":
    main()
