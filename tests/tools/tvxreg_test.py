#!/usr/bin/env python3
"""Runs tvxreg as a user does, alone and beside other processes.

    tvxreg_test.py PROGRAM
"""
import fcntl
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())
BASE = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vendor"
INI = b"""; the agent
[Agent]
Level = 3
Name=two  words
[Agent\\Schedule]
At = 10:00
[Other]
On = TRUE
\xC3\x84 \xE9 = \xE9\x01"
"""


class Tvxreg(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)
        self.file("a.ini", INI)
        self.environment = dict(os.environ, TVXREG_MOUNTS=self.file("mounts", "\uFEFF# all\nHKLM/SOFTWARE/Vendor=a.ini\n"))

    def run_program(self, *arguments, status=0, text=None):
        result = subprocess.run([PROGRAM, *arguments], capture_output=True, check=False, cwd=self.directory,
                                input=text, env=self.environment)
        self.assertEqual(result.returncode, status, (arguments, result.stderr))
        self.complaint = result.stderr
        if status > 1:
            self.assertNotEqual(self.complaint, b"")
        return result.stdout

    def json(self, *arguments, status=0):
        return json.loads(self.run_program(*arguments, "--json", status=status))

    def file(self, name, content):
        self.directory.joinpath(name).write_bytes(content.encode() if isinstance(content, str) else content)
        return name

    def content(self, name="a.ini"):
        return self.directory.joinpath(name).read_bytes()

    def assertUnchanged(self, *arguments, status, **more):
        before = {path.name: path.read_bytes() for path in self.directory.iterdir() if path.is_file()}
        self.run_program(*arguments, status=status, **more)
        after = {path.name: path.read_bytes() for path in self.directory.iterdir() if path.is_file()}
        self.assertEqual(after, before, arguments)


class ReadingTest(Tvxreg):
    def test_get(self):
        for key in ("HKLM/SOFTWARE/Vendor/Agent", "HKLM\\software\\VENDOR\\aGENT", BASE + "\\Agent\\", "HKLM/SOFTWARE//Vendor/Agent/"):
            self.assertEqual(self.run_program("get", key, "level"), b"3\n")
        key = BASE + "\\Other"
        self.assertEqual(self.json("get", BASE + "\\Agent", "Level", "--type=dword"),
                         {"key": BASE + "\\Agent", "name": "Level", "value": 3})
        self.assertEqual(self.run_program("get", key, "On", "--type", "bool"), b"true\n")
        self.assertEqual(self.run_program("get", key, b"\xC3\x84 \xE9"), b"\xE9\x01\"\n")
        self.assertEqual(self.json("get", key, b"\xC3\xA4 \xE9")["value"], "\uFFFD\x01\"")
        self.run_program("get", key, "On", "--type", "dword", status=3)
        self.run_program("get", BASE + "\\Agent", "Level", "--type", "bool", status=3)
        for place in ((key, "none"), (BASE + "\\None", "x"), (BASE, "x"), ("HKCU/x", "x")):
            self.assertEqual(self.run_program("get", *place, status=1), b"")
            self.assertEqual(self.run_program("get", *place, "--default", "x y"), b"x y\n")

    def test_listings(self):
        self.assertEqual(self.run_program("ls", "HKLM/SOFTWARE/Vendor/Agent"),
                         b"Schedule\\\nLevel = 3\nName = two  words\n")
        self.assertEqual(self.json("ls", "HKLM"), {"key": "HKEY_LOCAL_MACHINE", "keys": ["SOFTWARE"], "values": []})
        self.assertEqual(self.run_program("tree", BASE + "\\agent").decode().splitlines(),
                         [BASE + "\\Agent", "  Level = 3", "  Name = two  words", "  Schedule", "    At = 10:00"])
        self.assertEqual([row["key"].count("\\") for row in self.json("tree")], [0, 1, 2, 3, 4, 3])
        self.assertEqual(self.run_program("find", "*:??"), (BASE + "\\Agent\\Schedule At = 10:00\n").encode())
        self.assertEqual([(row["key"][-8:], row.get("name")) for row in self.json("find", "*O*", "HKLM/SOFTWARE/Vendor")],
                         [("E\\Vendor", None), ("or\\Agent", "Name"), ("or\\Other", None), ("or\\Other", "On")])
        self.assertEqual(self.json("find", "none", status=1), [])
        for command in ("ls", "tree", "export"):
            self.run_program(command, BASE + "\\None", status=1)

    def test_colors(self):
        self.assertIn(b"\33[32mLevel\33[0m", self.run_program("ls", BASE + "\\Agent", "--color=always"))
        self.assertNotIn(b"\33", self.run_program("ls", BASE + "\\Agent", "--color=auto"))
        script = ["script", "-qec", f"{PROGRAM} ls HKLM/SOFTWARE/Vendor", "/dev/null"]
        for no_color, is_colored in (("", True), ("1", False)):
            shown = subprocess.run(script, capture_output=True, check=True, cwd=self.directory,
                                   stdin=subprocess.DEVNULL, env=dict(self.environment, NO_COLOR=no_color)).stdout
            self.assertEqual(b"\33[" in shown, is_colored)

    def test_files_that_overlap_are_seen_as_programs_see_them(self):
        self.file("b.ini", "[Deep]\nx=b\n[x\\y]\nv=b\n")
        self.file("c.ini", "[SOFTWARE]\nv=c\n[SOFTWARE\\Vendor\\Agent]\nLevel=c\n[SOFTWARE\\More]\nv=c\n")
        mounts = ["-i", "HKLM/SOFTWARE/Vendor=a.ini", "-i", "HKLM\\SOFTWARE\\Vendor\\Agent=b.ini", "-i", "HKLM=c.ini"]
        self.run_program(*mounts, "get", BASE + "\\Agent", "Level", status=1)   # stands above what b.ini holds
        self.run_program(*mounts, "get", BASE + "\\Agent\\Deep", "x", status=1)   # in a.ini, which is first
        self.assertEqual(self.run_program(*mounts, "get", "HKLM/SOFTWARE/More", "v"), b"c\n")
        shown = [row["key"] for row in self.json(*mounts, "export", "HKLM")]
        self.assertEqual(shown, [BASE + "\\Agent\\Schedule", BASE + "\\Other", "HKEY_LOCAL_MACHINE\\SOFTWARE\\More"])
        self.assertUnchanged(*mounts, "set", BASE + "\\Agent", "Level", "4", status=1)

    def test_where_counts_lines_as_loads_do(self):
        self.file("a.ini", b"\xEF\xBB\xBF[a]\r\nx=1\r; c\r\n\n [ B ] z\nx = 2\n[A]\nX=3\nbad\n[b\ny=4\n\0=5\nk\0l=6\n")
        for section, name, line in (("a", "x", 8), ("b", "x", 6), ("A", "Y", 11), ("a", "k", 13)):
            place = f"{BASE}\\{section}"
            self.assertEqual(self.run_program("where", place, name), f"a.ini:{line}\n".encode())
            self.assertEqual(self.json("where", place, name)["value"], self.run_program("get", place, name).decode().strip())
        self.run_program("where", BASE + "\\a", "none", status=1)


class ChangingTest(Tvxreg):
    def test_changes_reach_the_file_and_leave_the_rest(self):
        self.run_program("set", BASE + "\\AGENT", "level", "42", "--type", "dword")
        self.run_program("set", "HKLM/SOFTWARE/Vendor/New/Key", "k", b" \xE9 \"'=; ")
        self.run_program("set", BASE + "\\Agent", "--", "n", "-5")
        self.run_program("del", BASE + "\\Other", "on")
        self.run_program("del", BASE + "\\Agent\\Schedule", "-r")
        self.assertEqual(self.content(), b"; the agent\n[Agent]\nlevel=42l\nName=two  words\nn=-5\n[Other]\n"
                         b"\xC3\x84 \xE9 = \xE9\x01\"\n\n[New\\Key]\n\nk=\xE9 \"'=;\n".replace(b"level", b"Level"))
        self.assertEqual(self.run_program("get", BASE + "\\Agent", "Level", "--type", "dword"), b"42\n")
        for digits, stored in (("010", b"10"), ("08", b"8"), ("000", b"0")):
            self.run_program("set", BASE + "\\D", digits, digits, "--type", "dword")
            self.assertEqual(self.run_program("get", BASE + "\\D", digits, "--type", "dword"), stored + b"\n")
        self.assertEqual(sorted(path.name for path in self.directory.iterdir()), ["a.ini", "mounts"])

    def test_missing_files_are_made(self):
        mount = ("-i", "HKCU=new/folder/b.ini")
        self.run_program(*mount, "get", "HKCU/a", "x", status=1)
        self.run_program("-i", "HKCU\\\\A=new/folder/b.ini", "set", "HKCU/a/a", "x", "1")
        self.run_program(*mount, "set", "HKCU/a", "x", "1")
        self.assertEqual(self.run_program(*mount, "get", "HKCU/a", "x"), b"1\n")

    def test_refusals_change_nothing(self):
        key = BASE + "\\Agent"
        for status, arguments in ((1, ("del", key)), (1, ("del", key, "none")), (1, ("del", BASE + "\\None", "-r")),
                                  (1, ("set", BASE, "x", "1")), (1, ("set", "HKCU\\x", "x", "1")),
                                  (2, ("set", key, "a=b", "1")), (2, ("set", key, "a", "1\n2")), (2, ("set", key, "", "1")),
                                  (2, ("set", key + "]", "a", "1")), (2, ("set", key, b"\xE9", "1")),
                                  (2, ("set", key, "a", "-1", "--type=dword")), (2, ("set", key, "a", "1x", "--type=dword")),
                                  (2, ("set", key, "a", "1", "--type=bool")), (2, ("set", "hklm\\x", "a", "1")),
                                  (2, ("set", key, "a", "9" * 20, "--type=dword"))):
            self.assertUnchanged(*arguments, status=status)
        # No merge finds the section of a header with blanks in its brackets.
        self.file("a.ini", "[b]\ny=2\n[a]\n[ a ]\nx=1\n[\tA\\c]\n")
        for change in ("set {}\\a x 9", "del {}\\a x", "del {}\\a -r", "del {}\\a\\c\\"):
            batch = f"set '{BASE}\\b' z 2\n" + change.format(BASE) + "\n"
            self.assertUnchanged("batch", "-", text=batch.encode(), status=4)
        # What follows a header without a name is a load's section, but no merge's.
        for header in ("[]", " [ ]", "[\0]"):
            self.file("a.ini", f"[z]\nq=1\n[a]\nx=1\n{header}\nb=2\n")
            for change in ("set {}\\a b 9", "set {}\\c k 1", "del {}\\a -r"):
                self.assertUnchanged("batch", "-", text=change.format(BASE).encode(), status=4)
        self.file("a.ini", "[a\0 ]\nx=1\n")
        self.run_program("set", BASE + "\\a", "x", "2")
        self.assertUnchanged("batch", "-", text=f"set {BASE}\\a x 3\nset {BASE}\\a\\ x 4".encode(), status=4)   # one key
        self.file("a.ini", "[b]\n".encode("utf-16"))
        os.mkfifo(self.directory / "pipe")
        self.assertUnchanged("set", BASE + "\\b", "x", "1", status=3)
        self.assertUnchanged("-i", "HKCU=pipe", "set", "HKCU/b", "x", "1", status=3)

    def test_batch_is_all_or_nothing(self):
        mounts = ("-i", "HKLM/SOFTWARE/Vendor=a.ini", "-i", "HKCU=b.ini", "-i", "HKU=b/c.ini")
        lines = "# all\n set  HKCU/x 'a  b' \"it's\"\\\nset HKCU/x n 7 --type dword\r\ndel HKLM/SOFTWARE/Vendor/Other -r\n" \
                "set HKLM/SOFTWARE/Vendor/Other x ''\ndel HKCU/x n\n\n"
        for bad, status in (("del HKLM/SOFTWARE/Vendor/Agent none", 1), ("set HKLM/SOFTWARE/Vendor/A b=c d", 2),
                            ("get HKCU/x n", 3), ("set HKCU/x n", 3), ("set 'HKCU/x n 1", 3), ("set x n 1", 3),
                            ("set HKCU/x n 1 --type=bool", 3), ("del HKCU/x n -r", 3),
                            ("set --json HKCU/x n 1", 3), ("set HKCR/x n 1", 1), ("set -i HKCR=d HKCU/x n 1", 3)):
            self.assertUnchanged(*mounts, "batch", "-", text=(lines + bad).encode(), status=status)
            self.assertIn(b"-:8: ", self.complaint)
        self.run_program(*mounts, "batch", self.file("changes", lines))
        self.assertEqual(self.content("b.ini"), b"\n[x]\n\na  b=it's\\\n")
        self.assertEqual(self.content(), INI[:INI.index(b"On = ")] + b"x=\n")

    def test_a_file_that_cannot_be_saved_stays_as_it_was(self):
        self.file("plain", "")
        self.directory.joinpath("loop.ini").symlink_to("loop.ini")
        self.directory.joinpath("folder.ini.lck").mkdir()
        for status, name in ((3, "plain/b.ini"), (3, "."), (3, "loop.ini"), (4, "folder.ini"), (4, "/proc/none/b.ini")):
            self.assertUnchanged("-i", "HKCU=" + name, "set", "HKCU/x", "a", "1", status=status)
        self.directory.joinpath("a.ini.tmp").mkdir()   # which nothing can take the place of
        self.assertUnchanged("batch", "-", text=b"set HKLM/SOFTWARE/Vendor/Agent a 1\n", status=4)

    @unittest.skipIf(os.geteuid() == 0, "root may write everywhere")
    def test_a_folder_that_cannot_be_written(self):
        self.directory.chmod(0o555)
        self.addCleanup(self.directory.chmod, 0o755)
        self.assertUnchanged("set", BASE + "\\Agent", "a", "1", status=4)

    def test_a_file_that_is_locked(self):
        with open(self.directory / "a.ini.lck", "wb") as lock:
            fcntl.lockf(lock, fcntl.LOCK_EX)
            begin = time.monotonic()
            self.run_program("--wait", "0.1", "set", BASE + "\\Agent", "Level", "4", status=5)
            self.assertEqual(self.content(), INI)
            self.assertLess(time.monotonic() - begin, 2)
            waiting = subprocess.Popen([PROGRAM, "--wait=60", "set", BASE + "\\Agent", "Level", "4"],
                                       cwd=self.directory, env=self.environment)
            time.sleep(0.1)
            self.assertIsNone(waiting.poll())
        self.assertEqual(waiting.wait(timeout=60), 0)
        self.assertEqual(self.run_program("get", BASE + "\\Agent", "Level"), b"4\n")

    def test_writers_lose_nothing(self):
        def batch(writer):
            return "".join(f"set HKLM/SOFTWARE/Vendor/W{writer} k{n} {n}\n" for n in range(50)).encode()
        for round_ in range(5):
            writers = [subprocess.Popen([PROGRAM, "--wait", "60", "batch", "-"], cwd=self.directory,
                                        env=self.environment, stdin=subprocess.PIPE) for _ in range(4)]
            for number, writer in enumerate(writers):
                writer.communicate(batch(4 * round_ + number))
                self.assertEqual(writer.returncode, 0)
        for number in range(20):
            self.assertEqual(len(self.json("ls", f"{BASE}\\W{number}")["values"]), 50)

    def test_import_makes_what_export_wrote(self):
        self.file("a.ini", INI.replace(b"\xC3\x84 \xE9", b"\xC3\x84") + b"[Empty]\n[a/b]\nx==[;\n")
        exported = self.run_program("export", "HKLM/SOFTWARE/Vendor")
        copy = ("-i", "HKLM/SOFTWARE/Vendor=copy.ini")
        self.run_program(*copy, "import", self.file("exported.ini", exported))
        self.assertEqual(self.run_program(*copy, "export", "HKLM"), exported)
        for content, status in (("[HKLM\\SOFTWARE\\Vendor\\x]\nbad\n", 3), ("[nothing\\x]\n", 3), ("[HKCU\\x]\na=1\n", 1)):
            self.assertUnchanged("import", self.file("bad.ini", "[HKLM\\SOFTWARE\\Vendor\\x]\nc=1\n" + content), status=status)


class CheckTest(Tvxreg):
    CONTENT = (b"k=0\n[a]\nx=1\n y\n  [b] ; c\nx=1\nX = 2\n[ c ]\n=3\n[A]\nz=4\n[\n[]\n; \xE9\n\xC3\xA9=\xFF\nn=\0m\n")
    FOUND = [(1, 1, "front of the first"), (4, 3, "no ="), (5, 3, "indented"), (5, 7, "not read"), (7, 1, "line 6"),
             (8, 2, "blanks"), (9, 1, "nothing"), (10, 1, "line 2"), (12, 2, "no ]"), (13, 1, "no name"),
             (14, 3, "0xE9"), (15, 4, "0xFF"), (16, 3, "zero byte")]

    def test_tells_what_is_wrong_and_where(self):
        self.file("x.ini", self.CONTENT)
        found = self.json("check", "x.ini", status=1)
        self.assertEqual([(f["line"], f["column"]) for f in found], [row[:2] for row in self.FOUND])
        for finding, (_, _, text) in zip(found, self.FOUND):
            self.assertIn(text, finding["message"])
        lines = self.run_program("check", "x.ini", status=1).decode().splitlines()
        self.assertEqual(lines, [f"x.ini:{f['line']}:{f['column']}: {f['message']}" for f in found])
        self.assertIn(b"\33[", self.run_program("check", "x.ini", "--color", "always", status=1))
        self.file("good.ini", "; c\n[a]\nx = [\n\n[a\\b]\nx=;\n")
        self.assertEqual(self.run_program("check", "good.ini"), b"")
        self.run_program("check", "good.ini", "missing.ini", status=3)

    def test_tells_of_every_line_that_a_change_drops(self):
        content = self.CONTENT.replace(b"[]\n", b";\n")   # which would keep the file from being changed
        self.file("a.ini", content)
        told = {line for line, _, _ in self.FOUND}
        self.run_program("set", BASE + "\\new", "k", "v")
        kept = self.content().splitlines()
        dropped = {number for number, line in enumerate(content.splitlines(), 1) if line not in kept}
        self.assertEqual(dropped - told, set())
        self.assertEqual(dropped, {7, 10, 12})


class UseTest(Tvxreg):
    def test_wrong_use(self):
        for arguments in ((), ("none",), ("get", "HKLM/x"), ("get", "x", "y"), ("get", BASE, "x", "--type", "word"),
                          ("get", BASE, "x", "-r"), ("set", BASE, "x"), ("ls",), ("check",), ("--json",), ("ls", BASE, "--json=1"),
                          ("ls", BASE, "--color=red"), ("ls", BASE, "--wait", "1"), ("del", BASE, "x", "-r"),
                          ("set", BASE, "x", "y", "--wait=x"), ("-i", "x", "tree"), ("-i", "HKLM=", "tree"), ("-i", "HKLM= ", "tree"), ("tree", "-i"),
                          ("-i", "HKLM=a", "-i", "HKCU=a", "tree"), ("-i", "HKLM=a", "-i", "HKLM/=b", "tree")):
            self.run_program(*arguments, status=2)
        self.file("mounts", "x=y\n")
        self.run_program("tree", status=3)
        self.run_program("tree", "--mounts", "missing", status=3)
        del self.environment["TVXREG_MOUNTS"]
        self.run_program("tree", status=2)

    def test_says_what_it_is(self):
        self.assertIn(b"Exit status", self.run_program("--help"))
        self.assertRegex(self.run_program("--version"), rb"^tvxreg \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
