"""The standing of a match, and the rating difference behind it."""

import math

DEVIATIONS = 1.96  # of the mean, that 95 % of all matches stay within


def elo(share: float) -> float:
    """The rating difference for which this share of the points is expected."""
    if share in (0, 1):
        return math.copysign(math.inf, share - 0.5)
    return 400 * math.log10(share / (1 - share))


class Standing:
    def __init__(self, won: int = 0, drawn: int = 0, lost: int = 0) -> None:
        self.won, self.drawn, self.lost = won, drawn, lost

    def add(self, result: str, white: bool) -> None:
        """Counts a game of our side as White or as Black."""
        points = {"1-0": 1, "1/2-1/2": 0.5, "0-1": 0}[result]
        points = points if white else 1 - points
        self.won += points == 1
        self.drawn += points == 0.5
        self.lost += points == 0

    @property
    def games(self) -> int:
        return self.won + self.drawn + self.lost

    @property
    def points(self) -> float:
        return self.won + self.drawn / 2

    @property
    def share(self) -> float:
        return self.points / self.games

    def interval(self) -> tuple[float, float]:
        """95 % bounds of the share. One win and one loss are added to the games, so that a few
        games that are all won do not look certain."""
        won, lost, games = self.won + 1, self.lost + 1, self.games + 2
        mean = (self.points + 1) / games
        squares = won * (1 - mean) ** 2 + self.drawn * (0.5 - mean) ** 2 + lost * mean ** 2
        reach = DEVIATIONS * math.sqrt(squares) / games
        return max(0, mean - reach), min(1, mean + reach)

    def rating(self) -> tuple[float, float, float]:
        """The difference and its lower and upper bound."""
        low, high = self.interval()
        return elo(self.share), elo(low), elo(high)
