#!/usr/bin/env python3
"""Runs tvxtrace as a user does.

    tvxtrace_test.py PROGRAM
"""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())


class TvxtraceTest(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)

    def run_program(self, *arguments):
        result = subprocess.run([PROGRAM, *arguments], capture_output=True, check=False, cwd=self.directory.name)
        return result.returncode, result.stdout.decode(), result.stderr.decode()

    def profile(self, text, name="p"):
        pathlib.Path(self.directory.name, name).write_bytes(text.encode())
        return name

    def test_clean_profile_has_no_findings(self):
        path = self.profile("# all is well\n timestamp = Yes # as always\nfilename=x\nnet\n-net/quiet\n*/socket\n")
        self.assertEqual(self.run_program("lint", path), (0, "", ""))
        self.assertEqual(self.run_program("lint", "--json", path), (0, "[]\n", ""))

    def test_lint_tells_what_is_wrong_and_where(self):
        path = self.profile("net\n  timestmp = yes\nmax_indent = -1\nfilename=\n*/a/b\n*\n+3,net\n-*x\n7\n*/a/b\n"
                            + "x" * 256 + "\n")
        expected = [
            (2, 3, 'unknown attribute "timestmp"; the nearest is "timestamp"'),
            (3, 14, 'value "-1" of max_indent means nothing'),
            (4, 10, 'value "" of filename means nothing'),
            (5, 3, "wildcard with more than one component matches nothing"),
            (6, 2, "wildcard without a component"),
            (7, 4, 'class "net" was named in line 1'),
            (8, 2, "a wildcard cannot be turned off; this is a class of that name"),
            (9, 1, "class without a name"),
            (10, 3, "wildcard with more than one component matches nothing"),
            (10, 3, 'wildcard "a/b" was named in line 5'),
            (11, 256, "the line goes on behind byte 255, which is not read"),
        ]
        status, out, errors = self.run_program("lint", path)
        self.assertEqual((status, errors), (1, ""))
        shown = [line.split(":", 3) for line in out.splitlines()]
        self.assertEqual([(int(n), int(column), text.strip()) for _, n, column, text in shown], expected)
        status, out, _ = self.run_program("lint", path, "--json")
        self.assertEqual(status, 1)
        self.assertEqual([(f["line"], f["column"], f["message"]) for f in json.loads(out)], expected)

    def test_explain_shows_the_way_from_the_root(self):
        path = self.profile("max_detail = 4\nnet\n-net/quiet\n2,net/deep/x\n*/socket\n")
        status, out, _ = self.run_program("explain", path, "net/file/read")
        self.assertEqual(status, 0)
        self.assertEqual(out.splitlines()[0], "net/file/read is on, mask 0x1, with max_detail 4")
        for name, on, chain in [
            ("net/file/read", True, [("net", 2, "on", 2), ("net/file", 1, "inherits", 1),
                                     ("net/file/read", 1, "inherits", 0)]),
            ("net/quiet/x", False, [("net", 2, "on", 2), ("net/quiet", 1, "off", 3),
                                    ("net/quiet/x", 1, "inherits", 2)]),
            ("5,net/b/c", False, [("net", 5, "on", -1), ("net/b", 5, "inherits", -1), ("net/b/c", 5, "inherits", -1)]),
            ("db/socket", True, [("db", 1, "inherits", -1), ("db/socket", 1, "on", 3)]),
            ("", False, [("", 1, "inherits", -1)]),
        ]:
            with self.subTest(name=name):
                status, out, _ = self.run_program("explain", "--json", path, name)
                answer = json.loads(out)
                self.assertEqual((status, answer["on"], answer["mask"], answer["max_detail"]), (0, on, int(on), 4))
                self.assertEqual([(c["class"], c["increment"], c["set"], c["left"]) for c in answer["chain"]], chain)

    def test_says_how_it_is_used(self):
        status, out, errors = self.run_program("--help")
        self.assertEqual((status, errors), (0, ""))
        self.assertIn("Exit status", out)
        for arguments in [[], ["lint"], ["explain", "p"], ["explain", "p", "c", "d"], ["--jsn", "lint", "p"], ["x", "y"]]:
            with self.subTest(arguments=arguments):
                status, out, errors = self.run_program(*arguments)
                self.assertEqual((status, out), (2, ""))
                self.assertIn("usage:", errors)

    def test_unreadable_profile_is_told_and_the_others_are_checked(self):
        path = self.profile("wrong = 1\n")
        status, out, errors = self.run_program("lint", "missing", ".", path)
        self.assertEqual(status, 3)
        self.assertEqual(len(errors.splitlines()), 2)
        self.assertIn(f"{path}:1:1:", out)
        self.assertEqual(self.run_program("explain", ".", "net")[0], 3)
        self.assertEqual(self.run_program("explain", "/dev/null", "net")[0], 3)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
