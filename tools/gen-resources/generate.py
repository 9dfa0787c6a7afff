#!/usr/bin/python3
"""Builds the resource file and the font tables from published data in Debian packages.

    generate.py --out DIR [--cache DIR]

Inputs, fetched with apt-get download into the cache (see debs.py): the Adobe Core 14 AFM
files, glyphlist.txt and zapfdingbats.txt from libpdfbox2-java's jar; the CMap resources of
poppler-data; the Type 1 fonts of fonts-urw-base35. Outputs in DIR: ferrox.res and the C++
sources ResourceData.cpp, GlyphListData.cpp, EncodingData.cpp, StandardFontData.cpp.
"""
import argparse
import hashlib
import os
import sys

sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import afm  # noqa: E402
import base14  # noqa: E402
import cpptables  # noqa: E402
import debs  # noqa: E402
import pdfencodings  # noqa: E402
import resfile  # noqa: E402
import type1  # noqa: E402


def read_list(text):
    rows = []
    for line in text.splitlines():
        if line.startswith("#") or not line.strip():
            continue
        name, values = line.split(";")
        # Names with several code points keep the first.
        rows.append((name, int(values.split()[0], 16)))
    return sorted(rows, key=lambda r: r[0].encode())


def cmap_names():
    names = []
    with open(os.path.join(HERE, "cmaps.txt")) as f:
        for line in f:
            if not line.startswith("#"):
                names += line.split()
    return names


def write_if_changed(path, data):
    if isinstance(data, str):
        data = data.encode()
    if os.path.exists(path):
        with open(path, "rb") as f:
            if f.read() == data:
                return
    with open(path + ".tmp", "wb") as f:
        f.write(data)
    os.replace(path + ".tmp", path)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--out", required=True)
    ap.add_argument("--cache", default=os.path.expanduser("~/.cache/scrivex-debs"))
    args = ap.parse_args()
    os.makedirs(args.out, exist_ok=True)

    jar = debs.PdfboxResources(args.cache)
    source = "libpdfbox2-java %s, poppler-data %s, fonts-urw-base35 %s" % tuple(
        debs.version(args.cache, p) for p in debs.PACKAGES)
    agl = read_list(jar.text("glyphlist/glyphlist.txt"))
    # The Zapf Dingbats list also names `space`, which the Adobe Glyph List has already.
    zapf = [r for r in read_list(jar.text("glyphlist/zapfdingbats.txt")) if r[0] != "space"]
    afms = {f[0]: afm.Afm(jar.text("afm/%s.afm" % f[0])) for f in base14.FONTS}
    tables = pdfencodings.all_encodings(afms, agl)

    urw = debs.urw_font_folder(args.cache)
    records, res_fonts = [], []
    for name, ascent, descent, bbox, flags, urw_name in base14.FONTS:
        a = afms[name]
        widths = a.widths()
        enc_key = base14.default_encoding_key(name)
        enc = tables[enc_key]
        records.append({"name": name, "ascent": ascent, "descent": descent, "bbox": bbox,
                        "encoding_var": dict(cpptables.ENCODING_VARS)[enc_key],
                        "widths": widths})
        with open(os.path.join(urw, urw_name + ".t1"), "rb") as f:
            pfb, lengths = type1.to_pfb(f.read())
        all_w = list(widths.values())
        res_fonts.append({
            "name": name, "ascent": ascent, "descent": descent, "bbox": bbox, "flags": flags,
            "widths": [widths.get(n, 0) if n else 0 for n in enc],
            "avg_width": int(round(sum(all_w) / len(all_w))), "max_width": max(all_w),
            "cap_height": a.number("CapHeight", bbox[3]),
            "italic_angle": a.number("ItalicAngle"), "stem_v": a.number("StdVW", 80),
            "pfb": pfb, "lengths": lengths})
    res_fonts.sort(key=lambda f: f["name"])

    files = debs.poppler_cmap_files(args.cache)
    cmaps = []
    for name in cmap_names():
        if name not in files:
            raise SystemExit("poppler-data has no CMap %s" % name)
        with open(files[name], "rb") as f:
            cmaps.append((name, f.read()))

    res = resfile.build(res_fonts, cmaps, "gen-resources")
    res_path = os.path.join(os.path.abspath(args.out), "ferrox.res")
    write_if_changed(res_path, res)
    write_if_changed(os.path.join(args.out, "ResourceData.cpp"),
                     cpptables.resource_data(res_path, hashlib.sha256(res).hexdigest()))
    write_if_changed(os.path.join(args.out, "GlyphListData.cpp"),
                     cpptables.glyph_lists(agl, zapf, "glyphlist.txt and zapfdingbats.txt"))
    write_if_changed(os.path.join(args.out, "EncodingData.cpp"),
                     cpptables.encodings(tables, "the AFM files and code pages"))
    write_if_changed(os.path.join(args.out, "StandardFontData.cpp"),
                     cpptables.standard_fonts(records, "the Adobe Core 14 AFM files"))
    print("gen-resources: %d bytes of resources from %s" % (len(res), source))


if __name__ == "__main__":
    main()
