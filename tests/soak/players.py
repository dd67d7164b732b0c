"""The players of a match, over UCI and WinBoard, and the engines of Debian that can be
opponents."""

import re
import time
from collections import Counter
from collections.abc import Sequence
from pathlib import Path
from typing import NamedTuple

from chesskit import Clocks, EngineError, Game, Process, UciEngine, WinBoardEngine

HASH = 16  # megabytes, of every engine that lets it be set
PATIENCE = 5.0  # seconds beyond the clock until an engine counts as hanging
FAULTS = ("illegal", "time", "crash")


class Settings(NamedTuple):
    """Of a player; times in milliseconds."""
    tested: bool  # this is the engine under test
    ponder: bool
    nodes: int | None  # a limit of each move
    time: int
    increment: int


class Opponent(NamedTuple):
    kind: str  # of KINDS
    arguments: list[str]


class Forfeit(EngineError):
    """A player loses by one of FAULTS; the text has the details."""

    def __init__(self, player: Process, fault: str, text: str) -> None:
        super().__init__(player, text)
        self.fault = fault


class Player(Process):
    """An engine in a match. Its folder is its home, where some engines write."""

    settings: Settings

    def __init__(self, command: Sequence[str], folder: Path) -> None:
        super().__init__(["env", f"HOME={folder}", *command], folder)
        self.counts: Counter[str] = Counter()
        self.searched = False

    def begin_game(self, _game: Game) -> None:
        self.counts = Counter()  # moves after a ponder hit, from the book, with table hits
        self.searched = False

    def move(self, game: Game, clocks: Clocks, patience: float) -> tuple[str, float]:
        """The move, or what is said in its place, and the seconds that it took."""
        raise NotImplementedError

    def leave(self, game: Game, clocks: Clocks) -> None:
        """The opponent's turn begins."""

    def end_game(self, result: str) -> None:
        raise NotImplementedError

    def heard(self, lines: list[str]) -> None:
        """Counts how the engine under test has found a move, by the lines before it."""
        self.searched |= any(re.match(r"info depth|[ \d]\d[ .] ", line) for line in lines)
        self.counts["book"] += not self.searched
        self.counts["table"] += any(re.search(r"tbhits[ :]0*[1-9]", line) for line in lines)


class UciPlayer(UciEngine, Player):
    def __init__(self, command: Sequence[str], folder: Path, settings: Settings) -> None:
        super().__init__(command, folder)
        self.settings = settings
        self.set_known({"Hash": HASH, "Threads": 1, "Number of Threads": 1,
                        "Ponder": str(settings.ponder).lower()})
        if not settings.tested:
            self.set_known({"OwnBook": "false"})
        self.guess: str | None = None  # the move that it ponders on
        self.next: str | None = None  # the one that it would like to ponder on

    def begin_game(self, game: Game) -> None:
        super().begin_game(game)
        self.new_game()

    def search_line(self, clocks: Clocks, game: Game, ponder: str = "") -> str:
        limit = f" nodes {self.settings.nodes}" if self.settings.nodes else ""
        return f"go {ponder}{clocks.text(game.side)}{limit}"

    def move(self, game: Game, clocks: Clocks, patience: float) -> tuple[str, float]:
        begin = time.monotonic()
        if self.guess and self.guess == game.moves[-1]:
            self.send("ponderhit")
            self.counts["ponder"] += 1
        else:
            self.halt()
            self.send(game.line(), self.search_line(clocks, game))
        lines = self.wait("bestmove", patience)
        self.heard(lines)
        words = lines[-1].split()
        self.guess, self.next = None, words[3] if "ponder" in words else None
        return words[1], self.stamp - begin

    def leave(self, game: Game, clocks: Clocks) -> None:
        if self.settings.tested and self.next and self.next not in game.legal:
            raise Forfeit(self, "illegal", f"ponder move {self.next} after {game.line()}")
        if self.settings.ponder and self.next and self.next in game.legal:
            self.guess = self.next
            self.send(game.line(self.guess), self.search_line(clocks, game, "ponder "))

    def halt(self) -> None:
        if self.guess:
            self.guess = None
            self.send("stop")
            self.wait("bestmove", PATIENCE)

    def end_game(self, _result: str) -> None:
        self.halt()


class WinBoardPlayer(WinBoardEngine, Player):
    def __init__(self, command: Sequence[str], folder: Path, settings: Settings) -> None:
        super().__init__(command, folder)
        self.settings = settings
        features = " ".join(self.ask("xboard", "protover 2"))
        self.prefix = "usermove " if "usermove=1" in features else ""

    def begin_game(self, game: Game) -> None:
        """Sets up the game. "level" takes whole seconds only; "time" tells later what is left."""
        super().begin_game(game)
        minutes, seconds = divmod(max(1, self.settings.time // 1000), 60)
        self.set_up(game, f"level 0 {minutes}:{seconds:02} {self.settings.increment // 1000}",
                    "hard" if self.settings.ponder else "easy", "post")

    def move(self, game: Game, clocks: Clocks, patience: float) -> tuple[str, float]:
        lines, seconds = self.turn(game, clocks, patience)
        self.heard(lines)
        word = lines[-1].removeprefix("move ")
        if word in ("O-O", "O-O-O"):
            rank = "1" if game.white else "8"
            word = f"e{rank}{'g' if word == 'O-O' else 'c'}{rank}"
        return word, seconds

    def end_game(self, result: str) -> None:
        self.ask(f"result {result} {{}}", "force")


KINDS: dict[str, type[Player]] = {"uci": UciPlayer, "winboard": WinBoardPlayer}
OPPONENTS = {"toga2": Opponent("uci", []), "glaurung": Opponent("uci", []),
             "gnuchess": Opponent("uci", ["--uci"]), "stockfish": Opponent("uci", []),
             "phalanx": Opponent("winboard", ["-b-", "-l-", f"-t{HASH * 1024}"]),
             "sjeng": Opponent("winboard", [])}
