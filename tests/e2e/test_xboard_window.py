"""What a person does in the window of a real interface: xboard on a screen that nobody sees, with a
mouse and a keyboard that xdotool moves, and an engine that behaves as interfaces expect today.
xboard's debug file tells what both say to each other, and the referee knows the board."""

import os
import random
import re
import subprocess
import time
from pathlib import Path
from typing import NamedTuple

import pytest

from chesskit import BRIVOK, MIDDLE, PATH, PATIENCE, SLOW, Game, installed, read_san

XBOARD, XVFB, XDOTOOL = PROGRAMS = [installed(name) or "" for name in ("xboard", "Xvfb", "xdotool")]
pytestmark = pytest.mark.skipif(not all(PROGRAMS), reason="no xboard, Xvfb or xdotool")

SCREEN = "1024x480x24"
SQUARE = 41  # pixels from one square of the board to the next
LEFT = 600  # pixels to the left of the board, for the window with the engine's thinking
ARGUMENTS = ["-boardSize", str(SQUARE - 1), "-popupExitMessage", "false", "-popupMoveErrors",
             "false", "-soundProgram", "", "-saveSettingsOnExit", "false", "-debug",
             "-nameOfDebugFile", "debug.txt"]
DEPTH = 5 if SLOW else 8  # that an analysis reaches before a person goes on
GAME_DEPTH = 3 if SLOW else 5  # of the engine's moves in a game
THINKING = re.compile(r"\s*(\d+)[ .+&-]?\s+-?\d+\s+\d+\s+\d+\s+(.*)")

MATE_IN_ONE = "6k1/5ppp/8/8/8/8/5PPP/R5K1 w - - 0 1"
# Black's castling forks king and rook; White has a bishop to put between, and then castles too.
CASTLINGS = "r4k2/1R3ppp/8/8/8/8/2P2PPP/2BK3R w Ha - 0 1"


class Said(NamedTuple):
    """A line of the debug file."""
    time: int  # milliseconds
    sent: bool  # by xboard, not by the engine
    text: str


def moves_of(line: str) -> list[str]:
    """The SAN moves of a line of moves with their numbers."""
    return [re.sub(r"^\d+\.+", "", word) for word in line.split()
            if not re.fullmatch(r"\d*\.+", word)]


class Xboard:
    """An xboard that a person sits at; `game` is what lies on the board. The lines of the debug
    file are taken in order."""

    def __init__(self, game: Game, folder: Path, screen: str, *arguments: str) -> None:
        self.game, self.folder, self.taken = game, folder, 0
        self.env = {**os.environ, "HOME": str(folder), "PATH": PATH, "DISPLAY": screen}
        (folder / "brivok.ini").write_text("ModernInterface: true\n")
        (folder / "debug.txt").touch()
        if game.start != "startpos":
            (folder / "start.fen").write_text(game.start.removeprefix("fen ") + "\n")
            arguments += "-lpf", "start.fen"
        self.p = subprocess.Popen([XBOARD, *ARGUMENTS, "-fcp", BRIVOK, "-fd", folder, *arguments],
                                  cwd=folder, env=self.env, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def open(self) -> None:
        """Waits for the engine and for the window."""
        self.wait("<pong 1")
        window = self.xdotool("search", "--sync", "--onlyvisible", "--pid", str(self.p.pid))
        window = window.split()[0]
        # There is no window manager to do so.
        self.xdotool("windowmove", window, str(LEFT), "0", "windowfocus", "--sync", window)
        shape = self.xdotool("getwindowgeometry", "--shell", window)
        self.height = int(re.findall(r"HEIGHT=(\d+)", shape)[0])

    def xdotool(self, *words: str) -> str:
        return subprocess.run([XDOTOOL, *words], env=self.env, check=True, capture_output=True,
                              text=True, timeout=PATIENCE).stdout

    def log(self) -> list[Said]:
        """All that has been said."""
        text = (self.folder / "debug.txt").read_text("latin-1")
        text = re.sub(r"usermove \d+ >first : ", "usermove ", text[:text.rfind("\n") + 1])
        return [Said(int(m[1]), m[2] == ">", m[3])
                for m in re.finditer(r"^(\d+) ([<>])first : (.*)$", text, re.M)]

    def wait(self, pattern: str) -> Said:
        """The next line that matches, whoever says it: the pattern begins with ">" for xboard and
        with "<" for the engine."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end and self.p.poll() is None:
            log = self.log()
            for number in range(self.taken, len(log)):
                said = log[number]
                if re.match(pattern, "<>"[said.sent] + said.text):
                    self.taken = number + 1
                    return said
            time.sleep(0.02)
        raise AssertionError(f"no {pattern} after {log[:self.taken][-3:]} in {log[self.taken:]}")

    def keys(self, *names: str) -> None:
        self.xdotool("key", *names)

    def move(self, word: str) -> None:
        """Clicks on the two squares of a move, which castles with the king onto the rook. It is on
        its way to the engine then."""
        self.game.push(word)
        squares = self.game.theirs[-1]
        for square in squares[:2], squares[2:4]:
            x = LEFT + (ord(square[0]) - ord("a")) * SQUARE + SQUARE // 2
            y = self.height - int(square[1]) * SQUARE + SQUARE // 2
            self.xdotool("mousemove", str(x), str(y), "click", "1")
        self.wait(f">usermove {word}$")

    def retract(self, count: int) -> None:
        """Takes moves off the board of the test."""
        left = self.game.moves[:-count]
        self.game = Game(self.game.referee, self.game.start, self.game.fischer)
        for word in left:
            self.game.push(word)

    def answer(self, thinks: bool = False) -> Said:
        """The engine's move, which must be legal, as must be the last line of moves that it thinks
        about, if it is one to think."""
        before = self.taken
        said = self.wait("<move ")
        if thinks:
            lines = [THINKING.fullmatch(x.text) for x in self.log()[before:self.taken]]
            self.check_line([x[2] for x in lines if x][-1])
        self.game.push(said.text.removeprefix("move "))
        return said

    def analysed(self, depth: int = DEPTH) -> None:
        """Waits for an analysis of the position on the board. Lines about the one before it, which
        had reached this depth, may still be on their way."""
        reached = depth
        while reached >= depth:
            reached, line = self.thinking()
        while reached < depth:
            self.check_line(line)
            reached, line = self.thinking()

    def thinking(self) -> tuple[int, str]:
        """The depth and the moves of the next thinking line."""
        match = THINKING.fullmatch(self.wait("<" + THINKING.pattern).text)
        assert match
        return int(match[1]), match[2]

    def check_line(self, line: str) -> None:
        """Each move must be legal, one after the other."""
        game = Game(self.game.referee, "fen " + self.game.fen, self.game.fischer)
        for san in moves_of(line):
            game.push(read_san(san, game.legal, game.fen))

    def close(self) -> None:
        """Ends the program as a person does. Nobody may have complained."""
        self.keys("ctrl+q")
        self.p.wait(PATIENCE)
        assert [x for x in self.log() if re.search("error|illegal", x.text, re.I)] == []


@pytest.fixture(scope="module")
def screen():
    """The name of an X display."""
    xvfb = subprocess.Popen([XVFB, "-displayfd", "1", "-screen", "0", SCREEN],
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    assert xvfb.stdout
    yield ":" + xvfb.stdout.readline().strip()
    xvfb.terminate()
    xvfb.wait()


@pytest.fixture
def sit_down(tmp_path, referee, screen):
    """Starts an xboard, with a position file or the first position on its board."""
    begun = []

    def make(*arguments, start="startpos", fischer=False):
        begun.append(Xboard(Game(referee, start, fischer), tmp_path, screen, *arguments))
        begun[-1].open()
        return begun[-1]

    yield make
    for xboard in begun:
        xboard.p.kill()


def test_analysis_follows_the_board(sit_down):
    xboard = sit_down("-xponder")
    xboard.keys("ctrl+a")
    xboard.wait(">analyze")
    xboard.analysed()
    for word in "e2e4", "c7c5", "g1f3":
        xboard.move(word)
        xboard.analysed()
    for _ in range(2):
        xboard.keys("alt+Left")
        xboard.wait(">undo")
        xboard.retract(1)
        xboard.analysed()
    xboard.close()


def test_retraction_while_pondering(sit_down):
    xboard = sit_down("-ponder", "-st", "0:01")
    xboard.move("e2e4")
    xboard.answer()
    xboard.wait("<Hint: ")
    xboard.thinking()
    xboard.keys("ctrl+x")
    xboard.wait(">remove")
    xboard.retract(2)
    xboard.move("d2d4")
    xboard.answer(thinks=True)
    xboard.close()


def test_position_file_keeps_the_time(sit_down):
    xboard = sit_down("-xponder", "-st", "0:01", start="fen " + MIDDLE)
    xboard.keys("ctrl+w")
    begun = xboard.wait(">go")
    assert xboard.answer().time - begun.time < 2500
    xboard.close()


def test_fischer_random_game(sit_down):
    xboard = sit_down("-ponder", "-depth", str(GAME_DEPTH), "-variant", "fischerandom",
                      start="fen " + CASTLINGS, fischer=True)
    chance, game = random.Random(1), xboard.game
    plan = ["h2h3", "c1d2", "O-O"]
    while not game.end:
        quiet = [x for x in sorted(game.legal) if len(x) < 5] or sorted(game.legal)
        xboard.move(plan.pop(0) if plan else chance.choice(quiet))
        if not game.end:
            xboard.answer()
    assert game.moves[1] == "O-O-O" and game.moves[4] == "O-O"
    xboard.wait(f">result {game.result}")
    xboard.close()


def test_new_game_after_a_mate(sit_down):
    xboard = sit_down("-ponder", "-st", "0:01", start="fen " + MATE_IN_ONE)
    xboard.move("a1a8")
    xboard.wait(">result 1-0")
    xboard.wait("<pong 2")
    xboard.keys("ctrl+e", "alt+Left")
    xboard.wait(">undo")
    xboard.retract(1)
    xboard.move("h2h3")
    xboard.keys("ctrl+b")
    xboard.wait(">go")
    xboard.answer()
    xboard.keys("ctrl+n")
    xboard.wait(">new")
    xboard.wait("<pong ")
    xboard.retract(2)
    xboard.move("h2h3")
    xboard.answer()
    xboard.close()
