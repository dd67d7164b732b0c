"""Endgame tables in the engine: kinds of files, damaged files, and the output about hits."""

import re
import resource

import pytest

from chesskit import BRIVOK, SLOW, WinBoard, run_tool
from table_files import packed, plain

KQK = "8/8/8/3k4/8/8/8/Q2K4 w - - 0 1"
MATED_IN_8 = -118  # the byte of the file
SCORE = -32767 + 16 + 1  # of a probe at the root
INI = "EGTBDir: tables\nCreateLog: true\nLogInSingleFile: true\nOpeningsBook: false\n"


@pytest.fixture
def tables(tmp_path):
    folder = tmp_path / "tables"
    folder.mkdir()
    return folder


def refusal(folder, *lines, **more):
    """The output of an engine that must end with code 1 after these lines."""
    done = run_tool(BRIVOK, code=1, cwd=folder, input="\n".join([*lines, ""]), **more)
    assert done.stderr == ""
    return done.stdout


def log_of(folder):
    """The notes of the log."""
    return [x[3:] for x in (folder / "brivoklog.txt").read_text().splitlines()
            if x.startswith("## ")]


@pytest.mark.parametrize("name", ["kqk.nbb", "kqk.nbb.emd", "kqk_nbb.emd", "kqk_nbb_emd",
                                  "kqknbb.emd"])
def test_forms_of_files(start, tmp_path, tables, name):
    data = plain("kqk.nbb", MATED_IN_8)
    (tables / name).write_bytes(packed(data) if name.endswith("emd") else data)
    (tables / "knnknnnbw.emd").write_text("a short name is not for six men")
    engine = start(WinBoard, ini=INI)
    said = engine.ask(f"setboard {KQK}", "tbrep")
    assert len(said) == 21 and all(re.fullmatch(rf"\w+ -> {SCORE}", x) for x in said), said
    # With a black queen Black is the first side, and that side has no file.
    said = engine.ask("setboard 8/8/8/3K4/8/8/8/q2k4 w - - 0 1", "tbrep")
    assert said and all(x.endswith(" -> 0") for x in said)


DATA = plain("kqk.nbw", 1)
GOOD = packed(DATA)
DAMAGED = {
    "short": ("kqk.nbw", DATA[1:], "{} corrupted 25629 25629 25628"),
    "long": ("kqk.nbw", DATA + b"1", "{} corrupted 25629 25629 25630"),
    "wrong length": ("kqk.nbw.emd", packed(DATA + b"1"), "{} corrupted 25629 25629 25630"),
    "empty": ("kqk.nbw.emd", b"", "Unable to read {} - read error"),
    "signature": ("kqk_nbw.emd", b"X" + GOOD[1:], "Unable to read {} - read error"),
    "header": ("kqk_nbw_emd", GOOD[:90] + b"X" + GOOD[91:], "Unable to read {} - file broken"),
    "header size": ("kqknbw.emd", GOOD[:64] + bytes(4) + GOOD[68:],
                    "Unable to read {} - file broken"),
    "cut": ("kqk.nbw.emd", GOOD[:100], "Unable to read {} - out of memory"),
    "block size": ("kqk.nbw.emd", packed(DATA, 12), "{}: Unsupported block size 4096"),
    "part": ("krbkbn.0.nbw.emd", GOOD,
             "{} corrupted 2147483648 1349775104 25629"),
    "wide": ("krnknn.nbw.emd", GOOD, "{} corrupted 2723107830 2723107830 12814"),
}


@pytest.mark.parametrize("name, content, words", DAMAGED.values(), ids=DAMAGED)
def test_damaged_files_end_the_process(tmp_path, tables, name, content, words):
    (tables / name).write_bytes(content)
    (tmp_path / "brivok.ini").write_text(INI)
    line = f"*** {words.format(f'tables/{name}')}\n"
    assert refusal(tmp_path, "xboard", "ping 1") == "feature done=0\n" + line
    assert log_of(tmp_path)[-1] == "Checking for endgame tablebases in tables"
    said = refusal(tmp_path, "uci", "setoption name NalimovPath value tables", "isready")
    assert said.endswith(f"uciok\n{line}")
    # Without a setting it looks in the current folder, at once.
    assert refusal(tables, "quit") == f"*** {words.format(name)}\n"


def test_options(start, tmp_path):
    """The path becomes lower case, finds names with capitals all the same, and may hold spaces.
    Setting it again changes nothing."""
    (tmp_path / "My tables").mkdir()
    table = tmp_path / "My tables/KQK.nbb"
    table.write_bytes(plain("kqk.nbb", MATED_IN_8))
    (tmp_path / "brivok.ini").write_text("LogInSingleFile: true\n")
    engine = start(uci=False)
    engine.send("xboard", "uci")
    engine.wait("uciok")
    engine.set("CreateLog", "true")
    engine.set("NalimovPath", "none;My  Tables")
    engine.set("NalimovPath", "none;my Tables")
    engine.set("NalimovCache", 65)
    engine.set("NalimovCache", 3)
    infos = engine.go("go depth 4", f"position fen {KQK}").info
    assert infos and all(re.search(r" hashfull \d+ tbhits [1-9]\d* pv ", x) for x in infos)
    assert "score mate 9 " in infos[-1]
    engine.send("xboard", "uci")
    listing = engine.wait("uciok")
    assert "option name NalimovPath type string default none;my tables" in listing
    assert "option name NalimovCache type spin default 3 min 1 max 64" in listing
    engine.finish()
    about = [x for x in log_of(tmp_path) if re.search("EGTB|tables$|Tablebases", x)]
    assert about == ["Checking for endgame tablebases in none;my tables",
                     "Using 3-men Nalimov's Endgame Tablebases"]


def test_winboard_output(start, tmp_path, tables):
    (tables / "kqk.nbb").write_bytes(plain("kqk.nbb", MATED_IN_8))
    engine = start(WinBoard, ini=INI + "EGTBCacheMB: 2\n")
    engine.move("easy", "force", f"setboard {KQK}", "sd 4", "go")
    assert engine.thinking
    assert all(re.search(r"\|tbhits:[1-9]\d*\]$", m["extra"]) for m in engine.thinking)
    engine.finish()
    notes = log_of(tmp_path)
    assert notes[3:6] == ["Checking for endgame tablebases in tables",
                          "Using 3-men Nalimov's Endgame Tablebases",
                          "Allocated 2097152 bytes for EGTB cache"]
    line, = [x for x in notes if x.startswith("EGTB: ")]
    [(probes, hits, share)] = re.findall(r"^EGTB: \(P/H\): (\d+)/(\d+) \((.*)%\)$", line)
    assert 0 < int(hits) <= int(probes) and share == f"{int(hits) * 100 / (int(probes) + 1):.3f}"


@pytest.mark.skipif(SLOW, reason="a sanitizer needs its address space")
def test_refused_cache(tmp_path, tables):
    (tables / "kqk.nbb").write_bytes(plain("kqk.nbb", MATED_IN_8))
    (tmp_path / "brivok.ini").write_text(INI + "EGTBCacheMB: 4095\n")
    limit = 1 << 30
    said = refusal(tmp_path, "xboard", "ping 1",
                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
    assert said == "feature done=0\n"
    assert log_of(tmp_path)[-1] == "I couldn't allocate EGTB cache"
