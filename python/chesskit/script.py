"""How a script reads its command line, and how it ends."""

import argparse
import sys
from collections.abc import Callable
from pathlib import Path
from typing import NoReturn

from chesskit.errors import ChessError


def script_parser(doc: str | None) -> argparse.ArgumentParser:
    """A parser whose help begins with the docstring of the script."""
    return argparse.ArgumentParser(
        description=doc, formatter_class=argparse.RawDescriptionHelpFormatter)


def run_script(main: Callable[[], int]) -> NoReturn:
    """Runs main() and exits with its code. An error is told in a line, with code 1."""
    try:
        sys.exit(main())
    except ChessError as error:
        sys.exit(f"{Path(sys.argv[0]).name}: {error}")
    except KeyboardInterrupt:
        sys.exit(130)


def progress(text: str = "") -> None:
    """Shows on a terminal how far the script is. The next text replaces this one."""
    if sys.stderr.isatty():
        print(f"\r{text:40}\r", end="", file=sys.stderr, flush=True)
