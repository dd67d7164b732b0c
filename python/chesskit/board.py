"""Positions as FEN."""

import itertools
import re
from collections.abc import Mapping

START = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
MIDDLE = "r3r1k1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10"
SQUARES = [file + rank for rank in "12345678" for file in "abcdefgh"]  # a1, b1, ... h8
_CORNER_RIGHTS = {"a1": "Q", "h1": "K", "a8": "q", "h8": "k", "e1": "KQ", "e8": "kq"}


def squares(fen: str) -> dict[str, str]:
    """{square: letter} of the men of a FEN or of its placement."""
    text = re.sub(r"\d", lambda m: " " * int(m[0]), fen.split()[0])
    return {f"{'abcdefgh'[f]}{8 - r}": man for r, row in enumerate(text.split("/"))
            for f, man in enumerate(row) if man != " "}


def placement(men: Mapping[str, str]) -> str:
    """The first field of a FEN with these men."""
    rows = ("".join(men.get(file + rank, " ") for file in "abcdefgh") for rank in "87654321")
    return re.sub(" +", lambda m: str(len(m[0])), "/".join(rows))


def is_dead(fen: str) -> bool:
    """Whether neither side has the men to mate: kings, and at most one bishop or knight."""
    men = re.findall("[a-z]", fen.split()[0].lower())
    return len(men) == 2 or len(men) == 3 and bool(set(men) & set("bn"))


def after_move(fen: str, move: str) -> str:
    """The FEN after a legal move of plain chess in coordinate text. Behind every double step it
    names the square passed over."""
    _, side, rights, _, clock, number = fen.split()
    men = squares(fen)
    start, to, promoted = move[:2], move[2:4], move[4:]
    man = men.pop(start)
    pawn = man in "Pp"
    quiet_moves = 0 if pawn or to in men else int(clock) + 1
    if pawn and start[0] != to[0] and to not in men:
        del men[to[0] + start[1]]
    if man in "Kk" and abs(ord(start[0]) - ord(to[0])) == 2:
        corner, beside = ("h", "f") if to[0] == "g" else ("a", "d")
        men[beside + to[1]] = men.pop(corner + to[1])
    men[to] = (promoted.upper() if man == "P" else promoted) or man
    for square in (start, to):
        for right in _CORNER_RIGHTS.get(square, ""):
            rights = rights.replace(right, "")
    double = pawn and abs(int(start[1]) - int(to[1])) == 2
    passed = f"{to[0]}{(int(start[1]) + int(to[1])) // 2}" if double else "-"
    return " ".join((placement(men), "b" if side == "w" else "w", rights or "-", passed,
                     str(quiet_moves), str(int(number) + (side == "b"))))


def mirror(fen: str) -> str:
    """The same position with the colours swapped."""
    men, side, rights, passed, *numbers = fen.split()
    flipped = "/".join(reversed(men.swapcase().split("/")))
    rights = "".join(sorted(rights.swapcase()))
    if passed != "-":
        passed = f"{passed[0]}{9 - int(passed[1])}"
    return " ".join((flipped, "b" if side == "w" else "w", rights, passed, *numbers))


def is_check(fen: str) -> bool:
    """Whether the side to move is in check."""
    return checkers(fen) > 0


def checkers(fen: str) -> int:
    """How many men give check to the side to move."""
    men, white = squares(fen), fen.split()[1] == "w"
    king = next(square for square, man in men.items() if man == ("K" if white else "k"))
    found = 0
    for right, up in itertools.product(range(-2, 3), repeat=2):
        leap, straight = abs(right * up) == 2, right == 0 or up == 0
        if not leap and max(abs(right), abs(up)) != 1:
            continue
        file, rank = ord(king[0]), int(king[1])
        for distance in range(1, 2 if leap else 8):
            man = men.get(f"{chr(file + right * distance)}{rank + up * distance}")
            if man is None:
                continue
            attackers = "n" if leap else "rq" if straight else "bq"
            if not leap and distance == 1:
                attackers += "k" if straight or up != (1 if white else -1) else "kp"
            if man.islower() == white and man.lower() in attackers:
                found += 1
            break
    return found
