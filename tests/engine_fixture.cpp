#include "engine_fixture.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include <nlohmann/json.hpp>

#include "board/coordinate.h"
#include "fresh_engine.h"
#include "movegen/generate.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "shell/base/application.h"

namespace brivok {

namespace {

/// Takes effect once per process. Searches poll standard input while they run.
bool closeInput() { return std::freopen("/dev/null", "r", stdin) != nullptr; }

}  // namespace

EngineTest::EngineTest() : board(theBoard) {
    static const bool closed = closeInput();
    EXPECT_TRUE(closed);
    if (theApplication == nullptr) theApplication = std::make_unique<Application>();
    theApplication->currentProtocol = Protocol::Uci;
    makeFresh();
}

void setPosition(std::string_view fen, Variant variant) {
    settings.variant = variant;
    theBoard.setPositionFromFen(fen);
}

bool playMoves(Board& board, const std::string& moves) {
    std::istringstream words(moves);
    for (std::string word; words >> word;) {
        const Move move = parseMove(board, word);
        if (move == NoMove) return false;
        board.playGameMove(move);
    }
    return true;
}

std::vector<Move> generatedMoves(Board& board) {
    MoveList list;
    generateForPosition(board, list);
    return {list, list + board.moveCount};
}

std::vector<Move> legalMoves(Board& board, const std::vector<Move>& generated) {
    std::vector<Move> legal;
    for (const Move move : generated) {
        if (leavesKingSafe(board, move)) legal.push_back(move);
    }
    return legal;
}

std::string textOf(const std::vector<Move>& moves) {
    std::string text;
    for (const Move move : moves) {
        if (!text.empty()) text += ' ';
        text += moveToCoordinate(move);
    }
    return text;
}

Move moveNamed(Board& board, std::string_view text) {
    for (const Move move : generatedMoves(board)) {
        if (moveToCoordinate(move) == text) return move;
    }
    return NoMove;
}

std::string snapshot(const Board& board) {
    std::string bytes;
    bytes.reserve(1024);
    const auto add = [&bytes](const auto&... fields) {
        (bytes.append(reinterpret_cast<const char*>(&fields), sizeof fields), ...);
    };
    add(board.sideToMove, board.squares, board.epSquare, board.castling, board.fiftyCount,
        board.material, board.pawnCount, board.pieceCount, board.phaseCount, board.kingStart,
        board.whiteRookStart, board.blackRookStart, board.kingSquare, board.hashKey, board.pawnKey,
        board.occRot90, board.occDiagNE, board.occDiagSE, board.colourOcc);
    for (const Piece piece : AllMen) {
        if (!isKing(piece)) add(board.pieces[piece]);
    }
    const std::uint32_t gamePly = board.gamePly();
    add(gamePly);
    return bytes;
}

void expectConsistent(const Board& board) {
    static Board other;
    other = board;
    other.recomputeDerived();
    EXPECT_TRUE(snapshot(other) == snapshot(board)) << "counters or sets";
    EXPECT_EQ(board.computeHashKey(), board.hashKey);
    EXPECT_EQ(board.computePawnKey(), board.pawnKey);
}

std::string dataPath(const std::string& name) { return BRIVOK_TEST_DATA "/" + name; }

nlohmann::json loadJson(const std::string& name) {
    std::ifstream file(dataPath(name));
    return nlohmann::json::parse(file);
}

std::uint64_t fromEnvironment(const char* name, std::uint64_t otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

}  // namespace brivok
