#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "board/bitboard.h"
#include "board/castling.h"
#include "board/move.h"
#include "board/static_tables.h"
#include "board/types.h"
#include "shell/base/settings.h"

namespace brivok {

inline constexpr int UndoRecords = 1024;  ///< half-moves of the game plus those of a search on top
/// Records that setting up a position and playing moves leave free.
inline constexpr int UndoReserve = 256;
inline constexpr int MaxSearchPly = 128;  ///< length of the per-ply tables
/// The book is probed while `bookGate` is below this.
inline constexpr std::uint32_t OpenBookGate = 60;
/// Value of `bookGate` that keeps the book closed.
inline constexpr std::uint32_t FullBookGate = 70;

/// The part of a position that a half-move changes and its Move alone cannot restore. Making a move
/// saves it whole, unmaking puts it back whole.
struct KeptState {
    std::uint64_t hashKey = 0;  ///< Zobrist key of the position
    std::uint64_t pawnKey = 0;  ///< Zobrist key of the pawns alone
    Bitboard occRot90 = 0;      ///< all men, with the squares of a file adjacent
    /// All men, with the squares of a north-east diagonal adjacent.
    Bitboard occDiagNE = 0;
    /// All men, with the squares of a south-east diagonal adjacent.
    Bitboard occDiagSE = 0;
    /// Square passed over by the double push just made, if an enemy pawn stands ready to capture
    /// there; otherwise NoSquare.
    Square epSquare = NoSquare;
    std::uint32_t castling = 0;     ///< see CastlingBits
    std::uint32_t fiftyCount = 0;   ///< half-moves since the last capture or pawn move
    int placement = 0;              ///< sum of placeValue over all men, White's less Black's
    std::int16_t minorSurplus = 0;  ///< White's knights and bishops less Black's
    std::int16_t majorSurplus = 0;  ///< the same for rooks, and for queens, which count as two
};

/// A half-move and the state before it, which fill one cache line.
struct alignas(64) UndoRecord : KeptState {
    Move move = NoMove;  ///< the move that was made
};
static_assert(sizeof(UndoRecord) == 64);

/// Notified when a position is set up from scratch, before its first move, so that state above the
/// board (clocks, result of the game) can be reset.
class NewGameListener {
public:
    NewGameListener() = default;
    NewGameListener(const NewGameListener&) = delete;
    NewGameListener& operator=(const NewGameListener&) = delete;
    virtual ~NewGameListener() = default;
    virtual void onNewGame() = 0;
};

/// The position in three forms (a piece code per square, sets per piece and colour, rotated
/// occupancies), with incrementally updated counters and keys, the undo stack, which is the history
/// of the game, and the per-ply tables of the search. Keys: Zobrist, "A new hashing method with
/// application for game playing", 1970.
///
/// Plain data: the evaluation and the generators read the fields; make and unmake write them.
struct Board : KeptState {
    Side sideToMove = White;
    Piece squares[64]{};  ///< a8 first
    int material[2]{};    ///< centipawns without the kings; [Black], [White]
    int pawnCount[2]{};   ///< [0] White, [1] Black
    int pieceCount[2]{};  ///< non-pawns, including the king; [0] White, [1] Black
    int phaseCount[2]{};  ///< sum of phaseWeight; [Black], [White]
    /// Home squares, from which `castles` is built; [0] White, [1] Black.
    Square kingStart[2]{};
    Square whiteRookStart[2]{};  ///< [0] queen side, [1] king side
    Square blackRookStart[2]{};  ///< [0] queen side, [1] king side
    std::uint32_t ply = 0;       ///< half-moves of the game, and index of the next undo record
    Square kingSquare[2]{};      ///< [0] White, [1] Black
    std::uint32_t bookGate = 0;  ///< the book is open while this is below OpenBookGate
    int moveCount = 0;           ///< length of the list last written by a generator

    // Tables of the search, by search ply (the root is 1).
    int history[PieceCodes][64]{};               ///< by piece code and to-square
    std::uint8_t inCheckAtPly[MaxSearchPly]{};   ///< whether the side to move is in check
    Move pvTable[MaxSearchPly][MaxSearchPly]{};  ///< triangular table of principal variations
    int pvLength[MaxSearchPly]{};                ///< end index of each row of `pvTable`

    std::uint64_t pieceKeys[13][64]{};  ///< random keys by piece code and square
    std::uint64_t epKeys[65]{};         ///< random keys by `epSquare`; 0 for NoSquare
    std::uint64_t castleKeys[16]{};     ///< random keys by the four rights, `castling >> 4`
    /// By code; the entries of the two kings are not maintained.
    Bitboard pieces[PieceCodes]{};
    Bitboard colourOcc[2]{};       ///< [0] White, [1] Black
    UndoRecord undo[UndoRecords];  ///< by `ply`
    /// The last quiet move to cause a cutoff at this search ply.
    Move killer1[MaxSearchPly]{};
    Move killer2[MaxSearchPly]{};  ///< the previous value of killer1

    /// Half-moves dropped from the front of the undo stack in a very long game; always even.
    std::uint32_t droppedPlies = 0;

    /// Gives the variant; read at each use. Not owned.
    const Settings* rules = &settings;

    NewGameListener* newGameListener = nullptr;  ///< not owned; may be null

    CastlingTables castles;  ///< built from `kingStart`, `whiteRookStart`, `blackRookStart`

    /// Fills the random keys. Every board has the same keys; the opening book relies on them.
    Board();

    // --- Setting up: board.cpp; from a FEN: fen.cpp -----------------------------------------

    /// The start position of normal chess. All castling rights are set, except in the variant
    /// without castling.
    void NewGame();

    /// Writes the standard array and its home squares only: no keys, no derived counters.
    void setStartPosition();

    /// Sets the position of a FEN or EPD line. Each check that the line fails prints "FEN error:
    /// ..." straight to standard output; the board then holds the start position.
    void setPositionFromFen(std::string_view text);

    [[nodiscard]] CastlingHomes castlingHomes() const {
        return {whiteRookStart[0], kingStart[0], whiteRookStart[1],
                blackRookStart[0], kingStart[1], blackRookStart[1]};
    }

    /// Gives a position that has just been set up these home squares, and those of the rights that
    /// castlingHomesFit() permits. A right's king and rook must stand on their homes.
    void setCastling(const CastlingHomes& homes, std::uint32_t rights);

    /// Rebuilds counters, king squares, sets and rotated occupancies from `squares`.
    void recomputeDerived();

    /// `hashKey` computed from scratch.
    [[nodiscard]] std::uint64_t computeHashKey() const;
    /// `pawnKey` computed from scratch.
    [[nodiscard]] std::uint64_t computePawnKey() const;

    // --- Making moves: make_move.cpp; null moves and moves of the game: board.cpp -----------

    /// Makes a pseudo-legal move of this position. The move is not checked.
    void makeMove(Move move);

    /// Takes back the last move. Does nothing when none has been made: at ply 0, or in a position
    /// set up in the middle of a game.
    void unmakeMove();

    /// makeMove() for a move of the game. First frees undo records if a search from the new
    /// position could run out of them.
    void playGameMove(Move move);

    /// The key after a move that neither castles, promotes nor changes a right: a guess at what to
    /// load into the cache before the move is made.
    [[nodiscard]] std::uint64_t likelyKeyAfter(Move move) const {
        const Square to = moveTo(move);
        const Piece piece = movePiece(move);
        return ~hashKey ^ epKeys[epSquare] ^ pieceKeys[piece][moveFrom(move)] ^
               pieceKeys[piece][to] ^ pieceKeys[moveCapture(move)][to];
    }

    /// Passes the move. The resulting positions have keys of their own. The Move and the keys in
    /// the undo record are left as they were.
    void makeNullMove();
    void unmakeNullMove();

    /// Sets the side to move by hand. Nothing else changes, not even the key.
    void giveMoveTo(Side side);

    // --- Questions: attacks.cpp, exchange.cpp (see), move_validation.cpp, board.cpp ---------

    [[nodiscard]] Bitboard occupied() const { return colourOcc[0] | colourOcc[1]; }
    [[nodiscard]] Bitboard occupiedBy(Side side) const { return colourOcc[whiteFirst(side)]; }
    /// Both sides, kings included.
    [[nodiscard]] int totalMen() const {
        return pawnCount[0] + pawnCount[1] + pieceCount[0] + pieceCount[1];
    }
    /// Half-moves since the start of the game, including the dropped ones.
    [[nodiscard]] std::uint32_t gamePly() const { return ply + droppedPlies; }

    /// Sliding attacks along the rank, given the current occupancy.
    [[nodiscard]] Bitboard rankAttacksFrom(Square sq) const {
        return rankAttacks[sq][(occupied() >> ((sq & ~7) + 1)) & 63];
    }
    [[nodiscard]] Bitboard fileAttacksFrom(Square sq) const {
        return fileAttacks[sq][(occRot90 >> ((sq & 7) * 8 + 1)) & 63];
    }
    [[nodiscard]] Bitboard diagNEAttacksFrom(Square sq) const {
        return diagNEAttacks[sq][(occDiagNE >> diagNEShift[sq]) & diagNEMask[sq]];
    }
    [[nodiscard]] Bitboard diagSEAttacksFrom(Square sq) const {
        return diagSEAttacks[sq][(occDiagSE >> diagSEShift[sq]) & diagSEMask[sq]];
    }
    [[nodiscard]] Bitboard rookAttacks(Square sq) const {
        return rankAttacksFrom(sq) | fileAttacksFrom(sq);
    }
    [[nodiscard]] Bitboard bishopAttacks(Square sq) const {
        return diagNEAttacksFrom(sq) | diagSEAttacksFrom(sq);
    }

    /// Men of both colours, kings included, that attack the square. Pins are ignored.
    [[nodiscard]] Bitboard attackersTo(Square sq) const;

    /// Whether any man of `attacker`, pinned or not, attacks the square.
    [[nodiscard]] bool isAttacked(Square sq, Side attacker) const;

    /// Whether the side to move is in check.
    [[nodiscard]] bool inCheck() const;

    /// Whether the side not to move is in check: after makeMove() this means that the move was
    /// illegal.
    [[nodiscard]] bool moverInCheck() const;

    /// Whether the man of `side` on the square shields its own king from an enemy slider.
    [[nodiscard]] bool isPinned(Square sq, Side side) const;
    [[nodiscard]] bool isPinnedWhite(Square sq) const { return isPinned(sq, White); }
    [[nodiscard]] bool isPinnedBlack(Square sq) const { return isPinned(sq, Black); }

    /// Static exchange evaluation of the capture or promotion from `from` to `to`, by a swap list:
    /// both sides keep taking on `to` with their cheapest man, and either may stop. Centipawns,
    /// from the mover's view. Pins are ignored, a king counts with its table value, and the pawn
    /// captured en passant does not count. `opponent` is the side that recaptures.
    [[nodiscard]] int see(Side opponent, Square to, Square from, Piece promo) const;

    /// Whether the Move, whatever its source, is a pseudo-legal move of this position with every
    /// field filled as the generators fill it. Whether it leaves the king in check is not tested,
    /// except for the squares that a castling king crosses.
    [[nodiscard]] bool isMoveValid(Move move) const;

    /// Whether the variant and the home squares of king and rook permit this kind of castling.
    /// Rights for men away from their usual squares only count in Fischer-random chess.
    [[nodiscard]] bool castlingHomesFit(int kind) const;

    /// How often the current position has occurred, split at the root of a search. Outside a search
    /// (ply 0) every occurrence counts as `inGame`.
    struct Repetitions {
        int inTree;  ///< after the root, including the current one
        int inGame;  ///< at or before the root
    };
    /// Scans the undo stack back to the last irreversible move.
    [[nodiscard]] Repetitions countRepetitions(int searchPly) const;

    /// Bare kings, or a single minor piece against a bare king.
    [[nodiscard]] bool isInsufficientMaterial() const {
        const int men = totalMen();
        if (men > 3) return false;
        const Bitboard minors =
            pieces[WhiteKnight] | pieces[BlackKnight] | pieces[WhiteBishop] | pieces[BlackBishop];
        return men == 2 || (men == 3 && minors != 0 && (minors & (minors - 1)) == 0);
    }

    // --- Learning tables of the search: here and board.cpp ----------------------------------

    /// Adds depth / 16 to the counter of a quiet move, which must not be made on the board at the
    /// time. HistoryLimit, which only absurdly deep searches reach, keeps sums of counters within
    /// an int.
    void updateHistory(Move move, int depth) {
        int& counter = history[squares[moveFrom(move)]][moveTo(move)];
        counter = std::min(counter + depth / 16, HistoryLimit);
    }
    static constexpr int HistoryLimit = 1'000'000'000;

    /// Makes the move the first killer of the ply; the old first killer becomes the second.
    void storeKiller(Move move, int searchPly) {
        if (move == killer1[searchPly]) return;
        killer2[searchPly] = killer1[searchPly];
        killer1[searchPly] = move;
    }

    /// Sets the line of this ply to `move` followed by the line of the next ply.
    void updatePv(int searchPly, Move move);

#ifndef NDEBUG
    /// Compares all incremental state with a full recomputation and aborts on a difference. Debug
    /// builds run it after each make and unmake.
    void verify() const;
    /// Set for positions with one king per side. With more, the counts become inexact once a king
    /// is captured.
    bool verifiable = false;
    /// How null moves on the stack have changed `hashKey`.
    std::uint64_t nullHashDelta = 0;
    std::uint64_t nullPawnDelta = 0;  ///< the same for `pawnKey`
#endif

private:
    template <Side S>
    void makeFor(Move move);
    template <Side S>
    void unmakeFor(Move move);
    /// Saves the state before a move in the next undo record.
    void keepForUnmake(Move move);

    // Steps of making a move. Each returns its change to `hashKey`.
    template <Side S>
    std::uint64_t castleFor(Move move);
    template <Side S>
    std::uint64_t takeFor(Piece taken, Square to);
    template <Side S>
    std::uint64_t movePawnFor(Piece pawn, Move move);

    template <Side S>
    [[nodiscard]] bool kingAttacked() const;
    template <Side S>
    [[nodiscard]] bool attackedBy(Square sq) const;
    /// Adds to `attackers` the slider, if any, next behind `sq` on its line from `to`.
    [[nodiscard]] Bitboard addXray(Bitboard attackers, Square sq, Square to) const;
};

extern Board theBoard;

}  // namespace brivok
