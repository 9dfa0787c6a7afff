#!/usr/bin/python3
"""Compares the text colours of scrivex's XML styles with the fill colours mutool reports.

  tools/color-compare.py [--bin DIR] [--pages N] [--per-file K] [--timeout S] CORPUS

Pages: the first pages of the corpus files (in MANIFEST order, at most K pages a file) on which
`mutool draw -F stext` reports at least 10 characters that are neither black nor white, until N
pages are found. The choice is mutool's, so pages we see in black are not left out.

For each page: `scrivex -f xml --xml_output_styles --xml_words_as_elements` gives the words with
their style colours; mutool's characters are cut into words at blanks and line ends, each word
taking the colour most of its characters have. The two word sequences are aligned on their text
(NFKC), and the colours of aligned words compared: agreement is every channel within 1/255.
The fill colour spaces of each page come from the developer tool `colors`, which prints every
string's family and RGB; a disagreement is put down to the families that give our colour on
that page.

Prints one line per page, the disagreements by family, and the totals. DIR holds scrivex and
colors (default build/release).
"""
import argparse
import collections
import difflib
import os
import re
import subprocess
import sys
import tempfile
import unicodedata
import xml.etree.ElementTree as ET

MIN_COLOURED = 10


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


def norm(text):
    return unicodedata.normalize("NFKC", text).strip()


def mutool_words(path, page, pw, timeout):
    """Words of a page as mutool sees them: (text, '#rrggbb')."""
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
    words = []
    for line in root.iter("line"):
        text, colours = "", []

        def flush():
            if text.strip():
                words.append((norm(text), collections.Counter(colours).most_common(1)[0][0]))

        for ch in line.iter("char"):
            c = ch.get("c", "")
            if c.isspace() or c == "":
                flush()
                text, colours = "", []
                continue
            text += c
            colours.append(ch.get("color", "#000000").lower())
        flush()
    return words


def coloured(words):
    return sum(1 for _, c in words if c not in ("#000000", "#ffffff"))


def our_words(args, path, page, pw, tmp):
    for name in os.listdir(tmp):
        os.unlink(os.path.join(tmp, name))
    cmd = [os.path.join(args.bin, "scrivex"), "-f", "xml", "--xml_output_styles",
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
    words = []
    colour_re = re.compile(r"color: #([0-9A-Fa-f]{6});")
    for line in root.iter("Line"):
        line_style = line.get("style", "")
        for w in line.iter("Word"):
            m = colour_re.search(w.get("style", line_style))
            if m and (w.text or "").strip():
                words.append((norm(w.text), "#" + m.group(1).lower()))
    return words


def families_by_colour(args, path, page, pw):
    """Our RGB colour -> the fill space families that gave it on the page."""
    cmd = [os.path.join(args.bin, "colors"), "--pages", str(page)]
    if pw:
        cmd += ["--password", pw]
    out = run(cmd + [path], args.timeout) or b""
    fams = collections.defaultdict(set)
    for line in out.decode("utf-8", "replace").splitlines():
        parts = line.split("\t")
        if len(parts) >= 4 and parts[3].startswith("#"):
            fams[parts[3].lower()].add(parts[1])
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
    pages = 0
    with tempfile.TemporaryDirectory() as tmp:
        for path, pw in manifest(args.corpus):
            if pages >= args.pages:
                break
            taken = 0
            for page in range(1, 4):
                if pages >= args.pages or taken >= args.per_file:
                    break
                theirs = mutool_words(path, page, pw, args.timeout)
                if not theirs or coloured(theirs) < MIN_COLOURED:
                    continue
                ours = our_words(args, path, page, pw, tmp) or []
                fams = families_by_colour(args, path, page, pw)
                sm = difflib.SequenceMatcher(None, [w for w, _ in ours], [w for w, _ in theirs],
                                             autojunk=False)
                matched = agree = 0
                for a, b, size in sm.get_matching_blocks():
                    for k in range(size):
                        ours_c, theirs_c = ours[a + k][1], theirs[b + k][1]
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
                                examples[key].append("%s p%d %r" % (os.path.relpath(path, args.corpus),
                                                                     page, ours[a + k][0]))
                pages += 1
                taken += 1
                rel = os.path.relpath(path, args.corpus)
                print("%-60s p%-3d ours=%-5d mutool=%-5d matched=%-5d agree=%-5d %s" %
                      (rel[-60:], page, len(ours), len(theirs), matched, agree,
                       " ".join(sorted({f for s in fams.values() for f in s}))))
                sys.stdout.flush()

    print()
    print("By family of our colour (words matched by text):")
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
    w = totals["words"]
    print("pages %d, words matched %d, colours agreeing within 1/255: %d (%.1f%%)" %
          (pages, w, totals["agree"], 100.0 * totals["agree"] / w if w else 0))


if __name__ == "__main__":
    main()
