#!/usr/bin/env python3
"""Holds the #include lines of the tree against its layers.

  - nothing includes what stands on a higher layer (scripts/layers.txt)
  - the interface side includes no header of an implementation module
  - a module includes only headers of the modules that its NEEDS list names (tvxcmn_module in CMake)
  - public headers include public headers only; examples, modules and tools include these and their own
"""
import os
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PUBLIC = ROOT / "inst" / "include"
USERS = ("examples/", "modules/", "tools/")
SOURCES = (".h", ".cpp")
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
MODULE = re.compile(r"tvxcmn_module\(([^)]*)\)")
KEYWORDS = ("SIDE", "SOURCES", "NEEDS", "TESTS")


class Module:
    def __init__(self, name, side, folder, sources, needs):
        self.name, self.side, self.needs = name, side, set(needs)
        self.sources = {os.path.relpath(folder / source, ROOT) for source in sources}
        self.folders = {str(pathlib.PurePath(source).parent) for source in self.sources}


def parse_modules():
    """Every tvxcmn_module of the tree, by name."""
    modules = {}
    for cmake in sorted(ROOT.glob("*/**/CMakeLists.txt")):
        if cmake.relative_to(ROOT).parts[0].startswith("build"):
            continue
        text = re.sub(r"#.*", "", cmake.read_text())
        for call in MODULE.findall(text):
            words = call.split()
            values, key = {keyword: [] for keyword in KEYWORDS}, None
            for word in words[1:]:
                if word in KEYWORDS:
                    key = word
                else:
                    values[key].append(word)
            modules[words[0]] = Module(words[0], values["SIDE"][0], cmake.parent, values["SOURCES"], values["NEEDS"])
    return modules


def parse_table(path):
    """({what: layer}, {public header: owner})"""
    layers, owners = {}, {}
    for line in path.read_text().splitlines():
        words = line.split("#")[0].split()
        if not words:
            continue
        layers[words[1]] = int(words[0])
        if len(words) > 2:
            owners[words[1]] = words[2]
    return layers, owners


class Check:
    def __init__(self):
        self.modules = parse_modules()
        self.layers, self.owners = parse_table(ROOT / "scripts" / "layers.txt")
        self.faults = []

    def layer(self, name):
        """The layer of a public header or of a path; None when the table has no line for it."""
        matches = [what for what in self.layers if name == what or (what.endswith("/") and name.startswith(what))]
        return self.layers[max(matches, key=len)] if matches else None

    def module_of(self, path):
        """The module of a source, or of a private header: the one that has sources in its folder."""
        named = [m for m in self.modules.values() if path in m.sources]
        if named:
            return named[0]
        stem = str(pathlib.PurePath(path).with_suffix(".cpp"))
        folder = str(pathlib.PurePath(path).parent)
        found = [m for m in self.modules.values() if stem in m.sources]
        found += [m for m in self.modules.values() if folder in m.folders]
        return found[0] if found else None

    def resolve(self, includer, text):
        """(layer-table name, owning module or None, is public) of an included header; None: not of this tree."""
        beside = (includer.parent / text).resolve()
        for candidate in (beside, ROOT / text):
            if candidate.exists() and PUBLIC not in candidate.parents:
                path = str(candidate.relative_to(ROOT))
                return path, self.module_of(path), False
        if (PUBLIC / text).exists():
            return text, self.modules.get(self.owners.get(text)), True
        return None

    def fault(self, path, text):
        self.faults.append(f"{path}: {text}")

    def check_include(self, path, name, module, text):
        target = self.resolve(ROOT / path, text)
        if target is None:
            self.fault(path, f'"{text}" is no header of this tree; system headers stand in <>')
            return
        what, owner, is_public = target
        mine, theirs = self.layer(name), self.layer(what)
        if theirs is None:
            self.fault(what, "has no line in scripts/layers.txt")
        elif theirs > mine:
            self.fault(path, f"layer {mine} includes {what} of layer {theirs}")
        if not is_public and path.startswith(("inst/include/",) + USERS) and not what.startswith(USERS):
            self.fault(path, f"includes {what}, which is no public header")
        if module is None or owner is None or owner is module:
            return
        if module.side == "interface" and owner.side == "implementation" and not is_public:
            self.fault(path, f"interface side includes {what} of the implementation module {owner.name}")
        elif owner.name not in module.needs:
            self.fault(path, f"includes {what}, but {module.name} does not list {owner.name} in NEEDS")

    def check_file(self, path):
        is_public = path.startswith("inst/include/")
        name = pathlib.PurePath(path).name if is_public else path
        if self.layer(name) is None:
            self.fault(path, "has no line in scripts/layers.txt")
            return
        if is_public:
            module = self.modules.get(self.owners.get(name))
        else:
            module = self.module_of(path)
        for text in INCLUDE.findall((ROOT / path).read_text()):
            self.check_include(path, name, module, text)

    def run(self):
        for header, owner in self.owners.items():
            if owner != "-" and owner not in self.modules:
                self.fault("scripts/layers.txt", f"{header} names {owner}, which is no module")
        folders = {folder for module in self.modules.values() for folder in module.folders}
        folders |= {"inst/include"} | {user.rstrip("/") for user in USERS}
        files = {str(p.relative_to(ROOT)) for folder in folders for p in (ROOT / folder).rglob("*") if p.suffix in SOURCES}
        for path in sorted(files):
            self.check_file(path)
        return len(files)


def main():
    check = Check()
    count = check.run()
    for fault in check.faults:
        print(fault, file=sys.stderr)
    if check.faults:
        return 1
    print(f"layers: {count} files, no #include goes up")
    return 0


if __name__ == "__main__":
    sys.exit(main())
