"""Drives an engine over the WinBoard protocol, and reads standard algebraic notation."""

import re
import time

from uci_engine import BRIVOK, MOVE, PATIENCE, Brivok, Process, squares

SAN = r"(?:[KQRBN][a-h]?[1-8]?x?[a-h][1-8]|(?:[a-h]x)?[a-h][1-8](?:=[QRBN])?|O-O(?:-O)?)[+#]?"
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
CLAIMS = {"mate": ("Black mates", "White mates"), "stalemate": ("Stalemate",),
          "fifty": ("Fifty moves rule",), "repetition": ("Three fold repetition",),
          "insufficient": ("Insufficient material",)}
RESULTS = ("1-0 {", "0-1 {", "1/2-1/2 {")


class WinBoard(Brivok):
    def __init__(self, folder=None, ini=None, command=(BRIVOK,)):
        if ini is not None:
            (folder / "brivok.ini").write_text(ini)
        Process.__init__(self, list(command), folder)
        self.folder, self.searches, self.pings = folder, 0, 0
        self.send("xboard")
        self.greeting = self.wait("feature")

    def ask(self, *lines, timeout=PATIENCE):
        """What is printed up to the answer to a "ping" behind these lines."""
        self.pings += 1
        self.send(*lines, f"ping {self.pings}")
        return self.wait(f"pong {self.pings}", timeout)[:-1]

    def move(self, *lines):
        """The move that comes next; `self.said` keeps all that came before it."""
        self.send(*lines)
        self.said = self.wait("move ")
        assert re.fullmatch(f"move {MOVE}", self.said[-1]) and self.said[-2] == "", self.said[-2:]
        assert self.wait("") == [""]
        for line in self.said[:-1]:
            assert THINKING.fullmatch(line) or OTHER.fullmatch(line), line
        return self.said.pop()[5:]

    @property
    def thinking(self):
        return [m for m in map(THINKING.fullmatch, self.said) if m]

    def until_idle(self):
        """Waits for the end of a search that ends by itself, told by the answer of the idle."""
        end, said = time.monotonic() + PATIENCE, []
        while not any("Unknown" in line for line in said) and time.monotonic() < end:
            said = self.ask("unknown")

    def no_move(self, seconds=0.15):
        """Nothing but thinking lines comes while this time passes. They are taken."""
        time.sleep(seconds)
        for line in self.ask():
            assert THINKING.fullmatch(line), line


def read_san(san, legal, fen):
    """The word of a SAN move among the legal ones as the referee gives them."""
    men = squares(fen)
    if san.startswith("O-O"):
        castling = san.rstrip("+#")
        file = "c" if castling == "O-O-O" else "g"
        found = [w for w in legal if w == castling or men.get(w[:2]) in ("K", "k") and
                 (w[0], w[2]) == ("e", file)]
    else:
        m = re.fullmatch(r"([KQRBN]?)([a-h]?)([1-8]?)x?([a-h][1-8])(?:=([QRBN]))?[+#]?", san)
        man, file, rank, to, new = (x or "" for x in m.groups())
        found = [w for w in legal if w[2:4] == to and w[4:] == new.lower() and
                 men.get(w[:2], "").upper() == (man or "P") and file in w[0] and rank in w[1]]
    assert len(found) == 1, (san, found, fen)
    return found[0]
