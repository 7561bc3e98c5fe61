#!/usr/bin/env python3
"""Runs textinfo as a user does.

    textinfo_test.py PROGRAM
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())
TEXT = "The naïve CAFÉ\r\nthe café 設定 42 Ж\U0001F680\nunfinished"
CODECS = {"utf8": "utf-8", "system-8": "utf-8", "vutf8": "utf-8", "utf16": "utf-16-le", "utf16le": "utf-16-le",
          "utf16be": "utf-16-be", "wchar_t": "utf-32-le", "iso-8859-1": "latin-1", "ascii": "ascii"}
LIMITS = {"ascii": 0x7F, "iso-8859-1": 0xFF}


class TextinfoTest(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)

    def run_program(self, *arguments, stdin=b""):
        return subprocess.run([PROGRAM, *arguments], input=stdin, capture_output=True, check=False,
                              cwd=self.directory.name)

    def assert_fails(self, result, status, words):
        self.assertEqual(result.returncode, status)
        self.assertEqual(result.stderr.count(b"\n"), 1, result.stderr)
        for word in words:
            self.assertIn(word.encode(), result.stderr)
        self.assertEqual(list(pathlib.Path(self.directory.name).glob("assert.log")), [])

    def test_converts_between_all_encodings(self):
        out = pathlib.Path(self.directory.name, "out")
        for source, source_codec in CODECS.items():
            for target, target_codec in CODECS.items():
                if target == "vutf8":
                    continue
                with self.subTest(source=source, target=target):
                    text = "".join(ch for ch in TEXT if ord(ch) <= LIMITS.get(source, 0x10FFFF))
                    kept = "".join(ch if ord(ch) <= LIMITS.get(target, 0x10FFFF) else "~" for ch in text)
                    result = self.run_program("--from", source, "--to", target.upper(), "--out", str(out), "-",
                                              stdin=text.encode(source_codec))
                    self.assertEqual((result.returncode, result.stderr), (0, b""))
                    self.assertEqual(out.read_bytes(), kept.encode(target_codec))
                    lost = sum(a != b for a, b in zip(text, kept))
                    self.assertIn(f"{lost} characters lost" if lost else "nothing lost", result.stdout.decode())

    def test_counts(self):
        lines = self.run_program("-", stdin=TEXT.encode()).stdout.decode().splitlines()
        self.assertEqual(lines[1:6], [
            f"  bytes          {len(TEXT.encode())} (utf8)",
            f"  characters     {len(TEXT)}: 30 letters, 2 digits, 2 ideographs",
            "  words          9",
            "  lines          3, the longest has 17 characters",
            "  frequent words café 2, the 2, 42 1, naïve 1, unfinished 1, ж\U0001F680 1, 設定 1",
        ])

    def test_rejects_what_it_cannot_do(self):
        present = pathlib.Path(self.directory.name, "present")
        present.write_bytes(b"text")
        rows = [
            (("--from", "utf7", "present"), 2, ["unknown encoding", "utf7"]),
            (("--to", "vutf8", "present"), 2, ["vutf8"]),
            (("--to",), 2, ["--to"]),
            (("--color", "present"), 2, ["--color"]),
            ((), 2, ["usage"]),
            (("missing",), 3, ["missing", "No such file"]),
            ((".",), 3, ["directory"]),
            (("--out", "/nowhere/out", "present"), 3, ["/nowhere/out"]),
            (("--out", "/dev/full", "present"), 3, ["/dev/full"]),
        ]
        for arguments, status, words in rows:
            with self.subTest(arguments=arguments):
                self.assert_fails(self.run_program(*arguments), status, words)

    def test_output_may_be_what_was_read(self):
        present = pathlib.Path(self.directory.name, "present")
        present.write_bytes(b"text")
        self.run_program("--to", "utf16le", "--out", "present", "present")
        self.assertEqual(present.read_bytes(), "text".encode("utf-16-le"))

    def test_says_where_malformed_input_begins(self):
        rows = [
            ("ascii", b"ab\x80", 2),
            ("utf8", b"ab\xC3", 2),
            ("utf8", b"a\xE6\x97b", 1),
            ("utf8", b"\xFF", 0),
            ("vutf8", b"abc\xBF", 3),
            ("utf16le", b"a\0b", 2),
            ("utf16be", b"\xDC\x00\0a", 0),
            ("utf16le", b"a\0\x3D\xD8a\0", 2),
            ("utf16", b"\xFE\xFF\xD8\x3D", 2),
            ("wchar_t", b"a\0\0\0\0\0\0\x80", 4),
        ]
        for encoding, content, place in rows:
            with self.subTest(encoding=encoding, content=content):
                result = self.run_program("--from", encoding, "-", stdin=content)
                self.assert_fails(result, 3, [f"byte {place} is not valid {encoding}"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
