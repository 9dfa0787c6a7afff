#!/usr/bin/python3
"""Compares the image decoders with poppler's pdfimages, image by image.

For every file (a PDF, or every PDF of a corpus folder whose MANIFEST.tsv lists one of the
filters asked for), pdfimages lists and extracts the images, and build/release/imgdump
decodes the same image XObjects. pdfimages writes -tiff here: it is its uncompressed output
that keeps CMYK as CMYK (its PNG output turns CMYK into RGB), with the same decoders as -png.

Bilevel images (CCITT, JBIG2) must agree pixel for pixel, continuous-tone ones (JPEG,
JPEG 2000) within a PSNR of 45 dB, at the same size. Prints counts per filter and one line
per disagreement with what explains it.

    tools/imgcompare.py [--imgdump PATH] [--filters ccitt,jbig2,jpeg,jpx] [--timeout S]
                        [--jobs N] [--verbose] [--speed N] CORPUS_DIR | FILE.pdf ...

With --speed N the tools are timed instead (each file N times with each, processor time of the
process): the decode rate of each in megapixels per second, per filter (a file counts for the coding that
has most of its pixels), over all files and over those with at least a megapixel.
"""
import argparse
import collections
import concurrent.futures
import math
import os
import resource
import struct
import subprocess
import sys
import tempfile

import numpy as np

MIN_PSNR = 45.0
FEATURE_OF = {"ccitt": "ccitt", "jbig2": "jbig2", "jpeg": "dct", "jpx": "jpx"}
HERE = os.path.dirname(os.path.abspath(__file__))


def run(cmd, timeout):
    try:
        p = subprocess.run(cmd, capture_output=True, timeout=timeout)
        return p.returncode, p.stdout.decode("latin-1"), p.stderr.decode("latin-1")
    except subprocess.TimeoutExpired:
        return -1, "", "timeout"


# --- image files ---

def read_pnm(path):
    """P4/P5/P6/P7 as (array h x w x c of uint8/uint16, maxval); P4 gives 1 for black."""
    with open(path, "rb") as f:
        data = f.read()
    magic = data[:2]
    if magic == b"P7":
        head_end = data.index(b"ENDHDR\n") + 7
        fields = dict(line.split(b" ", 1) for line in data[3:head_end - 7].split(b"\n") if b" " in line)
        w, h, d, maxval = (int(fields[k]) for k in (b"WIDTH", b"HEIGHT", b"DEPTH", b"MAXVAL"))
        body = data[head_end:]
    else:
        tokens, pos = [], 2
        need = 2 if magic == b"P4" else 3
        while len(tokens) < need:
            while data[pos:pos + 1].isspace():
                pos += 1
            end = pos
            while not data[end:end + 1].isspace():
                end += 1
            tokens.append(int(data[pos:end]))
            pos = end
        body = data[pos + 1:]
        w, h = tokens[0], tokens[1]
        maxval = 1 if magic == b"P4" else tokens[2]
        d = {b"P4": 1, b"P5": 1, b"P6": 3}[magic]
    if magic == b"P4":
        rows = np.frombuffer(body, np.uint8)[: ((w + 7) // 8) * h].reshape(h, (w + 7) // 8)
        return np.unpackbits(rows, axis=1)[:, :w].reshape(h, w, 1), 1
    dtype = np.dtype(">u2") if maxval > 255 else np.uint8
    return np.frombuffer(body, dtype)[: w * h * d].reshape(h, w, d), maxval


def read_tiff(path):
    """An uncompressed TIFF as pdfimages writes it: (array, photometric, bits)."""
    with open(path, "rb") as f:
        t = f.read()
    end = "<" if t[:2] == b"II" else ">"
    (ifd,) = struct.unpack_from(end + "I", t, 4)
    (n,) = struct.unpack_from(end + "H", t, ifd)
    tags = {}
    sizes = {1: 1, 2: 1, 3: 2, 4: 4, 5: 8}
    for i in range(n):
        tag, typ, count = struct.unpack_from(end + "HHI", t, ifd + 2 + 12 * i)
        fmt = {3: "H", 4: "I"}.get(typ)
        if fmt is None:
            continue
        where = ifd + 2 + 12 * i + 8
        if count * sizes[typ] > 4:
            (where,) = struct.unpack_from(end + "I", t, where)
        tags[tag] = list(struct.unpack_from(end + fmt * count, t, where))
    w, h = tags[256][0], tags[257][0]
    bits = tags.get(258, [1])[0]
    spp = tags.get(277, [1])[0]
    assert tags.get(259, [1])[0] == 1, "compressed TIFF"
    body = b"".join(t[o:o + c] for o, c in zip(tags[273], tags[279]))
    if bits == 1:
        rows = np.frombuffer(body, np.uint8)[: ((w + 7) // 8) * h].reshape(h, (w + 7) // 8)
        arr = np.unpackbits(rows, axis=1)[:, :w].reshape(h, w, 1)
    else:
        dtype = np.dtype(end + "u2") if bits == 16 else np.uint8
        arr = np.frombuffer(body, dtype)[: w * h * spp].reshape(h, w, spp)
    return arr, tags.get(262, [1])[0], bits


# --- comparison ---

def psnr(a, b):
    mse = np.mean((a.astype(np.float64) - b.astype(np.float64)) ** 2)
    return math.inf if mse == 0 else 10 * math.log10(255.0 ** 2 / mse)


def compare(ours_path, peer_path, bilevel, polarity_free, color="", rows=None):
    """(agrees, note) for one image. `polarity_free`: the peer writes the image by what it
    paints (stencil masks, palettes), so an exact inversion of the samples agrees. `rows`: the
    rows our decoder delivered, when the data ran short; only those are compared."""
    ours, maxval = read_pnm(ours_path)
    peer, photometric, bits = read_tiff(peer_path)
    if ours.shape[:2] != peer.shape[:2]:
        return False, "size %dx%d, peer %dx%d" % (ours.shape[1], ours.shape[0], peer.shape[1], peer.shape[0])
    if rows is not None:
        if rows == 0:
            return False, "no row delivered"
        ours, peer = ours[:rows], peer[:rows]
    if maxval == 1 or bits == 1:
        if maxval != 1 or bits != 1:
            return False, "peer wrote %d bits, we 1" % bits if maxval == 1 else "peer wrote 1 bit"
        # Both as "is black": ours is PBM (1 black); the peer's TIFF says by its photometric.
        peer_black = peer if photometric == 0 else 1 - peer
        diff = int(np.count_nonzero(ours != peer_black))
        if diff == 0:
            return True, ""
        if int(np.count_nonzero(ours == peer_black)) == 0:
            if polarity_free:
                return True, "inverted: the peer writes what is painted"
            return False, "inverted (Decode or mask polarity)"
        return False, "%d of %d pixels differ, first row %d" % (
            diff, ours.shape[0] * ours.shape[1], int(np.argmax(np.any(ours != peer_black, axis=1)[:, 0])))
    if maxval > 255:
        ours = (ours >> 8).astype(np.uint8)
    elif maxval < 255:
        ours = (ours.astype(np.uint16) * 255 // maxval).astype(np.uint8)
    if bits == 16:
        peer = (peer >> 8).astype(np.uint8)
    if ours.shape[2] == 1 and peer.shape[2] == 3 and (peer == peer[:, :, :1]).all():
        peer = peer[:, :, :1]  # gray written as RGB
    if ours.shape[2] == 3 and peer.shape[2] == 4:
        # A composed (RGB) JPEG 2000 image against the peer's CMYK: the same plain conversion.
        p = peer.astype(np.int32)
        peer = np.clip(255 - p[:, :, :3] - p[:, :, 3:4], 0, 255).astype(np.uint8)
    if ours.shape[2] == 1 and peer.shape[2] == 3 and color == "index":
        # Palette indexes against the peer's colours: they agree when each index has one colour.
        pairs = np.unique(np.concatenate([ours.reshape(-1, 1).astype(np.int64),
                                          peer.reshape(-1, 3).astype(np.int64)], axis=1), axis=0)
        if len(np.unique(pairs[:, 0])) == len(pairs):
            return True, "indexes, each with one colour of the peer (%d colours)" % len(pairs)
        return False, "indexes with more than one colour of the peer"
    if ours.shape[2] != peer.shape[2]:
        return False, "components %d, peer %d (peer converted colours)" % (ours.shape[2], peer.shape[2])
    value = psnr(ours, peer)
    if bilevel and value != math.inf:
        return False, "pixels differ (PSNR %.1f)" % value
    if value >= MIN_PSNR:
        return True, "" if value == math.inf else "PSNR %.1f" % value
    inverted = psnr(255 - ours, peer)
    if inverted >= MIN_PSNR:
        return False, "inverted (Decode [1 0] applied by the peer), PSNR %.1f" % inverted
    return False, "PSNR %.1f" % value


def pdfimages_list(path, password, timeout):
    cmd = ["pdfimages", "-list"] + (["-upw", password] if password else []) + [path]
    rc, out, err = run(cmd, timeout)
    images = []
    for line in out.splitlines()[2:]:
        f = line.split()
        if len(f) < 12:
            continue
        obj = None if f[10] == "[inline]" else int(f[10])
        images.append({"num": int(f[1]), "type": f[2], "enc": f[8], "obj": obj, "page": int(f[0]),
                       "w": int(f[3]), "h": int(f[4]), "color": f[5]})
    # An inline image is known by its page and its place among the inline images drawn there.
    seen = collections.Counter()
    for img in images:
        if img["obj"] is None:
            img["inline"] = seen[img["page"]]
            seen[img["page"]] += 1
    return images, err


def compare_file(args, path, password, wanted):
    results = []
    images, _ = pdfimages_list(path, password, args.timeout)
    images = [i for i in images if i["enc"] in wanted]
    if not images:
        return results
    with tempfile.TemporaryDirectory() as tmp:
        cmd = ["pdfimages", "-tiff", "-q"] + (["-upw", password] if password else []) + [path, tmp + "/p"]
        peer_rc, _, peer_err = run(cmd, args.timeout)
        seen = set()
        inline_pages = {}
        for img in images:
            key = (img["obj"], img["type"]) if img["obj"] is not None else ("inline", img["num"])
            if key in seen:
                continue
            seen.add(key)
            r = {"file": path, "obj": img["obj"], "enc": img["enc"], "type": img["type"],
                 "color": img["color"], "size": "%dx%d" % (img["w"], img["h"])}
            peer_file = "%s/p-%03d.tif" % (tmp, img["num"])
            if not os.path.exists(peer_file):
                r["status"] = "peer-failed"
                r["note"] = "timeout" if peer_rc == -1 else "pdfimages wrote nothing"
                results.append(r)
                continue
            pw = ["--password", password] if password else []
            if img["obj"] is None:
                # The page's inline images, all at once, the first time one is asked for.
                prefix = "%s/i%d" % (tmp, img["page"])
                if img["page"] not in inline_pages:
                    rc, out, err = run([args.imgdump] + pw + ["--inline", path, str(img["page"]), prefix],
                                       args.timeout)
                    inline_pages[img["page"]] = (rc, {l.split(" ", 1)[0]: l for l in out.splitlines()}, out + err)
                rc, lines, text = inline_pages[img["page"]]
                ours_file = "%s-%d.pnm" % (prefix, img["inline"])
                out = lines.get("inline:%d" % img["inline"], "")
                if not out:
                    rc, out, err = 1, "", "no inline image %d on page %d: %s" % (img["inline"], img["page"], text.strip()[-200:])
                else:
                    rc, err = (1 if "error:" in out else 0), ""
                r["obj"] = "page %d inline %d" % (img["page"], img["inline"])
            else:
                ours_file = "%s/o-%d-%d.pnm" % (tmp, img["obj"], img["num"])
                # pdfimages lists a mask with the object number of its image.
                which = str(img["obj"]) + {"smask": ":smask", "mask": ":mask"}.get(img["type"], "")
                rc, out, err = run([args.imgdump] + pw + [path, which, ours_file], args.timeout)
            report = out.strip().split(" ", 9)
            if rc == -1:
                r["status"], r["note"] = "ours-failed", "timeout"
            elif rc != 0 or not os.path.exists(ours_file):
                r["status"], r["note"] = "ours-failed", (out + err).strip()[:200]
            else:
                short = len(report) >= 8 and report[6] != report[7]
                rows = None
                if short:
                    w, h, comps, bpc = (int(x) for x in report[1:5])
                    rows = int(report[6]) // max(1, (w * comps * bpc + 7) // 8)
                try:
                    ok, note = compare(ours_file, peer_file, img["enc"] in ("ccitt", "jbig2"),
                                       img["type"] != "image" or img["color"] == "index", img["color"], rows)
                except Exception as e:  # a file we could not read counts against us
                    ok, note = False, "compare: %s" % e
                if short:
                    note = (note + "; " if note else "") + "the data ran short: %s of %s bytes, %d rows compared" % (
                        report[6], report[7], rows)
                    ok = False
                r["status"], r["note"] = ("agree" if ok else "differ"), note
            results.append(r)
    return results


def speed_file(args, path, password, wanted):
    """Per file: the dominant coding by pixels, and (pixels, processor seconds) of each tool,
    each the best of args.speed runs. Both tools write PNM files to a RAM-backed folder."""
    images, _ = pdfimages_list(path, password, args.timeout)
    if not images:
        return None
    by_enc = collections.Counter()
    for i in images:
        by_enc[i["enc"]] += i["w"] * i["h"]
    enc, _ = by_enc.most_common(1)[0]
    if enc not in wanted:
        return None
    # pdfimages decodes every use of an image; imgdump every image XObject once.
    peer_pixels = sum(i["w"] * i["h"] for i in images)
    ours_pixels = sum(i["w"] * i["h"] for i in {(i["obj"], i["type"]): i for i in images
                                                if i["obj"] is not None}.values())
    best = {}
    base = "/dev/shm" if os.path.isdir("/dev/shm") else None
    for tool in ("peer", "ours"):
        times = []
        for _ in range(args.speed):
            with tempfile.TemporaryDirectory(dir=base) as tmp:
                if tool == "peer":
                    cmd = ["pdfimages", "-q"] + (["-upw", password] if password else []) + [path, tmp + "/p"]
                else:
                    cmd = [args.imgdump] + (["--password", password] if password else []) + ["--all", path, tmp + "/o"]
                # Processor time (user and system) of the tool: the machine may be shared.
                before = resource.getrusage(resource.RUSAGE_CHILDREN)
                run(cmd, args.timeout)
                after = resource.getrusage(resource.RUSAGE_CHILDREN)
                times.append(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
        best[tool] = min(times)
    return enc, peer_pixels, best["peer"], ours_pixels, best["ours"]


def report_speed(rows):
    print("%-6s %5s %9s %11s %9s %11s %9s %7s" % ("filter", "files", "peer Mpx", "peer s", "peer Mpx/s",
                                                  "ours s", "ours Mpx/s", "ratio"))
    for enc in sorted({r[0] for r in rows}):
        for label, sel in (("", [r for r in rows if r[0] == enc]),
                           (" >=1Mpx", [r for r in rows if r[0] == enc and r[1] >= 1e6])):
            if not sel:
                continue
            pp, pt = sum(r[1] for r in sel), sum(r[2] for r in sel)
            op, ot = sum(r[3] for r in sel), sum(r[4] for r in sel)
            pr, orate = pp / pt / 1e6, op / ot / 1e6
            print("%-6s %5d %9.1f %11.3f %9.1f %11.3f %9.1f %7.2f%s" % (
                enc, len(sel), pp / 1e6, pt, pr, ot, orate, orate / pr, label))


def manifest_files(corpus, wanted):
    features = {FEATURE_OF[w] for w in wanted}
    rows = []
    with open(os.path.join(corpus, "MANIFEST.tsv"), encoding="utf-8") as f:
        next(f)
        for line in f:
            cols = line.rstrip("\n").split("\t")
            feats = cols[4].split(",")
            if not features.intersection(feats):
                continue
            password = None
            for feat in feats:
                if feat.startswith("password=") and feat != "password=?":
                    password = feat[len("password="):]
            rows.append((os.path.join(corpus, cols[0]), password))
    return rows


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--imgdump", default=os.path.join(HERE, "..", "build", "release", "imgdump"))
    ap.add_argument("--filters", default="ccitt,jbig2,jpeg,jpx")
    ap.add_argument("--timeout", type=float, default=60)
    ap.add_argument("--jobs", type=int, default=1)
    ap.add_argument("--verbose", action="store_true")
    ap.add_argument("--speed", type=int, default=0, metavar="N",
                    help="instead of comparing pixels, time both tools (best of N runs each) and "
                         "report decode rates per filter, in megapixels per second")
    ap.add_argument("inputs", nargs="+")
    args = ap.parse_args()
    wanted = set(args.filters.split(","))
    files = []
    for i in args.inputs:
        files += manifest_files(i, wanted) if os.path.isdir(i) else [(i, None)]
    if args.speed:
        rows = [r for r in (speed_file(args, f, pw, wanted) for f, pw in files) if r]
        print("files: %d; pdfimages (PNM) against imgdump --all (PNM), processor time, best of %d"
              % (len(files), args.speed))
        report_speed(rows)
        return 0
    results = []
    with concurrent.futures.ThreadPoolExecutor(args.jobs) as pool:
        for rs in pool.map(lambda f: compare_file(args, f[0], f[1], wanted), files):
            results += rs
    counts = collections.defaultdict(collections.Counter)
    for r in results:
        counts[r["enc"]][r["status"]] += 1
    print("files: %d" % len(files))
    print("%-6s %6s %6s %6s %12s %12s %8s" % ("filter", "images", "agree", "differ", "ours-failed", "peer-failed", "skipped"))
    for enc in sorted(counts):
        c = counts[enc]
        print("%-6s %6d %6d %6d %12d %12d %8d" % (enc, sum(c.values()), c["agree"], c["differ"],
                                                 c["ours-failed"], c["peer-failed"], c["skipped"]))
    for r in results:
        if r["status"] in ("differ", "ours-failed") or (args.verbose and r["status"] != "agree") or (
                args.verbose and r.get("note")):
            print("%s %s obj %s %s %s %s: %s" % (r["status"], r["enc"], r["obj"], r["type"], r["color"],
                                                 r["size"], os.path.relpath(r["file"]) + ": " + r.get("note", "")))
    return 0


if __name__ == "__main__":
    sys.exit(main())
