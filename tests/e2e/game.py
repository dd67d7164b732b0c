"""A game as the referee sees it, and the clocks beside the board."""

from uci_engine import squares


class Game:
    FIFTY = 101  # half-moves without a pawn move or a capture: when the engine takes it for drawn

    def __init__(self, referee, start="startpos", fischer=False):
        self.referee, self.start, self.fischer = referee, start, fischer
        self.moves, self.theirs, self.seen = [], [], []
        self._look()

    def _look(self):
        self.legal, self.fen, self.check = self.referee.look(self.start, self.theirs, self.fischer)
        self.seen.append(self.fen.split()[:4])

    def line(self, *guess):
        return f"position {self.start} moves {' '.join([*self.moves, *guess])}"

    def play(self, reply):
        assert reply.best in self.legal, (reply.best, self.line())
        self.push(reply.best)
        assert reply.ponder is None or reply.ponder in self.legal, (reply.ponder, self.line())

    def push(self, move):
        self.theirs.append(self.legal[move])
        self.moves.append(move)
        self._look()

    @property
    def white(self):
        return self.fen.split()[1] == "w"

    @property
    def side(self):
        """Whose turn it is, as an index: 0 is White."""
        return 0 if self.white else 1

    @property
    def end(self):
        if not self.legal:
            return "mate" if self.check else "stalemate"
        men = "".join(squares(self.fen).values()).lower()
        if len(men) == 2 or len(men) == 3 and set(men) & set("bn"):
            return "insufficient"
        if int(self.fen.split()[4]) >= self.FIFTY:
            return "fifty"
        return "repetition" if self.seen.count(self.seen[-1]) >= 3 else None

    @property
    def result(self):
        """Of a game that has ended."""
        return "1/2-1/2" if self.end != "mate" else "0-1" if self.white else "1-0"

    def check_end(self, engine):
        """With the game over by rule there is no move; repetition is the interface's to claim."""
        best = engine.go("go depth 3", self.line()).best
        over = self.end in ("mate", "stalemate") or self.end != "repetition" and len(self.legal) > 1
        assert best == "a8a8" if over else best in self.legal, (best, self.end, self.line())


class Clocks:
    """Two clocks, in milliseconds."""

    def __init__(self, base, increment=0, session=0):
        self.left, self.base, self.increment = [base, base], base, increment
        self.session = session  # moves per control, told to the engine as "movestogo"
        self.done = [0, 0]

    def text(self, side):
        text = "wtime {} btime {}".format(*(int(x) for x in self.left))
        if self.increment:
            text += f" winc {self.increment} binc {self.increment}"
        return text + (f" movestogo {self.session - self.done[side]}" if self.session else "")

    def spend(self, side, seconds):
        """Takes a move's time off; by how many milliseconds that was more than the clock had."""
        over = seconds * 1000 - self.left[side]
        self.left[side] = max(10, -over) + self.increment
        self.done[side] += 1
        if self.session and self.done[side] == self.session:
            self.done[side], self.left[side] = 0, self.base
        return over
