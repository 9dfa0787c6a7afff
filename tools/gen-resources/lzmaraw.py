"""Raw LZMA1 behind a five-byte header of properties and dictionary size: the packing of the
resource file's streams.

The streams carry LZMA's end marker. The format has no length field, and without a marker a
decoder can't tell the end of the data from the padding of the range coder's last bytes: it
would hand out a byte or two of rubbish behind a stream. The program's decoder accepts both.
"""
import lzma
import struct

DICT_SIZE = 1 << 24          # 16 MiB, as the header says
LC, LP, PB = 3, 0, 2
PROPS = (PB * 5 + LP) * 9 + LC   # 0x5D
_FILTER = {"id": lzma.FILTER_LZMA1, "dict_size": DICT_SIZE, "lc": LC, "lp": LP, "pb": PB}


def pack(data):
    body = lzma.compress(data, format=lzma.FORMAT_RAW,
                         filters=[dict(_FILTER, preset=9 | lzma.PRESET_EXTREME)])
    packed = struct.pack("<BI", PROPS, DICT_SIZE) + body
    if unpack(packed) != data:
        raise SystemExit("LZMA round trip failed")
    return packed


def unpack(packed):
    d = lzma.LZMADecompressor(lzma.FORMAT_RAW, filters=[_FILTER])
    data = d.decompress(packed[5:])
    return data if d.eof else None
