#include "verify.h"

#include <array>
#include <memory>
#include <random>

#include "board/board.h"
#include "board/static_tables.h"
#include "entry_check.h"
#include "full_check.h"
#include "movegen/legal_moves.h"
#include "outcome.h"
#include "table_entry.h"
#include "table_reader.h"

namespace brivok::tables {
namespace {

/// Rows of tables of six men would take 15 GB.
constexpr std::size_t MostMenInRows = 5;

Outcome withoutMoves(bool inCheck) { return inCheck ? lossIn(0) : Draw; }

/// What the tables say about the position on the engine's board.
Outcome outcomeOf(const Board& board, TableStore& store) {
    Material material;
    Squares squares{};
    for (Square square = 0; square < brivok::Squares; ++square) {
        const Piece piece = board.squares[square];
        if (piece == Empty) continue;
        squares[material.count] = static_cast<std::uint8_t>(mirrorSquare[square]);
        material.side[material.count] = sideOf(piece) == White ? 0 : 1;
        material.man[material.count++] = kindOf(piece);
    }
    const int ep =
        board.epSquare == NoSquare ? NoEnPassant : static_cast<int>(mirrorSquare[board.epSquare]);
    return TableReader(material, board.sideToMove == White ? 0 : 1, store).outcome(squares, ep);
}

/// Computes the entry of a position from the engine's moves.
Outcome outcomeByEngine(Board& board, TableStore& store) {
    if (board.moverInCheck()) return NoValue;
    // The evasions lack some en passant captures.
    MoveList list;
    generateMoves(board, list);
    BestReply best;
    bool canMove = false;
    forEachLegalOf(board, generated(board, list), [&](Move) {
        canMove = true;
        best.add(outcomeOf(board, store));
    });
    return canMove ? best.outcome() : withoutMoves(board.inCheck());
}

std::string describe(Outcome outcome) {
    if (outcome == NoValue) return "broken";
    if (outcome == Draw) return "draw";
    return (isWin(outcome) ? "mate in " : "mated in ") + std::to_string(movesToMate(outcome));
}

std::string describeEntry(int id, const Material& material, unsigned side, std::uint64_t index,
                          Outcome stored, Outcome expected) {
    Position position;
    const bool isLegalOne = legalPosition(id, material, side, index, position);
    return tableFileName(id, side) + " entry " + std::to_string(index) + " says " +
           describe(stored) + " instead of " + describe(expected) + ": " +
           (isLegalOne ? fenOf(material, position) : "not a legal position");
}

}  // namespace

std::optional<std::string> contradiction(int id, TableStore& store, unsigned threads) {
    const Material material = materialOf(descriptorOf(id).signature());
    const auto firstIn = [&](auto& check) -> std::optional<std::string> {
        for (unsigned side = 0; side < filesOf(id); ++side) {
            if (const auto fault = check.firstFault(side)) {
                return describeEntry(id, material, side, fault->index, fault->stored,
                                     fault->expected);
            }
        }
        return std::nullopt;
    };
    if (material.count > MostMenInRows || isWide(id)) {
        EntryCheck check(id, store, threads);
        return firstIn(check);
    }
    FullCheck check(id, store, threads);
    if (auto fault = firstIn(check)) return fault;
    if (const auto position = check.winTooLong()) {
        return tableFileName(id, position->mover) + " lacks a mate in " +
               std::to_string(LongestByteWin + 1) + ": " + fenOf(material, *position);
    }
    return std::nullopt;
}

std::optional<std::string> contradictionInSample(int id, TableStore& store, std::uint64_t samples) {
    const Material material = materialOf(descriptorOf(id).signature());
    const auto board = std::make_unique<Board>();
    std::mt19937_64 random;
    for (unsigned side = 0; side < filesOf(id); ++side) {
        std::uniform_int_distribution<std::uint64_t> anyEntry(0, descriptorOf(id).size[side] - 1);
        for (std::uint64_t i = 0; i < samples; ++i) {
            const std::uint64_t index = anyEntry(random);
            Outcome expected = NoValue;
            Position position;
            if (legalPosition(id, material, side, index, position)) {
                board->setPositionFromFen(fenOf(material, position));
                expected = outcomeByEngine(*board, store);
            }
            const Outcome stored = outcomeAt(store.entries(id, side), isWide(id), index);
            if (stored != expected) {
                return describeEntry(id, material, side, index, stored, expected);
            }
        }
    }
    return std::nullopt;
}

}  // namespace brivok::tables
