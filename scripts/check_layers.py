#!/usr/bin/env python3
"""Holds the includes of the sources against what the folders link.

A folder of src/, apps/, bench/ or fuzz/ links exactly the folders whose headers its files include:
an include of another folder is a violation, and so is a link that no include needs. What it links
stands in CMakeLists.txt: for a folder of src/ in its brivok_library(name FOLDER folder LINKS ...)
line, for src/main.cpp in target_link_libraries(brivok ...), and for the others in the
target_link_libraries lines of the nearest CMakeLists.txt above a file, or of the one that compiles
it from elsewhere. The links make no circle, and the tables of docs/architecture.md name them.
tests/ may include all folders, and outside src/ the headers of a folder without a library are free.
An include in quotes must name a file of this repository.

Usage: check_layers.py [ROOT]   (default: the repository that this script lies in)
"""

import re
import sys
from collections.abc import Iterator
from pathlib import Path
from typing import NamedTuple

COMMAND = re.compile(
    r"\b(brivok_library|add_library|add_executable|target_link_libraries)\(\s*(\S+)([^)]*)\)")
SOURCE_ELSEWHERE = re.compile(r'"\$\{CMAKE_SOURCE_DIR\}/([^"]+)\.cpp"')
INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')
MAP = "docs/architecture.md"
MAP_ROW = re.compile(r"\| `([\w/.]+?)/?` \| ?(.*?) \| ([^|]*) \|")
ENGINE = "src/main.cpp"  # a folder of its own as it were: the one file of the target `brivok`


class LayerError(Exception):
    """The list of libraries itself is wrong."""


class MapRow(NamedTuple):
    """A row of the tables in docs/architecture.md."""
    what: str  # is in the folder
    includes: set[str]  # folders, those of src/ without "src/"


class Links:
    """What every folder links: folder -> {folder: the CMakeLists.txt that says so}."""

    def __init__(self, root: Path) -> None:
        self.of: dict[str, dict[str, str]] = {}
        self.names: dict[str, str] = {}  # library -> its folder
        self.guests: dict[str, str] = {}  # a source and its header, elsewhere -> the folder that compiles it
        targets: list[tuple[str, list[str], str]] = []
        for file in [root / "CMakeLists.txt", *sorted(
                file for top in ("apps", "bench", "fuzz")
                for file in (root / top).rglob("CMakeLists.txt"))]:
            place = file.relative_to(root).as_posix()
            text = re.sub(r"#.*", "", file.read_text(encoding="utf-8"))
            for command, name, rest in COMMAND.findall(text):
                words, folder = rest.split(), file.parent.relative_to(root).as_posix()
                for source in SOURCE_ELSEWHERE.findall(rest):
                    self.guests |= {f"{source}.cpp": folder, f"{source}.h": folder}
                if command == "brivok_library":
                    folder = f"src/{words[1]}"
                elif folder == ".":
                    if name != "brivok":
                        continue
                    folder = ENGINE
                self.of.setdefault(folder, {})
                if command.endswith("library"):
                    self.names[name] = folder
                if command in ("brivok_library", "target_link_libraries"):
                    targets.append((folder, words, place))
        for folder, words, place in targets:
            for word in words:
                if word in self.names:
                    if self.names[word] != folder:
                        self.of[folder][self.names[word]] = place
                elif word.startswith("brivok_"):
                    raise LayerError(f"{place} links {word}, which is no library")
        if not self.names:
            raise LayerError("CMakeLists.txt has no brivok_library line")
        self._refuse_circles()

    def _refuse_circles(self) -> None:
        finished: set[str] = set()

        def visit(folder: str, way: frozenset[str]) -> None:
            if folder in way:
                raise LayerError(f"{folder} links itself, directly or through others")
            if folder not in finished:
                for linked in self.of.get(folder, ()):
                    visit(linked, way | {folder})
                finished.add(folder)

        for folder in self.of:
            visit(folder, frozenset())

    def folder_of(self, place: str) -> str | None:
        """The folder that a file belongs to: the longest that its path begins with."""
        if place == ENGINE:
            return ENGINE
        parents = (parent.as_posix() for parent in Path(place).parents)
        return next((parent for parent in parents if parent in self.of), None)


def target_of(name: str, file: Path, root: Path, links: Links) -> str | None:
    """The file that an include means: beside the including one, or below a folder of headers."""
    for base in (file.parent, root / "src", root / "tests", *(root / name for name in links.of)):
        if "." in name and (base / name).is_file():  # no script can be meant, as bench/compare
            return (base / name).resolve().relative_to(root).as_posix()
    return None


Used = set[tuple[str, str | None]]  # the pairs of folders of which one includes the other


def check_file(file: Path, root: Path, links: Links, used: Used) -> Iterator[str]:
    """Yields what is wrong with the includes of a file; adds the pairs of folders to `used`."""
    place = file.relative_to(root).as_posix()
    own = links.guests.get(place) or links.folder_of(place)
    is_free = place.startswith("tests/") or (file.suffix == ".h" and not place.startswith("src/"))
    if own is None and not is_free:
        yield f"{place}:1: no CMakeLists.txt has this folder"
    for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
        if not (match := INCLUDE.match(line)):
            continue
        target = target_of(match[2], file, root, links)
        if target is None:
            if match[1] == '"':
                yield f'{place}:{number}: "{match[2]}" is no file of this repository'
            continue
        folder = links.folder_of(target)
        if own is None or folder == own:
            continue
        if folder not in links.names.values() and not own.startswith("src/"):
            continue
        if (own, folder) not in used and folder not in links.of[own]:
            linked = ", ".join(links.of[own]) or "nothing"
            yield f"{place}:{number}: {target} lies outside what {own} links ({linked})"
        used.add((own, folder))


def map_rows(root: Path) -> dict[str, MapRow]:
    """The rows of the tables of folders in the page, by folder."""
    return {folder: MapRow(what, set(re.findall(r"`([^`]+)`", last)))
            for folder, what, last in MAP_ROW.findall((root / MAP).read_text(encoding="utf-8"))}


def check_map(root: Path, links: Links) -> Iterator[str]:
    """Yields what the tables of folders in the page tell otherwise than CMakeLists.txt."""
    rows = map_rows(root)
    for folder, linked in links.of.items():
        if folder not in rows:
            yield f"{MAP}: has no row for {folder}"
        elif rows[folder].includes != (names := {name.removeprefix("src/") for name in linked}):
            wanted = ", ".join(f"`{name}`" for name in sorted(names)) or "nothing"
            yield f"{MAP}: {folder} includes {wanted}"


def check(root: Path) -> tuple[int, list[str]]:
    """Returns the number of files read and the list of violations."""
    root = root.resolve()
    links = Links(root)
    used: Used = set()
    violations: list[str] = []
    files = sorted(path for top in ("src", "apps", "bench", "fuzz", "tests")
                   for path in (root / top).rglob("*") if path.suffix in (".h", ".cpp"))
    for file in files:
        violations += check_file(file, root, links, used)
    violations += [f"{place}: {folder} links {linked}, and includes nothing of it"
                   for folder, linked_ones in links.of.items()
                   for linked, place in linked_ones.items() if (folder, linked) not in used]
    return len(files), violations + list(check_map(root, links))


def main() -> int:
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
