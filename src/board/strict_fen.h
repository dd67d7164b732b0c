#pragma once

#include <string>
#include <string_view>

#include "board/board.h"

namespace brivok {

/// Sets up the position of a FEN, or of an EPD line, whose operations are ignored. Returns an empty
/// text, or in a few words what is wrong with the line; the board and the clocks are then as
/// before. A success is also a new game: it resets the clocks, like Board::setPositionFromFen().
///
/// The line must have eight ranks of eight squares, one king, at most 16 men and at most 8 pawns a
/// side, no pawn on a back rank, and the side to move, which cannot take the king. The other
/// fields may be missing; an en passant square that no pawn has just passed counts as none.
///
/// Castling rights are KQkq, or the files of the rooks (HAha). In Fischer-random chess, K and Q
/// mean the outermost rook on that side of the king; in normal chess, king and rook must stand on
/// their usual squares. A right that variant or men do not support is dropped, because many
/// interfaces write KQkq for any position; but a file must have its rook.
[[nodiscard]] std::string setUpPosition(Board& board, std::string_view fen);

}  // namespace brivok
