#!/usr/bin/env python3
"""Runs the agent example as a user does.

    agent_test.py PROGRAM LIBRARY
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())
LIBRARY = pathlib.Path(sys.argv[2]).resolve()
HAS_MODULE = (LIBRARY.parent / "libtvxssl.so").exists()
NO_MODULE = "cryptography: there is no usable module\n"
PROFILE = """# everything, into one file
agent
Error
trace_counters = yes
show_class = yes
show_threads = yes
filename = trace.txt
"""


def checksum_of(content):
    return subprocess.run(["cksum"], input=content, capture_output=True, check=True).stdout.decode().strip()


class AgentTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        self.put("profile", PROFILE.encode())

    def put(self, name, content):
        (self.root / name).write_bytes(content)

    def run_program(self, *arguments):
        return subprocess.run([PROGRAM, *arguments], capture_output=True, check=False, cwd=self.root)

    def cryptography(self, files):
        return f'cryptography: "{files} files inspected", 17 bytes as 32 and back\n' if HAS_MODULE else NO_MODULE

    def trace(self):
        """The lines of the trace file from the class on, each with single blanks."""
        lines = (self.root / "trace.txt").read_text(encoding="utf-8").splitlines()
        for line in lines:
            self.assertRegex(line, r"^thread 0x[0-9a-f]+ \(")
        return [" ".join(line.split("(", 1)[1].split()) for line in lines]

    def test_reads_back_what_went_wrong(self):
        content = bytes(range(256)) * 40
        self.put("good", content)
        self.put("good.sum", checksum_of(content).encode() + b"\n")
        self.put("changed", b"new\n")
        self.put("changed.sum", b"1 2\n")
        self.put("empty", b"")
        result = self.run_program("good", "changed", "empty", "missing", ".")
        self.assertEqual((result.returncode, result.stderr), (1, b""))
        self.assertEqual(result.stdout.decode(), f"""good: 40 lines, checksum {checksum_of(content)}
changed: 1 lines, checksum {checksum_of(b'new' + bytes([10]))}
  error s500m3: changed has changed
    Its checksum is {checksum_of(b'new' + bytes([10]))}, the record says 1 2
    Restore the file, or remove changed.sum
empty: 0 lines, checksum 4294967295 0
  warning s500m2: empty is empty
missing:
  error s0m2: No such file or directory
  error s500m1: missing cannot be read
.:
  error s0m21: Is a directory
  error s500m1: . cannot be read
""" + self.cryptography(5))
        self.assertEqual(self.run_program("good", "empty").returncode, 0)
        self.assertFalse((self.root / "trace.txt").exists())

    def test_traces_as_the_profile_says(self):
        names = [f"file{i}" for i in range(20)]
        for name in names:
            self.put(name, b"x" * 5000)
        self.assertEqual(self.run_program("--profile", "profile", "--threads", "8", *names).returncode, 0)
        trace = self.trace()
        for name in names:
            self.assertIn(f"agent/file): inspecting {name}", trace)
            self.assertIn(f"agent/file/record): {name} has none", trace)
        self.assertEqual(sum("Recovery (s500m1)" in line for line in trace), 20)
        self.assertEqual(sum("Report" in line for line in trace), 0)
        self.assertIn("agent/file/read): counter agent/file/read now 100000", trace)

    def test_does_without_cryptography(self):
        for file in LIBRARY.parent.glob("libtvxcmn.so*"):   # away from the module
            shutil.copy(file, self.root)
        self.put("good", b"good\n")
        result = subprocess.run([PROGRAM, "--profile", "profile", "good"], capture_output=True, check=False,
                                cwd=self.root, env={**os.environ, "LD_LIBRARY_PATH": str(self.root)})
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertEqual(result.stdout.decode().splitlines(keepends=True)[-1], NO_MODULE)
        self.assertEqual(sum("Recovery (s434m1)" in line for line in self.trace()), 1)

    def test_tells_how_it_is_used(self):
        for arguments in ([], ["--unknown", "x"], ["--threads", "0", "x"], ["--threads"]):
            result = self.run_program(*arguments)
            self.assertEqual((result.returncode, result.stdout), (2, b""))
            self.assertTrue(result.stderr.startswith(b"usage: "))

    def test_shows_paths_that_are_no_utf8(self):
        result = self.run_program(b"\xe9t\xe9")
        self.assertEqual(result.returncode, 1)
        self.assertIn("été cannot be read", result.stdout.decode())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
