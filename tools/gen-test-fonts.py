#!/usr/bin/python3
"""Writes the tiny TrueType programs that the font tests embed (tests/data/fonts): three glyphs
(.notdef, A, B) named in a post table, each with one charmap of the kind the file's name says:

    symbol-cmap.ttf    (3,0) with A at 0xF041 and B at 0xF042, as symbol fonts have them
    mac-cmap.ttf       (1,0) with A at 0x41 and B at 0x42
    unicode-cmap.ttf   (3,1) with A at U+0041 and B at U+0042

    tools/gen-test-fonts.py [repo-root]
"""
import os
import sys

from fontTools.fontBuilder import FontBuilder
from fontTools.pens.ttGlyphPen import TTGlyphPen
from fontTools.ttLib.tables._c_m_a_p import CmapSubtable

ROOT = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
OUT = os.path.join(ROOT, "tests", "data", "fonts")
NAMES = [".notdef", "A", "B"]


def glyph():
    pen = TTGlyphPen(None)
    pen.moveTo((50, 0))
    pen.lineTo((450, 0))
    pen.lineTo((450, 700))
    pen.closePath()
    return pen.glyph()


def build(name, platform, encoding, mapping):
    fb = FontBuilder(1000, isTTF=True)
    fb.setupGlyphOrder(NAMES)
    fb.setupCharacterMap({})
    fb.setupGlyf({n: glyph() for n in NAMES})
    fb.setupHorizontalMetrics({n: (500, 50) for n in NAMES})
    fb.setupHorizontalHeader(ascent=800, descent=-200)
    fb.setupNameTable({"familyName": "Test" + name.split("-")[0].title(), "styleName": "Regular"})
    fb.setupOS2()
    fb.setupPost(keepGlyphNames=True)
    sub = CmapSubtable.getSubtableClass(4)(4)
    sub.platformID, sub.platEncID, sub.language = platform, encoding, 0
    sub.cmap = mapping
    if platform == 1:
        sub = CmapSubtable.getSubtableClass(6)(6)
        sub.platformID, sub.platEncID, sub.language = platform, encoding, 0
        sub.cmap = mapping
    fb.font["cmap"].tables = [sub]
    fb.save(os.path.join(OUT, name))


def main():
    os.makedirs(OUT, exist_ok=True)
    build("symbol-cmap.ttf", 3, 0, {0xF041: "A", 0xF042: "B"})
    build("mac-cmap.ttf", 1, 0, {0x41: "A", 0x42: "B"})
    build("unicode-cmap.ttf", 3, 1, {0x41: "A", 0x42: "B"})


if __name__ == "__main__":
    main()
