#!/usr/bin/env python3
"""Shows a game of the engine against itself, played over UCI.

At a terminal the board is redrawn in its place and the engine can be watched while it thinks;
otherwise each move is a line. Ctrl-C ends the game."""

import os
import re
import shutil
import signal
import sys
import textwrap
import time
from collections.abc import Sequence
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "python"))

from chesskit import (START, Game, Look, Score, UciEngine, after_move, is_check,  # noqa: E402
                      run_script, script_parser, squares)

PIECES = dict(zip("KQRBNPkqrbnp", "♔♕♖♗♘♙♚♛♜♝♞♟"))
LIGHT, DARK = 223, 180  # colours of a terminal with 256 of them: the squares,
LIGHT_MOVED, DARK_MOVED = 187, 143  # and those of the last move
LEAST_THINKING = 0.02  # seconds
NO_MOVES = ("0000", "a8a8")  # the engine takes the game for over
DRAWS = {"stalemate": "stalemate", "repetition": "threefold repetition",
         "fifty": "fifty moves without a capture or a pawn move",
         "insufficient": "too few men to mate"}


class EngineRules:
    """The rules as the engine knows them."""

    def __init__(self, engine: UciEngine) -> None:
        self.engine = engine
        self.known: tuple[tuple[str, ...], str] = ((), START)  # a position looked at before

    def look(self, start: str, moves: Sequence[str] = (), fischer: bool = False) -> Look:
        assert start == "startpos" and not fischer
        known, fen = self.known
        if tuple(moves[:len(known)]) != known:
            known, fen = (), START
        for move in moves[len(known):]:
            fen = after_move(fen, move)
        self.known = (tuple(moves), fen)
        self.engine.send(f"position startpos moves {' '.join(moves)}")
        self.engine.ready()
        self.engine.send("genmoves")
        words, check, men = self.engine.ready()[-1].split(), is_check(fen), squares(fen)
        if check:  # the list may hold castling out of check
            words = [w for w in words if men[w[:2]] not in "Kk" or abs(ord(w[0]) - ord(w[2])) < 2]
        fields = fen.split()
        if not any(w[2:4] == fields[3] and men[w[:2]] in "Pp" for w in words):
            fields[3] = "-"  # with nothing to capture, the position can be one seen before
        return Look({word: word for word in words}, " ".join(fields), check)


def score_text(score: Score, white: bool) -> str:
    """The score of the side to move, in pawns as White sees it."""
    if score.kind == "cp":
        return f"{(score.value if white else -score.value) / 100:+.2f}"
    return f"{'White' if white == (score.value > 0) else 'Black'} mates in {abs(score.value)}"


class Screen:
    """Where a game is shown. This one is no terminal: a line for each move."""

    def __init__(self, game: Game) -> None:
        self.game = game

    def last(self, score: str) -> str:
        """The last move with its number."""
        number, black = divmod(len(self.game.moves) - 1, 2)
        return f"{number + 1}.{'..' if black else ''} {self.game.sans[-1]:8} {score}".rstrip()

    def all_moves(self, width: int) -> list[str]:
        """In lines that part no pair."""
        pairs = ["\u00a0".join((f"{n // 2 + 1}.", *self.game.sans[n:n + 2]))
                 for n in range(0, len(self.game.sans), 2)]
        return [x.replace("\u00a0", " ") for x in textwrap.wrap("  ".join(pairs), width)]

    def begin(self) -> None:
        """The start of the game."""

    def think(self, text: str) -> None:
        """What the engine thinks."""

    def moved(self, score: str) -> None:
        """A move has been played."""
        print(self.last(score), flush=True)

    def end(self, text: str) -> None:
        print("", *self.all_moves(78), "", text, sep="\n", flush=True)


class Terminal(Screen):
    """A board that is redrawn in its place."""
    HEIGHT = 16  # lines

    def __init__(self, game: Game, unicode: bool, colour: bool) -> None:
        super().__init__(game)
        self.unicode, self.colour = unicode, colour
        self.drawn = False
        self.last_move = self.thinking = ""

    def board(self) -> list[str]:
        men, moves = squares(self.game.fen), self.game.moves
        moved = (moves[-1][:2], moves[-1][2:4]) if moves else ()
        lines = []
        for rank in range(8, 0, -1):
            line = f" {rank} "
            for column, file in enumerate("abcdefgh"):
                square, dark = f"{file}{rank}", (column + rank) % 2 == 1
                man = men.get(square, " ")
                text = PIECES.get(man, man) if self.unicode else man
                if self.colour:
                    shades = (LIGHT_MOVED, DARK_MOVED) if square in moved else (LIGHT, DARK)
                    line += f"\033[30;48;5;{shades[dark]}m {text} "
                else:
                    text = ("·" if self.unicode else ".") if man == " " and dark else text
                    line += f"[{text}]" if square in moved else f" {text} "
            lines.append(line + ("\033[0m" if self.colour else ""))
        return [*lines, "    a  b  c  d  e  f  g  h"]

    def draw(self) -> None:
        width = shutil.get_terminal_size().columns - 1
        moves = self.all_moves(width)[-2:]
        lines = ["Brivok plays itself. Ctrl-C ends the game.", "", *self.board(), "",
                 f"Last move: {self.last_move}"[:width], self.thinking[:width],
                 *moves, *[""] * (2 - len(moves))]
        up = f"\033[{self.HEIGHT}F" if self.drawn else ""  # to the first line of the last picture
        clear = "\033[K\n"  # what an earlier picture has left of the line
        print(up + clear.join(lines), end=clear, flush=True)
        self.drawn = True

    def begin(self) -> None:
        self.draw()

    def think(self, text: str) -> None:
        self.thinking = text
        self.draw()

    def moved(self, score: str) -> None:
        self.last_move, self.thinking = self.last(score), ""
        self.draw()


def make_move(engine: UciEngine, screen: Screen, pace: float) -> bool:
    """Has the engine think about its move, and plays it; false if it has none."""
    game, score = screen.game, ""
    mover = "White" if game.white else "Black"
    begin = time.monotonic()
    engine.start(f"go movetime {max(pace, LEAST_THINKING) * 1000:.0f}", game.line())
    while True:
        line = engine.wait(("info depth", "bestmove"), timeout=None)[-1]
        if line.startswith("bestmove"):
            break
        told = re.search(r"depth (\d+) .*score (cp|mate) (-?\d+) .*pv (.+)", line)
        if told:
            score = score_text(Score(told[2], int(told[3])), game.white)
            screen.think(f"{mover} thinks: depth {told[1]}, {score}: {told[4]}")
    time.sleep(max(0.0, begin + pace - time.monotonic()))
    move = line.split()[1]
    if move in NO_MOVES:
        return False
    game.push(move)
    screen.moved(score)
    return True


def play(engine: UciEngine, screen: Screen, plies: int | None, pace: float) -> str:
    """Plays and shows the game. Returns how it has ended."""
    game = screen.game
    screen.begin()
    while game.end is None:
        if len(game.moves) == plies:
            return f"Stopped after {plies} half-moves."
        if not make_move(engine, screen, pace):
            return "The engine takes the game for over."
    if game.end == "mate":
        return f"{game.result}: {'Black' if game.white else 'White'} wins by checkmate."
    return f"{game.result}: draw, {DRAWS[game.end]}."


def choose_screen(game: Game, ascii_pieces: bool) -> Screen:
    size = shutil.get_terminal_size()
    plain = not sys.stdout.isatty() or os.environ.get("TERM", "dumb") == "dumb"
    if plain or size.lines <= Terminal.HEIGHT or size.columns < 40:
        return Screen(game)
    unicode = "utf" in sys.stdout.encoding.lower() and not ascii_pieces
    return Terminal(game, unicode, colour="NO_COLOR" not in os.environ)


def main() -> int:
    parser = script_parser(__doc__)
    parser.add_argument("engine", help="the engine's program file; ./play demo fills it in")
    parser.add_argument("--pace", type=float, default=1.0, metavar="SECONDS",
                        help="time for each move (1)")
    parser.add_argument("--plies", type=int, metavar="N",
                        help="stop after N half-moves; otherwise the game is played to its end")
    parser.add_argument("--ascii", action="store_true", help="letters instead of chess pieces")
    arguments = parser.parse_args()
    if not 0 <= arguments.pace <= 3600:
        parser.error("the pace is from 0 to 3600 seconds")

    # Ctrl-C is for this script alone, which then has the engine quit.
    interrupt = signal.signal(signal.SIGINT, signal.SIG_IGN)
    engine = UciEngine([arguments.engine], options={"PlayFRC": "false"})
    signal.signal(signal.SIGINT, interrupt)
    screen = choose_screen(Game(EngineRules(engine), fifty=100), arguments.ascii)
    try:
        screen.end(play(engine, screen, arguments.plies, arguments.pace))
    except KeyboardInterrupt:
        screen.end("Stopped.")
        raise
    except BrokenPipeError:  # nobody reads the game any more
        sys.stdout = open(os.devnull, "w")
    finally:
        engine.quit()
    return 0


if __name__ == "__main__":
    run_script(main)
