"""The engines at the board of a match, over UCI and WinBoard, and how those of Debian start."""

import math
import re
import subprocess
import time
from collections import Counter, namedtuple
from pathlib import Path

from uci_engine import Process
from winboard_engine import RESULTS

HASH = 16  # megabytes, of every engine that lets it be set
PATIENCE = 5.0  # seconds beyond the clock until an engine counts as hanging
FAULTS = ("illegal", "time", "crash")

# `tested`: the engine under test; `nodes`: a limit of each move, or None; times in milliseconds
Settings = namedtuple("Settings", "tested ponder nodes time increment")
Opponent = namedtuple("Opponent", "kind arguments")


class Forfeit(Exception):
    """A player loses: one of FAULTS, and the particulars."""

    def __init__(self, player, fault, text):
        super().__init__(text)
        self.player, self.fault = player, fault


class Player(Process):
    counts = Counter()  # before the first game

    def __init__(self, command, folder, settings):
        super().__init__(["env", f"HOME={folder}", *command], folder)  # some engines write there
        self.settings = settings

    def begin(self, _game):
        self.counts = Counter()  # moves after a ponder hit, by the book, with the help of tables
        self.searched = False

    def fail(self, what):
        try:
            super().fail(what)
        except AssertionError as error:
            raise Forfeit(self, "crash", str(error)) from None

    def said(self, lines):
        """Counts by what stands before a move how the engine under test has found it."""
        self.searched |= any(re.match(r"info depth|[ \d]\d[ .] ", line) for line in lines)
        self.counts["book"] += not self.searched
        self.counts["table"] += any(re.search(r"tbhits[ :]0*[1-9]", line) for line in lines)

    def waited(self):
        """Milliseconds that its threads, ready to run, have had to wait for a processor so far."""
        tasks = Path(f"/proc/{self.p.pid}/task").glob("*/schedstat")
        try:
            return sum(int(task.read_text().split()[1]) for task in tasks) / 1e6
        except (OSError, IndexError):  # the process, or one of its threads, is gone
            return math.nan

    def quits(self):
        """Whether the engine goes as it is told to."""
        try:
            self.send("quit")
            return self.p.wait(PATIENCE) == 0 and not self.stderr()
        except (Forfeit, subprocess.TimeoutExpired):
            return False


class UciPlayer(Player):
    def __init__(self, command, folder, settings):
        super().__init__(command, folder, settings)
        self.send("uci")
        known = re.findall(r"option name (.+?) type", "\n".join(self.wait("uciok")))
        wanted = {"Hash": HASH, "Threads": 1, "Number of Threads": 1,
                  "Ponder": str(settings.ponder).lower()}
        if not settings.tested:
            wanted["OwnBook"] = "false"
        self.send(*(f"setoption name {name} value {value}" for name, value in wanted.items()
                    if name in known))
        self.guess = self.next = None

    def begin(self, game):
        super().begin(game)
        self.send("ucinewgame", "isready")
        self.wait("readyok")

    def go(self, clocks, game, ponder=""):
        limit = f" nodes {self.settings.nodes}" if self.settings.nodes else ""
        return f"go {ponder}{clocks.text(game.side)}{limit}"

    def move(self, game, clocks, patience):
        """The move, and the seconds that it took."""
        begin = time.monotonic()
        if self.guess and self.guess == game.moves[-1]:
            self.send("ponderhit")
            self.counts["ponder"] += 1
        else:
            self.halt()
            self.send(game.line(), self.go(clocks, game))
        lines = self.wait("bestmove", patience)
        self.said(lines)
        words = lines[-1].split()
        self.guess, self.next = None, words[3] if "ponder" in words else None
        return words[1], self.stamp - begin

    def leave(self, game, clocks):
        """The opponent's turn."""
        if self.settings.tested and self.next and self.next not in game.legal:
            raise Forfeit(self, "illegal", f"ponder move {self.next} after {game.line()}")
        if self.settings.ponder and self.next in game.legal:
            self.guess = self.next
            self.send(game.line(self.guess), self.go(clocks, game, "ponder "))

    def halt(self):
        if self.guess:
            self.guess = None
            self.send("stop")
            self.wait("bestmove", PATIENCE)

    def end(self, _result):
        self.halt()


class WinBoardPlayer(Player):
    def __init__(self, command, folder, settings):
        super().__init__(command, folder, settings)
        self.pings, self.playing = 0, False
        features = " ".join(self.ask("xboard", "protover 2"))
        self.prefix = "usermove " if "usermove=1" in features else ""

    def ask(self, *lines):
        self.pings += 1
        self.send(*lines, f"ping {self.pings}")
        return self.wait(f"pong {self.pings}")

    def begin(self, game):
        """Sets up the game. `level` knows whole seconds only; `time` says what is really left."""
        super().begin(game)
        minutes, seconds = divmod(max(1, self.settings.time // 1000), 60)
        self.playing = False
        self.ask("new", f"level 0 {minutes}:{seconds:02} {self.settings.increment // 1000}",
                 "hard" if self.settings.ponder else "easy", "post", "force",
                 *(self.prefix + move for move in game.moves))
        self.start = len(game.moves)

    def move(self, game, clocks, patience):
        left = [max(1, int(x / 10)) for x in clocks.left]
        lines = [f"time {left[game.side]}", f"otim {left[1 - game.side]}"]
        if len(game.moves) > self.start:
            lines.append(self.prefix + game.moves[-1])
        if not self.playing:
            self.playing = True
            lines.append("go")
        begin = time.monotonic()
        self.send(*lines)
        lines = self.wait(("move ", "resign", "tellics resign", "Illegal move", *RESULTS), patience)
        self.said(lines)
        word = lines[-1].removeprefix("move ")
        if word in ("O-O", "O-O-O"):
            rank = "1" if game.white else "8"
            word = f"e{rank}{'g' if word == 'O-O' else 'c'}{rank}"
        return word, self.stamp - begin

    def leave(self, _game, _clocks):
        pass  # it ponders by itself

    def end(self, result):
        self.ask(f"result {result} {{}}", "force")


KINDS = {"uci": UciPlayer, "winboard": WinBoardPlayer}
OPPONENTS = {"toga2": Opponent("uci", []), "glaurung": Opponent("uci", []),
             "gnuchess": Opponent("uci", ["--uci"]), "stockfish": Opponent("uci", []),
             "phalanx": Opponent("winboard", ["-b-", "-l-", f"-t{HASH * 1024}"]),
             "sjeng": Opponent("winboard", [])}
