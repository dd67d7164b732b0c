"""What can go wrong with an engine or a game."""

from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from chesskit.process import Process


class ChessError(Exception):
    """Base of all errors of this package; the text is for the user."""


class EngineError(ChessError):
    """An engine has crashed, hangs, or says what it must not say."""

    def __init__(self, engine: "Process", text: str) -> None:
        super().__init__(text)
        self.engine = engine


class IllegalMove(ChessError):
    """A move that the rules do not allow."""
