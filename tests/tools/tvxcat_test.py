#!/usr/bin/env python3
"""Runs tvxcat as a user does, and holds the library's own messages against its sources.

    tvxcat_test.py PROGRAM CATALOG SOURCE_TREE
"""
import json
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

PROGRAM, CATALOG, TREE = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
MESSAGES = str(TREE / "messages" / "tvxcmn.msg")


def catalog_of(messages, gap=b""):
    """The bytes of a catalog, from [(set, number, text)]."""
    offset = 12 + 12 * len(messages) + len(gap)
    index, texts = b"", gap
    for group, number, text in messages:
        index += struct.pack(">HHII", group, len(text), number, offset)
        offset += len(text)
        texts += text
    return b"openuict" + struct.pack(">I", len(messages)) + index + texts


class Tvxcat(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)

    def run_program(self, *arguments, status=0):
        result = subprocess.run([PROGRAM, *arguments], capture_output=True, check=False, cwd=self.directory)
        self.assertEqual(result.returncode, status, result.stderr)
        return result.stdout.decode(), result.stderr.decode()

    def file(self, name, content):
        self.directory.joinpath(name).write_bytes(content.encode() if isinstance(content, str) else content)
        return name

    def built(self, *sources):
        paths = [self.file(f"{i}.msg", source) for i, source in enumerate(sources)]
        self.run_program("build", *paths, "-o", "built.cat")
        return self.directory.joinpath("built.cat").read_bytes()


class SourcesTest(Tvxcat):
    def test_build_writes_the_format(self):
        first = '$ comment\n$\n\n$set 0x0CB files\n$quote "\n16 " two  "\n$reason why\n17 "\\"\\101\\\n\\tB"\r\n'
        second = "9 \n$set 1 \n4\t{w} x=\\\\%d\n$solution s\n$set 203\n0x12 end\xE9"
        messages = [(0, 9, b""), (1, 4, b"{w} x=\\%d\1\1s"), (203, 16, b" two  \1why"), (203, 17, b'"A\tB'),
                    (203, 18, "end\xE9".encode())]
        self.assertEqual(self.built(first, second), catalog_of(messages))
        self.assertEqual(self.built(""), catalog_of([]))
        self.assertEqual(self.built('$quote "\n1 ""\n$solution "S"\n'), catalog_of([(0, 1, b"{e}\1\1S")]))

    def test_variants_follow_each_other(self):
        source = "1 {w} P\n$reason R\n$variant short\n$problem {i}p\n$variant\n$problem {} q\n$solution s\n"
        text = b"\1\1{w}\1P\1R\1\1short\1{i}\1p\1\1\1\1{}\1q\1\1s"
        self.assertEqual(self.built(source), catalog_of([(0, 1, text)]))
        shown = json.loads(self.run_program("get", "--json", "built.cat", "s0m1")[0])
        self.assertEqual((shown["severity"], shown["problem"], shown["solution"]), ("error", "q", "s"))

    def test_what_cannot_be_built_is_told_and_leaves_the_old_catalog(self):
        before = self.built("1 x\n")
        self.file("bad.msg", 'x\n$foo\n1\n$quote "\n2 "a\n3 \\q\n$reason z\n$reason z\n$set 65536\n$name 1\n4 "a" b\n'
                  '$quote ab\n$quote\n5 \\400\n$name A\n$name new\n$set5\n$set 5O\n')
        self.file("twice.msg", "$set 7\n$name N\n1 x\n$name N\n1 x\n2 " + "y" * 65536 + "\n3 a\\001b\n$reason r\n")
        _, errors = self.run_program("build", "bad.msg", "twice.msg", "-o", "built.cat", status=3)
        self.assertEqual([line.split(": ")[0] for line in errors.splitlines()],
                         [f"bad.msg:{place}" for place in
                          ("1:1", "2:1", "3:2", "5:3", "6:3", "8:1", "9:6", "10:7", "11:7", "12:9", "14:3", "15:7",
                           "16:7", "17:5", "18:7", "16:7")]
                         + ["twice.msg:7:4", "twice.msg:5:1", "twice.msg:5:1", "twice.msg:6:65538"])
        self.assertEqual(self.directory.joinpath("built.cat").read_bytes(), before)
        self.run_program("build", "0.msg", "-o", "none/x.cat", status=4)
        self.run_program("build", "missing.msg", "-o", "built.cat", status=3)
        self.assertEqual({path.suffix for path in self.directory.iterdir()}, {".msg", ".cat"})
        self.assertEqual(self.directory.joinpath("built.cat").stat().st_mode & 0o777, 0o666 & ~os.umask(0o22))

    def test_build_keeps_what_the_output_is(self):
        before = self.built("1 x\n")
        path = self.directory.joinpath("built.cat")
        path.chmod(0o600)
        os.mkfifo(self.directory / "pipe")
        pipe = os.open(self.directory / "pipe", os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, pipe)
        for name, target in (("link", "built.cat"), ("end", "pipe"), ("new", "none.cat")):
            self.directory.joinpath(name).symlink_to(target)
            self.run_program("build", "0.msg", "-o", name)
            self.assertTrue(self.directory.joinpath(name).is_symlink())
        self.assertEqual(os.read(pipe, 100), before)
        self.assertEqual((path.read_bytes(), path.stat().st_mode & 0o777), (before, 0o600))
        self.assertEqual(self.directory.joinpath("none.cat").read_bytes(), before)
        self.run_program("build", "0.msg", "-o", ".", status=4)

    def test_lint_tells_what_is_wrong_and_where(self):
        self.file("a.msg", "$set 5000\n1 x\n$set 1\n65536 {qe} y\n2 {e x\n3 a\\000b\n"
                  "4 {w}p\n$variant s\n$problem {zi} q\n".encode() + b"5 \xC3\xA9\xC3(\n")
        expected = [(2, 1, "no error number has a set above 0xFFF"),
                    (4, 1, "s1m65536 stands behind a higher number"),
                    (4, 1, "no error number has a message above 0xFFFF"),
                    (4, 8, "unknown severity letter 'q'"),
                    (5, 1, "s1m2 stands behind a higher number"),
                    (5, 3, "the severity mark has no }"),
                    (6, 1, "s1m3 stands behind a higher number"),
                    (6, 4, "the text is read up to this zero byte only"),
                    (7, 1, "s1m4 stands behind a higher number"),
                    (8, 1, "unknown severity letter 'z'"),
                    (10, 1, "s1m5 stands behind a higher number"),
                    (10, 5, "invalid UTF-8")]
        out, _ = self.run_program("lint", "a.msg", "--json", status=1)
        self.assertEqual([(f["line"], f["column"], f["message"]) for f in json.loads(out)], expected)
        out, _ = self.run_program("lint", "a.msg", status=1)
        self.assertEqual(out.splitlines(), [f"a.msg:{line}:{column}: {text}" for line, column, text in expected])
        self.file("b.msg", "1 x\n2 {q\n\n\n\n\n\n\n\n1 {z}\n")
        for first, second in (("a.msg", "b.msg"), ("b.msg", "a.msg")):
            out, _ = self.run_program("lint", first, second, "--json", status=1)
            places = [(f["file"] == second, f["line"], f["column"]) for f in json.loads(out)]
            self.assertEqual((places, len(places)), (sorted(places), len(expected) + 4))
        self.file("clean.msg", "1 {Weimf#} x %d %q\n")
        self.assertEqual(self.run_program("lint", "clean.msg", "--json")[0], "[]\n")
        self.file("broken.msg", "x\n")
        self.run_program("lint", "broken.msg", status=3)
        self.run_program("lint", "clean.msg", "--against", "broken.msg", status=3)

    def test_lint_compares_arguments(self):
        self.file("en.msg", "1 %s in %d of %5.*x: %p%%%D\n2 %t %c\n3 %*2$d %s\n4 a\n6 %1$s %2$*d\n7 %d\n"
                  "8 %1$S\n9 %S\n10 %1$d %1$d %1$c\n")
        self.file("de.msg", "1 %2$ld %1$-8s %3$u %4$o %5$p\n2 %s\n3 %s %i\n4 a\n$reason %b\n5 %d\n"
                  "6 %1$s %3$*2$d\n7 %*10$d\n8 %1$S %1$d\n9 %s\n10 %1$c %1$x\n11 %d\n")
        out, _ = self.run_program("lint", "de.msg", "--against", "en.msg", status=1)
        self.assertEqual(out.splitlines(), [
            "de.msg:2:3: argument 1 is a text here, but a time in en.msg:2",
            "de.msg:2:3: argument 2, a character in en.msg:2, is not used here",
            "de.msg:3:3: argument 1 is a text here, but a number in en.msg:3",
            "de.msg:5:9: argument 1 is a number here, but not used in en.msg:4",
            "de.msg:9:8: argument 1 is a number here, but a string in en.msg:7",
            "de.msg:10:3: argument 1 is a text here, but a string in en.msg:8",
        ])

    def test_header_names_the_numbers(self):
        self.file("my-own.msg", "$set 0x3E8\n$name BAD_TIME\n0x64 x\n1 y\n")
        out, _ = self.run_program("header", "my-own.msg")
        self.assertEqual(re.findall(r"^constexpr long (\w+) = (\w+);", out, re.MULTILINE),
                         [("BAD_TIME", "0xE3E80064L"), ("s1000m1", "0xE3E80001L")])
        self.file("program.cpp", out + out + '#include "h"\nstatic_assert(BAD_TIME == 0xE3E80064);\n')
        self.file("h", out)
        subprocess.run(["c++", "-Wall", "-Werror", "-fsyntax-only", "program.cpp"], check=True, cwd=self.directory)
        self.file("wrong.msg", "$set 1\n1 x\n65537 x\n$set 4097\n1 x\n$set 2\n$name s2m1\n2 x\n1 x\n")
        out, errors = self.run_program("header", "wrong.msg", status=3)
        self.assertEqual(out, "")
        self.assertEqual([line.split(":")[1] for line in errors.splitlines()], ["3", "5", "9"])


class CatalogsTest(Tvxcat):
    def test_dump_is_a_source_of_the_same_bytes(self):
        texts = [b"", b"x", b"{w} a \"q\"\\ \n\t\x7F\xC3\xA9", b"a\1b", b"a\1b\1c", b"a\1\1", b"a\1b\1c\1d", b"\1",
                 b"{e}\1R\1S", b"\1R\1S",
                 b"\1\1{e}\1P\1R\1S", b"\1\1{e}\1P\1R\1S\1s\1{i}\1p\1r\1t", b"\1\1{e}x\1P\1R\1S\1s\1e\1p\1r\1t",
                 b"\1n\1{e}\1P\1R\1S\1\1{i}\1p\1r\1t", b"\1\1{e}\1P\1R\1S\1s\1{i}\1p", b"\xC3\xA9\xA9\xFF\x00" + b"1",
                 bytes(range(256)) * 255]
        content = catalog_of([(n % 3 * 300, n, text) for n, text in sorted(enumerate(texts), key=lambda i: i[0] % 3)])
        self.file("a.cat", content)
        source, _ = self.run_program("dump", "a.cat")
        self.assertEqual(self.built(source), content)
        listed = json.loads(self.run_program("dump", "--json", "a.cat")[0])
        self.assertEqual([row["number"] for row in listed[:3]], ["0xe0000000", "0xe0000003", "0xe0000006"])

    def test_dump_tells_of_another_layout(self):
        self.file("gap.cat", catalog_of([(1, 2, b"x")], gap=b"gap"))
        source, errors = self.run_program("dump", "gap.cat", status=1)
        self.assertIn("other bytes", errors)
        self.assertEqual(self.built(source), catalog_of([(1, 2, b"x")]))
        for messages in ([(1, 3, b"x"), (1, 2, b"y")], [(2, 1, b"x"), (1, 1, b"y")], [(1, 2, b"x"), (1, 2, b"y")]):
            self.file("order.cat", catalog_of(messages))
            self.assertIn("other bytes", self.run_program("dump", "order.cat", status=1)[1])

    def test_files_that_are_no_catalogs(self):
        good = catalog_of([(1, 2, b"text")])
        for content in (b"", good[:11], b"x" + good[1:], good[:20], good[:-1], good[:8] + b"\xFF" * 4 + good[12:],
                        b"openuict" + struct.pack(">I", 9999) + struct.pack(">HHII", 1, 0xFFFF, 1, 0) * 9999):
            self.file("x.cat", content)
            self.assertIn("x.cat: ", self.run_program("dump", "x.cat", status=3)[1])

    def test_get_finds_messages(self):
        self.file("a.cat", catalog_of([(203, 16, b"{w}\tP\1R\nr\1S"), (1000, 1, b"{#}")]))
        for number in ("0xE0CB0010", "s203m16", "0xe0cb0010"):
            self.assertEqual(self.run_program("get", "a.cat", number)[0],
                             "s203m16 0xe0cb0010, warning\nproblem:  P\nreason:   R\nr\nsolution: S\n")
        self.assertIn("none", self.run_program("get", "a.cat", "s1000m1")[0])
        self.assertEqual(self.run_program("get", "a.cat", "0xE0000002")[0],
                         "s0m2 0xe0000002, error\nproblem:  No such file or directory\n")
        self.run_program("get", "a.cat", "0xE000FFFF", status=1)
        for number in ("", "16", "0x00CB0010", "0xE0CB0010x", "0x1E0CB0010", "s203", "s203m", "s-1m1", "s1m1m"):
            self.run_program("get", "a.cat", number, status=2)

    def test_wrong_use(self):
        for arguments in ((), ("build",), ("build", "x"), ("build", "x", "-o"), ("lint",), ("dump", "-o", "x", "y"),
                          ("dump", "x", "y"), ("get", "x"), ("explain",), ("header", "--json", "x"), ("none", "x")):
            self.assertIn("usage: ", self.run_program(*arguments, status=2)[1])
        self.assertIn("Exit status", self.run_program("--help")[0])
        self.assertRegex(self.run_program("--version")[0], r"^tvxcat \d+\.\d+\.\d+\n$")


class OwnMessagesTest(Tvxcat):
    def messages(self):
        return {row["number"]: row for row in json.loads(self.run_program("dump", "--json", CATALOG)[0])}

    def test_are_those_of_the_public_header(self):
        numbers = (TREE / "inst/include/errornumbers.h").read_text()
        declared = dict(re.findall(r"^constexpr ErrorT (TVXERR_\w+) = (0x\w+)L;", numbers, re.MULTILINE))
        header, _ = self.run_program("header", MESSAGES)
        self.assertEqual(dict(re.findall(r"^constexpr long (\w+) = (0x\w+)L;", header, re.MULTILINE)), declared)
        self.assertEqual({n.lower() for n in declared.values()}, set(self.messages()))

    def test_are_complete(self):
        self.assertEqual(self.run_program("lint", MESSAGES)[0], "")
        for row in self.messages().values():
            self.assertTrue(row["problem"] and row["reason"], row)
            self.assertTrue(row["solution"] or row["severity"] == "information", row)

    def test_say_what_the_default_texts_say(self):
        names = {name: int(number, 16) for name, number in re.findall(
            r"^constexpr long (\w+) = (0x\w+)L;", self.run_program("header", MESSAGES)[0], re.MULTILINE)}
        messages = self.messages()
        reports = re.compile(r'\b(?:Error|fail)\([^;"]*?\b(TVXERR_\w+),\s*"([^"]*)"')
        found = [report for folder in ("cmnlib", "confapi", "ddtlib", "file", "openssl", "tracing")
                 for path in (TREE / folder).rglob("*.cpp") for report in reports.findall(path.read_text())]
        self.assertGreater(len(found), 8)
        for name, text in found:
            self.assertEqual(messages[hex(names[name])]["problem"], text)

    def test_survive_a_dump(self):
        source, _ = self.run_program("dump", CATALOG)
        self.assertEqual(self.built(source), CATALOG.read_bytes())

    def test_explain_tells_from_them(self):
        self.assertIn("Invalid date/time string: '%S'", self.run_program("explain", "0xE3E80064")[0])
        self.assertIn("Permission denied", self.run_program("explain", "s0m13")[0])
        shutil.copy(PROGRAM, self.directory)
        alone = [self.directory / PROGRAM.name, "explain"]
        self.assertIn(b"Permission denied", subprocess.run([*alone, "s0m13"], check=True, capture_output=True).stdout)
        self.assertIn("NUMBER", self.run_program("--help")[0])
        self.run_program("explain", "s999m1", status=1)
        self.file("other.cat", catalog_of([(999, 1, b"other")]))
        self.assertIn("other", self.run_program("explain", "--catalog", "other.cat", "s999m1")[0])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
