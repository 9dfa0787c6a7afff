#!/usr/bin/python3
"""Writes seed inputs for the image decoder fuzz targets (ccitt, dct, jbig2, jpx).

    tools/gen-image-seeds.py [OUT_DIR]             our own data (default fuzz/seeds)
    tools/gen-image-seeds.py --corpus OUT_DIR      images of the shared corpus (needs
                                                   build/release/imgdump)

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
import tempfile

REPO = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
CORPUS = os.path.normpath(os.path.join(REPO, "..", "shared", "corpus"))
MAX_SEED = 16384

# Corpus images: file, object number. Chosen small and of different kinds.
CORPUS_CCITT = [
    ("pdfjs/issue1985.pdf", 14),            # K -1, damaged two-dimensional code
    ("pdfjs/images_1bit_grayscale.pdf", 9),
    ("pdfjs/issue13561_reduced.pdf", 15),
]
CORPUS_DCT = [
    ("pdfjs/issue11931.pdf", 5),            # components R, G, B without markers
    ("qpdf/image-streams-small.pdf", 16),   # CMYK with an Adobe marker
    ("pdfium/bug_1646.pdf", 4),             # 5000 x 5000 from 734 bytes
    ("pdfjs/xobject-image.pdf", 4),         # a 1 x 1 image behind ASCIIHex
]
CORPUS_JBIG2 = [
    ("pdfjs/bitmap-symbol.pdf", 5),
    ("pdfjs/bitmap-halftone.pdf", 5),
    ("pdfjs/bitmap-refine-template1.pdf", 5),
    ("pdfjs/bitmap-symbol-symhuffrefineseveral.pdf", 5),
    ("pdfjs/bitmap-template2.pdf", 5),
    ("pdfjs/bitmap-stripe-last-implicit.pdf", 5),
]
CORPUS_JPX = [
    ("pdfjs/jp2k-resetprob.pdf", 6),
    ("pdfjs/jpx_smaskindata.pdf", 5),
    ("pdfjs/bug_jpx.pdf", 15),
    ("pdfjs/issue12213.pdf", 16),           # 4-bit palette indexes
]


IMGDUMP = os.path.join(REPO, "build", "release", "imgdump")


def qpdf_object(path, num, coded=True):
    """(dictionary text, stream bytes) of object `num`: with `coded` the data the image decoder
    reads (every filter but the last undone, by imgdump), else fully decoded (by qpdf)."""
    d = subprocess.run(["qpdf", "--show-object=%d" % num, path], capture_output=True).stdout
    if not coded:
        data = subprocess.run(["qpdf", "--show-object=%d" % num, "--filtered-stream-data", path],
                              capture_output=True).stdout
        return d.decode("latin-1"), data
    with tempfile.NamedTemporaryFile() as out:
        subprocess.run([IMGDUMP, "--coded", path, str(num), out.name], capture_output=True)
        return d.decode("latin-1"), out.read()


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


def run_tool(args):
    subprocess.run(args, check=True, stdout=subprocess.DEVNULL)


def gray(w, h):
    return b"P5\n%d %d\n255\n" % (w, h) + bytes((x * 5 + y * 3) % 256 for y in range(h) for x in range(w))


def rgb(w, h):
    return b"P6\n%d %d\n255\n" % (w, h) + bytes((x * 5 + y * 3 + c * 80) % 256
                                                  for y in range(h) for x in range(w) for c in range(3))


def dct_seeds(out_dir, tmp):
    """JPEGs from libjpeg-turbo's cjpeg: gray, colour, progressive, restart markers, arithmetic."""
    for name, pnm in (("gray", gray(24, 16)), ("rgb", rgb(24, 16))):
        src = os.path.join(tmp, name + ".pnm")
        with open(src, "wb") as f:
            f.write(pnm)
        for variant, opts in (("baseline", []), ("progressive", ["-progressive"]),
                              ("restart", ["-restart", "1"]), ("arithmetic", ["-arithmetic"]),
                              ("subsampled", ["-sample", "2x2"])):
            jpg = os.path.join(tmp, "%s-%s.jpg" % (name, variant))
            run_tool(["cjpeg", "-quality", "80"] + opts + ["-outfile", jpg, src])
            data = open(jpg, "rb").read()
            write(out_dir, "dct", "%s-%s" % (name, variant), b"\xff\x00" + data)
            write(out_dir, "dct", "%s-%s-cut" % (name, variant), b"\xff\x01" + data[:len(data) * 2 // 3])
    write(out_dir, "dct", "garbage-ahead", b"\x00\x00" + b"%garbage\r\n" + data)


def jbig2_segment(number, kind, data, page=1):
    return struct.pack(">IBBBI", number, kind, 0, page, len(data)) + data


def jbig2_seeds(out_dir):
    """Pages of one generic region in MMR coding, its data libtiff's Group 4 known answers."""
    fax = os.path.join(REPO, "tests", "data", "fax")
    for image, (w, h) in (("noise", (13, 30)), ("text", (300, 40)), ("steps", (203, 60))):
        g4 = open(os.path.join(fax, image + "-g4.fax"), "rb").read()
        page = jbig2_segment(0, 48, struct.pack(">IIIIBH", w, h, 0, 0, 0, 0))
        region = jbig2_segment(1, 39, struct.pack(">IIIIB", w, h, 0, 0, 0) + b"\x01" + g4)
        end = jbig2_segment(2, 49, b"")
        head = struct.pack("<HHH", w, h, 0)
        write(out_dir, "jbig2", image, head + page + region + end)
        write(out_dir, "jbig2", image + "-globals", struct.pack("<HHH", w, h, len(page)) + page + region)
        write(out_dir, "jbig2", image + "-cut", head + (page + region)[:len(page) + len(region) // 2])


def jpx_seeds(out_dir, tmp):
    """JPEG 2000 from OpenJPEG's opj_compress: JP2 and codestreams, tiles, lossy, progressions."""
    for name, pnm in (("gray", gray(32, 24)), ("rgb", rgb(32, 24))):
        src = os.path.join(tmp, name + ".pnm")
        with open(src, "wb") as f:
            f.write(pnm)
        for variant, ext, opts in (("lossless", "jp2", ["-n", "3"]), ("codestream", "j2k", ["-n", "3"]),
                                   ("tiles", "jp2", ["-n", "2", "-t", "16,8"]),
                                   ("lossy", "jp2", ["-n", "3", "-I", "-r", "20"]),
                                   ("rpcl-sop", "j2k", ["-n", "3", "-p", "RPCL", "-SOP", "-EPH"])):
            out = os.path.join(tmp, "%s-%s.%s" % (name, variant, ext))
            run_tool(["opj_compress", "-i", src, "-o", out] + opts)
            data = open(out, "rb").read()
            for shape, head in (("composed", b"\x00\x03\x08"), ("stripe", b"\x01\x01\x08"),
                                ("own", b"\x03\x01\x08")):
                write(out_dir, "jpx", "%s-%s-%s" % (name, variant, shape), head + data)
            write(out_dir, "jpx", "%s-%s-cut" % (name, variant), b"\x00\x03\x08" + data[:len(data) // 2])


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


def corpus_other_seeds(out_dir):
    for rel, num in CORPUS_DCT:
        text, data = qpdf_object(os.path.join(CORPUS, rel), num)
        if data:
            write(out_dir, "dct", "corpus-%s-%d" % (os.path.basename(rel)[:-4], num), b"\xff\x00" + data)
    for rel, num in CORPUS_JBIG2:
        path = os.path.join(CORPUS, rel)
        text, data = qpdf_object(path, num)
        m = re.search(r"/JBIG2Globals (\d+) 0 R", text)
        globals_data = qpdf_object(path, int(m.group(1)), coded=False)[1] if m else b""
        w, h = param(text, "Width", 0), param(text, "Height", 0)
        if data:
            write(out_dir, "jbig2", "corpus-%s" % os.path.basename(rel)[:-4],
                  struct.pack("<HHH", w & 0xFFFF, h & 0xFFFF, len(globals_data)) + globals_data + data)
    for rel, num in CORPUS_JPX:
        text, data = qpdf_object(os.path.join(CORPUS, rel), num)
        if data:
            write(out_dir, "jpx", "corpus-%s-%d" % (os.path.basename(rel)[:-4], num), b"\x03\x01\x08" + data)


def main():
    args = sys.argv[1:]
    if args[:1] == ["--corpus"]:
        if len(args) != 2:
            sys.exit("usage: gen-image-seeds.py --corpus OUT_DIR")
        if os.path.isdir(CORPUS) and os.access(IMGDUMP, os.X_OK):
            corpus_ccitt_seeds(args[1])
            corpus_other_seeds(args[1])
        return
    out_dir = args[0] if args else os.path.join(REPO, "fuzz", "seeds")
    ccitt_seeds(out_dir)
    jbig2_seeds(out_dir)
    with tempfile.TemporaryDirectory() as tmp:
        dct_seeds(out_dir, tmp)
        jpx_seeds(out_dir, tmp)


if __name__ == "__main__":
    main()
