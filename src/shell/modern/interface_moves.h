#pragma once

#include <string>
#include <string_view>

#include "board/board.h"

/// @file
/// Moves as interfaces write them.
namespace brivok {

/// How Fischer-random castling is written.
enum class CastlingStyle {
    Letters,      ///< O-O and O-O-O
    KingOntoRook  ///< the king's square and the rook's, such as e1h1
};

/// The legal move with this text, or NoMove. Understands coordinates, standard algebraic notation,
/// castling with letters or zeros or as king onto rook, marks of check and mate, and promotion
/// letters of either case, with or without "=".
[[nodiscard]] Move readMove(Board& board, std::string_view text);

/// Coordinate text of a legal move of this position. The style matters only in Fischer-random
/// chess; in other variants castling is the king's move.
[[nodiscard]] std::string moveText(const Board& board, Move move, CastlingStyle style);

}  // namespace brivok
