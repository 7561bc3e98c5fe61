#!/usr/bin/env python3
"""Reads the built library the way a loader does: what it exports, needs and where it looks for more.

    symbols_test.py SHARED_OBJECT ARCHIVE
"""
import re
import subprocess
import sys
import unittest

SHARED_OBJECT, ARCHIVE = sys.argv[1:3]
SYSTEM_LIBRARIES = {"libc.so.6", "libm.so.6", "libgcc_s.so.1", "libstdc++.so.6"}


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class SharedObjectTest(unittest.TestCase):
    def dynamic(self, tag):
        lines = output_of("readelf", "--dynamic", "--wide", SHARED_OBJECT).splitlines()
        return [re.search(r"\[(.*)\]", line).group(1) for line in lines if f"({tag})" in line]

    def test_exports_seven_names(self):
        exported = output_of("nm", "--dynamic", "--defined-only", "--format=just-symbols", SHARED_OBJECT).split()
        self.assertEqual(sorted(exported), ["getConfiguration", "getErrBuf", "getLocale", "getOpenSSL",
                                            "getStringFactory", "getTraceController", "getTracer"])

    def test_looks_beside_itself_for_what_it_loads(self):
        self.assertEqual(self.dynamic("RUNPATH"), ["$ORIGIN"])

    def test_stays_loaded(self):
        flags = output_of("readelf", "--dynamic", "--wide", SHARED_OBJECT)
        self.assertRegex(flags, r"FLAGS_1.*NODELETE")

    def test_needs_nothing_but_the_system_libraries(self):
        needed = {name for name in self.dynamic("NEEDED") if not name.startswith("ld-linux")}
        self.assertLessEqual(needed, SYSTEM_LIBRARIES)

    def test_archive_has_no_symbol_that_would_be_merged_over_images(self):
        lines = output_of("nm", ARCHIVE).splitlines()
        self.assertEqual([line for line in lines if " u " in line], [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
