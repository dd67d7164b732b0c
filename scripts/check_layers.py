#!/usr/bin/env python3
"""Holds the includes of the sources against the order of the folders.

Each brivok_library(name FOLDER folder LINKS ...) line of CMakeLists.txt names a folder below src/
and what it links. A file there may include its own folder and what that links, directly or through
others. src/main.cpp, apps/ and tests/ may include every folder. An include in quotes must name a
file of this repository.

Usage: check_layers.py [ROOT]   (default: the repository that this script lies in)
"""

import re
import sys
from pathlib import Path

LIBRARY = re.compile(r"\bbrivok_library\(\s*(\w+)\s+FOLDER\s+([\w/]+)(?:\s+LINKS\s+([^)]*))?\)")
INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')


class LayerError(Exception):
    """The list of libraries itself is wrong."""


def read_layers(cmake_text):
    """Folder -> set of folders that its files may include, its own among them."""
    text = re.sub(r"#.*", "", cmake_text)
    folder_of, links = {}, {}
    for name, folder, linked in LIBRARY.findall(text):
        folder_of[name] = folder
        links[name] = linked.split()
    if not folder_of:
        raise LayerError("CMakeLists.txt has no brivok_library line")

    def reach(name):
        found, waiting = set(), [name]
        while waiting:
            for linked in links[waiting.pop()]:
                if linked.startswith("brivok_") and linked not in links:
                    raise LayerError(f"CMakeLists.txt links {linked}, which is no brivok_library")
                if linked in links and linked not in found:
                    found.add(linked)
                    waiting.append(linked)
        return found

    layers = {}
    for name, folder in folder_of.items():
        reached = reach(name)
        if name in reached:
            raise LayerError(f"CMakeLists.txt: {name} links itself, through others or directly")
        layers[folder] = {folder} | {folder_of[other] for other in reached}
    return layers


def folder_of_file(path, source_root, layers):
    """The library folder that a file belongs to: the longest that its path begins with."""
    if source_root not in path.parents:
        return None
    for parent in path.relative_to(source_root).parents:
        if parent.as_posix() in layers:
            return parent.as_posix()
    return None


def resolve(name, file, roots):
    """The file that an include means: beside the including one, or below one of the roots."""
    for base in (file.parent, *roots):
        if (base / name).is_file():
            return (base / name).resolve()
    return None


def check_include(name, quoted, file, source_root, layers):
    """What is wrong with one include; None if nothing is."""
    root = source_root.parent
    target = resolve(name, file, (source_root, root / "tests"))
    if target is None:
        return f'"{name}" is no file of this repository' if quoted else None
    own = folder_of_file(file, source_root, layers)
    if own is None:
        return None
    folder = folder_of_file(target, source_root, layers)
    if folder in layers[own]:
        return None
    allowed = ", ".join(sorted(layers[own]))
    return f'"{name}" lies outside what src/{own} may include ({allowed})'


def check(root):
    """Returns the number of files read and the list of violations."""
    root = root.resolve()
    source_root = root / "src"
    layers = read_layers((root / "CMakeLists.txt").read_text(encoding="utf-8"))
    files = sorted(
        path
        for folder in ("src", "apps", "tests")
        for path in (root / folder).rglob("*")
        if path.suffix in (".h", ".cpp")
    )
    violations = []
    for file in files:
        place = file.relative_to(root).as_posix()
        in_library = folder_of_file(file, source_root, layers) is not None
        if source_root in file.parents and not in_library and place != "src/main.cpp":
            violations.append(f"{place}:1: no brivok_library of CMakeLists.txt has this folder")
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            if match := INCLUDE.match(line):
                quoted = match[1] == '"'
                if reason := check_include(match[2], quoted, file, source_root, layers):
                    violations.append(f"{place}:{number}: {reason}")
    return len(files), violations


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    try:
        count, violations = check(root)
    except LayerError as error:
        print(error, file=sys.stderr)
        return 1
    for violation in violations:
        print(violation, file=sys.stderr)
    if not violations:
        print(f"{count} files keep to the layers.")
    return 1 if violations else 0


if __name__ == "__main__":
    sys.exit(main())
