"""scripts/check_layers.py catches an include against the arrows, and nothing else."""

import subprocess
import sys
from pathlib import Path

import pytest

SCRIPT = Path(__file__).resolve().parent.parent / "scripts" / "check_layers.py"
LIBRARIES = """
# brivok_library(brivok_nothing FOLDER nothing)
brivok_library(brivok_base FOLDER shell/base)
brivok_library(brivok_board FOLDER board LINKS brivok_base)
brivok_library(brivok_search FOLDER search LINKS brivok_board)
brivok_library(brivok_shell FOLDER shell
    LINKS brivok_search Threads::Threads)
"""


def run(root, sources, libraries=LIBRARIES):
    (root / "CMakeLists.txt").write_text(libraries)
    for name, text in sources.items():
        (root / name).parent.mkdir(parents=True, exist_ok=True)
        (root / name).write_text(text)
    return subprocess.run([sys.executable, SCRIPT, root], capture_output=True, text=True)


HEADERS = {f"src/{name}": "" for name in ("shell/base/log.h", "board/board.h", "shell/uci.h")}


def test_includes_along_the_arrows_pass(tmp_path):
    sources = HEADERS | {
        "src/search/think.cpp": '#include "shell/base/log.h"\n#include "board/board.h"\n',
        "src/search/root.cpp": "#include <map>\n",
        "src/main.cpp": '#include "shell/uci.h"\n',
        "apps/book/main.cpp": '#include "shell/uci.h"\n',
        "tests/helper.h": "",
        "tests/board_test.cpp": '#include "helper.h"\n#include "board/board.h"\n',
    }
    result = run(tmp_path, sources)
    assert (result.returncode, result.stderr) == (0, "")


@pytest.mark.parametrize(
    "file, line",
    [
        ("src/board/make.cpp", '#include "shell/uci.h"'),  # two steps up
        ("src/shell/base/log.cpp", '#  include "board/board.h"'),  # a base folder is a layer too
        ("src/board/make.cpp", '#include "../shell/uci.h"'),
        ("src/board/make.cpp", "#include <shell/uci.h>"),
        ("src/board/make.cpp", '#include "board/gone.h"'),
        ("tests/board_test.cpp", '#include "gone.h"'),
        ("src/stray/stray.cpp", '#include "board/board.h"'),  # a folder without a library
    ],
)
def test_violation_is_named_with_its_line(tmp_path, file, line):
    result = run(tmp_path, HEADERS | {file: f"{line}\n"})
    assert result.returncode == 1
    assert result.stderr.startswith(f"{file}:1: ")


def test_wrong_list_of_libraries_fails(tmp_path):
    unknown = "brivok_library(brivok_a FOLDER a LINKS brivok_b)\n"
    cycle = unknown + "brivok_library(brivok_b FOLDER b LINKS brivok_a)\n"
    for libraries in (unknown, cycle):
        assert run(tmp_path, {}, libraries).returncode == 1
