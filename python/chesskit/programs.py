"""Where the programs lie: those of this repository's build, and those of Debian."""

import os
import shutil
import subprocess
from pathlib import Path
from typing import Any

from chesskit.errors import ChessError

ROOT = Path(__file__).resolve().parents[2]
PATH = os.environ.get("PATH", "") + ":/usr/games"  # where Debian keeps games
SLOW = os.environ.get("BRIVOK_SLOW") == "1"  # a sanitizer build: shorter games, longer clocks


def built(variable: str, name: str) -> str:
    """A program of the build: the file that the environment variable names, or else `name` beside
    the engine."""
    engine = os.environ.get("BRIVOK", ROOT / "build/release/bin/brivok")
    return os.path.abspath(os.environ.get(variable, Path(engine).with_name(name)))


BRIVOK = built("BRIVOK", "brivok")
BOOK_TOOL = built("BRIVOK_BOOK", "brivok-book")
TABLES_TOOL = built("BRIVOK_TABLES_TOOL", "brivok-tables")
BENCH_TOOL = built("BRIVOK_BENCH", "brivok-bench")


def installed(name: str) -> str | None:
    """The file of a program, or None."""
    return shutil.which(name, path=PATH)


def run_tool(*command: object, code: int = 0, **more: Any) -> subprocess.CompletedProcess[str]:
    """Runs a program to its end, which must come with this exit code."""
    done = subprocess.run([str(word) for word in command], capture_output=True, timeout=600,
                          encoding="latin-1", **more)
    if done.returncode != code:
        raise ChessError(f"{done} instead of code {code}")
    return done


def needed(name: str) -> str:
    """The file of a program that has to be there."""
    found = installed(name)
    if found is None:
        raise ChessError(f"{name} is missing; apt-get install {name}")
    return found
