#!/usr/bin/python3
"""Writes the seeds of the font program fuzz target (fuzz/seeds/fontprogram): tiny TrueType,
OpenType/CFF and bare CFF programs built with fontTools, each behind the target's one-byte
header (the kind of font dictionary to embed it in).

    tools/gen-font-seeds.py [repo-root]
"""
import io
import os
import sys

from fontTools.fontBuilder import FontBuilder
from fontTools.pens.t2CharStringPen import T2CharStringPen
from fontTools.pens.ttGlyphPen import TTGlyphPen

ROOT = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
OUT = os.path.join(ROOT, "fuzz", "seeds", "fontprogram")
NAMES = [".notdef", "space", "A", "bar"]
CMAP = {0x20: "space", 0x41: "A", 0x7C: "bar"}


def draw(pen, name):
    if name == "A":
        pen.moveTo((10, 0)); pen.lineTo((250, 700)); pen.lineTo((490, 0)); pen.closePath()
    elif name == "bar":
        pen.moveTo((100, -100)); pen.qCurveTo((150, 400), (100, 800)) if hasattr(pen, "qCurveTo") else None
        pen.lineTo((120, 800)); pen.lineTo((120, -100)); pen.closePath()
    elif name == ".notdef":
        pen.moveTo((50, 0)); pen.lineTo((450, 0)); pen.lineTo((450, 700)); pen.lineTo((50, 700)); pen.closePath()


def truetype():
    fb = FontBuilder(1000, isTTF=True)
    fb.setupGlyphOrder(NAMES)
    fb.setupCharacterMap(CMAP)
    glyphs = {}
    for n in NAMES:
        pen = TTGlyphPen(None)
        draw(pen, n)
        glyphs[n] = pen.glyph()
    fb.setupGlyf(glyphs)
    fb.setupHorizontalMetrics({n: (500, 0) for n in NAMES})
    fb.setupHorizontalHeader(ascent=800, descent=-200)
    fb.setupNameTable({"familyName": "Seed", "styleName": "Regular"})
    fb.setupOS2()
    fb.setupPost()
    out = io.BytesIO()
    fb.save(out)
    return out.getvalue()


def opentype():
    fb = FontBuilder(1000, isTTF=False)
    fb.setupGlyphOrder(NAMES)
    fb.setupCharacterMap(CMAP)
    charstrings = {}
    for n in NAMES:
        pen = T2CharStringPen(500, None)
        draw(pen, n)
        charstrings[n] = pen.getCharString()
    fb.setupCFF("SeedCFF", {"FullName": "SeedCFF"}, charstrings, {})
    fb.setupHorizontalMetrics({n: (500, 0) for n in NAMES})
    fb.setupHorizontalHeader(ascent=800, descent=-200)
    fb.setupNameTable({"familyName": "SeedCFF", "styleName": "Regular"})
    fb.setupOS2()
    fb.setupPost()
    out = io.BytesIO()
    fb.save(out)
    return fb.font, out.getvalue()


def main():
    os.makedirs(OUT, exist_ok=True)
    # Header byte: 0 FontFile2 (TrueType), 1 FontFile3 OpenType, 2 FontFile3 Type1C (bare CFF),
    # 3 FontFile (Type 1).
    tt = truetype()
    font, otf = opentype()
    cff = io.BytesIO()
    font["CFF "].cff.compile(cff, font)
    for name, kind, data in (("truetype", 0, tt), ("opentype", 1, otf), ("cff", 2, cff.getvalue())):
        with open(os.path.join(OUT, name), "wb") as f:
            f.write(bytes([kind]) + data)


if __name__ == "__main__":
    main()
