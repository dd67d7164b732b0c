"""The page on a folder of tables: its figures, lines to mate, pictures and sums."""

import hashlib
import os
import re
import shutil
from html.parser import HTMLParser
from pathlib import Path
from xml.etree import ElementTree

import pytest

from chesskit import TABLES_TOOL, read_san, run_tool

EXAMPLES = ("kpk", "krk", "kbnk", "krkp", "kqkq")
MATED = re.compile(r"^(White|Black|White or Black) to move (mates|is mated) in (\d+) moves?: `(.+)`$",
                   re.M)
VOID = {"meta", "br"}


def tool(*arguments, code=0):
    done = run_tool(TABLES_TOOL, *arguments, code=code)
    return done.stdout + done.stderr


@pytest.fixture(scope="module")
def tables(tmp_path_factory):
    """Tables of three men with records, and some of four men without, if they are there."""
    folder = tmp_path_factory.mktemp("tables")
    tool("make", "3men", "-o", folder)
    if "BRIVOK_TABLES" in os.environ:
        for file in Path(os.environ["BRIVOK_TABLES"]).glob("*.nb?"):
            if len(file.stem) == 4:
                (folder / file.name).symlink_to(file)
    return folder


@pytest.fixture(scope="module")
def page(tables, tmp_path_factory):
    folder = tmp_path_factory.mktemp("report")
    assert "tables-report.md and .html" in tool("report", tables, "-o", folder)
    return folder


def details(markdown, name):
    found = re.search(rf"<code>{name}</code>.*?</details>", markdown, re.S)
    assert found, name
    return found[0]


def test_lines_end_in_mate(tables, page, referee):
    """Each line of the examples takes the moves that its heading says, by other rules than ours."""
    markdown = (page / "tables-report.md").read_text()
    seen = set()
    for name in EXAMPLES:
        if not (tables / f"{name}.nbw").exists():
            continue
        text = details(markdown, name)
        for found in MATED.finditer(text):
            mover, verb, moves, fen = found.groups()
            assert mover.split()[0][0].lower() == fen.split()[1]
            line = text[found.end():].split("\n\n")[1].replace("\\", "")
            words: list[str] = []
            for san in (word for word in line.split() if not word.endswith(".")):
                look = referee.look(f"fen {fen}", words)
                words.append(look.legal[read_san(san, look.legal, look.fen)])
            end = referee.look(f"fen {fen}", words)
            assert end.check and not end.legal, line
            assert len(words) == 2 * int(moves) - (verb == "mates"), line
            seen.add((name, mover, verb, int(moves)))
    assert {("kpk", "White", "mates", 28), ("krk", "Black", "is mated", 16)} <= seen
    if (tables / "krkp.nbw").exists():
        assert {("krkp", "Black", "mates", 43), ("kqkq", "White or Black", "mates", 13)} <= seen


def test_figures_are_those_of_the_files(tables, page):
    markdown = (page / "tables-report.md").read_text()
    groups = re.findall(r"^\| \[(.+?)\]\(#(.+?)\) \|", markdown, re.M)
    assert ("One man against the king", "one-man-against-the-king") in groups
    assert [head for head, _ in groups] == re.findall(r"^## (.+)$", markdown, re.M)[2:]
    for name, side in (("kpk", "nbw"), ("krk", "nbb"), ("krk", "nbw"), ("krkp", "nbw")):
        file = tables / f"{name}.{side}"
        if not file.exists():
            continue
        entries = file.read_bytes()  # of one byte; a positive one is a win
        values = [byte - 256 * (byte > 127) for byte in entries]
        broken, wins = values.count(127), sum(0 < value < 127 for value in values)
        counts = (len(values), wins, values.count(0), len(values) - broken - wins - values.count(0))
        row = next(line for line in markdown[markdown.index(f"| `{name}` |"):].splitlines()
                   if ("White" if side == "nbw" else "Black") in line).split(" | ")[2:6]
        assert [int(cell.split()[0].replace(",", "")) for cell in row] == list(counts)
        if wins:
            assert row[1].endswith(f"({100 * wins / (len(values) - broken):.1f} %)")
    without = len(list(tables.glob("*.nbw"))) - 5
    assert not without or f"{without} tables here have no record" in markdown.replace("\n", " ")


class Nesting(HTMLParser):
    """Fails at a tag that closes another one."""

    def __init__(self):
        super().__init__()
        self.open, self.ids, self.links = [], set(), set()

    def handle_starttag(self, tag, attrs):
        if tag not in VOID:
            self.open.append(tag)
        self.ids.update(value for name, value in attrs if name == "id")
        self.links.update(value for name, value in attrs if name in ("href", "src"))

    def handle_startendtag(self, tag, attrs):
        pass

    def handle_endtag(self, tag):
        assert self.open.pop() == tag


def test_page_is_whole(page):
    """The HTML page needs nothing else, its links have ends; the pictures of the other are there."""
    html = Nesting()
    html.feed((page / "tables-report.html").read_text())
    assert not html.open and html.links <= {f"#{name}" for name in html.ids}
    assert {"#krk", "#one-man-against-the-king"} <= html.links
    named = set(re.findall(r"\]\(tables/(.+?)\)", (page / "tables-report.md").read_text()))
    assert named == {file.name for file in (page / "tables").iterdir()}
    for name in named:
        picture = ElementTree.parse(page / "tables" / name).getroot()
        assert picture.findtext("{*}title") and picture.find("{*}style") is not None
        assert {"nan", "inf"}.isdisjoint(re.findall(r"[a-z]+", " ".join(
            value for shape in picture.iter() for value in shape.attrib.values())))


def test_sums_and_absent_files(tables, tmp_path):
    for file in tables.glob("k?k.*"):
        shutil.copy(file, tmp_path)
    listed = (line.split("  ") for line in tool("report", tmp_path, "--sums", "plain").splitlines())
    sums = {name: digest for digest, name in listed}
    assert sums == {file.name: hashlib.sha256(file.read_bytes()).hexdigest()
                    for file in tmp_path.glob("*.nb?")}
    assert "kpk.nbw.emd: no such file" in tool("report", tmp_path, "--sums", "packed", code=1)
    (tmp_path / "kbk.nbb").unlink()
    record = tmp_path / "kqk.json"
    right = record.read_text()
    record.write_text(re.sub(r'"fen": ".*? w ', '"fen": "8/8/8/8/8/2k5/Q7/K7 w ', right))
    assert f"{record}: tells of another longest mate" in tool("report", tmp_path, code=1)
    record.write_text(right)
    os.truncate(tmp_path / "kqk.nbw", 100)
    assert "kqk.nbw: is not the file that its record tells of" in tool("report", tmp_path, code=1)
    for file in (*tmp_path.glob("kqk.nb?"), *tmp_path.glob("krk.nb?")):
        file.unlink()
    tool("report", tmp_path, "-o", tmp_path)
    markdown = (tmp_path / "tables-report.md").read_text()
    assert "a file is missing: `kbk`." in markdown
    assert re.search(r"line ends here: k[qr]k\.nb. is missing\.", details(markdown, "kpk"))
    shutil.rmtree(tmp_path / "tables")
    for file in tmp_path.glob("k*"):
        file.unlink()
    assert "no complete tables" in tool("report", tmp_path, code=1)
