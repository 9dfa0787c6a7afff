#!/usr/bin/python3
"""Compares the text colours of scrivex's XML styles with the fill colours mutool reports.

  tools/color-compare.py [--bin DIR] [--pages N] [--per-file K] [--timeout S] CORPUS

Pages: the first pages of the corpus files (in MANIFEST order, at most K pages a file) on which
`mutool draw -F stext` reports at least 10 characters that are neither black nor white, until N
pages are compared. The choice is mutool's, so pages we see in black are not left out; pages on
which scrivex gives no words at all can't be compared and are listed apart.

For each page: `scrivex -f xml --xml_output_styles --xml_words_as_elements --output_bbox` gives
the words with their boxes and style colours; each word is matched with the characters of
mutool whose centres lie in its box (in the middle half of its height) (mutool's frame turned into the page's: only unrotated
pages are compared), and takes the colour most of them have. Agreement is every channel within
1/255. Matching by place keeps words whose Unicode values differ between the two programs.
The fill colour spaces of each page come from the developer tool `colors`, which prints every
string's family, RGB and rendering mode; a disagreement is put down to the families that give
our colour on that page, marked "[stroked]" for text painted only by its outline (mutool then
reports the stroke colour, our style the fill colour).

Prints one line per page, the disagreements by family, and the totals. DIR holds scrivex and
colors (default build/release).
"""
import argparse
import collections
import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET

MIN_COLOURED = 10
# Text painted without a fill: our style gives the fill colour all the same, mutool gives the
# colour of the outline (or, for clip-only text, what it last had).
STROKE_ONLY = {"Tr1": "[stroked]", "Tr5": "[stroked]", "Tr7": "[clip only]"}


def run(cmd, timeout):
    try:
        r = subprocess.run(cmd, capture_output=True, timeout=timeout)
        return r.stdout
    except subprocess.TimeoutExpired:
        return None


def manifest(corpus):
    rows = []
    with open(os.path.join(corpus, "MANIFEST.tsv"), encoding="utf-8") as f:
        header = f.readline().rstrip("\n").split("\t")
        for line in f:
            row = dict(zip(header, line.rstrip("\n").split("\t")))
            feats = row.get("features", "").split(",")
            pw = None
            for ft in feats:
                if ft.startswith("password="):
                    pw = ft[len("password="):]
            if "password=?" in feats or "encrypted-pubkey" in feats or "encrypted-unknown" in feats:
                continue
            if "no-text" in feats:
                continue
            rows.append((os.path.join(corpus, row["file"]), pw))
    return rows


def mutool_chars(path, page, pw, timeout):
    """Characters of a page as mutool sees them: (x, y) of the quad's centre in mutool's frame
    (y down from the crop box's top), '#rrggbb'. None when the page isn't there."""
    cmd = ["mutool", "draw", "-F", "stext", "-o", "-"]
    if pw:
        cmd += ["-p", pw]
    out = run(cmd + [path, str(page)], timeout)
    if not out:
        return None
    try:
        root = ET.fromstring(out)
    except ET.ParseError:
        return None
    pg = root.find("page")
    if pg is None or pg.get("id") != "page%d" % page:
        return None  # mutool falls back to another page
    chars = []
    for ch in pg.iter("char"):
        c = ch.get("c", "")
        if not c or c.isspace():
            continue
        q = [float(v) for v in ch.get("quad", "").split()]
        if len(q) != 8:
            continue
        chars.append(((q[0] + q[2] + q[4] + q[6]) / 4, (q[1] + q[3] + q[5] + q[7]) / 4,
                      ch.get("color", "#000000").lower()))
    return chars


def coloured(chars):
    return sum(1 for _, _, c in chars if c not in ("#000000", "#ffffff"))


def numbers(text):
    return [float(v) for v in text.replace(",", " ").split()]


def our_words(args, path, page, pw, tmp):
    """(box in the page frame, '#rrggbb') of each word, and the crop box and rotation."""
    for name in os.listdir(tmp):
        os.unlink(os.path.join(tmp, name))
    cmd = [os.path.join(args.bin, "scrivex"), "-f", "xml", "--xml_output_styles", "--output_bbox",
           "--xml_words_as_elements", "-a", str(page), "--verb", "0", "--noprompt", "-o", tmp]
    if pw:
        cmd += ["-p", pw]
    if run(cmd + [path], args.timeout) is None:
        return None
    files = [n for n in os.listdir(tmp) if n.endswith(".xml")]
    if not files:
        return None
    data = open(os.path.join(tmp, files[0]), "rb").read()
    if data.startswith(b"\xef\xbb\xbf"):
        data = data[3:]
    try:
        root = ET.fromstring(data)
    except ET.ParseError:
        return None
    crop = numbers(root.get("crop_box", "0, 0, 0, 0"))
    words = []
    colour_re = re.compile(r"color: #([0-9A-Fa-f]{6});")
    for line in root.iter("Line"):
        line_style = line.get("style", "")
        for w in line.iter("Word"):
            m = colour_re.search(w.get("style", line_style))
            box = numbers(w.get("box", ""))
            if m and len(box) == 4:
                words.append((box, "#" + m.group(1).lower()))
    return words, crop, root.get("rotate", "0")


def match(words, crop, chars):
    """Pairs (our colour, mutool's colour) of the words that cover some of mutool's characters."""
    top = crop[1] + crop[3]
    rows = collections.defaultdict(list)
    for mx, my, c in chars:
        x, y = mx + crop[0], top - my
        rows[int(y // 8)].append((x, y, c))
    pairs = []
    for (x, y, w, h), ours in words:
        if w < 0:
            x, w = x + w, -w
        if h < 0:
            y, h = y + h, -h
        votes = collections.Counter()
        for r in range(int((y - 1) // 8), int((y + h + 1) // 8) + 1):
            for cx, cy, c in rows.get(r, ()):
                # The middle half of the word's height: lines set tight overlap at their
                # ascenders and descenders.
                if x - 1 <= cx <= x + w + 1 and y + h / 4 <= cy <= y + 3 * h / 4:
                    votes[c] += 1
        if votes:
            pairs.append((ours, votes.most_common(1)[0][0]))
    return pairs


def families_by_colour(args, path, page, pw):
    """Our RGB colour -> the fill space families that gave it on the page."""
    cmd = [os.path.join(args.bin, "colors"), "--pages", str(page)]
    if pw:
        cmd += ["--password", pw]
    out = run(cmd + [path], args.timeout) or b""
    fams = collections.defaultdict(set)
    for line in out.decode("utf-8", "replace").splitlines():
        parts = line.split("\t")
        if len(parts) >= 5 and parts[3].startswith("#"):
            fam = parts[1]
            if parts[4] in STROKE_ONLY:
                fam += " " + STROKE_ONLY[parts[4]]
            fams[parts[3].lower()].add(fam)
    return fams


def close(a, b):
    return all(abs(int(a[i:i + 2], 16) - int(b[i:i + 2], 16)) <= 1 for i in (1, 3, 5))


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("corpus")
    ap.add_argument("--bin", default="build/release")
    ap.add_argument("--pages", type=int, default=50)
    ap.add_argument("--per-file", type=int, default=2)
    ap.add_argument("--timeout", type=float, default=30)
    args = ap.parse_args()

    totals = collections.Counter()
    by_family = collections.Counter()
    examples = collections.defaultdict(list)
    differ = collections.Counter()
    no_words = []
    pages = 0
    with tempfile.TemporaryDirectory() as tmp:
        for path, pw in manifest(args.corpus):
            if pages >= args.pages:
                break
            taken = 0
            for page in range(1, 4):
                if pages >= args.pages or taken >= args.per_file:
                    break
                theirs = mutool_chars(path, page, pw, args.timeout)
                if not theirs or coloured(theirs) < MIN_COLOURED:
                    continue
                got = our_words(args, path, page, pw, tmp)
                if got and got[2] != "0":
                    continue  # turned pages: the frames aren't compared
                words = got[0] if got else []
                if not words:
                    # Nothing to compare: the page gave no words (a failure of the text road,
                    # not of colour). Counted and reported, and the search goes on.
                    no_words.append("%s p%d" % (os.path.relpath(path, args.corpus), page))
                    continue
                fams = families_by_colour(args, path, page, pw)
                matched = agree = 0
                for ours_c, theirs_c in match(words, got[1] if got else [0, 0, 0, 0], theirs):
                    matched += 1
                    fam = "/".join(sorted(fams.get(ours_c, {"?"})))
                    totals["words"] += 1
                    if close(ours_c, theirs_c):
                        agree += 1
                        totals["agree"] += 1
                        by_family[(fam, "agree")] += 1
                    else:
                        by_family[(fam, "differ")] += 1
                        key = (fam, ours_c, theirs_c)
                        differ[key] += 1
                        if len(examples[key]) < 3:
                            examples[key].append("%s p%d" % (os.path.relpath(path, args.corpus), page))
                pages += 1
                taken += 1
                rel = os.path.relpath(path, args.corpus)
                print("%-60s p%-3d words=%-5d chars=%-5d matched=%-5d agree=%-5d %s" %
                      (rel[-60:], page, len(words), len(theirs), matched, agree,
                       " ".join(sorted({f for s in fams.values() for f in s}))))
                sys.stdout.flush()

    print()
    print("By family of our colour (words matched by place):")
    fam_names = sorted({f for f, _ in by_family})
    for f in fam_names:
        a, d = by_family[(f, "agree")], by_family[(f, "differ")]
        print("  %-50s agree %6d  differ %6d" % (f, a, d))
    print()
    print("Disagreements (family, ours, mutool: words, examples):")
    for key, n in differ.most_common():
        print("  %s ours %s mutool %s: %d words, e.g. %s" % (key[0], key[1], key[2], n,
                                                           "; ".join(examples[key])))
    print()
    print("Pages with coloured text that gave no words (%d), passed over:" % len(no_words))
    for p in no_words:
        print("  " + p)
    print()
    w = totals["words"]
    print("pages %d, words matched %d, colours agreeing within 1/255: %d (%.1f%%)" %
          (pages, w, totals["agree"], 100.0 * totals["agree"] / w if w else 0))


if __name__ == "__main__":
    main()
