#!/usr/bin/env python3
"""Runs the agent example as a user does.

    agent_test.py PROGRAM LIBRARY TVXCAT SOURCES
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = pathlib.Path(sys.argv[1]).resolve()
LIBRARY = pathlib.Path(sys.argv[2]).resolve()
TVXCAT = sys.argv[3]
SOURCES = pathlib.Path(sys.argv[4])
HAS_MODULE = (LIBRARY.parent / "libtvxssl.so").exists()
NO_MODULE = "cryptography: there is no usable module\n"
TIMEOUT = 100   # seconds for what takes one or two, on a machine that is busy
PROFILE = """# everything, into one file for each process
agent
Error
-Error/Catalog
trace_counters = yes
show_class = yes
show_threads = yes
filename = trace.%p
"""


def checksum_of(path):
    with path.open("rb") as content:
        return subprocess.run(["cksum"], stdin=content, capture_output=True, check=True).stdout.decode().strip()


def section(agent, files, state="", inspected="0l"):
    lines = "".join(f"{path}={record}\n" for path, record in files.items())
    return f"""
; ---- {agent} -----
  ; an indented comment
[Corvantage\\Agents\\{agent}]
State={state}
; between two values
Inspected={inspected}

[Corvantage\\Agents\\{agent}\\Files]
{lines}; after the last value of {agent}
"""


def settings(*sections, patience=60):
    return f"""; The first line

[Corvantage]
InstallDir={PROGRAM.parent}
[Corvantage\\Agents]
; traced by all
Profile=profile
Patience={patience}
{"".join(sections)}; The last line
"""


class AgentTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        self.put("profile", PROFILE)

    def put(self, name, content):
        (self.root / name).write_bytes(content if isinstance(content, bytes) else content.encode())

    def start(self, *arguments, **options):
        process = subprocess.Popen([PROGRAM, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   cwd=self.root, **options)
        self.addCleanup(process.kill)
        return process

    def end(self, process):
        """The exit status and the output without the times, which have to be there."""
        output, errors = process.communicate(timeout=TIMEOUT)
        self.assertEqual(errors, b"")
        text, times = re.subn(r"(?m)^  \d{4}-\d\d-\d\d \d\d:\d\d:\d\d (?=[a-z]+ s\d+m\d+: )", "  ", output.decode())
        self.assertEqual(times, len(re.findall(r" s\d+m\d+: ", text)))
        return process.returncode, text

    def run_agent(self, name, **options):
        return self.end(self.start("settings.ini", name, **options))

    def cryptography(self, summary):
        return f'cryptography: "{summary}", {len(summary)} bytes as 32 and back\n' if HAS_MODULE else NO_MODULE

    def wait_for(self, process, text):
        """Waits until the agent has traced the text."""
        trace = self.root / f"trace.{process.pid}"
        limit = time.monotonic() + TIMEOUT
        while not trace.exists() or text not in trace.read_text(encoding="utf-8"):
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.002)

    def trace_of(self, process):
        """The lines of a trace file from the class on, each with single blanks."""
        lines = (self.root / f"trace.{process.pid}").read_text(encoding="utf-8").splitlines()
        return [" ".join(line.split("(", 1)[-1].split()) for line in lines]

    def test_agents_share_one_file(self):
        names = ["north", "east", "south", "west"]
        files = {name: [f"{name}/{i}" for i in range(20)] for name in names}
        for name in names:
            (self.root / name).mkdir()
            for path in files[name]:
                self.put(path, f"{path}\n" * 1000)
        self.put("settings.ini", settings(*(section(name, dict.fromkeys(files[name], "")) for name in names)))
        processes = {name: self.start("settings.ini", name) for name in names}
        self.wait_for(processes["north"], "inspecting north/5")   # in the middle of it, killed and started again
        processes["north"].kill()
        processes["north"].communicate()
        processes["north"] = self.start("settings.ini", "north")
        for name, process in processes.items():
            others = [other for other in names if other != name]
            self.assertEqual(self.end(process), (0, f"{name} inspects 20 files\n" +
                                                 "".join(f"  {other} is done with 20 files\n" for other in others) +
                                                 self.cryptography(f"{name} inspects 20 files")))
            trace = self.trace_of(process)
            for path in files[name] if name != "north" else []:   # what was recorded before is not recorded again
                self.assertIn(f"agent/settings/sum): the checksum of {path} is {checksum_of(self.root / path)}", trace)
            for other in others:
                self.assertIn(f"agent/settings): {other} is done", trace)
        records = {name: {path: checksum_of(self.root / path) for path in files[name]} for name in names}
        self.assertEqual((self.root / "settings.ini").read_text(),
                         settings(*(section(name, records[name], "done", "20l") for name in names)))
        self.assertEqual(sorted(path.name for path in self.root.glob("settings*")), ["settings.ini"])

    def test_reports_with_texts_of_the_catalog(self):
        self.put("good", bytes(range(256)) * 40)
        self.put("changed", b"new\n")
        self.put("empty", b"")
        good, changed, empty = (checksum_of(self.root / name) for name in ("good", "changed", "empty"))
        before = {"good": good, "changed": "1 2", "empty": "", "missing": "3 4", ".": "", "\udce9": ""}
        self.put("settings.ini", settings(section("one", before)).encode(errors="surrogateescape"))
        process = self.start("settings.ini", "one")
        advice = """      The message before this one tells what the system said.
      Check that the file exists, that its permissions allow what is wanted, and that no other program has locked it.
"""
        self.assertEqual(self.end(process), (1, f"""one inspects 6 files
  error s500m3: changed has changed
      Its checksum is {changed}, the record says 1 2.
      Restore the file, or clear its checksum in the settings.
  warning s500m2: empty is empty
      A file without contents tells nothing when it changes.
      Leave the file out of the settings.
  error s0m2: No such file or directory
  error s203m16: Failed to open file 'missing'
{advice}  error s0m21: Is a directory
  error s500m6: . cannot be read
      The message before this one tells what the system said.
      Check the medium that holds the file.
  error s0m2: No such file or directory
  error s203m16: Failed to open file '\ufffd'
{advice}""" + self.cryptography("one inspects 6 files")))
        after = settings(section("one", {**before, "empty": empty}, "done", "6l"))
        self.assertEqual((self.root / "settings.ini").read_bytes(), after.encode(errors="surrogateescape"))
        trace = self.trace_of(process)
        self.assertIn("agent/file/read): counter agent/file/read now 10244", trace)
        self.assertEqual(sum("Occurrence" in line for line in trace), 8 if HAS_MODULE else 9)
        self.assertEqual(sum("Report" in line for line in trace), 8)

    def test_has_the_numbers_of_its_messages(self):
        header = subprocess.run([TVXCAT, "header", SOURCES / "agent.msg"], capture_output=True, check=True).stdout
        self.assertEqual(header, (SOURCES / "agent_msg.h").read_bytes())
        self.assertEqual(subprocess.run([TVXCAT, "lint", SOURCES / "agent.msg"], check=False).returncode, 0)

    def test_notices_what_is_changed_by_hand(self):
        self.put("settings.ini", settings(section("one", {}), section("two", {}, "running")))
        process = self.start("settings.ini", "one")
        self.wait_for(process, "waiting")   # from then on it changes nothing
        self.assertIsNone(process.poll())
        self.assertEqual((self.root / "settings.ini").read_text(),
                         settings(section("one", {}, "done"), section("two", {}, "running")))
        self.put("settings.ini", settings(section("one", {}, "done"), section("two", {}, "done", "7")))
        status, output = self.end(process)
        self.assertEqual((status, output.splitlines()[1]), (0, "  two is done with 7 files"))

    def test_waits_no_longer_than_it_should(self):
        self.put("settings.ini", settings(section("one", {}), section("two", {}), patience=1))
        start = time.monotonic()
        status, output = self.run_agent("one")
        self.assertGreaterEqual(time.monotonic() - start, 1)
        self.assertEqual(status, 1)
        self.assertIn("error s500m5: The agent two is not done after 1 seconds\n", output)

    def test_loses_nothing_when_it_cannot_save(self):
        self.put("good", b"good\n")
        before = settings(section("one", {"good": ""}))
        self.put("settings.ini", before)
        (self.root / "settings.ini.tmp" / "occupied").mkdir(parents=True)
        status, output = self.run_agent("one")
        self.assertEqual(status, 1)
        self.assertIn("error s500m4: The settings in settings.ini could not be saved\n", output)
        self.assertEqual((self.root / "settings.ini").read_text(), before)

    def test_does_without_cryptography_and_catalog(self):
        for file in LIBRARY.parent.glob("libtvxcmn.so*"):   # away from the module
            shutil.copy(file, self.root)
        text = settings(section("one", {"gone": ""})).replace("InstallDir", "Elsewhere")
        self.put("settings.ini", text)
        process = self.start("settings.ini", "one", env={**os.environ, "LD_LIBRARY_PATH": str(self.root)})
        self.assertEqual(self.end(process), (1, "one inspects 1 files\n  error s0m2: No such file or directory\n"
                                             "  error s203m16: Failed to open file 'gone'\n" + NO_MODULE))
        self.assertEqual(sum("Recovery (s434m1)" in line for line in self.trace_of(process)), 1)

    def test_tells_how_it_is_used(self):
        for arguments in ([], ["settings.ini"], ["a", "b", "c"], ["--help", "one"], [b"\xe9", "one"], ["a", b"\xe9"]):
            result = subprocess.run([PROGRAM, *arguments], capture_output=True, check=False, cwd=self.root)
            self.assertEqual((result.returncode, result.stdout), (2, b""))
            self.assertEqual(result.stderr, b"usage: agent SETTINGS NAME\n")
        self.put("settings.ini", settings(section("one", {})))
        for file, name in (("settings.ini", "two"), ("settings.ini", ""), ("nowhere.ini", "one")):
            status, output = self.end(self.start(file, name))
            self.assertEqual(status, 1)
            self.assertIn(f"error s500m1: The settings in {file} say nothing of an agent {name}\n", output)
        self.assertEqual([path.name for path in self.root.glob("trace*")], [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
