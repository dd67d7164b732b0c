"""A board in PyChess without its window: its own classes for engines, games and clocks, and persons
that a script moves for. Importing this gives the process a home folder of its own, because PyChess
reads and writes its settings there."""

import asyncio
import gettext
import os
import re
import tempfile
import time
from collections.abc import Callable
from pathlib import Path
from typing import Any

from chesskit import BRIVOK, ChessError, Game, Referee, read_san

HOME = tempfile.TemporaryDirectory()
os.environ.update(HOME=HOME.name, XDG_CONFIG_HOME=HOME.name, XDG_DATA_HOME=HOME.name,
                  XDG_CACHE_HOME=HOME.name)
gettext.install("pychess", names=("ngettext",))
import gi  # noqa: E402

for _name, _version in (("Gtk", "3.0"), ("GtkSource", "3.0"), ("Rsvg", "2.0")):
    gi.require_version(_name, _version)
from gi.repository import GLib  # noqa: E402
from pychess import Utils  # noqa: E402
from pychess.Players import engineNest  # noqa: E402
from pychess.Players.Player import Player, TurnInterrupt  # noqa: E402
from pychess.System import conf  # noqa: E402
from pychess.System.SubProcess import SubProcess  # noqa: E402
from pychess.Utils import const  # noqa: E402
from pychess.Utils.GameModel import GameModel  # noqa: E402
from pychess.Utils.Move import parseAny, toAN  # noqa: E402
from pychess.Utils.TimeModel import TimeModel  # noqa: E402
from pychess.Variants.fischerandom import FischerandomBoard  # noqa: E402
from pychess.Variants.normal import NormalBoard  # noqa: E402

PATIENCE = 120  # seconds until an engine counts as hanging; an analyser runs at a low priority
DEPTH = 6  # that an analysis reaches before a person goes on


class Pipe(SubProcess):
    """To an engine and from it, with a record of what goes through."""
    transcript: list[str] = []  # of all engines of a table, each line behind a process number
    piece = ""  # of a line on its way to the engine

    async def start(self) -> None:
        await super().start()
        self.connect("line", lambda _, line: self.transcript.append(f"{self.pid} < {line}"))

    def write(self, text: str) -> None:
        """PyChess writes a line in pieces."""
        *lines, self.piece = (self.piece + text).split("\n")
        self.transcript += [f"{self.pid} > {line}" for line in lines]
        super().write(text)


def furnish() -> None:
    """Sets PyChess up for tables: no book of its own, analysis without an end, the pipes above."""
    conf.set("book_depth_max", 0)
    conf.set("infinite_analysis", True)
    engineNest.SubProcess = Pipe
    # asyncio passes a message on to cancel() since Python 3.9, which PyChess 1.0.3 does not take.
    cancel = Utils.wait_signal.cancel
    Utils.wait_signal.cancel = lambda self, msg=None: cancel(self)


async def turn_glib() -> None:
    """Runs the loop of GLib within that of asyncio, as PyChess does."""
    while True:
        GLib.MainContext.default().iteration(False)
        await asyncio.sleep(0.01)


class Person(Player):
    """Makes the moves that come out of a queue."""
    __type__ = const.LOCAL

    def __init__(self) -> None:
        super().__init__()
        self.words: asyncio.Queue[str | None] = asyncio.Queue()

    async def makeMove(self, board: Any, _move: Any, _before: Any) -> Any:
        word = await self.words.get()
        if word is None:
            raise TurnInterrupt
        return parseAny(board, word)

    def playerUndoMoves(self, moves: int, model: Any) -> None:
        if (model.curplayer is self) == (moves % 2 == 0):
            self.words.put_nowait(None)

    def ignore(self, *_: object) -> None:
        pass

    end = kill = pause = resume = offer = ignore


class Table:
    """One game. `clock`: the seconds of each side; 0 is a game without clocks."""

    def __init__(self, referee: Referee, protocol: str, fen: str = "", fischer: bool = False,
                 clock: int = 0) -> None:
        self.referee, self.protocol, self.fischer, self.clock = referee, protocol, fischer, clock
        self.variant = FischerandomBoard if fischer else NormalBoard
        self.model = GameModel(TimeModel(clock, 0) if clock else None, self.variant)
        if fen:
            self.model.boards = [self.variant(setup=fen)]
            self.model.variations = [self.model.boards]
        self.start = self.model.boards[0].asFen()
        if fen or fischer:
            self.model.tags["FEN"] = self.start
        self.ended = False
        self.model.connect("game_ended", self._end)
        self.engines: list[Any] = []
        self.analysis: list[tuple[int, list[str]]] = []  # depth and moves of each line
        folder = Path(HOME.name) / "engine"
        folder.mkdir(exist_ok=True)
        (folder / "brivok.ini").write_text("ModernInterface: true\n")
        self.entry = {"name": "Brivok", "protocol": protocol, "command": BRIVOK, "md5": "",
                      "workingDirectory": str(folder)}
        Pipe.transcript.clear()

    def _end(self, *_: object) -> None:
        self.ended = True

    def _note(self, _engine: Any, lines: Any) -> None:
        self.analysis += [(int(re.findall(r"\d+", line[3])[0]), list(line[1]))
                          for line in lines if line]

    async def begin(self, white: str, black: str) -> None:
        """Each side is a "person" or an "engine"."""
        players = [await self._engine(color) if name == "engine" else Person()
                   for color, name in ((const.WHITE, white), (const.BLACK, black))]
        self.model.setPlayers(players)
        self.model.start()

    async def _engine(self, color: int) -> Any:
        engine = await engineNest.discoverer.initPlayerEngine(
            self.entry, color, engineNest.ENGINE_DEFAULT_LEVEL, self.variant, self.clock, 0)
        self.engines.append(engine)
        if "FEN" in self.model.tags:
            engine.setOptionInitialBoard(self.model)
        return engine

    async def add_analyser(self) -> None:
        """A further engine analyses what is on the board."""
        engine = await engineNest.discoverer.initAnalyzerEngine(
            self.entry, const.ANALYZING, self.variant)
        self.engines.append(engine)
        engine.setOptionInitialBoard(self.model)
        self.model.spectators[const.HINT] = engine
        self.model.analyzer_cids[const.HINT] = engine.connect("analyze", self._note)

    def move(self, word: str) -> None:
        """Has the person to move play it."""
        self.model.curplayer.words.put_nowait(word)

    def game(self) -> Game:
        """The game so far, with every move checked."""
        game = Game(self.referee, "fen " + self.start, self.fischer)
        style = const.CASTLE_KR if self.fischer else const.CASTLE_KK
        for board, move in zip(self.model.boards, self.model.moves):
            word = toAN(board, move, short=True, castleNotation=style)
            game.push({theirs: ours for ours, theirs in game.legal.items()}.get(word, word))
        return game

    @property
    def ending(self) -> str:
        """What ended the game, by PyChess' name for it: WON_MATE, DRAW_REPETITION ..."""
        return next((name for name, value in vars(const).items() if value == self.model.reason and
                     re.match("WON_|DRAW_|(WHITE|BLACK)_ENGINE", name)), "UNKNOWN")

    async def until(self, what: str, condition: Callable[[], object],
                    seconds: float = PATIENCE) -> None:
        end = time.monotonic() + seconds
        while not condition():
            invalid = [x.invalid_move for x in self.engines if x.invalid_move]
            if invalid or time.monotonic() > end:
                raise ChessError(f"no {what}; invalid moves: {invalid}")
            await asyncio.sleep(0.01)

    async def plies(self, count: int) -> None:
        """Waits until so many half-moves have been made."""
        await self.until(f"half-move {count}", lambda: len(self.model.moves) == count)

    async def analysed(self, plies: int, act: Callable[[], object]) -> None:
        """Does something that leads to so many half-moves, and waits for the analysis of what is on
        the board then: one that starts at a low depth. The lines before may be about another."""
        taken, fresh = len(self.analysis), False
        act()
        await self.plies(plies)
        game = self.game()
        while True:
            await self.until(f"analysis after {game.line()}", lambda: len(self.analysis) > taken)
            depth, moves = self.analysis[taken]
            taken += 1
            fresh |= depth < DEPTH
            if fresh:
                self._check(game, moves)
                if depth >= DEPTH:
                    return

    def _check(self, game: Game, moves: list[str]) -> None:
        """Each move of the line must be legal, one after the other."""
        line = Game(self.referee, "fen " + game.fen)
        for word in moves:
            line.push(word if self.protocol == "uci" else read_san(word, line.legal, line.fen))
