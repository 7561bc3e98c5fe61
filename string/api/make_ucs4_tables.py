#!/usr/bin/env python3
"""Writes the case tables of the character functions from the Unicode character database.

    make_ucs4_tables.py > ucs4_tables.cpp
    make_ucs4_tables.py --compare ucs4_tables.cpp     (status 1 when they differ)

The tables are those of Unicode 3.0, whatever version is installed: characters that came later are left
out on both sides of a mapping, and what changed since then for older characters is put back below. So
hash values and comparisons of texts never change when a machine's Unicode data do.
"""
import argparse
import sys

DATABASE = "/usr/share/unicode"   # Debian: unicode-data
VERSION = (3, 0)
BLOCK_SIZE = 64
LAST = 0xFFFF

# Since 3.0 the capital form of U+03F2 has become a character of its own.
UPPER_THEN = {0x03F2: 0x03A3}
# Letters of then that are classified otherwise now, and the other way round: scripts that had no case.
LETTERS_THEN = {0x00AA, 0x00BA, 0x0294, 0x207F}
NO_LETTERS_THEN = {0x2132, 0x2183} | set(range(0x10D0, 0x1100)) | set(range(0x13A0, 0x1400))

# What the filter must leave, so that a database that cannot give the tables is noticed.
LOWER_RUNS, UPPER_RUNS, TITLES, CASELESS = 396, 406, 8, 208


def database_lines(name):
    with open(f"{DATABASE}/{name}", encoding="utf-8") as file:
        for line in file:
            fields = [field.strip() for field in line.split("#")[0].split(";")]
            if len(fields) > 1:
                yield fields


def characters_of_then():
    chars = set()
    for span, age, *_ in database_lines("DerivedAge.txt"):
        first, last = (int(end, 16) for end in (span.split("..") * 2)[:2])
        if tuple(int(part) for part in age.split(".")) <= VERSION:
            chars.update(range(first, min(last, LAST) + 1))
    return chars


def read_mappings():
    """The simple mappings to lower, upper and title case, and the letters that none of them changes."""
    then = characters_of_then()
    lower, upper, title, letters = {}, {}, {}, set(LETTERS_THEN)
    for fields in database_lines("UnicodeData.txt"):
        ch = int(fields[0], 16)
        if ch not in then:
            continue
        if fields[2] in ("Lu", "Ll", "Lt"):
            letters.add(ch)
        for mapping, field in ((upper, fields[12]), (lower, fields[13]), (title, fields[14])):
            if field and int(field, 16) in then and int(field, 16) != ch:
                mapping[ch] = int(field, 16)
    upper.update(UPPER_THEN)
    title = {ch: to for ch, to in title.items() if to != upper.get(ch, ch)}
    caseless = letters - NO_LETTERS_THEN - lower.keys() - upper.keys()
    return lower, upper, title, sorted(caseless)


def runs(mapping):
    """How many runs of neighbours with one difference the mapping has."""
    return sum(mapping.get(ch - 1, 0) - (ch - 1) != to - ch for ch, to in mapping.items())


def rows(values, form, per_row):
    texts = [form.format(value) for value in values]
    return "".join(f"    {', '.join(texts[i:i + per_row])},\n" for i in range(0, len(texts), per_row))


def two_level(name, mapping):
    """Blocks of differences modulo 2^16, each once, and the table that finds a character's block."""
    blocks, places = [], []
    for start in range(0, LAST + 1, BLOCK_SIZE):
        block = [(mapping.get(ch, ch) - ch) % 0x10000 for ch in range(start, start + BLOCK_SIZE)]
        if block not in blocks:
            blocks.append(block)
        places.append(blocks.index(block))
    text = f"const unsigned char {name}_BLOCK[BLOCKS] = {{\n{rows(places, '{}', 32)}}};\n\n"
    text += f"const UTF16T {name}_DIFFERENCE[][BLOCK_SIZE] = {{\n"
    for block in blocks:
        text += "    {\n" + rows(block, "0x{:04X}", 16) + "    },\n"
    return text + "};\n\n"


def tables():
    lower, upper, title, caseless = read_mappings()
    found = (runs(lower), runs(upper), len(title), len(caseless))
    if found != (LOWER_RUNS, UPPER_RUNS, TITLES, CASELESS):
        sys.exit(f"{DATABASE} does not hold the tables: it gives {found}")
    titles = "".join(f"    {{0x{ch:04X}, {to - ch}}},\n" for ch, to in sorted(title.items()))
    return (
        "// Written by make_ucs4_tables.py; do not edit.\n"
        "// clang-format off\n"
        '#include "ucs4_tables.h"\n\n'
        "namespace ucs4tables {\n\n"
        + two_level("LOWER", lower)
        + two_level("UPPER", upper)
        + f"const TitleT TITLE[TITLES] = {{\n{titles}}};\n\n"
        + f"const UTF16T CASELESS_LETTER[CASELESS_LETTERS] = {{\n{rows(caseless, '0x{:04X}', 16)}}};\n\n"
        "}   // namespace ucs4tables\n"
    )


def main():
    parser = argparse.ArgumentParser(description="Writes the case tables to standard output.")
    parser.add_argument("--compare", metavar="FILE", help="compare with FILE instead")
    compare = parser.parse_args().compare
    if compare is None:
        sys.stdout.write(tables())
        return
    with open(compare, encoding="utf-8") as file:
        if file.read() != tables():
            sys.exit(f"{compare} is not what the database gives")


if __name__ == "__main__":
    main()
