import pytest

from chesskit import Brivok, Referee, installed


@pytest.fixture
def start(tmp_path, request):
    """Starts engines in an empty folder. Each must quit cleanly at the end of the test."""
    engines = []

    def make(kind=Brivok, **arguments):
        engines.append(kind(folder=tmp_path, **arguments))
        return engines[-1]

    yield make
    for engine in engines:
        if request.node.failed:
            engine.kill()
        else:
            engine.finish()


@pytest.fixture
def engine(start):
    return start()


@pytest.fixture(scope="session")
def referee():
    if not installed("stockfish"):
        pytest.skip("no stockfish to act as referee")
    process = Referee()
    yield process
    assert process.quit(10)


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    result = yield
    item.failed = getattr(item, "failed", False) or result.get_result().failed
