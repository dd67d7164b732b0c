"""The installation, in a folder with a space in its name, and its start script."""

import os
import re
import resource
import shutil
import subprocess
from pathlib import Path
from typing import Any

import pytest

from chesskit import BRIVOK, PATIENCE, SLOW

CMAKE = shutil.which("cmake") or ""
pytestmark = pytest.mark.skipif(SLOW or not CMAKE, reason="no cmake, or the sanitizers")
TALK = b"uci\nposition startpos\ngo movetime 3000\n"


@pytest.fixture(scope="session")
def prefix(tmp_path_factory):
    stage = tmp_path_factory.mktemp("stage")
    subprocess.run([CMAKE, "--install", Path(BRIVOK).parents[1], "--prefix", "/opt/new one"],
                   env={**os.environ, "DESTDIR": str(stage)}, check=True, capture_output=True)
    return stage / "opt/new one"


@pytest.fixture
def user(prefix, tmp_path):
    """A user with a home folder. A call starts the installed engine and returns the process."""
    (tmp_path / "home").mkdir()

    def start(program=prefix / "bin/brivok", cwd=tmp_path, home=tmp_path / "home", **more):
        environment = {"PATH": os.environ["PATH"], "XDG_DATA_HOME": "not/absolute"}
        environment |= {"HOME": str(home)} if home else {}
        return subprocess.Popen([program], cwd=cwd, env=environment, stdin=subprocess.PIPE,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, **more)

    return start


@pytest.fixture
def folder(tmp_path):
    """The folder of the user's files."""
    return tmp_path / "home/.local/share/brivok"


def talk(process, lines=TALK):
    """Standard error of a start. The engine must answer as it should, with a book move."""
    out, errors = process.communicate(lines, PATIENCE)
    assert process.returncode == 0, errors
    if lines is TALK:
        assert re.fullmatch(rb"id name (?:.+\n)+\nbestmove \w{4} \n", out), out
    return errors.decode()


def content(folder):
    return {str(x.relative_to(folder)): x.read_bytes() for x in folder.rglob("*") if x.is_file()}


def test_first_start(prefix, user, folder):
    # Several at once, as an interface starts them for a tournament.
    assert [talk(process) for process in [user() for _ in range(8)]] == [""] * 8
    assert content(folder) == content(prefix / "share/brivok")
    assert len(content(folder)) >= 5
    built = [x.name for x in Path(BRIVOK).parent.iterdir()
             if re.match(r"brivok(-bench)?(-x86|$)", x.name)]
    assert sorted(x.name for x in (prefix / "libexec/brivok").iterdir()) == sorted(built)
    assert not (folder / "brivok.ini").is_symlink()
    assert (folder / "libro.bin").is_symlink()


def test_next_start_keeps_the_users_files(prefix, user, folder):
    talk(user())
    settings = folder / "brivok.ini"
    settings.write_text(settings.read_text().replace("CreateLog: false", "CreateLog: true"))
    (folder / "libro.bin").unlink()
    (folder / "libro.bin").touch()
    subprocess.run([prefix / "bin/brivok-tables", "pack", folder / "kqk.nbw"], check=True)
    kept = {name: (folder / name).read_bytes()
            for name in ("brivok.ini", "libro.bin", "kqk.nbw.emd")}
    links = {"kqk.nbw": None, "krk.nbw": "/gone/share/brivok/krk.nbw",
             "suites/tactical.epd": None, "suites/endings.epd": "/media/disc/endings.epd"}
    for name, target in links.items():
        (folder / name).unlink()
        if target:
            (folder / name).symlink_to(target)

    assert talk(user(), b"xboard\nquit\n") == ""
    after = content(folder)
    assert {name: after[name] for name in kept} == kept
    assert "logs/" in str(after.keys())
    assert "kqk.nbw" not in after
    assert {"krk.nbw", "suites/tactical.epd"} <= after.keys()
    assert os.readlink(folder / "suites/endings.epd") == links["suites/endings.epd"]


@pytest.mark.parametrize("program", ["new one/bin/brivok", "link"])
def test_any_place(prefix, user, tmp_path, program):
    """Moved to another folder or started through a link, the process becomes the engine itself."""
    shutil.copytree(prefix, tmp_path / "new one", symlinks=True)
    (tmp_path / "link").symlink_to("new one/bin/brivok")
    process = user(program=f"./{program}")
    process.stdin.write(b"uci\n")
    process.stdin.flush()
    process.stdout.readline()
    engine = tmp_path / "new one/libexec/brivok/brivok"
    # Or the same for a higher level of the processor.
    assert re.fullmatch(f"{engine}(-x86-64-v3)?", os.readlink(f"/proc/{process.pid}/exe"))
    assert talk(process, b"quit\n") == ""


@pytest.mark.parametrize("trouble, said", [
    ("unset", "HOME is not set"), ("missing", "there is no folder"), ("a file", "File exists"),
    ("no writing", "cannot create"), ("full", "cannot be completed")])
def test_trouble_at_home_stops_no_game(prefix, user, folder, tmp_path, trouble, said):
    arguments: dict[str, Any] = {}
    if trouble == "unset":
        arguments["home"] = None
    elif trouble == "missing":
        arguments["home"] = tmp_path / "nobody"
    elif trouble == "a file":
        folder.parent.mkdir(parents=True)
        folder.write_text("mine")
    elif trouble == "no writing":
        arguments["home"] = "/proc/self"
    else:
        arguments["preexec_fn"] = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (0, 0))
    before = content(prefix)

    errors = talk(user(**arguments))
    assert said in errors
    assert f"running in {prefix}/share/brivok" in errors
    assert content(prefix) == before
    assert not folder.is_dir() or content(folder) == {}
    assert not (tmp_path / "nobody").exists()
