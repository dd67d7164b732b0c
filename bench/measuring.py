"""What bench/compare and bench/engines share: builds, runs of brivok-bench, ratios."""

import json
import statistics
import subprocess
import sys
from pathlib import Path


class MeasuringError(Exception):
    """Ends the script with its text and code 1."""


def program(build, name):
    """A program of a build folder."""
    path = Path(build).resolve() / "bin" / name
    if not path.is_file():
        raise MeasuringError(f"{path} is not there; build it: cmake --build {build}")
    return path


def bench(tool, arguments):
    """What brivok-bench measures. It fails, but measures, when the signature has changed."""
    done = subprocess.run([tool, *arguments, "--json"], capture_output=True, text=True)
    if not done.stdout.startswith("{"):
        raise MeasuringError(f"{tool} {' '.join(arguments)}: {done.stderr or done.stdout}".rstrip())
    return json.loads(done.stdout)


def with_spread(ratios):
    """The median, the lowest and the highest."""
    return statistics.median(ratios), min(ratios), max(ratios)


def spread_text(ratios):
    middle, lowest, highest = with_spread(ratios)
    return f"{middle:.3f} ({lowest:.3f} to {highest:.3f})"


def run_script(main):
    """Runs main(); an error is told in a line."""
    try:
        sys.exit(main())
    except MeasuringError as error:
        sys.exit(f"{Path(sys.argv[0]).name}: {error}")
    except KeyboardInterrupt:
        sys.exit(130)
