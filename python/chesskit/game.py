"""A game as the referee sees it, its clocks, and adjudication."""

import copy

from chesskit.board import is_dead
from chesskit.errors import IllegalMove
from chesskit.notation import write_san
from chesskit.referee import Rules
from chesskit.uci import Reply

DRAW = "1/2-1/2"

# Adjudication: scores in centipawns as the side to move sees them, counted in plies.
WON, WON_PLIES = 400, 6  # both sides say so, on three moves each
EVEN, EVEN_PLIES, EVEN_FROM = 10, 12, 60  # both sides, on six moves each, from move 31 on


class Game:
    """The moves from `start`, which is "startpos" or "fen ...", and the position behind them."""

    def __init__(self, referee: Rules, start: str = "startpos", fischer: bool = False,
                 fifty: int = 101) -> None:
        """`fifty`: half-moves without a pawn move or a capture that make a draw. The rules say 100;
        the engine takes a game for drawn one later."""
        self.referee, self.fischer, self.fifty = referee, fischer, fifty
        self.restart(start)

    def restart(self, start: str) -> None:
        """Begins again, from here."""
        self.start = start
        self.moves: list[str] = []
        self.theirs: list[str] = []  # the same in the referee's words
        self.sans: list[str] = []  # the same as SAN, with marks of check and mate
        self.seen: list[list[str]] = []  # all positions, but for the counters
        self._look()

    def _look(self) -> None:
        self.legal, self.fen, self.check = self.referee.look(self.start, self.theirs, self.fischer)
        self.seen.append(self.fen.split()[:4])

    def line(self, *guess: str) -> str:
        """The UCI line that sets up the position, or one after further moves."""
        return f"position {self.start} moves {' '.join([*self.moves, *guess])}"

    def push(self, move: str) -> None:
        if move not in self.legal:
            raise IllegalMove(f"illegal move {move} after {self.line()}")
        san = write_san(move, self.legal, self.fen)
        self.theirs.append(self.legal[move])
        self.moves.append(move)
        self._look()
        self.sans.append(san + ("" if not self.check else "+" if self.legal else "#"))

    def pop(self, moves: int = 1) -> None:
        """Takes back so many moves of those that there are."""
        kept = len(self.moves) - moves
        del self.moves[kept:], self.theirs[kept:], self.sans[kept:], self.seen[kept:]
        self._look()

    def branch(self, *moves: str) -> "Game":
        """The game after further moves. This one stays as it is."""
        twin = copy.copy(self)
        twin.moves, twin.theirs = self.moves.copy(), self.theirs.copy()
        twin.sans, twin.seen = self.sans.copy(), self.seen.copy()
        for move in moves:
            twin.push(move)
        return twin

    def play(self, reply: Reply) -> None:
        """Plays the move of a search. The move to ponder on must be legal too."""
        self.push(reply.best)
        if reply.ponder and reply.ponder not in self.legal:
            raise IllegalMove(f"illegal move to ponder on: {reply.ponder} after {self.line()}")

    @property
    def white(self) -> bool:
        """White is to move."""
        return self.fen.split()[1] == "w"

    @property
    def side(self) -> int:
        """Whose turn it is, as an index: 0 is White."""
        return 0 if self.white else 1

    @property
    def end(self) -> str | None:
        """The reason why the game is over, if it is."""
        if not self.legal:
            return "mate" if self.check else "stalemate"
        if is_dead(self.fen):
            return "insufficient"
        if int(self.fen.split()[4]) >= self.fifty:
            return "fifty"
        return "repetition" if self.seen.count(self.seen[-1]) >= 3 else None

    @property
    def result(self) -> str:
        """Of a game that has ended."""
        return DRAW if self.end != "mate" else "0-1" if self.white else "1-0"


class Clocks:
    """Two clocks, in milliseconds; White's is the first."""

    def __init__(self, base: float, increment: float = 0, session: int = 0) -> None:
        self.left: list[float] = [base, base]
        self.base, self.increment = base, increment
        self.session = session  # moves per control, told to the engine as "movestogo"
        self.done = [0, 0]

    def text(self, side: int) -> str:
        """The part of a "go" that tells the clocks."""
        text = "wtime {} btime {}".format(*(int(x) for x in self.left))
        if self.increment:
            text += f" winc {self.increment} binc {self.increment}"
        return text + (f" movestogo {self.session - self.done[side]}" if self.session else "")

    def spend(self, side: int, seconds: float) -> float:
        """Takes a move's time off; by how many milliseconds that was more than the clock had."""
        over = seconds * 1000 - self.left[side]
        self.left[side] = max(10, -over) + self.increment
        self.done[side] += 1
        if self.session and self.done[side] == self.session:
            self.done[side], self.left[side] = 0, self.base
        return over


class Adjudicator:
    """Ends a game that both sides see as won or as even for long enough."""

    def __init__(self) -> None:
        self.won = self.even = 0  # plies on end with such scores; won < 0: for Black

    def result(self, score: int, white: bool, plies: int) -> str | None:
        """None while the game goes on. `score` is that of the side to move after so many plies."""
        score = score if white else -score
        self.won = (max(self.won, 0) + 1 if score >= WON else
                    min(self.won, 0) - 1 if score <= -WON else 0)
        self.even = self.even + 1 if abs(score) <= EVEN and plies >= EVEN_FROM else 0
        if abs(self.won) == WON_PLIES:
            return "1-0" if self.won > 0 else "0-1"
        return DRAW if self.even == EVEN_PLIES else None
