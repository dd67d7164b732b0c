"""scripts/check_layers.py catches an include against the arrows, and nothing else; and
scripts/draw_map.py draws those arrows."""

import subprocess
import sys
from pathlib import Path

import pytest

SCRIPTS = Path(__file__).resolve().parent.parent / "scripts"
FILES = {
    "CMakeLists.txt": """
# brivok_library(brivok_nothing FOLDER nothing)
brivok_library(brivok_base FOLDER shell/base)
brivok_library(brivok_board FOLDER board LINKS brivok_base)
brivok_library(brivok_search FOLDER search LINKS brivok_base brivok_board)
brivok_library(brivok_shell FOLDER shell
    LINKS brivok_search Threads::Threads)
add_executable(brivok src/main.cpp)
target_link_libraries(brivok PRIVATE brivok_shell)
""",
    "apps/book/CMakeLists.txt": """
add_library(brivok_book_tool STATIC ${sources})
target_link_libraries(brivok_book_tool PUBLIC brivok_board)
target_link_libraries(brivok-book PRIVATE brivok_book_tool CLI11::CLI11)
""",
    "fuzz/CMakeLists.txt": """
add_library(brivok_fuzz OBJECT "${CMAKE_SOURCE_DIR}/tests/guest.cpp")
target_link_libraries(brivok_fuzz PUBLIC brivok_search brivok_book_tool)
""",
    "docs/architecture.md": """
| Folder | What is there | What it includes |
| --- | --- | --- |
| `src/main.cpp` | | `shell` |
| `src/shell/` | | `search` |
| `src/search/` | | `board`, `shell/base` |
| `src/board/` | | `shell/base` |
| `src/shell/base/` | | nothing |
| `apps/book/` | | `board` |
| `fuzz/` | | `apps/book`, `search` |
""",
    "src/shell/base/log.h": "",
    "src/board/board.h": '#include "shell/base/log.h"\n',
    "src/search/think.cpp": '#include <map>\n#include "shell/base/log.h"\n#include "board/board.h"\n',
    "src/search/think.h": "",
    "src/shell/uci.h": "#include <search/think.h>\n",
    "src/main.cpp": '#include "shell/uci.h"\n',
    "apps/command_line.h": "",
    "apps/book/pgn.h": '#include "board/board.h"\n#include "../command_line.h"\n',
    "apps/book/main.cpp": '#include "pgn.h"\n',
    "fuzz/pgn_fuzz.cpp": '#include "helper.h"\n#include "../apps/book/pgn.h"\n',
    "tests/helper.h": "",
    "tests/guest.h": '#include "search/think.h"\n',
    "tests/guest.cpp": '#include "guest.h"\n',
    "tests/board_test.cpp": '#include "helper.h"\n#include "board/board.h"\n#include "shell/uci.h"\n',
}


def run(root, more, script="check_layers.py", *arguments):
    for name, text in (FILES | more).items():
        (root / name).parent.mkdir(parents=True, exist_ok=True)
        (root / name).write_text(text)
    return subprocess.run([sys.executable, SCRIPTS / script, *arguments, root],
                          capture_output=True, text=True)


def test_includes_along_the_arrows_pass(tmp_path):
    result = run(tmp_path, {})
    assert (result.returncode, result.stderr) == (0, "")


@pytest.mark.parametrize(
    "file, line",
    [
        ("src/board/make.cpp", '#include "shell/uci.h"'),  # two steps up
        ("src/shell/base/log.cpp", '#  include "board/board.h"'),  # a base folder is a layer too
        ("src/board/make.cpp", '#include "../shell/uci.h"'),
        ("src/board/make.cpp", "#include <shell/uci.h>"),
        ("src/board/make.cpp", '#include "helper.h"'),
        ("src/shell/uci.cpp", '#include "board/board.h"'),  # linked by what it links only
        ("src/board/make.cpp", '#include "board/gone.h"'),
        ("tests/new_test.cpp", '#include "gone.h"'),
        ("src/stray/stray.cpp", '#include "board/board.h"'),  # a folder without a library
        ("apps/book/book.cpp", '#include "search/think.h"'),
        ("fuzz/fen_fuzz.cpp", '#include "board/board.h"'),
        ("tests/guest.cpp", '#include "board/board.h"'),
    ],
)
def test_violation_is_named_with_its_line(tmp_path, file, line):
    result = run(tmp_path, {file: f"{line}\n"})
    assert result.returncode == 1
    assert result.stderr.startswith(f"{file}:1: ")


@pytest.mark.parametrize(
    "file, text, said",
    [
        ("src/shell/uci.h", "", "src/shell links src/search"),  # which nothing needs
        ("apps/book/pgn.h", "", "apps/book links src/board"),
        ("CMakeLists.txt", "brivok_library(brivok_a FOLDER a LINKS brivok_b)", "brivok_b"),
        ("CMakeLists.txt", FILES["CMakeLists.txt"].replace(
            "shell/base)", "shell/base LINKS brivok_board)"), "links itself"),
        ("docs/architecture.md", FILES["docs/architecture.md"].replace("`board` |", "`shell` |"),
         "apps/book includes `board`"),
        ("docs/architecture.md", FILES["docs/architecture.md"].replace("`src/board/`", "board"),
         "no row for src/board"),
    ],
)
def test_wrong_links_and_a_wrong_map_fail(tmp_path, file, text, said):
    result = run(tmp_path, {file: text})
    assert result.returncode == 1
    assert said in result.stderr


def test_map_has_the_arrows_that_do_not_follow_from_others_and_is_held_to_them(tmp_path):
    result = run(tmp_path, {}, "draw_map.py")
    assert (result.returncode, result.stderr) == (0, "")
    picture = (tmp_path / "docs/map.svg").read_text()
    assert picture.count('<path class="arrow"') == 7  # of 8 links: search reaches shell/base by board
    assert run(tmp_path, {}, "draw_map.py", "--check").returncode == 0

    page = FILES["docs/architecture.md"]
    for changed in (page.replace("| `src/shell/` | |", "| `src/shell/` | protocols: two |"),
                    page.replace("| `src/shell/` | |", "")):
        assert run(tmp_path, {"docs/architecture.md": changed}, "draw_map.py", "--check").returncode == 1
    assert (tmp_path / "docs/map.svg").read_text() == picture
