"""Drives any engine over UCI."""

import re
import time
from collections.abc import Mapping, Sequence
from typing import NamedTuple

from chesskit.process import PATIENCE, Command, Folder, Process

Options = Mapping[str, object]  # UCI options by their names
MATE = 30000  # centipawns that a mate counts as


class Score(NamedTuple):
    """A score for the side to move: of kind "cp", in centipawns, or "mate", in moves."""
    kind: str
    value: int

    @property
    def centipawns(self) -> int:
        return self.value if self.kind == "cp" else MATE if self.value > 0 else -MATE


class Reply:
    """The answer to a "go": all lines up to "bestmove", and the seconds that it took."""

    def __init__(self, engine: Process, lines: Sequence[str], seconds: float) -> None:
        words = lines[-1].split()
        engine.require(len(words) > 1, f"names no move: {lines[-1]!r}")
        self.lines, self.seconds = lines, seconds
        self.best = words[1]
        self.ponder = words[3] if words[2:3] == ["ponder"] else None

    @property
    def info(self) -> list[str]:
        return [line for line in self.lines if line.startswith("info depth")]

    @property
    def nodes(self) -> int:
        """Of the last line that tells them."""
        return int(re.findall(r" nodes (\d+)", "\n".join(self.info))[-1])

    @property
    def score(self) -> Score | None:
        """The last one, if the engine tells any."""
        told = re.findall(r" score (cp|mate) (-?\d+)", "\n".join(self.lines))
        return Score(told[-1][0], int(told[-1][1])) if told else None


class UciEngine(Process):
    """An engine that has said "uciok", unless `connect` leaves that to the caller."""

    def __init__(self, command: Command, folder: Folder = None, options: Options | None = None,
                 connect: bool = True) -> None:
        super().__init__(command, folder)
        self.searches = 0  # answers still owed
        self.began = 0.0  # time of the last "go"
        self.listing: list[str] = []  # the answer to "uci"
        if connect:
            self.send("uci")
            self.listing = self.wait("uciok")
        for name, value in (options or {}).items():
            self.set(name, value)

    @property
    def name(self) -> str:
        return next((x[8:] for x in self.listing if x.startswith("id name ")), "")

    def set(self, name: str, value: object) -> None:
        self.send(f"setoption name {name} value {value}")

    def set_known(self, options: Options) -> None:
        """Sets those of the options that the engine has."""
        known = re.findall(r"^option name (.+?) type", "\n".join(self.listing), re.M)
        for name, value in options.items():
            if name in known:
                self.set(name, value)

    def ready(self, timeout: float | None = PATIENCE) -> list[str]:
        """What was printed up to the answer to an "isready"."""
        self.send("isready")
        return self.wait("readyok", timeout)[:-1]

    def new_game(self) -> None:
        self.send("ucinewgame")
        self.ready()

    def start(self, go: str, position: str | None = None) -> None:
        """Begins a search: the lines of a "go" and, before it, of a "position"."""
        if position:
            self.send(position)
            self.ready()
        self.searches += 1
        self.began = time.monotonic()
        self.send(go)

    def best(self, timeout: float | None = PATIENCE) -> Reply:
        """The answer to a search that has begun."""
        lines = self.wait("bestmove", timeout)
        self.searches -= 1
        return Reply(self, lines, self.stamp - self.began)

    def go(self, go: str, position: str | None = None, timeout: float | None = PATIENCE) -> Reply:
        self.start(go, position)
        return self.best(timeout)
