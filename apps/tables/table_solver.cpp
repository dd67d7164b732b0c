#include "table_solver.h"

#include <algorithm>
#include <utility>

#include "board/coordinate.h"
#include "board/strict_fen.h"
#include "egtb/registration.h"
#include "egtb/signature.h"
#include "egtb/table_files.h"
#include "egtb/tablebase_probe.h"
#include "movegen/legal_moves.h"
#include "movegen/san.h"
#include "table_store.h"

namespace brivok::tables {
namespace {

using Result = PositionValue::Result;

constexpr std::uint32_t CacheBytes = 4'000'000;

/// Tables have positions with an en passant square only if a pawn could capture there.
void dropIdleEnPassant(Board& board) {
    if (board.epSquare == NoSquare) return;
    const auto& attackers = board.sideToMove == White ? blackPawnAttacks : whitePawnAttacks;
    const Bitboard pawns = board.pieces[pieceOf(Kind::Pawn, board.sideToMove)];
    if ((attackers[board.epSquare] & pawns) == 0) board.epSquare = NoSquare;
}

/// Calls visit(move) with each legal move made on the board.
template <class Visit>
void forEachMove(Board& board, Visit visit) {
    // The evasions lack some en passant captures.
    MoveList list;
    generateMoves(board, list);
    forEachLegalOf(board, generated(board, list), visit);
}

bool canMove(Board& board) {
    bool can = false;
    forEachMove(board, [&](Move) {
        can = true;
        return false;
    });
    return can;
}

/// A score of TablebaseProbe() at ply 0.
PositionValue valueOfScore(std::int32_t score) {
    constexpr std::int32_t MateNow = 32768;
    constexpr std::int32_t MatedNow = -32767;
    if (score == 0) return {Result::Draw, 0, ""};
    if (score > 0) return {Result::Win, static_cast<unsigned>(MateNow - score) / 2, ""};
    return {Result::Loss, static_cast<unsigned>(score - MatedNow) / 2, ""};
}

/// What a move is worth to its player, given what it leaves to the opponent.
PositionValue worthOfLeaving(PositionValue opponents) {
    switch (opponents.result) {
        case Result::Win: opponents.result = Result::Loss; break;
        case Result::Loss:
            opponents.result = Result::Win;
            ++opponents.moves;
            break;
        default: break;
    }
    return opponents;
}

/// The best of a position's moves; unknown unless all of them are known.
class BestChoice {
public:
    void add(const PositionValue& value) {
        allKnown = allKnown && value.isKnown();
        if (value.isBetterThan(best)) best = value;
    }
    [[nodiscard]] bool isKnown() const { return allKnown && best.isKnown(); }
    [[nodiscard]] const PositionValue& value() const { return best; }

private:
    bool allKnown = true;
    PositionValue best;
};

bool isRegistered(int id, unsigned side) {
    const TableSide* const files = tableSide(id, side).get();
    return files != nullptr && std::ranges::any_of(files->parts, [](const TablePart& part) {
               return !part.fileName.empty();
           });
}

/// SAN, with the origin in full where a file or a rank is not enough.
std::string nameOf(Board& board, Move move) {
    std::string name = moveToSan(board, move);
    if (isPawn(movePiece(move)) || readSan(board, name).move == move) return name;
    const std::string target = moveCapture(move) == Empty ? squareName(moveTo(move)) : "x";
    return name.substr(0, 1) + squareName(moveFrom(move)) + name.substr(name.find(target));
}

PieceCounts countMen(const Board& board) {
    PieceCounts counts{};
    for (std::size_t i = 0; i < CountedKinds; ++i) {
        for (const Side side : {White, Black}) {
            const int men = popCount(board.pieces[pieceOf(TableKinds[i], side)]);
            counts[(side == White ? 0 : CountedKinds) + i] = static_cast<std::uint8_t>(men);
        }
    }
    return counts;
}

/// The file for a position; its id is 0 if there is no such table.
TableFileName fileFor(const Board& board) {
    const PieceCounts counts = countMen(board);
    const PieceCounts swapped = withSidesSwapped(counts);
    for (const TablebaseDescriptor& table : tablebaseDescriptors) {
        const PieceCounts men = countsOf(table.signature());
        if (men != counts && men != swapped) continue;
        const Side first = men == counts ? White : Black;
        return {table.id, fileSide(table, board.sideToMove == first ? 0 : 1)};
    }
    return {};
}

PositionValue unknown(std::string reason) { return {Result::Unknown, 0, std::move(reason)}; }

/// The value without a look at the moves, unless there are none.
PositionValue lookUp(Board& board) {
    if (!canMove(board)) return {board.inCheck() ? Result::Loss : Result::Draw, 0, ""};
    if (board.isInsufficientMaterial()) return {Result::Draw, 0, ""};
    const TableFileName file = fileFor(board);
    if (file.id == 0) return unknown("no table has these men");
    const std::string name = tableFileName(file.id, file.side);
    if (!isRegistered(file.id, file.side)) return unknown(name + " is missing");
    std::int32_t score = 0;
    if (TablebaseProbe(board, 0, score)) return valueOfScore(score);
    // The engine forgets a file that it cannot read.
    if (!isRegistered(file.id, file.side)) throw AppError(name + " is damaged or cannot be read");
    return unknown(name + " has no value");
}

/// The same, or else the value that the moves imply.
PositionValue evaluate(Board& board) {
    PositionValue value = lookUp(board);
    if (value.isKnown()) return value;
    BestChoice best;
    forEachMove(board, [&](Move) { best.add(worthOfLeaving(lookUp(board))); });
    return best.isKnown() ? best.value() : value;
}

std::vector<SolvedMove> solveMoves(Board& board) {
    std::vector<SolvedMove> moves;
    forEachMove(board, [&](Move move) {
        moves.push_back({move, "", worthOfLeaving(evaluate(board))});
    });
    for (SolvedMove& move : moves) move.san = nameOf(board, move.move);
    std::ranges::sort(moves, [](const SolvedMove& a, const SolvedMove& b) {
        if (!a.value.equals(b.value)) return a.value.isBetterThan(b.value);
        return a.san < b.san;
    });
    return moves;
}

}  // namespace

bool PositionValue::isBetterThan(const PositionValue& other) const {
    if (result != other.result) return result > other.result;
    return result == Result::Loss ? moves > other.moves : moves < other.moves;
}

std::string PositionValue::text() const {
    switch (result) {
        case Result::Win: return "mate in " + std::to_string(moves);
        case Result::Draw: return "draw";
        case Result::Loss: return "mated in " + std::to_string(moves);
        default: return reason;
    }
}

TableSolver::TableSolver(const std::string& folders) : board(std::make_unique<Board>()) {
    tablebases = {};
    InitTablebases(folders, CacheBytes);
    if (tablebases.tbMaxMen == 0) fail(folders, "no tables found");
}

void TableSolver::setUp(const Board& position) {
    *board = position;
    board->newGameListener = nullptr;
    dropIdleEnPassant(*board);
    board->setCastling(board->castlingHomes(), 0);
}

PositionValue TableSolver::valueOf(const Board& position) {
    setUp(position);
    return evaluate(*board);
}

std::vector<SolvedMove> TableSolver::movesOf(const Board& position) {
    setUp(position);
    return solveMoves(*board);
}

BestLine TableSolver::lineToMate(const Board& position) {
    setUp(position);
    BestLine line;
    PositionValue value = evaluate(*board);
    line.gap = value.reason;
    if (!value.isKnown() || value.result == Result::Draw) return line;
    while (value.result == Result::Win || value.moves > 0) {
        const std::vector<SolvedMove> moves = solveMoves(*board);
        const SolvedMove& best = moves.front();
        if (!best.value.equals(value)) {
            line.gap = moves.back().value.reason;
            if (!line.gap.empty()) return line;
            throw AppError("the tables contradict each other after the line " +
                           numbered(line.moves, position.sideToMove));
        }
        line.moves.push_back(best.san);
        board->playGameMove(best.move);
        value = evaluate(*board);
    }
    return line;
}

std::unique_ptr<Board> boardToSolve(std::string_view fen) {
    auto board = std::make_unique<Board>();
    if (const std::string fault = setUpPosition(*board, fen); !fault.empty()) {
        throw NotSolvable("not a position: " + fault);
    }
    if (const int men = board->totalMen(); men > MostMenSolved) {
        throw NotSolvable(std::to_string(men) + " men, but tables have at most " +
                          std::to_string(MostMenSolved));
    }
    return board;
}

std::string numbered(const std::vector<std::string>& moves, Side first) {
    std::string text;
    std::size_t ply = first == White ? 0 : 1;
    for (const std::string& move : moves) {
        if (!text.empty()) text += ' ';
        if (ply % 2 == 0 || text.empty()) {
            text += std::to_string(ply / 2 + 1) + (ply % 2 == 0 ? ". " : "... ");
        }
        text += move;
        ++ply;
    }
    return text;
}

}  // namespace brivok::tables
