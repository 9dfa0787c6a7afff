#!/usr/bin/python3
"""Compares the structure parents that the element tool reports for marked content with what
`qpdf --json=2` shows in the ParentTree of the same file.

    tools/structparents-compare.py [--bin build/release/elements] [--timeout 60] [--jobs 2]
                                   [--mem-mb 2048] [--show N] (--corpus DIR | FILE...)

--mem-mb 0 runs the tool without a memory limit (for sanitizer builds, which reserve far more
address space than they use).

With --corpus, every file of DIR/MANIFEST.tsv with the feature `tagged` is taken (with its
password= feature). For each marked-content sequence with an MCID that the tool reports, the
expected parent is read from qpdf's objects: the StructParents (else StructParent) of the page
or form that holds the content, that key's value in the ParentTree (a plain reading: the first
pair with that key in a walk of the tree, Limits ignored), and the element MCID of that array
when it is a dictionary or stream. A disagreement is explained when the lookup rules of the
reader decide otherwise on purpose; the script then names the rule:

    limits-excluded    a node's Limits leave the key out, though the key stands in it
    null-value         the key's first value is null, so a later one (or none) counts
    repeated-key       the key stands twice, and the rules find the other one first
    odd-leaf           a leaf array of odd size on the way fails the lookup
    bad-tree           a node, Limits or key of the wrong type on the way fails the lookup
    unloadable         an object on the way (catalog, structure tree root, a node of the tree,
                       the value or the parent) doesn't load in this reader (the object
                       parser refuses it), so the lookup answers nothing

Anything else is counted as unexplained and printed. Exit status 1 when a file crashed or hung
in the tool, or a disagreement is unexplained.
"""
import argparse
import collections
import concurrent.futures
import json
import os
import subprocess
import sys

REPO = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


class TreeFailure(Exception):
    pass


class Objects:
    """The objects of one file as qpdf's JSON shows them."""

    def __init__(self, qpdf_json):
        self.objs = qpdf_json["qpdf"][1]
        self.by_num = {}
        for key in self.objs:
            if key.startswith("obj:"):
                self.by_num.setdefault(int(key[4:].split()[0]), key)

    def raw(self, ref):
        entry = self.objs.get("obj:" + ref)
        if entry is None:
            return None
        if "stream" in entry:
            return {"#stream": True, **entry["stream"].get("dict", {})}
        return entry.get("value")

    def deref(self, value, depth=0):
        while isinstance(value, str) and value.endswith(" R") and depth < 100:
            value = self.raw(value)
            depth += 1
        return value

    def by_number(self, num):
        key = self.by_num.get(num)
        return self.deref(key[4:]) if key else None

    def trailer(self):
        return self.deref(self.objs.get("trailer", {}).get("value"))


def is_ref(v):
    return isinstance(v, str) and v.endswith(" R")


def is_number(v):
    return isinstance(v, (int, float)) and not isinstance(v, bool)


def walk_plain(objs, root):
    """Every (key, value) pair of a number tree in tree order, each node once, Limits ignored."""
    pairs, seen, stack = [], set(), [root]
    while stack:
        node = stack.pop()
        ident = node if is_ref(node) else id(node)
        if ident in seen:
            continue
        seen.add(ident)
        node = objs.deref(node)
        if not isinstance(node, dict):
            continue
        kids = objs.deref(node.get("/Kids"))
        if isinstance(kids, list):
            stack.extend(reversed(kids))
            continue
        nums = objs.deref(node.get("/Nums"))
        if isinstance(nums, list):
            for i in range(0, len(nums) - 1, 2):
                pairs.append((objs.deref(nums[i]), nums[i + 1]))
    return pairs


def lookup_rules(objs, root, key, use_limits=True):
    """The reader's lookup: Limits where present, leaves searched from the front, the first
    equal key wins, a null value counts as not found, each node entered once. Answers the value
    or None; raises TreeFailure(reason) where the reader's lookup fails."""
    visited = set()

    def num(v):
        v = objs.deref(v)
        if not is_number(v):
            raise TreeFailure("bad-tree")
        return v

    def find(node):
        ident = node if is_ref(node) else id(node)
        if ident in visited:
            return None
        visited.add(ident)
        d = objs.deref(node)
        if not isinstance(d, dict):
            raise TreeFailure("bad-tree")
        limits = objs.deref(d.get("/Limits"))
        if limits is not None and use_limits:
            if not isinstance(limits, list) or len(limits) < 2:
                raise TreeFailure("bad-tree")
            if key < num(limits[0]) or num(limits[1]) < key:
                return None
        kids = d.get("/Kids")
        if objs.deref(kids) is not None:
            kids = objs.deref(kids)
            if not isinstance(kids, list):
                raise TreeFailure("bad-tree")
            for kid in kids:
                found = find(kid)
                if found is not None:
                    return found
            return None
        nums = objs.deref(d.get("/Nums"))
        if nums is None:
            return None
        if not isinstance(nums, list):
            raise TreeFailure("bad-tree" if isinstance(nums, dict) else "odd-leaf")
        if len(nums) % 2:
            raise TreeFailure("odd-leaf")
        for i in range(0, len(nums), 2):
            if num(nums[i]) == key:
                value = nums[i + 1]
                return None if objs.deref(value) is None else value
        return None

    return find(root)


def parent_of(objs, value, mcid):
    """The reader's answer for an MCID from a ParentTree value: the array's element when it is
    a dictionary or stream, as "N G R", "direct", or "none"."""
    arr = objs.deref(value)
    if not isinstance(arr, list) or mcid >= len(arr):
        return "none"
    element = arr[mcid]
    target = objs.deref(element)
    if not isinstance(target, dict):
        return "none"
    return element if is_ref(element) else "direct"


MISSING = object()


def explain(objs, root, key, mcid, pairs, plain_value, got):
    """The rule that makes the reader differ from the plain reading (whose value for the key is
    `plain_value`, MISSING when the key isn't in the tree), or None when the reader's answer
    isn't what its own rules give."""
    try:
        by_rules = lookup_rules(objs, root, key)
    except TreeFailure as failure:
        return str(failure) if got == "none" else None
    if (parent_of(objs, by_rules, mcid) if by_rules is not None else "none") != got:
        return None
    if plain_value is not MISSING and objs.deref(plain_value) is None:
        return "null-value"
    try:
        if plain_value is not MISSING and lookup_rules(objs, root, key, False) is plain_value:
            return "limits-excluded"
    except TreeFailure:
        pass
    if sum(1 for k, _ in pairs if k == key) > 1:
        return "repeated-key"
    return None


def road_refs(objs, trailer, root, key, mcid):
    """References that the lookup of `key` may load, in a plain reading of the file."""
    refs = set()

    def note(v):
        if is_ref(v):
            refs.add(int(v.split()[0]))

    note(trailer.get("/Root"))
    catalog = objs.deref(trailer.get("/Root"))
    if isinstance(catalog, dict):
        note(catalog.get("/StructTreeRoot"))
        struct = objs.deref(catalog.get("/StructTreeRoot"))
        if isinstance(struct, dict):
            note(struct.get("/ParentTree"))
    seen, stack = set(), [root]
    while stack:
        node = stack.pop()
        note(node)
        if is_ref(node):
            if node in seen:
                continue
            seen.add(node)
        d = objs.deref(node)
        if not isinstance(d, dict):
            continue
        for k in ("/Kids", "/Nums", "/Limits"):
            note(d.get(k))
        kids = objs.deref(d.get("/Kids"))
        if isinstance(kids, list):
            stack.extend(kids)
        nums = objs.deref(d.get("/Nums"))
        if isinstance(nums, list):
            for i in range(0, len(nums) - 1, 2):
                note(nums[i])
                if objs.deref(nums[i]) == key:
                    note(nums[i + 1])
                    arr = objs.deref(nums[i + 1])
                    if isinstance(arr, list) and mcid < len(arr):
                        note(arr[mcid])
    return refs


def unloadable(pdfobjects, path, password, timeout):
    """Object numbers that this reader fails to load, with the failure."""
    cmd = [pdfobjects] + (["--password", password] if password is not None else []) + [path]
    try:
        out = subprocess.run(cmd, capture_output=True, timeout=timeout).stdout
    except subprocess.TimeoutExpired:
        return {}
    failed = {}
    for line in out.decode("utf-8", "replace").splitlines():
        head, sep, rest = line.partition(": FAILED: ")
        if sep and head.split()[0].isdigit():
            failed[int(head.split()[0])] = rest.rsplit(" (kind", 1)[0]
    return failed


def pdfobjects_beside(binary):
    """The object tool of the same build, else of the release build."""
    beside = os.path.join(os.path.dirname(binary), "pdfobjects")
    return beside if os.path.exists(beside) else os.path.join(REPO, "build/release/pdfobjects")


def run_tool(binary, path, password, timeout, mem_mb):
    cmd = ["prlimit"] + (["--as=%d" % (mem_mb << 20)] if mem_mb else []) + ["--core=0", "--",
                                                                            binary, "--struct"]
    if password is not None:
        cmd += ["--password", password]
    cmd.append(path)
    try:
        p = subprocess.run(cmd, capture_output=True, timeout=timeout)
    except subprocess.TimeoutExpired:
        return "timeout", []
    if p.returncode < 0:
        return "crashed (signal %d)" % -p.returncode, []
    lines = []
    for line in p.stdout.decode("utf-8", "replace").splitlines():
        if line.startswith("mcid "):
            f = line.split(" ", 4)
            lines.append((int(f[1]), f[2], int(f[3]), f[4]))
    return "done", lines


def compare_file(binary, path, password, timeout, mem_mb):
    status, lines = run_tool(binary, path, password, timeout, mem_mb)
    result = {"file": path, "status": status, "mcids": len(lines), "agree": 0,
              "explained": collections.Counter(), "unexplained": []}
    if status != "done":
        return result
    cmd = ["qpdf", "--json=2", "--json-key=qpdf"]
    if password is not None:
        cmd.append("--password=" + password)
    p = subprocess.run(cmd + ["--", path], capture_output=True, timeout=timeout)
    try:
        objs = Objects(json.loads(p.stdout))
    except (ValueError, KeyError, IndexError):
        result["status"] = "qpdf-fails"
        return result
    trailer = objs.trailer() or {}
    catalog = objs.deref(trailer.get("/Root")) if isinstance(trailer, dict) else None
    struct = objs.deref(catalog.get("/StructTreeRoot")) if isinstance(catalog, dict) else None
    root = struct.get("/ParentTree") if isinstance(struct, dict) else None
    pairs = walk_plain(objs, root) if root is not None else []
    first = {}
    for k, v in pairs:
        first.setdefault(k, v)
    failed = None
    for page, owner, mcid, got in lines:
        owner_dict = objs.by_number(int(owner)) if owner.isdigit() else None
        key = None
        if isinstance(owner_dict, dict):
            key = objs.deref(owner_dict.get("/StructParents"))
            if key is None:
                key = objs.deref(owner_dict.get("/StructParent"))
        if root is None or not is_number(key):
            expected_value, expected = MISSING, "none"
        else:
            key = int(key)
            expected_value = first.get(key, MISSING)
            expected = ("none" if expected_value is MISSING
                        else parent_of(objs, expected_value, mcid))
        if got == expected:
            result["agree"] += 1
            continue
        reason = (explain(objs, root, key, mcid, pairs, expected_value, got)
                  if is_number(key) else None)
        if not reason and got == "none" and is_number(key):
            if failed is None:
                failed = unloadable(pdfobjects_beside(binary), path, password, timeout)
            if road_refs(objs, trailer, root, key, mcid) & set(failed):
                reason = "unloadable"
        if reason:
            result["explained"][reason] += 1
        else:
            result["unexplained"].append((page, owner, mcid, got, expected))
    return result


def corpus_files(corpus):
    files = []
    with open(os.path.join(corpus, "MANIFEST.tsv"), encoding="utf-8") as f:
        next(f)
        for row in f:
            cols = row.rstrip("\n").split("\t")
            features = cols[4].split(",")
            if "tagged" not in features:
                continue
            password = None
            for feature in features:
                if feature.startswith("password=") and feature != "password=?":
                    password = feature[len("password="):]
            files.append((os.path.join(corpus, cols[0]), password))
    return files


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--bin", default=os.path.join(REPO, "build/release/elements"))
    ap.add_argument("--timeout", type=int, default=60)
    ap.add_argument("--jobs", type=int, default=2)
    ap.add_argument("--show", type=int, default=20)
    ap.add_argument("--mem-mb", type=int, default=2048)
    ap.add_argument("--corpus")
    ap.add_argument("files", nargs="*")
    args = ap.parse_args()
    files = corpus_files(args.corpus) if args.corpus else [(f, None) for f in args.files]
    if not files:
        ap.error("no files")

    totals = collections.Counter()
    explained = collections.Counter()
    bad_files, unexplained = [], []
    with concurrent.futures.ThreadPoolExecutor(args.jobs) as pool:
        for r in pool.map(lambda fp: compare_file(args.bin, fp[0], fp[1], args.timeout,
                                                     args.mem_mb), files):
            totals["files"] += 1
            if r["status"] != "done":
                totals[r["status"].split(" ")[0]] += 1
                if r["status"] != "qpdf-fails":
                    bad_files.append((r["file"], r["status"]))
                continue
            totals["with-mcid" if r["mcids"] else "without-mcid"] += 1
            totals["mcids"] += r["mcids"]
            totals["agree"] += r["agree"]
            explained.update(r["explained"])
            unexplained += [(r["file"],) + u for u in r["unexplained"]]

    print("files %d (with marked content that has an MCID: %d, without: %d, qpdf fails: %d)"
          % (totals["files"], totals["with-mcid"], totals["without-mcid"], totals["qpdf-fails"]))
    print("marked-content sequences with an MCID: %d" % totals["mcids"])
    print("  parent agrees with qpdf's ParentTree: %d" % totals["agree"])
    for reason, n in sorted(explained.items()):
        print("  differs by the lookup rules (%s): %d" % (reason, n))
    print("  differs, unexplained: %d" % len(unexplained))
    for u in unexplained[:args.show]:
        print("    %s page %d owner %s mcid %d: tool %s, qpdf %s" % u)
    for f, status in bad_files:
        print("tool %s: %s" % (status, f))
    return 1 if bad_files or unexplained else 0


if __name__ == "__main__":
    sys.exit(main())
