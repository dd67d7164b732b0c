"""What can go wrong with an engine or a game."""


class ChessError(Exception):
    """Base of all errors of this package; the text is for the user."""


class IllegalMove(ChessError):
    """A move that the rules do not allow."""
