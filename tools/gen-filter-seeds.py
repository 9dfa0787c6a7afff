#!/usr/bin/env python3
"""Writes seed inputs for the filter fuzz targets.

    tools/gen-filter-seeds.py OUT_DIR

Creates OUT_DIR/<target>/ for flate, lzw, asciihex, ascii85, runlength and predictor, each
with a handful of small inputs in the layout its fuzz/<target>_fuzzer.cpp reads: a header
of parameter bytes, then the encoded data. The inputs are made by encoders written here from
the formats, so they reach deep into each decoder: valid streams, truncated ones, and the
odd cases (EOD markers, table resets, every row filter).
"""

import base64
import os
import sys
import zlib

TEXT = (b"BT /F1 12 Tf 72 712 Td (Hello, world) Tj ET\n"
        b"0 0 1 rg 10 10 200 100 re f\n" * 6)


def lzw(data, early):
    out, bits, count, width = bytearray(), 0, 0, 9

    def put(code):
        nonlocal bits, count
        bits = (bits << width) | code
        count += width
        while count >= 8:
            count -= 8
            out.append((bits >> count) & 0xFF)

    table = {bytes([i]): i for i in range(256)}
    nxt = 258
    put(256)
    w = b""
    for c in data:
        wc = w + bytes([c])
        if wc in table:
            w = wc
            continue
        put(table[w])
        table[wc] = nxt
        nxt += 1
        for limit, wid in ((513, 10), (1025, 11), (2049, 12)):
            if nxt + early == limit:
                width = wid
        if nxt >= 4094:
            put(256)
            table = {bytes([i]): i for i in range(256)}
            nxt, width = 258, 9
        w = bytes([c])
    if w:
        put(table[w])
    put(257)
    if count:
        out.append((bits << (8 - count)) & 0xFF)
    return bytes(out)


def runlength(data):
    out, i = bytearray(), 0
    while i < len(data):
        run = 1
        while i + run < len(data) and run < 128 and data[i + run] == data[i]:
            run += 1
        if run >= 2:
            out += bytes([257 - run, data[i]])
            i += run
            continue
        lit = 1
        while i + lit < len(data) and lit < 128 and not (
                i + lit + 1 < len(data) and data[i + lit] == data[i + lit + 1]):
            lit += 1
        out += bytes([lit - 1]) + data[i:i + lit]
        i += lit
    return bytes(out) + b"\x80"


def png_rows(data, row, pixel, tags):
    out, prev = bytearray(), [0] * row
    for r in range(0, len(data), row):
        cur = list(data[r:r + row]) + [0] * (row - len(data[r:r + row]))
        tag = tags[(r // row) % len(tags)]
        out.append(tag)
        for i in range(min(row, len(data) - r)):
            a = cur[i - pixel] if i >= pixel else 0
            b = prev[i]
            c = prev[i - pixel] if i >= pixel else 0
            p = a + b - c
            pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
            paeth = a if pa <= pb and pa <= pc else (b if pb <= pc else c)
            pred = [0, a, b, (a + b) // 2, paeth][tag] if tag < 5 else 0
            out.append((cur[i] - pred) & 0xFF)
        prev = cur
    return bytes(out)


def tiff8(data, columns, colors):
    out, row = bytearray(data), columns * colors
    for base in range(0, len(data) - row + 1, row):
        for i in range(row - 1, colors - 1, -1):
            out[base + i] = (data[base + i] - data[base + i - colors]) & 0xFF
    return bytes(out)


def seeds():
    s = {}
    z = zlib.compress(TEXT)
    rawobj = zlib.compressobj(9, zlib.DEFLATED, -15)
    raw = rawobj.compress(TEXT) + rawobj.flush()
    rows = png_rows(TEXT[:240], 24, 3, [0, 1, 2, 3, 4])
    s["flate"] = {
        "zlib": bytes([0, 0, 3, 0]) + z,
        "raw": bytes([1, 0, 3, 0]) + raw,
        "windows": bytes([2, 0, 3, 0]) + zlib.compress(TEXT * 40),
        "truncated": bytes([0, 0, 3, 0]) + z[:len(z) // 2],
        "bad-checksum": bytes([0, 0, 3, 0]) + z[:-1] + bytes([z[-1] ^ 0x5A]),
        "png-rgb": bytes([8, 2, 3, 7]) + zlib.compress(rows),
        "tiff": bytes([4, 0, 3, 15]) + zlib.compress(tiff8(TEXT[:256], 16, 1)),
    }
    s["lzw"] = {
        "early1": b"\x01" + lzw(TEXT, 1),
        "early0": b"\x00" + lzw(TEXT, 0),
        "resets": b"\x03" + lzw(bytes((i * 7919 + i // 3) & 255 for i in range(7000)) + TEXT, 1),
    }
    s["asciihex"] = {
        "plain": b"\x00" + TEXT[:64].hex().encode() + b">",
        "spaced": b"\x01" + b" ".join(TEXT[i:i + 8].hex().encode() for i in range(0, 64, 8)),
        "odd": b"\x00" + b"4A4>",
    }
    s["ascii85"] = {
        "plain": b"\x00" + base64.a85encode(TEXT, adobe=True)[2:],
        "zeros": b"\x01" + base64.a85encode(bytes(16) + TEXT[:5], adobe=True)[2:],
        "partial": b"\x00" + b"87cURD]i,\"Ebo8",
    }
    s["runlength"] = {
        "mixed": b"\x00" + runlength(TEXT + bytes(200) + TEXT),
        "cut": b"\x01" + b"\x05a",
    }
    s["predictor"] = {
        "png-gray": bytes([0, 1, 8, 10, 0]) + png_rows(TEXT[:200], 10, 1, [1, 2, 3, 4, 0, 7]),
        "png-1bit": bytes([2, 1, 1, 64, 0]) + png_rows(TEXT[:80], 8, 1, [1, 2]),
        "tiff-rgb": bytes([1, 3, 8, 5, 0]) + tiff8(TEXT[:150], 5, 3),
        "tiff-4bit": bytes([1, 1, 4, 12, 0]) + TEXT[:60],
        "tiff-16bit": bytes([3, 2, 16, 3, 0]) + TEXT[:96],
    }
    return s


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    for target, files in seeds().items():
        folder = os.path.join(sys.argv[1], target)
        os.makedirs(folder, exist_ok=True)
        for name, data in files.items():
            with open(os.path.join(folder, name), "wb") as f:
                f.write(data)


if __name__ == "__main__":
    main()
