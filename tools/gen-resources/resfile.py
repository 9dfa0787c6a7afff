"""Writes the resource file: an object file in PDF syntax with the header "%RES-1.0", the
fourteen standard fonts in the trailer's F and the predefined CMaps in its C. Every stream is
packed with the private filter _lumLZMA."""
import hashlib

import lzmaraw

XREF_SIZE = 300
CR = b"\r"


def _num(v):
    return ("%d" % v) if float(v).is_integer() else ("%g" % v)


class Writer:
    def __init__(self):
        self.out = bytearray(b"%RES-1.0\r%\xe2\xe3\xcf\xd3\r\n")
        self.offsets = {}
        self.next_num = 1

    def reserve(self):
        num = self.next_num
        self.next_num += 1
        return num

    def obj(self, num, body):
        self.offsets[num] = len(self.out)
        self.out += b"%d 0 obj\r" % num + body.encode("latin-1") + b"\rendobj\r"

    def stream(self, num, data, extra=""):
        packed = lzmaraw.pack(data)
        self.offsets[num] = len(self.out)
        head = "<</Filter/_lumLZMA/Length %d%s>>" % (len(packed), extra)
        self.out += (b"%d 0 obj\r" % num + head.encode("latin-1") + b"\rstream\r\n" + packed
                     + b"\rendstream\rendobj\r")

    def finish(self, trailer_items):
        if self.next_num > XREF_SIZE:
            raise SystemExit("resource file needs more than %d objects" % XREF_SIZE)
        xref = len(self.out)
        self.out += b"xref\r0 %d\r" % XREF_SIZE
        self.out += b"0000000000 65535 f\r\n"
        for num in range(1, XREF_SIZE):
            if num in self.offsets:
                self.out += b"%010d 00000 n\r\n" % self.offsets[num]
            else:
                self.out += b"0000000000 00001 f\r\n"
        file_id = hashlib.md5(bytes(self.out)).hexdigest().upper()
        trailer = "trailer\r<<%s/ID[<%s><%s>]/Size %d>>\r" % (trailer_items, file_id, file_id,
                                                           XREF_SIZE)
        self.out += trailer.encode("latin-1")
        self.out += b"startxref\r%d\r%%%%EOF\r" % xref
        return bytes(self.out)


def build(fonts, cmaps, generator_note):
    """fonts: list of dicts (name, widths[256], descriptor numbers, pfb, lengths); cmaps: list
    of (name, bytes) in the order of the C dictionary."""
    w = Writer()
    info = w.reserve()
    w.obj(info, "<</Creator(%s)/Producer(%s)/Title(Resources)>>" % (generator_note,
                                                                       generator_note))
    font_refs = {}
    for f in fonts:
        font, desc, prog = w.reserve(), w.reserve(), w.reserve()
        font_refs[f["name"]] = font
        w.obj(font, "<</BaseFont/%s/FirstChar 0/FontDescriptor %d 0 R/LastChar 255"
                    "/Subtype/Type1/Type/Font/Widths[%s]>>"
              % (f["name"], desc, " ".join(_num(x) for x in f["widths"])))
        bbox = " ".join(_num(x) for x in f["bbox"])
        w.obj(desc, "<</Ascent %s/AvgWidth %s/CapHeight %s/Descent %s/Flags %d/FontBBox[%s]"
                    "/FontFile %d 0 R/FontName/%s/ItalicAngle %s/MaxWidth %s/StemV %s"
                    "/Type/FontDescriptor>>"
              % (_num(f["ascent"]), _num(f["avg_width"]), _num(f["cap_height"]),
                 _num(f["descent"]), f["flags"], bbox, prog, f["name"],
                 _num(f["italic_angle"]), _num(f["max_width"]), _num(f["stem_v"])))
        l1, l2, l3 = f["lengths"]
        w.stream(prog, f["pfb"], "/Length1 %d/Length2 %d/Length3 %d" % (l1, l2, l3))
    cmap_refs = []
    for name, data in cmaps:
        num = w.reserve()
        w.stream(num, data)
        cmap_refs.append((name, num))
    c = "".join("/%s %d 0 R" % (n, r) for n, r in cmap_refs)
    fdict = "".join("/%s %d 0 R" % (n, font_refs[n]) for n in sorted(font_refs))
    return w.finish("/C<<%s>>/F<<%s>>/Info %d 0 R" % (c, fdict, info))
