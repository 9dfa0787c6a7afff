#!/usr/bin/python3
"""Known-answer data for the CCITT fax decoder, made by an independent encoder.

Draws a few bilevel images, writes each as an uncompressed TIFF, lets libtiff's fax encoders
(tiffcp from libtiff-tools) compress it as Group 3 one-dimensional, Group 3 two-dimensional
(with and without fill bits before the end-of-line codes) and Group 4, and keeps the coded
strip beside the image:

    tests/data/fax/<image>.pbm          the image, P4, 1 = black
    tests/data/fax/<image>-<coding>.fax the coded strip
    tests/data/fax/cases.tsv            image, coding, K, EndOfLine, Columns, Rows

Run it again only to change the images; the outputs are committed.
    tools/gen-fax-fixtures.py [OUTDIR]
"""
import os
import random
import struct
import subprocess
import sys
import tempfile

CODINGS = {
    # name: (tiffcp -c option, K for the PDF parameters, EndOfLine)
    "g3-1d": ("g3:1d", 0, True),
    "g3-2d": ("g3:2d", 4, True),
    "g3-2d-fill": ("g3:2d:fill", 4, True),
    "g4": ("g4", -1, False),
}


def draw_text(w, h, rng):
    """Glyph-like blobs on white: the runs of a scanned page of text."""
    img = [[0] * w for _ in range(h)]
    x = 3
    while x < w - 8:
        gw = rng.randint(2, 7)
        top, bottom = rng.randint(2, 6), h - rng.randint(2, 6)
        for y in range(top, bottom):
            for dx in range(gw):
                if rng.random() < 0.8:
                    img[y][x + dx] = 1
        x += gw + rng.randint(1, 4)
    return img


def draw_wide(w, h, rng):
    """Runs longer than 2560 and near the make-up code boundaries, in both colours."""
    img = []
    for y in range(h):
        row, color = [], y % 2
        for run in (2560 + y, 64, 1728, 1, 63, 2624 - y):
            row += [color] * run
            color ^= 1
        img.append((row + [color] * w)[:w])
    return img


def draw_noise(w, h, rng):
    """Short runs everywhere, rows starting and ending in black, plain rows in between."""
    img = []
    for y in range(h):
        if y % 7 == 3:
            img.append([1] * w)
        elif y % 7 == 5:
            img.append([0] * w)
        else:
            img.append([1 if rng.random() < 0.5 else 0 for _ in range(w)])
    return img


def draw_steps(w, h, rng):
    """Edges moving by 0 to 5 pixels from row to row: every vertical mode and pass mode."""
    img = []
    edges = sorted(rng.sample(range(1, w - 1), 12))
    for y in range(h):
        edges = sorted({min(w - 1, max(1, e + rng.randint(-5, 5))) for e in edges})
        row, color, last = [], 0, 0
        for e in edges + [w]:
            row += [color] * (e - last)
            color ^= 1
            last = e
        img.append(row)
    return img


IMAGES = {
    "text": (300, 40, draw_text),
    "wide": (6000, 8, draw_wide),
    "noise": (13, 30, draw_noise),
    "steps": (203, 60, draw_steps),
}


def pack(img):
    out = bytearray()
    for row in img:
        padded = row + [0] * (-len(row) % 8)
        for i in range(0, len(padded), 8):
            b = 0
            for bit in padded[i:i + 8]:
                b = (b << 1) | bit
            out.append(b)
    return bytes(out)


def write_tiff(path, w, h, data):
    """An uncompressed, single-strip, WhiteIsZero TIFF at 200 dpi."""
    entries = [
        (256, 4, 1, w), (257, 4, 1, h), (258, 3, 1, 1), (259, 3, 1, 1), (262, 3, 1, 0),
        (273, 4, 1, 0), (277, 3, 1, 1), (278, 4, 1, h), (279, 4, 1, len(data)),
        (282, 5, 1, 0), (283, 5, 1, 0), (296, 3, 1, 2),
    ]
    ifd_size = 2 + 12 * len(entries) + 4
    res_offset = 8 + ifd_size
    data_offset = res_offset + 16
    out = bytearray(b"II*\x00" + struct.pack("<I", 8) + struct.pack("<H", len(entries)))
    for tag, typ, count, value in entries:
        if tag == 273:
            value = data_offset
        elif tag in (282, 283):
            value = res_offset + (0 if tag == 282 else 8)
        if typ == 3:
            out += struct.pack("<HHIHH", tag, typ, count, value, 0)
        else:
            out += struct.pack("<HHII", tag, typ, count, value)
    out += struct.pack("<I", 0)
    out += struct.pack("<IIII", 200, 1, 200, 1)
    out += data
    with open(path, "wb") as f:
        f.write(out)


def read_strip(path):
    with open(path, "rb") as f:
        t = f.read()
    assert t[:4] == b"II*\x00", "little-endian TIFF expected"
    (ifd,) = struct.unpack_from("<I", t, 4)
    (n,) = struct.unpack_from("<H", t, ifd)
    tags = {}
    for i in range(n):
        tag, typ, count, value = struct.unpack_from("<HHII", t, ifd + 2 + 12 * i)
        if typ == 3:
            value &= 0xFFFF
        tags[tag] = (count, value)
    assert tags[273][0] == 1, "one strip expected"
    assert tags.get(266, (1, 1))[1] == 1, "fill order 1 expected"
    return t[tags[273][1]:tags[273][1] + tags[279][1]]


def main():
    out_dir = sys.argv[1] if len(sys.argv) > 1 else os.path.join(
        os.path.dirname(os.path.abspath(__file__)), "..", "tests", "data", "fax")
    os.makedirs(out_dir, exist_ok=True)
    rng = random.Random(20)
    rows = []
    with tempfile.TemporaryDirectory() as tmp:
        for name, (w, h, draw) in IMAGES.items():
            img = draw(w, h, rng)
            data = pack(img)
            with open(os.path.join(out_dir, name + ".pbm"), "wb") as f:
                f.write(b"P4\n%d %d\n" % (w, h) + data)
            raw = os.path.join(tmp, name + ".tif")
            write_tiff(raw, w, h, data)
            for coding, (option, k, eol) in CODINGS.items():
                coded = os.path.join(tmp, "%s-%s.tif" % (name, coding))
                subprocess.run(["tiffcp", "-c", option, "-r", str(h), raw, coded], check=True)
                with open(os.path.join(out_dir, "%s-%s.fax" % (name, coding)), "wb") as f:
                    f.write(read_strip(coded))
                rows.append("%s\t%s\t%d\t%d\t%d\t%d" % (name, coding, k, eol, w, h))
    with open(os.path.join(out_dir, "cases.tsv"), "w") as f:
        f.write("image\tcoding\tK\tEndOfLine\tColumns\tRows\n" + "\n".join(rows) + "\n")


if __name__ == "__main__":
    main()
