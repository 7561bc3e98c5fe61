#!/usr/bin/env python3
"""Runs tvxssl-info as a user does: with the library in folders of its own, beside modules of all kinds.

    tvxsslinfo_test.py PROGRAM LIBRARY FOLDER_OF_FAKES [MODULE]

MODULE is the one over OpenSSL, if it is built.
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM, LIBRARY, FAKES = [pathlib.Path(argument).resolve() for argument in sys.argv[1:4]]
MODULE = sys.argv[4] if len(sys.argv) > 4 else None
NOT_LOADED = "The OpenSSL module libtvxssl could not be loaded"


class TvxsslInfoTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name).resolve()
        self.library = self.root / "library"
        self.library.mkdir()
        shutil.copy(LIBRARY, self.library)

    def module(self, folder, source=FAKES / "fake" / "libtvxssl.so"):
        (self.root / folder).mkdir(exist_ok=True)
        return shutil.copy(source, self.root / folder)

    def run_program(self, *arguments, search="", **environment):
        result = subprocess.run([PROGRAM, *arguments], capture_output=True, check=False, cwd=self.root,
                                env={**os.environ, "LD_PRELOAD": str(self.library / LIBRARY.name),
                                     "LD_LIBRARY_PATH": str(search), **environment})
        return result.returncode, result.stdout.decode(), result.stderr.decode()

    def answer(self, *arguments, **environment):
        status, out, errors = self.run_program("--json", *arguments, **environment)
        self.assertEqual(errors, "")
        answer = json.loads(out)
        self.assertEqual(status, 0 if answer["usable"] else 1)
        return answer

    def test_finds_the_module_in_its_three_places(self):
        searched = self.module("searched")
        self.assertEqual(self.answer(search=self.root / "searched")["module"], str(searched))
        beside = self.module("library")
        answer = self.answer(FAKE_TEXT="fake")
        self.assertEqual((answer["module"], answer["version"], answer["text"], answer["errors"]),
                         (str(beside), "0x1000211f", "fake", []))
        given = self.module("given")
        self.assertEqual(self.answer("given")["module"], str(given))
        answer = self.answer("empty")
        self.assertEqual(answer["module"], str(beside))
        self.assertEqual(len(answer["steps"]), 2)

    def test_says_why_there_is_none(self):
        answer = self.answer()
        self.assertEqual((answer["version"], answer["module"], answer["errors"]), ("0", "", [NOT_LOADED]))
        self.module("none", FAKES / "noentry" / "libtvxssl.so")
        self.assertEqual(self.answer("none")["errors"], ["The libtvxssl function getOpenSSLProxy was not found"])
        self.module("old")
        answer = self.answer("old", FAKE_VERSION="0x1000211e")
        self.assertEqual(answer["steps"][1],
                         "Found version 0x1000211e < required version 0x1000211f, unloading library")
        status, out, _ = self.run_program()
        self.assertEqual((status, out.splitlines()[0], out.splitlines()[-1]), (1, "no usable module", "  " + NOT_LOADED))

    @unittest.skipUnless(MODULE, "the module over OpenSSL is not built")
    def test_shows_the_real_module(self):
        status, out, errors = self.run_program(os.path.dirname(MODULE))
        self.assertEqual((status, errors, out.splitlines()[0]), (0, "", MODULE))
        self.assertRegex(out.splitlines()[1], r"^OpenSSL 3\..*, version 0x3")

    def test_says_how_it_is_used(self):
        status, out, errors = self.run_program("--help")
        self.assertEqual((status, errors), (0, ""))
        self.assertIn("Exit status", out)
        for arguments in [["--jsn"], ["a", "b"]]:
            status, out, errors = self.run_program(*arguments)
            self.assertEqual((status, out), (2, ""))
            self.assertIn("usage:", errors)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
