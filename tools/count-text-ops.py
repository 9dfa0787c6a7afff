#!/usr/bin/python3
"""Counts the text-showing operators (Tj, TJ, ', ") that each page of a PDF executes, forms
included, each form as often as it is painted: an independent check of the content reader,
written apart from it on qpdf's decoded view of the file.

    tools/count-text-ops.py FILE...                      per page: count, and whether only simple fonts show text
    tools/count-text-ops.py --compare ELEMENTS FILE...   the same beside `ELEMENTS --summary`, and the agreement

qpdf (--json=2, generalized decoding) gives the objects and the decoded streams; the content
is tokenised here. A form is entered at Do unless it is already open (a form that paints
itself is painted once). Pages whose content qpdf can't decode are reported as such and left
out of the comparison, as are pages that show text with a composite font.
"""

import base64
import json
import re
import subprocess
import sys

WHITE = b"\x00\t\n\x0c\r "
DELIM = b"()<>[]{}/%"
TEXT_OPS = {b"Tj", b"TJ", b"'", b'"'}
NUMBER = re.compile(rb"^[+-]*(\d+\.?\d*|\.\d+)$")
MAX_FORM_DEPTH = 64


class Doc:
    def __init__(self, path):
        out = subprocess.run(
            ["qpdf", "--json=2", "--json-stream-data=inline", "--decode-level=generalized", path],
            capture_output=True, timeout=120)
        data = json.loads(out.stdout)
        self.objects = data["qpdf"][1]
        self.pages = data.get("pages", [])

    def get(self, value):
        """Follows a reference; answers the value, or the stream's dictionary for a stream."""
        for _ in range(32):
            if isinstance(value, str) and value.endswith(" R"):
                obj = self.objects.get("obj:" + value)
                if obj is None:
                    return None
                value = obj.get("value", obj.get("stream", {}).get("dict"))
            else:
                return value
        return None

    def stream(self, ref):
        """The decoded data of a stream reference, or None when it isn't one or can't be decoded."""
        obj = self.objects.get("obj:" + ref) if isinstance(ref, str) else None
        if not obj or "stream" not in obj:
            return None
        s = obj["stream"]
        if "data" not in s:
            return None
        filters = self.get(s["dict"].get("/Filter"))
        if filters is not None:
            return None  # qpdf left it encoded: a filter it can't undo
        return base64.b64decode(s["data"])

    def inherited(self, page_ref, key):
        node = self.get(page_ref)
        for _ in range(64):
            if not isinstance(node, dict):
                return None
            if key in node:
                return self.get(node[key])
            node = self.get(node.get("/Parent"))
        return None


def tokens(data):
    """Yields (kind, value): 'op' for operators, 'name', 'other' for every other operand."""
    i, n = 0, len(data)
    while i < n:
        c = data[i:i + 1]
        if c in WHITE:
            i += 1
        elif c == b"%":
            while i < n and data[i] not in b"\r\n":
                i += 1
        elif c == b"(":
            depth, i = 1, i + 1
            while i < n and depth:
                if data[i] == 0x5C:
                    i += 2
                    continue
                depth += {0x28: 1, 0x29: -1}.get(data[i], 0)
                i += 1
            yield "other", None
        elif c == b"<" and data[i + 1:i + 2] == b"<":
            i += 2
            yield "dict_begin", None
        elif c == b">" and data[i + 1:i + 2] == b">":
            i += 2
            yield "dict_end", None
        elif c == b"<":
            j = data.find(b">", i)
            i = n if j < 0 else j + 1
            yield "other", None
        elif c in b"[]{}":
            i += 1
            yield "array", c
        elif c == b"/":
            j = i + 1
            while j < n and data[j:j + 1] not in WHITE and data[j:j + 1] not in DELIM:
                j += 1
            yield "name", data[i + 1:j]
            i = j
        elif c in b")>":
            i += 1
        else:
            j = i
            while j < n and data[j:j + 1] not in WHITE and data[j:j + 1] not in DELIM:
                j += 1
            word = data[i:j]
            i = j
            if NUMBER.match(word) or word in (b"true", b"false", b"null"):
                yield "other", None
            elif word == b"ID":
                # Inline image data runs to the first "EI" between white space.
                m = re.compile(rb"[\x00\t\n\x0c\r ]EI(?=[\x00\t\n\x0c\r ]|$)").search(data, i + 1)
                i = n if not m else m.end()
                yield "op", b"ID"
            else:
                yield "op", word


class Counter:
    def __init__(self, doc):
        self.doc = doc
        self.count = 0
        self.composite = False
        self.undecodable = False

    def font_is_composite(self, resources, name):
        for res in reversed(resources):
            fonts = self.doc.get(res.get("/Font")) if isinstance(res, dict) else None
            if isinstance(fonts, dict) and "/" + name in fonts:
                font = self.doc.get(fonts["/" + name])
                return isinstance(font, dict) and font.get("/Subtype") == "/Type0"
        return False

    def find_xobject(self, resources, name):
        for res in reversed(resources):
            xobjects = self.doc.get(res.get("/XObject")) if isinstance(res, dict) else None
            if isinstance(xobjects, dict) and "/" + name in xobjects:
                return xobjects["/" + name]
        return None

    def run(self, data, resources, open_refs):
        last_name = None
        in_array = 0
        for kind, value in tokens(data):
            if kind == "name":
                last_name = value.decode("latin-1")
                continue
            if kind == "array":
                in_array += 1 if value == b"[" else -1 if in_array else 0
                continue
            if kind != "op":
                continue
            if value in TEXT_OPS:
                self.count += 1
                in_array = 0
            elif value == b"Tf" and last_name is not None:
                if self.font_is_composite(resources, last_name):
                    self.composite = True
            elif value == b"Do" and last_name is not None:
                ref = self.find_xobject(resources, last_name)
                if isinstance(ref, str) and ref not in open_refs and len(open_refs) < MAX_FORM_DEPTH:
                    d = self.doc.get(ref)
                    subtype = d.get("/Subtype") if isinstance(d, dict) else None
                    is_form = subtype == "/Form" or (subtype is None and "/BitsPerComponent" not in d)
                    if is_form and d.get("/Subtype2") != "/PS":
                        inner = self.doc.stream(ref)
                        if inner is None:
                            self.undecodable = True
                        else:
                            own = self.doc.get(d.get("/Resources"))
                            self.run(inner, resources + [own if isinstance(own, dict) else None],
                                     open_refs | {ref})
            last_name = None


def count_pages(path):
    """(page number, count, only simple fonts, decodable) for each page."""
    doc = Doc(path)
    out = []
    for number, page in enumerate(doc.pages, 1):
        ref = page["object"]
        counter = Counter(doc)
        resources = doc.inherited(ref, "/Resources")
        resources = [resources if isinstance(resources, dict) else None]
        contents = page.get("contents", [])
        for c in contents:
            data = doc.stream(c)
            if data is None:
                counter.undecodable = True
                continue
            counter.run(data, resources, {ref})
        out.append((number, counter.count, not counter.composite, not counter.undecodable))
    return out


SUMMARY = re.compile(r"page (\d+): (ok|ended: .*) elements=\d+ text=\d+ forms=\d+ textops=(\d+)$")


def compare(elements, files):
    agree = disagree = skipped = ended = 0
    for path in files:
        try:
            ours = {}
            run = subprocess.run([elements, "--summary", path], capture_output=True, text=True,
                                 timeout=120, errors="replace")
            for line in run.stdout.splitlines():
                m = SUMMARY.search(line)
                if m:
                    ours[int(m.group(1))] = (m.group(2), int(m.group(3)))
            theirs = count_pages(path)
        except Exception as e:  # a file qpdf or the tool can't read at all
            print(f"{path}: skipped ({type(e).__name__})")
            continue
        for number, count, simple, decodable in theirs:
            if not simple or not decodable or number not in ours:
                skipped += 1
                continue
            status, mine = ours[number]
            if status != "ok":
                ended += 1
                continue
            if mine == count:
                agree += 1
            else:
                disagree += 1
                print(f"{path} page {number}: reader {mine}, independent count {count}")
    total = agree + disagree
    print(f"pages compared: {total}, agree: {agree} ({100.0 * agree / max(total, 1):.2f}%), "
          f"disagree: {disagree}; ended early in the reader: {ended}; "
          f"skipped (composite fonts, undecodable, not found): {skipped}")
    return 0 if disagree == 0 else 1


def main(argv):
    if len(argv) >= 2 and argv[0] == "--compare":
        return compare(argv[1], argv[2:])
    if not argv:
        print(__doc__)
        return 2
    for path in argv:
        for number, count, simple, decodable in count_pages(path):
            print(f"{path} page {number}: textops={count} simple={int(simple)} decodable={int(decodable)}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
