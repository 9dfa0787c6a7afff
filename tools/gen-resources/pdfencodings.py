"""The six static encodings, derived from published data.

StandardEncoding, Symbol and ZapfDingbats are the codes of the Adobe AFM files (the text
fonts' AFMs are in AdobeStandardEncoding, the two others in their built-in encodings).
WinAnsiEncoding and MacRomanEncoding are the code pages of Python's codecs, named through the
Adobe Glyph List, with the differences that the PDF standard makes. MacExpertEncoding has no
machine-readable source in a Debian package; macexpert.txt holds it as the standard prints it.
"""
import os

HERE = os.path.dirname(os.path.abspath(__file__))


def _names_by_value(agl, preferred):
    """Unicode value -> glyph name: a name of the standard Latin set when one has the value,
    else the first name of the list."""
    best = {}
    for name, value in agl:
        if value not in best or (name in preferred and best[value] not in preferred):
            best[value] = name
    return best


def _from_codec(codec, agl, preferred):
    by_value = _names_by_value(agl, preferred)
    table = [None] * 256
    for code in range(32, 256):
        try:
            ch = bytes([code]).decode(codec)
        except UnicodeDecodeError:
            continue
        if code == 127:
            continue
        table[code] = by_value.get(ord(ch))
    return table


def win_ansi(agl, preferred):
    table = _from_codec("cp1252", agl, preferred)
    # The PDF table: bullet in every hole of the code page, space and hyphen for the
    # no-break space and the soft hyphen.
    for code in (127, 129, 141, 143, 144, 157):
        table[code] = "bullet"
    table[160] = "space"
    table[173] = "hyphen"
    return table


def mac_roman(agl, preferred):
    table = _from_codec("mac_roman", agl, preferred)
    table[202] = "space"      # the no-break space
    table[219] = "currency"   # the code page's later euro sign
    table[189] = "Omega"      # the Greek letter of the code page, under its Mac name
    table[198] = "Delta"
    table[240] = "apple"
    return table


def mac_expert():
    table = [None] * 256
    with open(os.path.join(HERE, "macexpert.txt")) as f:
        for line in f:
            if line.startswith("#") or not line.strip():
                continue
            code, name = line.split()
            table[int(code, 8)] = name
    return table


def zapf_dingbats(afm):
    # The AFM also encodes the fourteen bracket ornaments at 128 to 141; the PDF standard's
    # built-in encoding of the font leaves those codes empty.
    table = afm.encoding()
    for code in range(128, 142):
        table[code] = None
    return table


def all_encodings(afms, agl):
    preferred = set(afms["Times-Roman"].widths())
    return {
        "Standard": afms["Times-Roman"].encoding(),
        "WinAnsi": win_ansi(agl, preferred),
        "MacRoman": mac_roman(agl, preferred),
        "MacExpert": mac_expert(),
        "Symbol": afms["Symbol"].encoding(),
        "ZapfDingbats": zapf_dingbats(afms["ZapfDingbats"]),
    }
