#!/usr/bin/env python3
"""Runs findfiles as a user does, and find beside it.

    findfiles_test.py PROGRAM
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())


class FindfilesTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = directory.name
        for path in (b"tree/a.txt/deep", b"tree/\xff", b"tree/empty"):
            os.makedirs(os.path.join(self.root.encode(), path))
        for number, path in enumerate((b"tree/b.txt", b"tree/a.txt/deep/c.txt", b"tree/\xff/\xe9.txt", b"tree/d.TXT")):
            with open(os.path.join(self.root.encode(), path), "wb") as file:
                file.write(b"x" * 1000 * number)
        os.symlink("a.txt", os.path.join(self.root, "tree/link"))

    def output_of(self, *command, status=0):
        result = subprocess.run(command, capture_output=True, check=False, cwd=self.root)
        self.assertEqual(result.returncode, status, result.stderr)
        return sorted(result.stdout.split(b"\n"))

    def test_finds_what_find_finds(self):
        for pattern in ("*", "*.txt", "?.TXT", "deep", "nothing"):
            expected = self.output_of("find", "tree", "-mindepth", "1", "-name", pattern, "-printf", "%s %p\n")
            self.assertEqual(self.output_of(PROGRAM, "--name", pattern, "tree"), expected, pattern)
        expected = self.output_of("find", "-L", "tree", "-mindepth", "1", "-printf", "%s %p\n")
        self.assertEqual(self.output_of(PROGRAM, "--follow", "tree"), expected)

    def test_tells_what_cannot_be_read(self):
        self.assertEqual(self.output_of(PROGRAM, "missing", status=1), [b""])
        self.assertEqual(self.output_of(PROGRAM, "--unknown", status=2), [b""])
        self.assertEqual(self.output_of("sh", "-c", f"'{PROGRAM}' >/dev/full", status=1), [b""])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
