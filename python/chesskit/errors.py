"""What can go wrong with an engine or a game, and how a script ends on it."""

import sys
from collections.abc import Callable
from pathlib import Path
from typing import TYPE_CHECKING, NoReturn

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


def run_script(main: Callable[[], int]) -> NoReturn:
    """Runs main() and exits with its code. An error is told in a line, with code 1."""
    try:
        sys.exit(main())
    except ChessError as error:
        sys.exit(f"{Path(sys.argv[0]).name}: {error}")
    except KeyboardInterrupt:
        sys.exit(130)
