#include "position.h"

#include <sstream>
#include <string>

#include "../common/app_error.h"
#include "movegen/san.h"

namespace brivok {

namespace {

/// Many programs write the en passant square after every double push; the board's key includes it
/// only if an enemy pawn stands ready to capture.
void dropIdleEnPassant(Board& board) {
    if (board.epSquare == NoSquare) return;
    const Side side = board.sideToMove;
    const auto& attackers = side == White ? blackPawnAttacks : whitePawnAttacks;
    if ((attackers[board.epSquare] & board.pieces[pieceOf(Kind::Pawn, side)]) != 0) return;
    board.epSquare = NoSquare;
    board.hashKey = board.computeHashKey();
}

}  // namespace

void setPositionOrThrow(Board& board, std::string_view fen) {
    board.NewGame();
    const std::uint64_t startKey = board.hashKey;
    board.setPositionFromFen(fen);
    // A rejected line leaves the start position, which only its own line may do.
    constexpr std::string_view startPlacement = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR";
    const bool refused = board.hashKey == startKey && !fen.starts_with(startPlacement);
    if (refused || board.moverInCheck()) {
        throw AppError("not a playable position: " + std::string(fen));
    }
    dropIdleEnPassant(board);
}

void playLine(Board& board, std::string_view moves) {
    std::istringstream words{std::string(moves)};
    for (std::string word; words >> word;) {
        const std::size_t digits = word.find_first_not_of("0123456789");
        if (digits == std::string::npos) continue;
        if (word[digits] == '.') word.erase(0, word.find_first_not_of('.', digits));
        if (word.empty()) continue;
        const SanReading reading = readSan(board, word);
        if (reading.move == NoMove) throw AppError(std::string(reading.fault) + ": " + word);
        board.playGameMove(reading.move);
    }
}

}  // namespace brivok
