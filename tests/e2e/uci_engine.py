"""Drives chess engines over pipes: the engine under test, and a referee that knows the rules."""

import os
import queue
import re
import shutil
import subprocess
import tempfile
import threading
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BRIVOK = os.path.abspath(os.environ.get("BRIVOK", ROOT / "build/release/bin/brivok"))
PATH = os.environ.get("PATH", "") + ":/usr/games"  # where Debian keeps games
SLOW = os.environ.get("BRIVOK_SLOW") == "1"  # a sanitizer build: shorter games, longer clocks
PATIENCE = 120 if SLOW else 30  # seconds until an engine counts as hanging
SLACK = 3.0 if SLOW else 0.03  # seconds between a limit and its "bestmove" at the other end

MOVE = r"(?:[a-h][1-8][a-h][1-8][qrbn]?|O-O(?:-O)?)"
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


def installed(name):
    """The file of a program, or None."""
    return shutil.which(name, path=PATH)


class Process:
    """A program at the other end of a pipe. Output lines keep the time of their arrival."""

    def __init__(self, command, folder=None):
        self.errors = tempfile.TemporaryFile()
        self.p = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                  stderr=self.errors, cwd=folder)
        self.lines = queue.Queue()
        self.stamp = 0.0  # arrival of the last line taken
        self.last_sent = b""
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        for line in self.p.stdout:
            self.lines.put((time.monotonic(), line.decode("latin-1").rstrip("\n")))
        self.lines.put((time.monotonic(), None))

    def raw(self, data):
        self.last_sent = data[-200:]
        try:
            self.p.stdin.write(data)
            self.p.stdin.flush()
        except BrokenPipeError:
            self.fail("is gone")

    def send(self, *lines):
        self.raw("".join(line + "\n" for line in lines).encode("latin-1"))

    def fail(self, what):
        self.p.kill()
        code = self.p.wait()
        raise AssertionError(f"engine {what} (code {code}), last sent {self.last_sent!r}, "
                             f"stderr {self.stderr()[-3000:]!r}")

    def stderr(self):
        self.errors.seek(0)
        return self.errors.read().decode("latin-1")

    def wait(self, start, timeout=PATIENCE):
        """The lines up to and with the first one that begins with `start`."""
        taken, end = [], time.monotonic() + timeout
        while True:
            try:
                self.stamp, line = self.lines.get(timeout=max(0.0, end - time.monotonic()))
            except queue.Empty:
                self.fail(f"gave no '{start}' but {taken[-5:]}")
            if line is None:
                self.fail(f"ended without '{start}' but {taken[-5:]}")
            taken.append(line)
            if line.startswith(start):
                return taken

    def waiting(self, seconds=0.0):
        """What has arrived and has not been taken, after a pause."""
        time.sleep(seconds)
        return [line for _, line in list(self.lines.queue) if line is not None]


class Reply:
    """The answer to a "go"."""

    def __init__(self, lines, seconds):
        m = re.fullmatch(rf"bestmove ({MOVE}) (?:ponder ({MOVE}))?", lines[-1])
        assert m and lines[-2] == "", lines[-2:]
        self.best, self.ponder = m.groups()
        self.lines, self.seconds = lines, seconds
        self.info = [x for x in lines if x.startswith("info depth")]
        for line in lines[:-1]:
            assert SEARCH_OUTPUT.fullmatch(line), line

    @property
    def nodes(self):
        return int(re.search(r" nodes (\d+)", self.info[-1])[1])


class Brivok(Process):
    def __init__(self, folder=None, uci=True, options=()):
        super().__init__([BRIVOK], folder)
        self.searches = 0  # answers still owed
        if uci:
            self.send("uci")
            self.listing = self.wait("uciok")
        for name, value in dict(options).items():
            self.set(name, value)

    def set(self, name, value):
        self.send(f"setoption name {name} value {value}")

    def ready(self, timeout=PATIENCE):
        """What was printed up to the answer to an "isready"."""
        self.send("isready")
        return self.wait("readyok", timeout)[:-1]

    def start(self, go, position=None):
        if position:
            self.send(position)
            self.ready()
        self.searches += 1
        self.begin = time.monotonic()
        self.send(go)

    def answered(self, seconds):
        """Whether a move comes within this time; nothing is taken."""
        return any(line.startswith("bestmove") for line in self.waiting(seconds))

    def best(self, timeout=PATIENCE):
        lines = self.wait("bestmove", timeout)
        self.searches -= 1
        return Reply(lines, self.stamp - self.begin)

    def go(self, go, position=None, limit=None):
        """Searches. With `limit`, in seconds, the search must be over by then; a late answer gets
        four more tries, since a busy machine is not the engine's fault."""
        for _ in range(5):
            self.start(go, position)
            reply = self.best()
            if limit is None or reply.seconds <= limit + SLACK:
                return reply
        raise AssertionError(f"{go}: {reply.seconds:.3f} s of {limit:.3f} s, {position}")

    def moves(self, position):
        """The legal moves of a position in the engine's eyes; in check castling may be among them,
        which no search takes up."""
        self.send(position)
        self.ready()
        self.send("genmoves")
        return set(self.ready()[-1].split())

    def finish(self):
        """Quits, looks for anything that should not be there, and gives the last output."""
        if self.p.poll() is None:
            self.send("quit")
        try:
            code = self.p.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.fail("did not quit")
        self.reader.join(PATIENCE)
        rest = self.waiting()
        assert self.stderr() == ""
        assert code == 0
        assert not any(line.startswith("bestmove") for line in rest) and self.searches == 0
        return rest


class Referee(Process):
    """Stockfish as the authority on the rules. It writes Fischer-random castling as king takes
    rook; here moves are in the tested engine's words, with its own behind them."""

    def __init__(self):
        super().__init__([installed("stockfish")])
        self.fischer = False
        self.send("uci")
        self.wait("uciok")

    def look(self, start, moves=(), fischer=False):
        """`({our word: its word} of the legal moves, FEN, in check)` after the moves (its words)
        from `start`, which is "startpos" or "fen ..."."""
        if fischer != self.fischer:
            self.fischer = fischer
            self.send(f"setoption name UCI_Chess960 value {str(fischer).lower()}")
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
        return legal, fen, check


def squares(fen):
    """{square: letter} of the men of a FEN."""
    text = re.sub(r"\d", lambda m: " " * int(m[0]), fen.split()[0])
    return {f"{'abcdefgh'[f]}{8 - r}": man for r, row in enumerate(text.split("/"))
            for f, man in enumerate(row) if man != " "}
