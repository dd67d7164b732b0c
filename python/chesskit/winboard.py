"""Drives any engine over WinBoard 2."""

import time

from chesskit.game import Clocks, Game
from chesskit.process import PATIENCE, Process

RESULTS = ("1-0 {", "0-1 {", "1/2-1/2 {")  # how a claim begins


class WinBoardEngine(Process):
    """An engine that answers "ping"."""
    prefix = "usermove "  # of a move
    pings = 0
    playing = False  # it answers moves by itself
    told = 0  # moves of the game that it has been set up with

    def ask(self, *lines: str, timeout: float | None = PATIENCE) -> list[str]:
        """What is printed up to the answer to a "ping" behind these lines."""
        self.pings += 1
        self.send(*lines, f"ping {self.pings}")
        return self.wait(f"pong {self.pings}", timeout)[:-1]

    def set_up(self, game: Game, *lines: str) -> list[str]:
        """Begins a game, with these lines behind "new", and plays its moves so far; returns what is
        printed."""
        self.playing, self.told = False, len(game.moves)
        return self.ask("new", *lines, "force", *(self.prefix + move for move in game.moves))

    def turn(self, game: Game, clocks: Clocks, timeout: float) -> tuple[list[str], float]:
        """Tells the clocks and the last move, and waits for the answer: all lines up to a move or
        what comes in its place, and the seconds until then."""
        left = [max(1, int(x / 10)) for x in clocks.left]
        lines = [f"time {left[game.side]}", f"otim {left[1 - game.side]}"]
        if len(game.moves) > self.told:
            lines.append(self.prefix + game.moves[-1])
        if not self.playing:
            self.playing = True
            lines.append("go")
        begin = time.monotonic()
        self.send(*lines)
        said = self.wait(("move ", "resign", "tellics resign", "Illegal move", *RESULTS), timeout)
        return said, self.stamp - begin
