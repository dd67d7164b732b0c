#include <algorithm>
#include <cctype>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "board/board.h"
#include "shell/base/report.h"

namespace brivok {

namespace {

constexpr int MaxFullMove = 1023;
constexpr int MaxFiftyCount = 100;
constexpr int MaxMenBesideKing = 15;

/// Iterates over the fields of a line. A field ends at a blank, a newline or the end of the line.
class Fields {
public:
    explicit Fields(std::string_view line) : rest(line) {}

    [[nodiscard]] std::string_view next() {
        skipBlanks();
        const std::string_view field =
            rest.substr(0, std::min(rest.find_first_of(" \n"), rest.size()));
        rest.remove_prefix(field.size());
        return field;
    }

    /// Takes the next character if it is `a` or `b`; otherwise takes nothing and returns 0.
    [[nodiscard]] char takeEither(char a, char b) {
        skipBlanks();
        if (rest.empty() || (rest[0] != a && rest[0] != b)) return 0;
        const char taken = rest[0];
        rest.remove_prefix(1);
        return taken;
    }

private:
    void skipBlanks() {
        while (!rest.empty() && rest[0] == ' ') rest.remove_prefix(1);
    }
    std::string_view rest;
};

/// The number at the start of a field, or nullopt. Huge numbers are clamped.
std::optional<int> leadingNumber(std::string_view field) {
    constexpr int Cut = 1'000'000;
    std::optional<int> number;
    for (const char c : field) {
        if (c < '0' || c > '9') break;
        number = std::min(number.value_or(0) * 10 + (c - '0'), Cut);
    }
    return number;
}

/// The square of the en passant field; NoSquare for "-" and for anything that is not a square.
Square enPassantSquare(std::string_view field) {
    if (field.size() < 2 || field[0] < 'a' || field[0] > 'h' || field[1] < '1' || field[1] > '8') {
        return NoSquare;
    }
    return squareAt(field[0] - 'a', '8' - field[1]);
}

void placePieces(Board& board, std::string_view field) {
    Square sq = 0;
    for (const char c : field) {
        if (sq >= Squares) return;
        if (c >= '0' && c <= '9') {
            sq += c - '0';
            continue;
        }
        const Piece* const piece = std::ranges::find(AllMen, c, fenLetter);
        if (piece == std::end(AllMen)) continue;
        board.squares[sq] = *piece;
        if (isKing(*piece)) board.kingStart[whiteFirst(sideOf(*piece))] = sq;
        ++sq;
    }
}

/// The rights in the castling field, as bits of `castling`.
std::uint32_t castlingFlags(std::string_view field) {
    std::uint32_t flags = 0;
    for (const char c : field) {
        switch (c) {
            case 'K': flags |= WhiteMayKingSide; break;
            case 'Q': flags |= WhiteMayQueenSide; break;
            case 'k': flags |= BlackMayKingSide; break;
            case 'q': flags |= BlackMayQueenSide; break;
            default: break;
        }
    }
    return flags;
}

/// Prints the faults of a position and remembers whether there were any.
class FaultReport {
public:
    void require(bool holds, std::string_view fault) {
        if (holds) return;
        any = true;
        PrintUnlogged(std::string("FEN error: ").append(fault).append("\n"));
    }
    bool any = false;
};

void checkMen(const Board& board, FaultReport& report) {
    for (const Piece pawn : {WhitePawn, BlackPawn}) {
        for (const int row : {0, 7}) {
            for (int count = popCount(board.pieces[pawn] & rowMask[row]); count > 0; --count) {
                report.require(false, std::string("There is a ") +
                                          (pawn == WhitePawn ? "white" : "black") +
                                          " pawn at rank " + (row == 0 ? "8" : "1"));
            }
        }
    }
    for (const Side side : {White, Black}) {
        int men = 0;
        for (const Kind kind : {Kind::Pawn, Kind::Knight, Kind::Bishop, Kind::Rook, Kind::Queen}) {
            men += popCount(board.pieces[pieceOf(kind, side)]);
        }
        report.require(men <= MaxMenBesideKing, "total pieces and pawns per side must be < 16");
    }
}

/// Finds the castling rooks on the king's back rank: the nearest one to its left and the farthest
/// one to its right.
void findRooks(const Board& board, Side side, Square (&homes)[2]) {
    const Square king = board.kingSquare[whiteFirst(side)];
    const int backRow = side == White ? 7 : 0;
    if (king == MissingHome || rowOf(king) != backRow) return;
    Bitboard rooks = board.pieces[pieceOf(Kind::Rook, side)] & rowMask[backRow];
    while (rooks != 0) {
        const Square rook = takeNext<White>(rooks);
        homes[fileOf(rook) <= fileOf(king) ? 0 : 1] = rook;
    }
}

struct RightToCheck {
    std::uint32_t right;
    const Square& rookHome;
    const char* fault;
};

void setRights(Board& board, std::uint32_t flags, FaultReport& report) {
    board.castling = 0;
    if (board.rules->variant == Variant::NoCastle) return;
    const RightToCheck rights[] = {
        {WhiteMayKingSide, board.whiteRookStart[1],
         "WCK flag is set, but there isn't white kingside rook"},
        {BlackMayKingSide, board.blackRookStart[1],
         "BCK flag is set, but there isn't black kingside rook"},
        {WhiteMayQueenSide, board.whiteRookStart[0],
         "WCQ flag is set, but there isn't white queenside rook"},
        {BlackMayQueenSide, board.blackRookStart[0],
         "BCQ flag is set, but there isn't black queenside rook"},
    };
    for (const RightToCheck& entry : rights) {
        if ((flags & entry.right) == 0) continue;
        report.require(entry.rookHome != MissingHome, entry.fault);
        if (entry.rookHome != MissingHome) board.castling |= entry.right;
    }
}

}  // namespace

void Board::setPositionFromFen(std::string_view text) {
    NewGame();
    std::fill(std::begin(squares), std::end(squares), Empty);
    for (const int i : {0, 1}) {
        kingSquare[i] = kingStart[i] = whiteRookStart[i] = blackRookStart[i] = MissingHome;
    }

    Fields fields(text);
    placePieces(*this, fields.next());
    // Any other character belongs to the castling field.
    if (fields.takeEither('w', 'b') == 'b') sideToMove = Black;
    const std::uint32_t flags = castlingFlags(fields.next());
    epSquare = enPassantSquare(fields.next());
    const int clock = leadingNumber(fields.next()).value_or(0);
    fiftyCount = clock <= MaxFiftyCount ? static_cast<std::uint32_t>(clock) : 0;
    const int fullMove = leadingNumber(fields.next()).value_or(0);
    const bool counted = fullMove >= 1 && fullMove <= MaxFullMove;
    ply = (counted ? static_cast<std::uint32_t>(2 * fullMove - 2) : 0) + (sideToMove == Black);
    if (constexpr std::uint32_t limit = UndoRecords - UndoReserve; ply > limit) {
        const std::uint32_t kept = limit - (limit + ply) % 2;
        droppedPlies = ply - kept;
        ply = kept;
    }

    FaultReport report;
    report.require(kingStart[0] != MissingHome, "There isn't white king");
    report.require(kingStart[1] != MissingHome, "There isn't black king");
    recomputeDerived();
    checkMen(*this, report);
    findRooks(*this, White, whiteRookStart);
    findRooks(*this, Black, blackRookStart);
    setRights(*this, flags, report);
    if (report.any) NewGame();

#ifndef NDEBUG
    verifiable = std::count(std::begin(squares), std::end(squares), WhiteKing) == 1 &&
                 std::count(std::begin(squares), std::end(squares), BlackKing) == 1;
#endif
    hashKey = computeHashKey();
    pawnKey = computePawnKey();
    undo[0].hashKey = hashKey;
    bookGate = FullBookGate;
    castles.buildCastlingTables(castlingHomes());
}

void Board::setCastling(const CastlingHomes& homes, std::uint32_t rights) {
    kingStart[0] = homes.whiteKing;
    kingStart[1] = homes.blackKing;
    whiteRookStart[0] = homes.whiteQueenRook;
    whiteRookStart[1] = homes.whiteKingRook;
    blackRookStart[0] = homes.blackQueenRook;
    blackRookStart[1] = homes.blackKingRook;
    castling = 0;
    for (int kind = 0; kind < CastlingKinds; ++kind) {
        if (castlingHomesFit(kind)) castling |= rights & rightOf(kind);
    }
    hashKey = undo[0].hashKey = computeHashKey();
    castles.buildCastlingTables(homes);
}

}  // namespace brivok
