#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace brivok {

/// Squares are numbered row by row from the top left as White sees the board: a8 = 0, b8 = 1, ...
/// h8 = 7, a7 = 8, ... h1 = 63. White's pawns therefore move towards lower numbers.
using Square = int;

inline constexpr Square NoSquare = 64;     ///< no square, in `epSquare`
inline constexpr Square MissingHome = -1;  ///< no square, in the castling home squares

enum Step : int {
    North = -8,
    South = 8,
    West = -1,
    East = 1,
    NorthWest = -9,
    NorthEast = -7,
    SouthWest = 7,
    SouthEast = 9
};

/// 0 is the a-file, 7 the h-file.
[[nodiscard]] constexpr int fileOf(Square sq) { return sq & 7; }

/// 0 is rank 8, 7 is rank 1.
[[nodiscard]] constexpr int rowOf(Square sq) { return sq >> 3; }

/// 1 to 8.
[[nodiscard]] constexpr int rankNumber(Square sq) { return 8 - rowOf(sq); }

/// File and row are 0 to 7.
[[nodiscard]] constexpr Square squareAt(int file, int row) { return row * 8 + file; }

/// A square constant by name: squareNamed("e4").
[[nodiscard]] constexpr Square squareNamed(const char (&name)[3]) {
    return squareAt(name[0] - 'a', '8' - name[1]);
}

enum Side : std::uint32_t { Black = 0, White = 1 };

[[nodiscard]] constexpr Side opposite(Side side) { return static_cast<Side>(side ^ 1U); }

/// Index of a side in arrays that put White first (`colourOcc`, `kingSquare`, `kingStart`,
/// `pawnCount`, `pieceCount`). `material` and `phaseCount` are indexed by Side itself.
[[nodiscard]] constexpr unsigned whiteFirst(Side side) { return side ^ 1U; }

/// Piece codes. The low bit is the side: 1 White, 0 Black; an empty square therefore does not look
/// white. The kinds are ordered pawn, knight, king, rook, queen, bishop.
enum Piece : std::uint32_t {
    Empty = 0,
    WhitePawn = 1,
    BlackPawn = 2,
    WhiteKnight = 3,
    BlackKnight = 4,
    WhiteKing = 5,
    BlackKing = 6,
    WhiteRook = 7,
    BlackRook = 8,
    WhiteQueen = 9,
    BlackQueen = 10,
    WhiteBishop = 11,
    BlackBishop = 12
};

/// All pieces, by rising code.
inline constexpr Piece AllMen[] = {WhitePawn,  BlackPawn,  WhiteKnight, BlackKnight,
                                   WhiteKing,  BlackKing,  WhiteRook,   BlackRook,
                                   WhiteQueen, BlackQueen, WhiteBishop, BlackBishop};

/// Length of every table indexed by piece code. Code 13 is unused.
inline constexpr int PieceCodes = 14;

/// Upper-case letter for each piece code, for move text and board diagrams.
inline constexpr char PieceLetters[] = "XPPNNKKRRQQBBX";

/// The piece must not be Empty.
[[nodiscard]] constexpr Side sideOf(Piece piece) { return static_cast<Side>(piece & 1U); }

/// The kinds of pieces; each value is the code of the white piece.
enum class Kind : std::uint32_t {
    Pawn = 1,
    Knight = 3,
    King = 5,
    Rook = 7,
    Queen = 9,
    Bishop = 11
};

[[nodiscard]] constexpr Piece pieceOf(Kind kind, Side side) {
    return static_cast<Piece>(static_cast<std::uint32_t>(kind) + whiteFirst(side));
}

/// The piece must not be Empty.
[[nodiscard]] constexpr Kind kindOf(Piece piece) {
    return static_cast<Kind>(static_cast<std::uint32_t>(piece) - whiteFirst(sideOf(piece)));
}

/// Upper case for White, lower case for Black.
[[nodiscard]] constexpr char fenLetter(Piece piece) {
    const char letter = PieceLetters[piece];
    return sideOf(piece) == White ? letter : static_cast<char>(letter - 'A' + 'a');
}

/// The kind for an upper-case letter; nullopt for any other character.
[[nodiscard]] constexpr std::optional<Kind> kindOfLetter(char letter) {
    constexpr std::string_view letters = PieceLetters;
    const std::size_t code = letters.find(letter);  // finds the white piece first
    if (code < WhitePawn || code > BlackBishop) return std::nullopt;
    return static_cast<Kind>(code);
}

[[nodiscard]] constexpr bool isPawn(Piece piece) { return piece - 1U < 2U; }
[[nodiscard]] constexpr bool isKing(Piece piece) { return piece - 5U < 2U; }

}  // namespace brivok
