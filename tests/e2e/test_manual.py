"""Compares the manual pages with the tools' --help."""

import os
import re
import shutil
import subprocess
from pathlib import Path

import pytest

from chesskit import BRIVOK, ROOT, run_tool

PAGES = sorted((ROOT / "docs/man").iterdir())
TOOLS = [page.stem for page in PAGES if page.suffix == ".1"]
OPTION = re.compile(r"(?<![\w-])--?[a-z][\w-]*")


def help_of(*command):
    return run_tool(*command, "--help").stdout


@pytest.mark.parametrize("name", TOOLS)
def test_options(name):
    tool = Path(BRIVOK).with_name(name)
    said = help_of(tool)
    commands = re.findall(r"^  (\w+) ", said[said.index("Subcommands:"):], re.M)
    options = set(OPTION.findall(said + "".join(help_of(tool, word) for word in commands)))
    page = (ROOT / f"docs/man/{name}.1").read_text().replace("\\-", "-")
    described = page[page.index(".SH DESCRIPTION"):page.index(".SH EXIT STATUS")]
    assert set(OPTION.findall(described)) == options
    described = described.partition(".SH ENVIRONMENT")[0]
    assert set(re.findall(r"^\.TP\n\.B (\w+)$", described, re.M)) == set(commands)


@pytest.mark.skipif(not shutil.which("man"), reason="no man")
@pytest.mark.parametrize("page", PAGES, ids=[page.name for page in PAGES])
def test_layout(page):
    done = subprocess.run(["man", "--warnings", "--local-file", page], capture_output=True,
                          text=True, env={**os.environ, "LC_ALL": "C.UTF-8", "MANROFFSEQ": ""})
    assert done.returncode == 0 and done.stderr == ""
    assert '"Brivok @PROJECT_VERSION@"' in page.read_text()
