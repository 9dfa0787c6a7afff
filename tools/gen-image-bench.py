#!/usr/bin/python3
"""Writes PDFs for timing the image decoders against other readers, one per coding, each with
three large images in device colours (so that no reader spends its time on colour management):

    OUT_DIR/ccitt.pdf  Group 4 pages of text-like blobs, 2480 x 3508 (A4 at 300 dpi), libtiff
    OUT_DIR/jbig2.pdf  the same pages as JBIG2 generic regions in MMR coding
    OUT_DIR/dct.pdf    photo-like RGB, 3000 x 2000, libjpeg-turbo's cjpeg, quality 85
    OUT_DIR/jpx.pdf    the same pictures as lossy JPEG 2000, OpenJPEG's opj_compress, 20:1

    tools/gen-image-bench.py OUT_DIR
    tools/imgcompare.py --speed 5 OUT_DIR/*.pdf

Also used by bench/image_bench.cpp, which reads the coded images (OUT_DIR/*.bin) directly.
"""
import os
import random
import struct
import subprocess
import sys
import tempfile

import numpy as np

PAGE_W, PAGE_H = 2480, 3508
PIC_W, PIC_H = 3000, 2000


def text_page(seed):
    rng = np.random.default_rng(seed)
    img = np.zeros((PAGE_H, PAGE_W), np.uint8)
    for top in range(200, PAGE_H - 200, 50):
        x = 200
        while x < PAGE_W - 200:
            # A glyph of strokes: stems and bars 3 pixels thick, as scanned type looks.
            w = int(rng.integers(12, 30))
            glyph = np.zeros((32, w), np.uint8)
            for _ in range(int(rng.integers(1, 4))):
                if rng.random() < 0.5:
                    s = int(rng.integers(0, w - 3))
                    glyph[int(rng.integers(0, 8)):32 - int(rng.integers(0, 8)), s:s + 3] = 1
                else:
                    s = int(rng.integers(0, 29))
                    glyph[s:s + 3, int(rng.integers(0, w // 2)):w - int(rng.integers(0, w // 2))] = 1
            img[top:top + 32, x:x + w] |= glyph
            x += w + int(rng.integers(4, 12)) + (40 if rng.random() < 0.15 else 0)
    return img


def picture(seed):
    rng = np.random.default_rng(seed)
    y, x = np.mgrid[0:PIC_H, 0:PIC_W].astype(np.float32)
    out = np.zeros((PIC_H, PIC_W, 3), np.float32)
    for c in range(3):
        for _ in range(6):
            fx, fy, ph = rng.random(3) * [0.01, 0.01, 6.28]
            out[:, :, c] += np.sin(x * fx + y * fy + ph) * 40
        out[:, :, c] += 128 + rng.normal(0, 6, (PIC_H, PIC_W))
    return np.clip(out, 0, 255).astype(np.uint8)


def tiff_strip(path):
    with open(path, "rb") as f:
        t = f.read()
    (ifd,) = struct.unpack_from("<I", t, 4)
    (n,) = struct.unpack_from("<H", t, ifd)
    tags = {}
    for i in range(n):
        tag, typ, count, value = struct.unpack_from("<HHII", t, ifd + 2 + 12 * i)
        tags[tag] = value & 0xFFFF if typ == 3 else value
    return t[tags[273]:tags[273] + tags[279]]


def g4(img, tmp):
    h, w = img.shape
    raw = np.packbits(img, axis=1).tobytes()
    entries = [(256, 4, w), (257, 4, h), (258, 3, 1), (259, 3, 1), (262, 3, 0), (273, 4, 0),
               (277, 3, 1), (278, 4, h), (279, 4, len(raw))]
    head = bytearray(b"II*\x00" + struct.pack("<IH", 8, len(entries)))
    data_at = 8 + 2 + 12 * len(entries) + 4
    for tag, typ, value in entries:
        value = data_at if tag == 273 else value
        head += struct.pack("<HHIHH", tag, typ, 1, value, 0) if typ == 3 else struct.pack("<HHII", tag, typ, 1, value)
    src, out = os.path.join(tmp, "p.tif"), os.path.join(tmp, "g4.tif")
    with open(src, "wb") as f:
        f.write(bytes(head) + struct.pack("<I", 0) + raw)
    subprocess.run(["tiffcp", "-c", "g4", "-r", str(h), src, out], check=True)
    return tiff_strip(out)


def jbig2(img, tmp):
    h, w = img.shape

    def segment(number, kind, data):
        return struct.pack(">IBBBI", number, kind, 0, 1, len(data)) + data

    return (segment(0, 48, struct.pack(">IIIIBH", w, h, 0, 0, 0, 0)) +
            segment(1, 39, struct.pack(">IIIIB", w, h, 0, 0, 0) + b"\x01" + g4(img, tmp)) +
            segment(2, 49, b""))


def encoded_picture(pic, tmp, tool):
    src = os.path.join(tmp, "pic.ppm")
    with open(src, "wb") as f:
        f.write(b"P6\n%d %d\n255\n" % (PIC_W, PIC_H) + pic.tobytes())
    if tool == "dct":
        out = os.path.join(tmp, "pic.jpg")
        subprocess.run(["cjpeg", "-quality", "85", "-outfile", out, src], check=True)
    else:
        out = os.path.join(tmp, "pic.jp2")
        subprocess.run(["opj_compress", "-i", src, "-o", out, "-r", "20", "-I"], check=True,
                       stdout=subprocess.DEVNULL)
    with open(out, "rb") as f:
        return f.read()


def write_pdf(path, images):
    """images: (width, height, image dictionary entries, data) per page."""
    objs = [b"<< /Type /Catalog /Pages 2 0 R >>", None]
    kids = []
    for i, (w, h, entries, data) in enumerate(images):
        page, content, image = len(objs) + 1, len(objs) + 2, len(objs) + 3
        kids.append(page)
        draw = b"q %d 0 0 %d 0 0 cm /Im0 Do Q" % (w, h)
        objs.append(b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 %d %d] /Contents %d 0 R "
                    b"/Resources << /XObject << /Im0 %d 0 R >> >> >>" % (w, h, content, image))
        objs.append(b"<< /Length %d >>\nstream\n" % len(draw) + draw + b"\nendstream")
        objs.append(b"<< /Type /XObject /Subtype /Image /Width %d /Height %d %s /Length %d >>\nstream\n"
                    % (w, h, entries, len(data)) + data + b"\nendstream")
    objs[1] = b"<< /Type /Pages /Kids [%s] /Count %d >>" % (b" ".join(b"%d 0 R" % k for k in kids), len(kids))
    out = bytearray(b"%PDF-1.7\n%\xe2\xe3\xcf\xd3\n")
    offsets = []
    for n, body in enumerate(objs, 1):
        offsets.append(len(out))
        out += b"%d 0 obj\n" % n + body + b"\nendobj\n"
    xref = len(out)
    out += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objs) + 1)
    out += b"".join(b"%010d 00000 n \n" % o for o in offsets)
    out += b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objs) + 1, xref)
    with open(path, "wb") as f:
        f.write(out)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    out_dir = sys.argv[1]
    os.makedirs(out_dir, exist_ok=True)
    pages = [text_page(s) for s in range(3)]
    pics = [picture(s) for s in range(3)]
    with tempfile.TemporaryDirectory() as tmp:
        kinds = {
            "ccitt": [(PAGE_W, PAGE_H, b"/ColorSpace /DeviceGray /BitsPerComponent 1 /Filter /CCITTFaxDecode "
                       b"/DecodeParms << /K -1 /Columns %d /Rows %d /BlackIs1 true >>" % (PAGE_W, PAGE_H),
                       g4(p, tmp)) for p in pages],
            "jbig2": [(PAGE_W, PAGE_H, b"/ColorSpace /DeviceGray /BitsPerComponent 1 /Filter /JBIG2Decode",
                       jbig2(p, tmp)) for p in pages],
            "dct": [(PIC_W, PIC_H, b"/ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /DCTDecode",
                     encoded_picture(p, tmp, "dct")) for p in pics],
            "jpx": [(PIC_W, PIC_H, b"/ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /JPXDecode",
                     encoded_picture(p, tmp, "jpx")) for p in pics],
        }
    for kind, images in kinds.items():
        write_pdf(os.path.join(out_dir, kind + ".pdf"), images)
        for i, (_, _, _, data) in enumerate(images):
            with open(os.path.join(out_dir, "%s-%d.bin" % (kind, i)), "wb") as f:
                f.write(data)


if __name__ == "__main__":
    main()
