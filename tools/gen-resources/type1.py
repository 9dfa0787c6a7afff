"""Type 1 font programs: the URW files are cleartext, a binary eexec part and a trailer of
zeros; the resource file holds them in the segmented (PFB) form."""
import re
import struct


def segments(program):
    m = re.search(rb"currentfile\s+eexec(\r\n|\r|\n)", program)
    if not m:
        raise SystemExit("no eexec section")
    clear_end = m.end()
    mark = program.rfind(b"cleartomark")
    if mark < 0:
        raise SystemExit("no cleartomark")
    tail = mark
    while tail > clear_end and program[tail - 1:tail] in b"0\r\n \t":
        tail -= 1
    return program[:clear_end], program[clear_end:tail], program[tail:]


def to_pfb(program):
    """The PFB bytes and the three segment lengths."""
    clear, binary, trailer = segments(program)
    out = bytearray()
    for kind, seg in ((1, clear), (2, binary), (1, trailer)):
        out += struct.pack("<BBI", 0x80, kind, len(seg)) + seg
    out += b"\x80\x03"
    return bytes(out), (len(clear), len(binary), len(trailer))
