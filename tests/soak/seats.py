"""What an interface knows of a game, and an engine that it has seated at the board."""

import random
import subprocess
import time
from collections import Counter
from typing import NamedTuple

from chesskit import PATIENCE, SLOW, Clocks, Game, Process
from chesskit.process import Usage, usage

GRACE = 2000 if SLOW else 80  # milliseconds beyond a limit that are forgiven
STANDSTILL = 1000  # milliseconds that a busy machine may stand still
ANSWER = 200  # milliseconds in which a search must have stopped
FOLLOWED = 0.05  # share of the searches whose line of play is followed to its end


class Terms(NamedTuple):
    """Of a game. Times are in milliseconds."""
    number: int
    batch: int  # of games that the same processes play
    protocol: str  # "uci" or "winboard"
    fischer: bool
    ponder: bool
    lines: int  # of play that the engine tells at a time
    book: bool
    tables: bool
    base: int
    increment: int
    session: int  # moves per control; 0 for the whole game
    move_time: int  # for each move, instead of the clocks; 0 for none
    opponent: int  # nodes a move of the referee, which plays the other side; 0: the engine itself
    user: bool  # the other side does what a user thinks of: takes moves back, analyses ...
    start: str  # "startpos" or "fen ..."


class Seat(Process):
    """An engine at the board, for many games. The words of moves are those of the game."""
    recorded = True
    protocol = ""
    chance: random.Random
    counts: Counter[str]  # of what has been done
    terms: Terms
    takes_over = False  # a user has told it to play the other side from now on
    began_at = 0.0
    before: tuple[Usage, Usage]  # of the engine and of this program
    given_up = False  # a user has no more interest in the game

    def begin(self, game: Game, terms: Terms, side: int) -> None:
        """Sets up the game, which may have moves already; `side` is that of the engine."""
        raise NotImplementedError

    def move(self, game: Game, clocks: Clocks) -> tuple[str | None, float]:
        """The move of the side to move, and the seconds that it took. No move when a user has
        interfered; the game may be another one then."""
        raise NotImplementedError

    def leave(self, game: Game, clocks: Clocks) -> None:
        """The turn of the other side begins."""

    def interfere(self, game: Game, clocks: Clocks) -> None:
        """Does what a user may think of while it is his turn. May change the game."""
        raise NotImplementedError

    def reopen(self, game: Game) -> bool:
        """Takes moves of a finished game back; False if there are too few."""
        return False

    def end(self, game: Game) -> None:
        """The game is over, or given up."""
        raise NotImplementedError

    def close(self) -> None:
        """Ends the program, at any moment, as interfaces do."""
        way = self.chance.choice(("quit", "quit in a search", "end of input"))
        self.counts[f"{self.protocol} {way}"] += 1
        if way == "quit in a search":
            self.send(*self.busy())
        if way == "end of input":
            assert self.p.stdin
            self.p.stdin.close()
        else:
            self.send("quit")
        try:
            self.p.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.fail(f"is left over after {way}")
        self.require(self.p.returncode == 0 and not self.stderr(),
                     f"ends with code {self.p.returncode} and says {self.stderr()[-3000:]!r}")

    def busy(self) -> list[str]:
        """Lines that begin a search without an end."""
        raise NotImplementedError

    def happens(self, share: float, what: str) -> bool:
        """True in this share of the cases, which are counted."""
        if self.chance.random() >= share:
            return False
        self.counts[f"{self.protocol} {what}"] += 1
        return True

    def start_watch(self) -> None:
        """A time begins that in_time() looks at."""
        self.began_at, self.before = time.monotonic(), (usage(self.p.pid), usage())

    def in_time(self, limit: float) -> float:
        """The seconds from start_watch() to the last line taken. More than `limit` milliseconds are
        a fault, unless a busy machine accounts for them: one that lets the programs wait, or stands
        still for a moment."""
        seconds = self.stamp - self.began_at
        now = usage(self.p.pid), usage()
        waited = sum(now[n].waiting - self.before[n].waiting for n in (0, 1))
        running = now[0].running - self.before[0].running
        over = seconds * 1000 - limit - waited
        self.require(not over > GRACE or running < limit and over < STANDSTILL,
                     f"is late by {over:.0f} ms after {seconds * 1000:.0f} ms, "
                     f"{running:.0f} of them running")
        return seconds
