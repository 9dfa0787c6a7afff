#!/usr/bin/python3
"""Writes seed inputs for the image decoder fuzz targets (ccitt, dct, jbig2, jpx).

    tools/gen-image-seeds.py [OUT_DIR]             our own data (default fuzz/seeds)
    tools/gen-image-seeds.py --corpus OUT_DIR      images of the shared corpus

Each seed is a header of parameter bytes in the layout of fuzz/<target>_fuzzer.cpp, then coded
image data, also cut short. The first form takes the data of tests/data and is committed; the
second takes the raw streams of a few small corpus images (with qpdf) and writes them where
tools/fuzz-run asks, outside the repository. Seeds stay below 16 KiB.
"""
import os
import re
import struct
import subprocess
import sys

REPO = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
CORPUS = os.path.normpath(os.path.join(REPO, "..", "shared", "corpus"))
MAX_SEED = 16384

# Corpus images: file, object number. Chosen small and of different kinds.
CORPUS_CCITT = [
    ("pdfjs/issue1985.pdf", 14),            # K -1, damaged two-dimensional code
    ("pdfjs/images_1bit_grayscale.pdf", 9),
    ("pdfjs/issue13561_reduced.pdf", 15),
]


def qpdf_object(path, num):
    """(dictionary text, raw stream bytes) of object `num`."""
    d = subprocess.run(["qpdf", "--show-object=%d" % num, path], capture_output=True).stdout
    raw = subprocess.run(["qpdf", "--show-object=%d" % num, "--raw-stream-data", path],
                         capture_output=True).stdout
    return d.decode("latin-1"), raw


def param(text, key, default):
    m = re.search(r"/%s\s+(-?\d+|true|false)" % key, text)
    if not m:
        return default
    v = m.group(1)
    return {"true": 1, "false": 0}.get(v, None) if v in ("true", "false") else int(v)


def ccitt_header(k, eol, align, eob, black_is_1, columns, rows, damaged):
    flags = eol | (align << 1) | (eob << 2) | (black_is_1 << 3)
    return struct.pack("<BbHHB", flags, max(-128, min(127, k)), columns & 0xFFFF, rows & 0xFFFF,
                       damaged & 0xFF)


def write(out_dir, target, name, data):
    os.makedirs(os.path.join(out_dir, target), exist_ok=True)
    with open(os.path.join(out_dir, target, name), "wb") as f:
        f.write(data[:MAX_SEED])


def ccitt_seeds(out_dir):
    fax = os.path.join(REPO, "tests", "data", "fax")
    with open(os.path.join(fax, "cases.tsv")) as f:
        next(f)
        for line in f:
            image, coding, k, eol, columns, rows = line.split()
            if image == "wide":
                continue
            with open(os.path.join(fax, "%s-%s.fax" % (image, coding)), "rb") as g:
                data = g.read()
            head = ccitt_header(int(k), int(eol), 0, 1, 0, int(columns), int(rows), 2)
            write(out_dir, "ccitt", "%s-%s" % (image, coding), head + data)
            write(out_dir, "ccitt", "%s-%s-cut" % (image, coding), head + data[:len(data) // 2])
    # Byte-aligned rows without end-of-line codes: w8, then w2 b4 w2, each padded.
    write(out_dir, "ccitt", "aligned", ccitt_header(0, 0, 1, 0, 0, 8, 0, 0) + bytes([0x98, 0x76, 0xE0]))


def corpus_ccitt_seeds(out_dir):
    for rel, num in CORPUS_CCITT:
        text, raw = qpdf_object(os.path.join(CORPUS, rel), num)
        if not raw:
            continue
        head = ccitt_header(param(text, "K", 0), param(text, "EndOfLine", 0),
                            param(text, "EncodedByteAlign", 0), param(text, "EndOfBlock", 1),
                            param(text, "BlackIs1", 0), param(text, "Columns", 1728),
                            param(text, "Rows", 0), param(text, "DamagedRowsBeforeError", 0))
        name = "corpus-" + os.path.basename(rel).replace(".pdf", "") + "-%d" % num
        write(out_dir, "ccitt", name, head + raw)
        write(out_dir, "ccitt", name + "-cut", head + raw[:len(raw) // 2])


def main():
    args = sys.argv[1:]
    if args[:1] == ["--corpus"]:
        if len(args) != 2:
            sys.exit("usage: gen-image-seeds.py --corpus OUT_DIR")
        if os.path.isdir(CORPUS):
            corpus_ccitt_seeds(args[1])
        return
    out_dir = args[0] if args else os.path.join(REPO, "fuzz", "seeds")
    ccitt_seeds(out_dir)


if __name__ == "__main__":
    main()
