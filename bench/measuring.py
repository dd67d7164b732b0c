"""What bench/compare and bench/engines share: builds, runs of brivok-bench, ratios. It also puts
the package chesskit on the path."""

import json
import statistics
import subprocess
import sys
import time
from collections.abc import Sequence
from pathlib import Path
from typing import Any

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "python"))

from chesskit import ChessError  # noqa: E402


class MeasuringError(ChessError):
    """Nothing can be measured."""


def program(build: str, name: str) -> Path:
    """A program of a build folder."""
    path = Path(build).resolve() / "bin" / name
    if not path.is_file():
        raise MeasuringError(f"{path} is not there; build it: cmake --build {build}")
    return path


def bench(tool: Path, arguments: list[str]) -> Any:
    """The JSON of brivok-bench, which is there even if it fails because of a new signature."""
    done = subprocess.run([tool, *arguments, "--json"], capture_output=True, text=True)
    if not done.stdout.startswith("{"):
        raise MeasuringError(f"{tool} {' '.join(arguments)}: {done.stderr or done.stdout}".rstrip())
    return json.loads(done.stdout)


def processor_seconds(process: int) -> float:
    """That a running process has used so far, with all its threads, in the program and in the
    kernel."""
    return time.clock_gettime(~process << 3 | 2)  # the clock of a process, as the kernel numbers it


def with_spread(ratios: Sequence[float]) -> tuple[float, float, float]:
    """The median, the lowest and the highest."""
    return statistics.median(ratios), min(ratios), max(ratios)


def spread_text(ratios: Sequence[float]) -> str:
    middle, lowest, highest = with_spread(ratios)
    return f"{middle:.3f} ({lowest:.3f} to {highest:.3f})"
