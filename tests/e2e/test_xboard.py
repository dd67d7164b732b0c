"""Whole games under a real interface: xboard, without a window, lets the engine play itself."""

import os
import re
import subprocess

import pytest

from chesskit import BRIVOK, PATH, PATIENCE, SLOW, Game, claim, installed, read_san

XBOARD, XVFB = (installed(name) for name in ("xboard", "xvfb-run"))
# The engines make all claims. xboard checks each one and counts a false claim as a loss.
QUIET = ["-noGUI", "-popupExitMessage", "false", "-popupMoveErrors", "false", "-soundProgram", "",
         "-saveSettingsOnExit", "false", "-matchPause", "20", "-testClaims", "true", "-checkMates",
         "false", "-materialDraws", "false", "-trivialDraws", "false", "-repeatsToDraw", "9",
         "-ruleMoves", "60"]
# xboard sends these to any engine. The plain one calls them unknown, and xboard continues. A result
# is unknown only to an engine that already thinks about its next move.
UNKNOWN = re.compile(r"Error \(Unknown command\): (?:ics -|computer|name Brivok 4\.0\.3|result .+)")
# A game to continue, with a mate in eight moves. A position will not do: setting one up begins a
# new game, which resets the time control.
OPENING = """[Result "*"]

1. d4 e6 2. Nf3 f5 3. Nc3 Nf6 4. Bg5 Be7 5. Bxf6 Bxf6 6. e4 fxe4 7. Nxe4 b6 8. Ne5 O-O 9. Bd3 Bb7
10. Qh5 Qe7 *
"""

# xboard writes Fischer-random castling rights as files unless it is told otherwise, and only the
# modern engine reads that.
RIGHTS = [f"-{side}NeedsNoncompliantFEN" for side in ("first", "second")]
RIGHTS = [RIGHTS[0], "KQkq -", RIGHTS[1], "KQkq -"]
FISCHER = ["-variant", "fischerandom", "-defaultFrcPosition", "342"]

SD = "2" if SLOW else "4"
MATCHES: list[tuple[str, int, list[str], str, str | None]] = [
    ("sd", 2, ["-depth", SD, "-xponder"], f"sd {SD}", None),
    ("fischerandom", 2, ["-depth", SD, "-xponder", *FISCHER, *RIGHTS], f"sd {SD}", None),
    ("nocastle", 1, ["-depth", SD, "-ponder", "-variant", "nocastle"], f"sd {SD}", None),
    ("modern fischerandom", 2, ["-depth", SD, "-ponder", *FISCHER], f"sd {SD}", None)]
MATCHES += [] if SLOW else [
    ("conventional", 1, ["-tc", "0:04", "-mps", "40", "-inc", "-1", "-ponder"], "level 40 0:04 0",
     None),
    ("increment", 1, ["-tc", "0:02", "-inc", "1", "-xponder"], "level 0 0:02 1", OPENING),
    ("st", 1, ["-st", "0:01", "-xponder"], "st 1", OPENING),
    ("modern conventional", 1, ["-tc", "0:04", "-mps", "40", "-inc", "-1", "-ponder"],
     "level 40 0:04 0", None),
    ("modern increment", 1, ["-tc", "0:03", "-inc", "0.1", "-ponder"], "level 0 0:03 0.1", None)]


def read_pgn(text):
    """(tags, SAN moves, reason, result) of each game."""
    for game in re.findall(r"((?:\[.+\]\n)+)\n((?:.+\n)+)", text):
        tags = dict(re.findall(r'\[(\w+) "(.*)"\]', game[0]))
        [(reason, result)] = re.findall(r"\{([^}]*)\}\s+(\S+)\s*$", game[1])
        moves = re.sub(r"\{[^}]*\}|\d+\.(?: \.\.\.)?", " ", game[1]).split()[:-1]
        yield tags, moves, reason, result


@pytest.mark.skipif(not (XBOARD and XVFB), reason="neither xboard nor a way to install it")
@pytest.mark.parametrize("name, games, arguments, told, start",
                         MATCHES, ids=[x[0] for x in MATCHES])
def test_match(tmp_path, referee, name, games, arguments, told, start):
    modern = name.startswith("modern")
    if modern:
        (tmp_path / "brivok.ini").write_text("ModernInterface: true\n")
    command = [XVFB, "-a", XBOARD, *QUIET, "-fcp", BRIVOK, "-scp", BRIVOK, "-fd", tmp_path, "-sd",
               tmp_path, "-mg", str(games), "-debug", "-nameOfDebugFile", tmp_path / "debug.txt",
               "-sgf", tmp_path / "games.pgn", *arguments]
    if start:
        (tmp_path / "start.pgn").write_text(start)
        command += ["-lgf", tmp_path / "start.pgn"]
    done = subprocess.run(command, capture_output=True, text=True, timeout=PATIENCE * 4,
                          env={**os.environ, "HOME": str(tmp_path), "PATH": PATH})
    assert "final score" in done.stderr, done

    debug = (tmp_path / "debug.txt").read_text("latin-1")
    for side in ("first ", "second"):
        assert f">{side}: {told}\n" in debug
        assert ("-ponder" in arguments) == (f"<{side}: Hint: " in debug)
    said = [x for x in debug.splitlines() if re.search("error|illegal|forfeit|flag fell", x, re.I)]
    assert [x for x in said if modern or not UNKNOWN.fullmatch(x.split(": ", 1)[1])] == []

    fischer = "fischerandom" in name
    assert not fischer or ": move O-O" in debug

    played = list(read_pgn((tmp_path / "games.pgn").read_text("latin-1")))
    assert len(played) == games
    for tags, moves, reason, result in played:
        fen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w - - 0 1" if name == "nocastle" else ""
        fen = tags.get("FEN", fen)
        game = Game(referee, "fen " + fen if fen else "startpos", fischer)
        for san in moves:
            assert game.end is None, (game.end, tags, moves)
            game.push(read_san(san, game.legal, game.fen))
        assert game.end, (reason, game.fen)
        assert reason == claim(game.end, game.side), (reason, game.end)
        assert result == tags["Result"] == {"Black mates": "0-1", "White mates": "1-0"}.get(
            reason, "1/2-1/2")
