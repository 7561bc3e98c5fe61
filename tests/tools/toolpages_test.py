#!/usr/bin/env python3
"""Holds manual pages and completions against what the tools say about themselves, and what all tools share.

    toolpages_test.py SOURCE_TREE PROGRAM...
"""
import pathlib
import re
import subprocess
import sys
import unittest

TREE = pathlib.Path(sys.argv[1])
PROGRAMS = [pathlib.Path(program).resolve() for program in sys.argv[2:]]


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def completions(program, line):
    """What bash offers for the last word of a command line."""
    words = " ".join(f"'{word}'" for word in line)
    script = (f"compopt() {{ :; }}; source '{TREE}/tools/completions/{program.name}'; COMP_WORDS=({words}); "
              f"COMP_CWORD={len(line) - 1}; $(complete -p {program.name} | sed 's/.*-F \\([^ ]*\\).*/\\1/'); "
              'printf "%s\\n" "${COMPREPLY[@]}"')
    return set(output_of("bash", "-c", script).split())


class ToolPagesTest(unittest.TestCase):
    def test_usage_is_told_everywhere(self):
        for program in PROGRAMS:
            with self.subTest(program.name):
                told = output_of(program, "--help")
                usage = told.split("\n\n")[0]
                shared = set(re.findall(r"^  (--?[a-z]+)", told, re.MULTILINE))   # by all commands
                self.assertRegex(output_of(program, "--version"), rf"^{program.name} \d+\.\d+\.\d+\n$")
                page = (TREE / "docs/man" / f"{program.name}.1").read_text().replace("\\-", "-")
                page = re.sub(r"\\f[BIR]", "", page)
                for line in usage.replace("usage:", "").splitlines():
                    self.assertIn(line.strip(), page)
                commands = set(re.findall(rf"{program.name} ([a-z]+)", usage))
                globals_ = {"--help", "--version"}
                if commands:
                    self.assertEqual(completions(program, [program.name, ""]), commands | globals_)
                for command in commands:
                    wanted = set(re.findall(r"(?<![\w-])--?[a-z]+", re.search(rf"{program.name} {command}(.*)", usage)[1]))
                    self.assertEqual(completions(program, [program.name, command, "-"]), wanted | shared)
                if not commands:
                    wanted = set(re.findall(r"(?<![\w-])--[a-z]+", usage))
                    self.assertEqual(completions(program, [program.name, "-"]), wanted)

    def test_lost_output_is_told(self):
        for program in PROGRAMS:
            with self.subTest(program.name), open("/dev/full", "wb") as full:
                result = subprocess.run([program, "--help"], stdout=full, stderr=subprocess.PIPE, text=True, check=False)
                self.assertEqual(result.returncode, 4)
                self.assertEqual(result.stderr, f"{program.name}: standard output: No space left on device\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
