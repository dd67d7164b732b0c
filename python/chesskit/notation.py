"""Moves and games as text. A word is a move in coordinates, such as "e2e4" or "e7e8q", or a
Fischer-random castling, "O-O" or "O-O-O". SAN is standard algebraic notation."""

import os
import re
import subprocess
import textwrap
from collections.abc import Collection, Mapping, Sequence

from chesskit.board import squares
from chesskit.errors import ChessError, IllegalMove
from chesskit.programs import needed

MOVE = r"(?:[a-h][1-8][a-h][1-8][qrbn]?|O-O(?:-O)?)"
SAN = r"(?:[KQRBN][a-h]?[1-8]?x?[a-h][1-8]|(?:[a-h]x)?[a-h][1-8](?:=[QRBN])?|O-O(?:-O)?)[+#]?"


def read_san(san: str, legal: Collection[str], fen: str) -> str:
    """The one word among the legal ones that a SAN move means."""
    men = squares(fen)
    if san.startswith("O-O"):
        castling = san.rstrip("+#")
        file = "c" if castling == "O-O-O" else "g"
        found = [w for w in legal if w == castling or men.get(w[:2]) in ("K", "k") and
                 (w[0], w[2]) == ("e", file)]
    else:
        m = re.fullmatch(r"([KQRBN]?)([a-h]?)([1-8]?)x?([a-h][1-8])(?:=([QRBN]))?[+#]?", san)
        man, file, rank, to, new = (x or "" for x in m.groups()) if m else ("", "", "", "", "")
        found = [w for w in legal if w[2:4] == to and w[4:] == new.lower() and
                 men.get(w[:2], "").upper() == (man or "P") and file in w[0] and rank in w[1]]
    if len(found) != 1:
        raise IllegalMove(f"{san} means {found or 'no move'} in {fen}")
    return found[0]


def write_san(move: str, legal: Collection[str], fen: str) -> str:
    """The SAN of a legal word, without the sign of a check or a mate."""
    if move.startswith("O-O"):
        return move
    men = squares(fen)
    start, to, promoted = move[:2], move[2:4], move[4:].upper()
    man = men[start].upper()
    if man == "P":
        text = f"{start[0]}x{to}" if start[0] != to[0] else to
        return text + (f"={promoted}" if promoted else "")
    if man == "K" and abs(ord(start[0]) - ord(to[0])) == 2:
        return "O-O" if to[0] == "g" else "O-O-O"
    rivals = [m[:2] for m in legal
              if m[2:4] == to and m[:2] != start and men[m[:2]] == men[start]]
    apart = ""
    if rivals:
        apart = start[1] if any(r[0] == start[0] for r in rivals) else start[0]
    return f"{man}{apart}{'x' if to in men else ''}{to}"


def to_pgn(tags: Mapping[str, object], moves: Sequence[str], result: str) -> str:
    """One game, its moves in coordinate text."""
    lines = [f'[{name} "{value}"]' for name, value in tags.items()]
    return "\n".join([*lines, "", *textwrap.wrap(" ".join((*moves, result))), "", ""])


def write_pgn(path: str, games: Sequence[str]) -> None:
    """Has pgn-extract write the games of to_pgn() to a file, with their moves in SAN. An illegal
    move is an error."""
    part = path + ".part"
    done = subprocess.run([needed("pgn-extract"), "-s", "--quiet", f"-o{part}"],
                          input="".join(games), text=True)
    if done.returncode != 0:
        raise ChessError(f"pgn-extract fails with code {done.returncode}")
    with open(part, encoding="ascii") as file:
        written = sum(line.startswith("[Event ") for line in file)
    if written != len(games):
        raise ChessError(f"pgn-extract took {written} of {len(games)} games")
    os.replace(part, path)
