#!/usr/bin/env python3
"""Expands a readable PDF template into a PDF file with correct offsets.

Placeholders:
  {{header}}           %PDF-1.7 and a binary comment line
  {{object N G}}       "N G obj", and records the offset of object N for the table
  {{streamlen}}        "/Length L" where L is the length of the next stream's data
  {{xref}}             a classic cross-reference table over every recorded object
  {{trailer ...}}      "trailer << /Size S ... >>" with S one past the highest object number
  {{startxref}}        "startxref" and the offset of the table written by {{xref}}

Malformed files stay reviewable: write the broken part literally and keep the rest generated.
Usage: mkpdf.py template.in output.pdf
"""
import re
import sys

TOKEN = re.compile(rb"\{\{(header|object (\d+) (\d+)|streamlen|xref|trailer([^}]*)|startxref)\}\}")


def expand(template: bytes) -> bytes:
    # Stream lengths first: the data between "stream\n" and "\nendstream" after a placeholder.
    def fill_len(m):
        rest = template[m.end():]
        s = rest.find(b"stream\n")
        e = rest.find(b"\nendstream", s)
        if s < 0 or e < 0:
            raise SystemExit("{{streamlen}} without a stream after it")
        return b"/Length %d" % (e - (s + len(b"stream\n")))

    template = re.sub(rb"\{\{streamlen\}\}", fill_len, template)

    out = bytearray()
    offsets = {}
    xref_at = None
    pos = 0
    for m in TOKEN.finditer(template):
        out += template[pos:m.start()]
        pos = m.end()
        word = m.group(1)
        if word == b"header":
            out += b"%PDF-1.7\n%\xe2\xe3\xcf\xd3\n"
        elif word.startswith(b"object"):
            num, gen = int(m.group(2)), int(m.group(3))
            offsets[num] = (len(out), gen)
            out += b"%d %d obj" % (num, gen)
        elif word == b"xref":
            xref_at = len(out)
            size = max(offsets) + 1 if offsets else 1
            out += b"xref\n0 %d\n" % size
            out += b"0000000000 65535 f\r\n"
            for n in range(1, size):
                if n in offsets:
                    off, gen = offsets[n]
                    out += b"%010d %05d n\r\n" % (off, gen)
                else:
                    out += b"0000000000 65535 f\r\n"
        elif word.startswith(b"trailer"):
            size = max(offsets) + 1 if offsets else 1
            out += b"trailer\n<< /Size %d%s >>" % (size, m.group(4).rstrip())
        elif word == b"startxref":
            if xref_at is None:
                raise SystemExit("{{startxref}} before {{xref}}")
            out += b"startxref\n%d" % xref_at
    out += template[pos:]
    return bytes(out)


def main():
    if len(sys.argv) != 3:
        raise SystemExit(__doc__)
    with open(sys.argv[1], "rb") as f:
        data = expand(f.read())
    with open(sys.argv[2], "wb") as f:
        f.write(data)


if __name__ == "__main__":
    main()
