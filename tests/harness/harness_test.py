#!/usr/bin/env python3
"""Tests of the robustness harness: the corpus runner and the fuzz runner against tiny fake
programs, and the replay driver (LUM_REPLAY_SELF, built by ctest) against a target that
misbehaves on purpose. Run by ctest as harness.selftest, or directly with python3."""

import contextlib
import importlib.machinery
import importlib.util
import io
import os
import signal
import subprocess
import sys
import tempfile
import textwrap
import unittest

REPO = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def load_tool(name):
    path = os.path.join(REPO, "tools", name)
    loader = importlib.machinery.SourceFileLoader(name.replace("-", "_"), path)
    loader_entry = importlib.util.spec_from_loader(loader.name, loader)
    module = importlib.util.module_from_spec(loader_entry)
    loader.exec_module(module)
    return module


corpus_run = load_tool("corpus-run")
fuzz_run = load_tool("fuzz-run")

# Stands in for scrivex: the content of the PDF says what to do. "__asan_init" in the text
# makes the runner treat it as a sanitizer build when ASAN is set.
FAKE_SCRIVEX = textwrap.dedent("""\
    #!/usr/bin/env python3
    # MARKER
    import os, resource, signal, sys, time
    if "--pageinfo" not in sys.argv:
        print("Error: the runner dropped the options"); sys.exit(0)
    what = open(sys.argv[-1]).read().strip()
    if what == "ok":
        print(sys.argv[-1])
    elif what == "error":
        print("Error: Invalid document"); sys.exit(0)
    elif what == "exit3":
        sys.exit(3)
    elif what == "segv":
        os.kill(os.getpid(), signal.SIGSEGV)
    elif what == "hang":
        time.sleep(60)
    elif what == "nap":
        time.sleep(1)
    elif what == "alloc":
        try:
            block = b"x" * (600 << 20)
        except MemoryError:
            sys.stderr.write("terminate called after throwing an instance of 'std::bad_alloc'\\n")
            sys.stderr.flush(); os.abort()
        print("Error: the address-space limit was not applied")
    elif what == "grow":
        if resource.getrlimit(resource.RLIMIT_AS)[0] != resource.RLIM_INFINITY:
            print("Error: a sanitizer build must not get an address-space limit"); sys.exit(0)
        if "hard_rss_limit_mb=64" not in os.environ.get("ASAN_OPTIONS", ""):
            print("Error: ASAN_OPTIONS lacks the RSS bound"); sys.exit(0)
        block = b"x" * (300 << 20)
        time.sleep(30)
    elif what == "asan":
        sys.stderr.write("==1==ERROR: AddressSanitizer: heap-buffer-overflow on address 0x1\\n"); sys.exit(1)
    elif what == "ubsan":
        sys.stderr.write("Obj.cpp:10:5: runtime error: signed integer overflow\\n")
    elif what == "rss":
        sys.stderr.write("==1==ERROR: AddressSanitizer: hard rss limit exhausted (64Mb vs 70Mb)\\n"); os.abort()
""")


def write(path, text, mode=0o644):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as f:
        f.write(text)
    os.chmod(path, mode)


def read_tsv(path):
    with open(path) as f:
        rows = [line.rstrip("\n").split("\t") for line in f][1:]
    return {row[4]: row for row in rows}


class CorpusRunParsing(unittest.TestCase):
    def test_memory_sizes(self):
        for text, mb in [("2G", 2048), ("2GiB", 2048), ("1536M", 1536), ("1536", 1536), ("512mb", 512),
                         ("1.5G", 1536), ("1T", 1 << 20)]:
            with self.subTest(text=text):
                self.assertEqual(corpus_run.parse_mem(text), mb)
        for text in ["", "lots", "2X", "0", "10K"]:
            with self.subTest(text=text), self.assertRaises(Exception):
                corpus_run.parse_mem(text)

    def test_folder_is_the_last_argument_after_the_separator(self):
        cases = [
            (["--ci", "--", "dir"], ["--ci"], [], "dir"),
            (["--", "--pageinfo", "-f", "3", "dir"], [], ["--pageinfo", "-f", "3"], "dir"),
            (["--bin", "x", "dir"], ["--bin", "x", "dir"], [], None),
            (["--"], [], [], None),
            (["--", "--", "dir"], [], ["--"], "dir"),
        ]
        for argv, ours, passed, folder in cases:
            with self.subTest(argv=argv):
                self.assertEqual(corpus_run.split_command_line(argv), (ours, passed, folder))

    def test_message_shape(self):
        self.assertEqual(corpus_run.message_shape("Failed to read: /a/b12.pdf at 345", "/a/b12.pdf"),
                         "Failed to read: <file> at N")

    def test_budget_cuts_evenly_across_sources(self):
        files = [(f"/c/{r}", r) for r in ["a/1", "a/2", "a/3", "b/1", "top.pdf", "c/x/1", "c/x/2"]]
        order = [rel for _, rel in corpus_run.interleave_by_folder(files)]
        self.assertEqual(order, ["top.pdf", "a/1", "b/1", "c/x/1", "a/2", "c/x/2", "a/3"])

    def test_classification_order(self):
        O = corpus_run.Outcome
        cases = [
            # A kill by the runner explains the signal that follows it.
            (O(status=-9, timed_out=True), corpus_run.TIMEOUT),
            (O(status=-9, killed_for_memory=True, rss_mb=3000), corpus_run.MEMORY),
            # A memory report explains the abort the sanitizer raised after it.
            (O(status=-6, stderr=b"==9==ERROR: AddressSanitizer: requested allocation size 0x1 exceeds"),
             corpus_run.MEMORY),
            (O(status=-6, stderr=b"terminate called after throwing an instance of 'std::bad_alloc'"),
             corpus_run.MEMORY),
            (O(status=0, stdout=b"a.pdf\nError: std::bad_alloc\n"), corpus_run.MEMORY),
            (O(status=-11), corpus_run.CRASHED),
            (O(status=-9), corpus_run.CRASHED),
            (O(status=1, stderr=b"==9==ERROR: LeakSanitizer: detected memory leaks"), corpus_run.CRASHED),
            (O(status=0, stderr=b"x.cpp:1:2: runtime error: shift exponent"), corpus_run.CRASHED),
            # A sanitizer report outranks the "Error:" line printed before it.
            (O(status=1, stdout=b"Error: bad\n", stderr=b"==2==ERROR: AddressSanitizer: SEGV"),
             corpus_run.CRASHED),
            (O(status=0, stdout=b"a.pdf\nError: Invalid document\nmore\n"), corpus_run.FAILED),
            (O(status=0, stdout=b"the text says Error: here, not at a line start\n"), corpus_run.OK),
            (O(status=2), corpus_run.FAILED),
            (O(status=0, stdout=b"a.pdf\n"), corpus_run.OK),
        ]
        for outcome, kind in cases:
            with self.subTest(outcome=outcome):
                self.assertEqual(corpus_run.classify(outcome)[0], kind)
        self.assertEqual(corpus_run.classify(O(status=0, stdout=b"Error: Invalid document\n"))[1],
                         "Invalid document")
        self.assertIn("SIGSEGV", corpus_run.classify(O(status=-11))[1])


class CorpusRunEndToEnd(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.dir = self.tmp.name
        self.folder = os.path.join(self.dir, "pdfs")
        self.fake = os.path.join(self.dir, "fake-scrivex")
        write(self.fake, FAKE_SCRIVEX, 0o755)

    def tearDown(self):
        self.tmp.cleanup()

    def run_tool(self, files, *options, fake=None):
        for name, what in files.items():
            write(os.path.join(self.folder, name), what)
        tsv = os.path.join(self.dir, "out.tsv")
        argv = [sys.executable, os.path.join(REPO, "tools", "corpus-run"), "--bin", fake or self.fake,
                "--tsv", tsv, "--logs", os.path.join(self.dir, "logs"), *options, "--", "--pageinfo", self.folder]
        proc = subprocess.run(argv, capture_output=True, text=True, timeout=120)
        return proc, read_tsv(tsv) if os.path.exists(tsv) else {}

    def test_each_kind_of_outcome(self):
        files = {"ok.pdf": "ok", "sub/deep/Upper.PDF": "ok", "error.pdf": "error", "exit3.pdf": "exit3",
                 "segv.pdf": "segv", "hang.pdf": "hang", "alloc.pdf": "alloc", "asan.pdf": "asan",
                 "ubsan.pdf": "ubsan", "rss.pdf": "rss", "notes.txt": "segv"}
        proc, rows = self.run_tool(files, "--timeout", "2", "--mem", "256M", "--jobs", "4", "--ci")
        self.assertEqual(proc.returncode, 1, proc.stdout + proc.stderr)
        expected = {"ok.pdf": "ok", "sub/deep/Upper.PDF": "ok", "error.pdf": "failed", "exit3.pdf": "failed",
                    "segv.pdf": "crashed", "hang.pdf": "timeout", "alloc.pdf": "memory", "asan.pdf": "crashed",
                    "ubsan.pdf": "crashed", "rss.pdf": "memory"}
        self.assertEqual({k: v[0] for k, v in rows.items()}, expected)
        self.assertLess(float(rows["hang.pdf"][1]), 10)
        self.assertIn("Bad files:", proc.stdout)
        self.assertIn("segv.pdf", proc.stdout)
        self.assertNotIn("Most frequent", proc.stdout)  # --ci keeps to the table and the bad files
        logs = os.listdir(os.path.join(self.dir, "logs"))
        self.assertEqual(len(logs), 1)
        self.assertEqual(len(os.listdir(os.path.join(self.dir, "logs", logs[0]))), 6)

    def test_handled_failures_alone_pass(self):
        proc, rows = self.run_tool({"a.pdf": "ok", "b.pdf": "error", "c.pdf": "exit3"}, "--jobs", "2")
        self.assertEqual(proc.returncode, 0, proc.stdout + proc.stderr)
        self.assertIn("Most frequent failure messages", proc.stdout)
        self.assertIn("Invalid document", proc.stdout)

    def test_sanitizer_build_gets_an_rss_watch_instead_of_an_address_limit(self):
        asan_fake = os.path.join(self.dir, "asan-scrivex")
        write(asan_fake, FAKE_SCRIVEX.replace("MARKER", "__asan_init"), 0o755)
        proc, rows = self.run_tool({"grow.pdf": "grow", "ok.pdf": "ok"}, "--mem", "64M", "--timeout", "20",
                                   fake=asan_fake)
        self.assertEqual(rows["ok.pdf"][0], "ok")
        self.assertEqual(rows["grow.pdf"][0], "memory", rows["grow.pdf"])
        self.assertLess(float(rows["grow.pdf"][1]), 15)
        self.assertEqual(proc.returncode, 1)

    def test_budget_leaves_files_not_run(self):
        files = {f"n{i}.pdf": "nap" for i in range(6)}
        proc, rows = self.run_tool(files, "--jobs", "1", "--budget", "1.5")
        kinds = [v[0] for v in rows.values()]
        self.assertGreater(kinds.count("not run"), 0)
        self.assertGreater(kinds.count("ok"), 0)
        self.assertEqual(proc.returncode, 0)
        self.assertIn("budget", proc.stdout)

    def test_usage_errors(self):
        for argv in (["--", self.dir + "/missing"], ["--bin", self.dir + "/nope", "--", self.dir], []):
            with self.subTest(argv=argv):
                proc = subprocess.run([sys.executable, os.path.join(REPO, "tools", "corpus-run"), *argv],
                                      capture_output=True, text=True)
                self.assertEqual(proc.returncode, 2)


class FuzzRunLogic(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.dir = self.tmp.name

    def tearDown(self):
        self.tmp.cleanup()

    def test_discovery_and_whole_file_targets(self):
        fuzz = os.path.join(self.dir, "fuzz")
        write(os.path.join(fuzz, "flate_fuzzer.cpp"), "")
        write(os.path.join(fuzz, "document_fuzzer.cpp"), "")
        write(os.path.join(fuzz, "objparser_fuzzer.cpp"), "// fuzz-run: pdf-seeds\n")
        write(os.path.join(fuzz, "StandaloneReplay.cpp"), "")
        write(os.path.join(fuzz, "seeds", "flate", "a"), "x")
        write(os.path.join(fuzz, "regressions", "flate_fuzzer", "crash-1"), "x")
        os.makedirs(os.path.join(fuzz, "seeds", "document"))  # empty: not passed
        targets = {t.name: t.pdf_level for t in fuzz_run.discover_targets(fuzz)}
        self.assertEqual(targets, {"document": True, "flate": False, "objparser": True})
        self.assertEqual([os.path.relpath(d, fuzz) for d in fuzz_run.seed_folders("flate", fuzz)],
                         ["seeds/flate", "regressions/flate_fuzzer"])
        self.assertEqual(fuzz_run.seed_folders("document", fuzz), [])

    def test_select(self):
        targets = [fuzz_run.Target("flate", ""), fuzz_run.Target("lzw", "")]
        chosen, unknown = fuzz_run.select(targets, ["flate_fuzzer", "nope"])
        self.assertEqual([t.name for t in chosen], ["flate"])
        self.assertEqual(unknown, ["nope"])
        self.assertEqual(len(fuzz_run.select(targets, [])[0]), 2)

    def test_corpus_pick_is_capped_and_stable(self):
        corpus = os.path.join(self.dir, "corpus")
        for i in range(20):
            write(os.path.join(corpus, f"s{i % 3}", f"f{i}.pdf"), "%PDF" + "x" * (i * 10))
        write(os.path.join(corpus, "README.md"), "x")
        write(os.path.join(corpus, "empty.pdf"), "")
        picked = fuzz_run.pick_corpus_files(corpus, 5, 100)
        self.assertEqual(len(picked), 5)
        self.assertTrue(all(os.path.getsize(p) <= 100 for p in picked))
        self.assertEqual(picked, fuzz_run.pick_corpus_files(corpus, 5, 100))
        self.assertEqual(len(fuzz_run.pick_corpus_files(corpus, 100, 10 ** 6)), 20)
        self.assertEqual(fuzz_run.pick_corpus_files(os.path.join(self.dir, "none"), 5, 100), [])

    def test_judging_a_log(self):
        crash = os.path.join(self.dir, "crash-abc")
        write(crash, "x")
        clean = textwrap.dedent("""\
            #2      INITED cov: 10 ft: 11 corp: 1/1b exec/s: 0 rss: 30Mb
            #1000   DONE   cov: 42 ft: 50 corp: 7/90b lim: 4 exec/s: 500 rss: 40Mb
            stat::number_of_executed_units: 1000
            stat::average_exec_per_sec:     500
            stat::new_units_added:          6
            stat::peak_rss_mb:              40
            """)
        r = fuzz_run.judge(fuzz_run.RunReport("t"), clean, set())
        self.assertTrue(r.ok)
        self.assertEqual((r.stats["cov"], r.stats["corpus"], r.stats["number_of_executed_units"]), (42, 7, 1000))
        crashed = ("==7==ERROR: AddressSanitizer: heap-buffer-overflow\nSUMMARY: AddressSanitizer: heap-buffer-overflow"
                   f" a.cpp:3\nartifact_prefix='x/'; Test unit written to {crash}\n")
        r = fuzz_run.judge(fuzz_run.RunReport("t", status=1), crashed, set())
        self.assertFalse(r.ok)
        self.assertEqual(r.artifacts, [crash])
        self.assertTrue(r.problem.startswith("SUMMARY: AddressSanitizer"))
        # A new artifact alone is a failure, whatever the status says.
        r = fuzz_run.judge(fuzz_run.RunReport("t"), clean, {crash})
        self.assertFalse(r.ok)

    def test_no_targets_is_a_clean_run(self):
        saved = fuzz_run.FUZZ
        fuzz_run.FUZZ = os.path.join(self.dir, "empty")
        try:
            with contextlib.redirect_stdout(io.StringIO()) as out:
                self.assertEqual(fuzz_run.main(["--seconds", "1", "--build-dir", os.path.join(self.dir, "b")]), 0)
            self.assertIn("no fuzz targets", out.getvalue())
            self.assertFalse(os.path.exists(os.path.join(self.dir, "b")))
        finally:
            fuzz_run.FUZZ = saved


@unittest.skipUnless(os.environ.get("LUM_REPLAY_SELF"), "LUM_REPLAY_SELF (the replay self-test target) not set")
class ReplayDriver(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.dir = self.tmp.name
        self.bin = os.environ["LUM_REPLAY_SELF"]

    def tearDown(self):
        self.tmp.cleanup()

    def replay(self, *args):
        return subprocess.run([self.bin, *args], capture_output=True, text=True, timeout=60)

    def test_benign_inputs_pass_from_nested_folders_and_missing_paths(self):
        for name in ("a", "b/c", "b/d/e"):
            write(os.path.join(self.dir, "seeds", name), "fine")
        r = self.replay(os.path.join(self.dir, "seeds"), os.path.join(self.dir, "no-such-folder"))
        self.assertEqual(r.returncode, 0, r.stderr)
        self.assertIn("4 inputs passed", r.stderr)  # the empty input runs too

    def test_each_failure_names_its_input(self):
        asan = corpus_run.binary_has_asan(self.bin)
        cases = [("abort", None, []), ("throw", 1, []), ("hang", 70, ["--timeout=1"]),
                 ("grow 600", 1, ["--rss-limit-mb=300"])]
        if asan:
            cases.append(("overread", None, []))
        for content, status, flags in cases:
            with self.subTest(content=content):
                path = os.path.join(self.dir, "regressions", content.replace(" ", "-"))
                write(path, content)
                write(os.path.join(self.dir, "regressions", "0-first"), "fine")
                r = self.replay(*flags, os.path.dirname(path))
                if status is None:
                    self.assertNotEqual(r.returncode, 0)
                else:
                    self.assertEqual(r.returncode, status, r.stderr)
                self.assertIn(path, r.stderr.splitlines()[-1] if status else r.stderr)
                os.remove(path)

    def test_bad_usage(self):
        self.assertEqual(self.replay("--frobnicate").returncode, 2)


if __name__ == "__main__":
    unittest.main(verbosity=1)
