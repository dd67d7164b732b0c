"""Compares README.md, CONTRIBUTING.md and docs/ with the programs.

The ```sh blocks of a page run in their order in a scratch copy of the repository, whose
build/release is the build under test. A block after a line <!-- not run: why --> does not run. In a
```uci or ```winboard block each line goes to the engine, except that "< text" is an answer that
must come; "..." in it stands for any text, and other answers may come before it. In a ```uci modern
block the engine runs with ModernInterface."""

import os
import re
import shutil
import subprocess
from pathlib import Path

import pytest

from chesskit import BRIVOK, PATIENCE, ROOT, SLOW, Process

PAGES = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", ROOT / "data/README.md",
         *sorted((ROOT / "docs").glob("*.md"))]
BLOCK = re.compile(r"^(<!-- not run: .+ -->\n)?```(\w+(?: modern)?)\n(.*?)^```$", re.M | re.S)
FOLDERS = "apps|bench|data|docs|fuzz|python|scripts|src|tests"
PATHS = re.compile(rf"(?<![\w./-])(?:{FOLDERS})/[\w./*-]*\w")
EACH_PAGE = pytest.mark.parametrize("page", PAGES, ids=lambda page: str(page.relative_to(ROOT)))


def blocks(page, *languages):
    return [m[3] for m in BLOCK.finditer(page.read_text()) if m[2] in languages and not m[1]]


@pytest.fixture(scope="module")
def scratch(tmp_path_factory):
    """A copy of the repository as it is after ./play."""
    folder = tmp_path_factory.mktemp("repository")
    for entry in ROOT.iterdir():
        if entry.is_dir() and entry.name not in ("build", "home", ".git"):
            shutil.copytree(entry, folder / entry.name)
        elif entry.is_file():
            shutil.copy(entry, folder)
    build = Path(BRIVOK).parents[1]
    (folder / "build").mkdir()
    (folder / "build/release").symlink_to(build)
    (folder / "home").mkdir()
    for file in ROOT / "data/brivok.ini", build / "book/libro.bin":
        shutil.copy(file, folder / "home")
    return folder


@pytest.mark.skipif(SLOW, reason="the commands are those of the release build")
@EACH_PAGE
def test_commands(page, scratch):
    environment = {**os.environ, "HOME": str(scratch)}
    for block in blocks(page, "sh"):
        done = subprocess.run(["bash", "-euo", "pipefail", "-c", block], cwd=scratch, timeout=120,
                              env=environment, stdin=subprocess.DEVNULL, encoding="latin-1",
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        assert done.returncode == 0, f"{block}\n{done.stdout[-3000:]}"


@EACH_PAGE
def test_sessions(page, tmp_path):
    (tmp_path / "modern").mkdir()
    (tmp_path / "modern/brivok.ini").write_text("ModernInterface: true\n")
    sessions = [(block, tmp_path) for block in blocks(page, "uci", "winboard")]
    sessions += [(block, tmp_path / "modern")
                 for block in blocks(page, "uci modern", "winboard modern")]
    for block, folder in sessions:
        engine = Process([BRIVOK], folder)
        for line in block.splitlines():
            if not line.startswith("< "):
                engine.send(line)
                continue
            answer = ".*".join(map(re.escape, line[2:].split("...")))
            while not re.fullmatch(answer, engine.wait("")[0].rstrip()):
                pass
        assert engine.p.wait(PATIENCE) == 0, "a session ends with quit"


@EACH_PAGE
def test_what_is_named_is_there(page):
    text = page.read_text()
    for target in re.findall(r"\]\(([^)]+)\)", text):
        if target.startswith(("http:", "https:")):
            continue
        path, _, anchor = target.partition("#")
        file = page.parent / path if path else page
        assert file.exists(), target
        heads = re.findall(r"^#+ (.+)$", file.read_text(), re.M) if anchor else []
        assert not anchor or anchor in [head.lower().replace(" ", "-") for head in heads], target
    for path in PATHS.findall(text):
        assert list(ROOT.glob(path)), path
    used = set(re.findall(r"BRIVOK_[A-Z_]+", text))
    sources = "".join(file.read_text() for name in ("CMakeLists.txt", "tests/**/*", "bench/**/*.cpp")
                      for file in ROOT.glob(name) if file.suffix in (".txt", ".cpp", ".py"))
    assert [name for name in used if not re.search(rf"\b{name}\b", sources)] == []
