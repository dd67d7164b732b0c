"""Stockfish as the authority on the rules."""

import re
from collections.abc import Sequence
from typing import NamedTuple, Protocol

from chesskit.board import squares
from chesskit.programs import needed
from chesskit.uci import Options, UciEngine


class Look(NamedTuple):
    """What the rules say of a position."""
    legal: dict[str, str]  # our word of each move, and Stockfish's
    fen: str
    check: bool  # the side to move is in check


class Rules(Protocol):
    """Whoever can say what the rules say."""

    def look(self, start: str, moves: Sequence[str] = (), fischer: bool = False) -> Look:
        """The position after the moves from `start`: "startpos" or "fen ..."."""


class Referee(UciEngine):
    """Stockfish. It writes Fischer-random castling as king takes rook; a look gives the words of
    both."""

    def __init__(self, program: str | None = None, options: Options | None = None) -> None:
        super().__init__([program or needed("stockfish")], options=options)
        self.fischer = False

    def look(self, start: str, moves: Sequence[str] = (), fischer: bool = False) -> Look:
        """The position after the moves (its words) from `start`: "startpos" or "fen ..."."""
        if fischer != self.fischer:
            self.fischer = fischer
            self.set("UCI_Chess960", str(fischer).lower())
        self.send(f"position {start} moves {' '.join(moves)}", "d", "go perft 1")
        lines = self.wait("Nodes searched")
        fen = next(x[5:] for x in lines if x.startswith("Fen: "))
        check = next(x for x in lines if x.startswith("Checkers:")).split()[1:] != []
        board = squares(fen)
        legal = {}
        for word in (m[1] for m in map(re.compile(r"(\w+): 1").fullmatch, lines) if m):
            ours, here, there = word, board.get(word[:2]), board.get(word[2:4])
            if fischer and (here, there) in (("K", "R"), ("k", "r")):
                ours = "O-O" if word[2] > word[0] else "O-O-O"
            legal[ours] = word
        return Look(legal, fen, check)

    def judge(self, position: str, nodes: int) -> tuple[str, int]:
        """Its move after a search of so many nodes, and the score in centipawns for the side to
        move. The line sets up a position with a legal move."""
        reply = self.go(f"go nodes {nodes}", position)
        return reply.best, reply.score.centipawns if reply.score else 0
