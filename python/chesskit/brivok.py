"""Clients of the engine under test. Any output that does not belong there is an error."""

import re
import subprocess
import time
from collections.abc import Sequence
from pathlib import Path

from chesskit.board import squares
from chesskit.errors import ChessError
from chesskit.notation import MOVE, SAN
from chesskit.process import PATIENCE, Command, Folder
from chesskit.programs import BRIVOK
from chesskit.uci import Options, Reply, UciEngine
from chesskit.winboard import WinBoardEngine

NO_MOVE = "a8a8"  # the answer to a "go" in a game that is over

# All that may come between "go" and "bestmove".
SEARCH_OUTPUT = re.compile(
    rf"""|readyok|\#\#\ \(Think\)\ Left\ time:\ -?\d+\ Thinking\ time:\ \d+
    |info\ depth\ \d+\ seldepth\ \d+\ time\ \d+\ hashfull\ \d+\ score
        \ (?:mate\ -?\d+|cp\ -?\d+(?:\ (?:lower|upper)bound)?)
        \ nodes\ \d+\ nps\ \d+\ hashfull\ \d+\ (?:tbhits\ \d+\ )?pv\ (?:{MOVE}\ )*{MOVE}?
    |info\ currmove\ {MOVE}\ currmovenumber\ \d+\ nodes\ \d+\ hashfull\ \d+\ (?:\ tbhits\ \d+)?
    |info\ currmovenumber\ \d+\ currmove\ {MOVE}\ depth\ \d+\ seldepth\ \d+\ time\ \d+
        \ nodes\ \d+\ nps\ \d+\ hashfull\ \d+\ (?:tbhits\ \d+)?
    |info\ nodes\ \d+\ nps\ \d+\ hashfull\ \d+\ (?:\ tbhits\ \d+)?
    |\ \ \ \+(?:---\+){{8}}|\ [1-8]\ \|.*|\ {{5}}(?:[a-h#]\ {{3}}){{8}}""", re.X)

LINE = rf"\d+\.\ (?:\.\.\.\ )?{SAN}\ (?:(?:\d+\.\ )?{SAN}\ )*(?:(?:\d+\.)?\ <{SAN}>\ )*"
# iteration, ".", score, centiseconds, nodes, then a line of moves or one that left the window
THINKING = re.compile(
    rf"""(?P<depth>[\s\d]\d)(?P<final>[ .])\ (?P<score>[\s\d-]{{4,5}}\d)\ [\s\d]{{6}}\d
    \ (?P<nodes>[\s\d]{{9}}\d)\ \ (?P<face>\ X-\(|:'-\(|\ :-\(|\ :-\||\ :-\)|:-\)\)|\ :-D)\ 
    (?:(?P<pv>{LINE})(?P<extra>\[nps:\d+\|depth:\d+/\d+(?:\|BF:\d+\.\d\d)?(?:\|tbhits:\d+)?\])
    |\d+\.\ (?:\.\.\.\ )?(?P<first>{SAN})\ (?P<mark>\+\+|--))""", re.X)
STATUS = re.compile(rf"stat01: \d+ \d+ \d+ \d+ \d+ ({SAN})?")
# All that may come before "move" beside thinking lines.
OTHER = re.compile(rf"|pong \d+|## \(Think\) Left time: \d+ Thinking time: \d+|Hint: {SAN}")
# Words of the claims by what has ended the game; of a mate, with Black and with White winning.
_CLAIMS = {"mate": ("Black mates", "White mates"), "stalemate": ("Stalemate",),
           "fifty": ("Fifty moves rule",), "repetition": ("Three fold repetition",),
           "insufficient": ("Insufficient material",)}


def claim(end: str, side: int) -> str:
    """The words of the claim when a game ends like this with `side`, 0 for White, to move."""
    return _CLAIMS[end][side if end == "mate" else 0]


class Brivok(UciEngine):
    """The engine under UCI. Without `uci` it has just started and waits for a protocol."""

    def __init__(self, folder: Folder = None, uci: bool = True, options: Options | None = None,
                 command: Command = (BRIVOK,)) -> None:
        super().__init__(command, folder, options, connect=uci)

    def answered(self, seconds: float) -> bool:
        """Whether a move comes within this time. It is not taken."""
        return any(line.startswith("bestmove") for line in self.waiting(seconds))

    def best(self, timeout: float | None = PATIENCE) -> Reply:
        reply = super().best(timeout)
        lines = reply.lines
        move = re.fullmatch(rf"bestmove {MOVE} (?:ponder {MOVE})?", lines[-1])
        self.require(move and lines[-2] == "", f"gives its move as {lines[-2:]}")
        for line in lines[:-1]:
            self.require(SEARCH_OUTPUT.fullmatch(line), f"says {line!r} while it thinks")
        return reply

    def moves(self, position: str) -> list[str]:
        """The legal moves of a position as the engine lists them. In check the list may hold
        castling, which no search plays."""
        self.send(position)
        self.ready()
        self.send("genmoves")
        return self.ready()[-1].split()

    def finish(self) -> list[str]:
        """Quits and returns the last output. Nothing may be wrong: the exit code, a message on
        standard error, a move that is missing or too many."""
        if self.p.poll() is None:
            self.send("quit")
        try:
            self.p.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.fail("did not quit")
        self.reader.join(PATIENCE)
        rest = self.waiting()
        if self.p.returncode != 0 or self.stderr() or self.searches != 0 or self.answered(0):
            self.fail(f"owed {self.searches} moves in the end and said {rest}")
        return rest


class WinBoard(WinBoardEngine, Brivok):
    """The engine under WinBoard. `ini` is the text of its settings file."""

    def __init__(self, folder: Path, ini: str | None = None, command: Command = (BRIVOK,)) -> None:
        if ini is not None:
            (folder / "brivok.ini").write_text(ini)
        super().__init__(folder, uci=False, command=command)
        self.folder = folder
        self.said: list[str] = []  # all that has come before the last move
        self.send("xboard")
        self.greeting = self.wait("feature")

    def check(self, lines: Sequence[str]) -> None:
        """These lines may come before a move."""
        for line in lines:
            self.require(THINKING.fullmatch(line) or OTHER.fullmatch(line),
                         f"says {line!r} while it thinks")

    def move(self, *lines: str) -> str:
        """The move that comes next, behind these lines."""
        self.send(*lines)
        self.said = self.wait("move ")
        last = [*self.said[-2:], *self.wait("")]
        answer = re.fullmatch(f"\nmove {MOVE}\n", "\n".join(last))
        self.require(answer, f"gives its move as {last}")
        self.check(self.said[:-1])
        return self.said.pop()[5:]

    @property
    def thinking(self) -> list[re.Match[str]]:
        return [m for m in map(THINKING.fullmatch, self.said) if m]

    def until_idle(self) -> None:
        """Waits for the end of a search that ends by itself, which the answer to an unknown command
        shows."""
        end, said = time.monotonic() + PATIENCE, [""]
        while not any("Unknown" in line for line in said) and time.monotonic() < end:
            said = self.ask("unknown")

    def no_move(self, seconds: float = 0.15) -> None:
        """Nothing but thinking lines may come while this time passes. They are taken."""
        time.sleep(seconds)
        for line in self.ask():
            self.require(THINKING.fullmatch(line), f"says {line!r} where no move is due")


def talk(data: bytes, folder: Path) -> str:
    """Output of an engine that reads these bytes and then the end of its input. It must end by
    itself, without an error."""
    done = subprocess.run([BRIVOK], input=data, capture_output=True, timeout=PATIENCE, cwd=folder)
    if done.returncode != 0 or done.stderr:
        raise ChessError(f"engine ends with code {done.returncode} and says {done.stderr!r}")
    return done.stdout.decode("latin-1")


def diagram(fen: str, black_marks: str = "", white_marks: str = "") -> list[str]:
    """The lines of the printed board; the marks are files of castling men with their rights."""
    rule, men = "   " + "+---" * 8 + "+", squares(fen)

    def labels(marks: str) -> str:
        return "     " + "".join(("#" if f in marks else f) + "   " for f in "abcdefgh")

    def cell(row: int, f: int) -> str:
        man = men.get(f"{'abcdefgh'[f]}{8 - row}")
        if man is None:  # parity of row plus square number
            return " . |" if (row + row * 8 + f) % 2 else "   |"
        return f" {man} |" if man.isupper() else f"={man.upper()}=|"

    lines = ["", labels(black_marks), rule]
    for row in range(8):
        mark = {("b", 1): "   #", ("w", 6): "   #"}.get((fen.split()[1], row), "")
        rank = 8 - row
        lines += [f" {rank} |" + "".join(cell(row, f) for f in range(8)) + f" {rank}{mark}", rule]
    return lines + [labels(white_marks), ""]


def shown(fen: str) -> list[str]:
    """The lines of the printed board, marked by the castling rights of a FEN of plain chess."""
    marks = {"K": "eh", "Q": "ae", "k": "eh", "q": "ae", "-": ""}
    rights = fen.split()[2]
    return diagram(fen, "".join(marks[x] for x in rights if x.islower()),
                   "".join(marks[x] for x in rights if x.isupper()))
