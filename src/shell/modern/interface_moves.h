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

/// The legal move with this text, or NoMove if there is none or more than one. Understands
/// - coordinates and all that readSan() reads, with promotion letters of either case, with or
///   without "=";
/// - castling with letters or zeros, as king onto rook (e1h1), and as the king's squares (e1g1);
/// - marks of check and mate after any of these.
///
/// An ordinary king move comes before castling of the same text; squares between which the king
/// steps to a neighbouring file mean castling only if its rook stands there.
[[nodiscard]] Move readMove(Board& board, std::string_view text);

/// Coordinate text of a legal move of this position; "0000" for NoMove. The style matters only in
/// Fischer-random chess; in other variants castling is the king's move.
[[nodiscard]] std::string moveText(const Board& board, Move move, CastlingStyle style);

}  // namespace brivok
