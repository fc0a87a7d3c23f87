#!/usr/bin/env python3
"""Copies the dash's six fonts out of Debian's font packages into resources/fonts/.

    apt-get install fonts-liberation2 fonts-dejavu-core fonts-play fonts-comic-neue \
        fonts-karmilla python3-fonttools
    /usr/bin/python3 resources/fonts/src/make_fonts.py [--out DIR]

Run it with the Python that has Debian's fontTools. Three faces are copied as they are.
Two are made here, so that every file is a TrueType (glyf) font:

- the numbers face is the bold monospaced face cut down to space, hyphen, full stop,
  digits, colon and soft hyphen;
- the casual face ships with PostScript outlines only; its outlines are turned into
  quadratic ones (at most one font unit off the curve).

Neither step looks at the clock, so the same packages give the same bytes. Each
package's copyright file goes beside the fonts as its licence. Commit what it writes.
"""

import argparse
import os
import shutil

from fontTools import subset
from fontTools.pens.cu2quPen import Cu2QuPen
from fontTools.pens.ttGlyphPen import TTGlyphPen
from fontTools.ttLib import TTFont, newTable

HERE = os.path.dirname(os.path.abspath(__file__))

# (file written, Debian package, file in the package)
COPIED = [
    ("LiberationSans-Regular.ttf", "fonts-liberation2", "/usr/share/fonts/truetype/liberation2/LiberationSans-Regular.ttf"),
    ("LiberationMono-Regular.ttf", "fonts-liberation2", "/usr/share/fonts/truetype/liberation2/LiberationMono-Regular.ttf"),
    ("Play-Regular.ttf", "fonts-play", "/usr/share/fonts/truetype/play/Play-Regular.ttf"),
    ("Karmilla-Bold.ttf", "fonts-karmilla", "/usr/share/fonts/truetype/karmilla/Karmilla-Bold.ttf"),
]
NUMBERS_SOURCE = ("fonts-dejavu-core", "/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf")
NUMBERS_OUT = "DejaVuSansMono-Bold-Numbers.ttf"
# Space, hyphen, full stop, digits, colon, soft hyphen.
NUMBERS_CHARS = [0x20, 0x2D, 0x2E] + list(range(0x30, 0x3A)) + [0x3A, 0xAD]
CASUAL_SOURCE = ("fonts-comic-neue", "/usr/share/fonts/opentype/comic-neue/ComicNeue-Bold.otf")
CASUAL_OUT = "ComicNeue-Bold.ttf"
LICENCES = {
    "fonts-liberation2": "LICENSE-liberation.txt",
    "fonts-dejavu-core": "LICENSE-dejavu.txt",
    "fonts-play": "LICENSE-play.txt",
    "fonts-comic-neue": "LICENSE-comic-neue.txt",
    "fonts-karmilla": "LICENSE-karmilla.txt",
}


def make_numbers(src, dst):
    options = subset.Options()
    options.layout_features = []
    options.drop_tables += ["GSUB", "GPOS", "GDEF", "kern"]
    options.name_IDs = ["*"]
    options.notdef_outline = True
    options.recalc_timestamp = False
    font = subset.load_font(src, options)
    subsetter = subset.Subsetter(options)
    subsetter.populate(unicodes=NUMBERS_CHARS)
    subsetter.subset(font)
    subset.save_font(font, dst, options)


def make_casual(src, dst, max_err=1.0):
    font = TTFont(src, recalcTimestamp=False)
    order = font.getGlyphOrder()
    glyphs = font.getGlyphSet()
    glyf = newTable("glyf")
    glyf.glyphOrder = order
    glyf.glyphs = {}
    for name in order:
        pen = TTGlyphPen(glyphs)
        # PostScript contours run the other way round from TrueType ones.
        glyphs[name].draw(Cu2QuPen(pen, max_err, reverse_direction=True))
        glyf.glyphs[name] = pen.glyph()
    font["loca"] = newTable("loca")
    font["glyf"] = glyf
    maxp = newTable("maxp")
    maxp.tableVersion = 0x00010000
    for field in ("maxZones",):
        setattr(maxp, field, 1)
    for field in ("maxTwilightPoints", "maxStorage", "maxFunctionDefs", "maxInstructionDefs",
                  "maxStackElements", "maxSizeOfInstructions", "maxComponentElements"):
        setattr(maxp, field, 0)
    font["maxp"] = maxp
    post = font["post"]
    post.formatType = 2.0
    post.extraNames = []
    post.mapping = {}
    post.glyphOrder = order
    for tag in ("CFF ", "VORG"):
        if tag in font:
            del font[tag]
    font.sfntVersion = "\x00\x01\x00\x00"
    font["head"].glyphDataFormat = 0
    font.save(dst)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--out", default=os.path.dirname(HERE))
    args = parser.parse_args()
    for name, _, path in COPIED:
        shutil.copyfile(path, os.path.join(args.out, name))
    make_numbers(NUMBERS_SOURCE[1], os.path.join(args.out, NUMBERS_OUT))
    make_casual(CASUAL_SOURCE[1], os.path.join(args.out, CASUAL_OUT))
    for package, name in LICENCES.items():
        shutil.copyfile(os.path.join("/usr/share/doc", package, "copyright"), os.path.join(args.out, name))


if __name__ == "__main__":
    main()
