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

inline constexpr int UndoRecords = 1024;  ///< half-moves of a game and of a search on top of it
inline constexpr int UndoReserve = 256;   ///< records that setting up and playing leave free
inline constexpr int MaxSearchPly = 128;  ///< length of the per-ply tables
inline constexpr std::uint32_t OpenBookGate = 60;  ///< the book is asked below this `bookGate`
inline constexpr std::uint32_t FullBookGate = 70;  ///< `bookGate` that keeps the book closed

/// What one half-move changes beyond what the Move itself can reverse: the state before it.
struct alignas(64) UndoRecord {
    Move move = NoMove;            ///< the one that was made
    Square epSquare = 0;           ///< see Board::epSquare
    std::uint32_t castling = 0;    ///< see Board::castling
    std::uint32_t fiftyCount = 0;  ///< see Board::fiftyCount
    std::uint64_t hashKey = 0;     ///< see Board::hashKey
    std::uint64_t pawnKey = 0;     ///< see Board::pawnKey
    Bitboard occRot90 = 0;         ///< see Board::occRot90
    Bitboard occDiagSE = 0;        ///< see Board::occDiagSE
    Bitboard occDiagNE = 0;        ///< see Board::occDiagNE
};

/// Told when a position is set up from scratch, before its first move: what lies above the board
/// (clocks, the result of the game) starts anew then.
class NewGameListener {
public:
    NewGameListener() = default;
    NewGameListener(const NewGameListener&) = delete;
    NewGameListener& operator=(const NewGameListener&) = delete;
    virtual ~NewGameListener() = default;
    /// A position has just been set up.
    virtual void onNewGame() = 0;
};

/// The position, three times over (a piece code per square, sets per piece and colour, rotated
/// occupancies), with counters and keys kept incrementally, the undo stack, which is the history
/// of the game, and the per-ply tables of the search. Keys: Zobrist, "A new hashing method with
/// application for game playing", 1970.
///
/// Plain data: the evaluation and the generators read the fields, make and unmake write them.
struct Board {
    Side sideToMove = White;  ///< the one whose turn it is
    Piece squares[64]{};      ///< by square, a8 first
    /// Square that a pawn has just passed over, if an enemy pawn stands ready beside it; NoSquare.
    Square epSquare = NoSquare;
    std::uint32_t castling = 0;    ///< see CastlingBits
    std::uint32_t fiftyCount = 0;  ///< half-moves since the last capture or pawn move
    int material[2]{};             ///< centipawns without the kings; [Black], [White]
    int pawnCount[2]{};            ///< [0] White, [1] Black
    int pieceCount[2]{};         ///< men that are no pawns, the king included; [0] White, [1] Black
    int phaseCount[2]{};         ///< sum of phaseWeight; [Black], [White]
    Square kingStart[2]{};       ///< home squares, which `castles` follows; [0] White, [1] Black
    Square whiteRookStart[2]{};  ///< [0] queen side, [1] king side
    Square blackRookStart[2]{};  ///< the same for Black
    std::uint32_t ply = 0;       ///< half-moves of the game, and index of the next undo record
    Square kingSquare[2]{};      ///< [0] White, [1] Black
    std::uint32_t bookGate = 0;  ///< the book is open below OpenBookGate
    int moveCount = 0;           ///< length of the list that a generator last wrote

    // Tables of the search, by search ply (the root is 1).
    int history[PieceCodes][64]{};               ///< by piece code and to-square
    std::uint8_t inCheckAtPly[MaxSearchPly]{};   ///< the side to move there is in check
    Move pvTable[MaxSearchPly][MaxSearchPly]{};  ///< triangular table of principal variations
    int pvLength[MaxSearchPly]{};                ///< end index of each of its rows

    std::uint64_t hashKey = 0;          ///< Zobrist key of the position
    std::uint64_t pawnKey = 0;          ///< Zobrist key of the pawns alone
    std::uint64_t pieceKeys[13][64]{};  ///< random keys by piece code and square
    std::uint64_t epKeys[65]{};         ///< random keys by `epSquare`; 0 for NoSquare
    std::uint64_t castleKeys[16]{};     ///< random keys by the four rights, `castling >> 4`
    Bitboard pieces[PieceCodes]{};      ///< by code; the two kings' entries are not kept
    Bitboard occRot90 = 0;              ///< all men, the squares of a file adjacent
    Bitboard occDiagNE = 0;             ///< all men, the squares of a north-east diagonal adjacent
    Bitboard occDiagSE = 0;             ///< all men, the squares of a south-east diagonal adjacent
    Bitboard colourOcc[2]{};            ///< [0] White, [1] Black
    UndoRecord undo[UndoRecords];       ///< by `ply`
    Move killer1[MaxSearchPly]{};       ///< the quiet move that last cut off at a search ply
    Move killer2[MaxSearchPly]{};       ///< the one before it

    /// Half-moves dropped from the front of the undo stack in a very long game; always even.
    std::uint32_t droppedPlies = 0;

    /// Whose variant the board is played by; not owned. Read at each use.
    const Settings* rules = &settings;

    NewGameListener* newGameListener = nullptr;  ///< the one who is told, not owned; may be null

    CastlingTables castles;  ///< by `kingStart`, `whiteRookStart`, `blackRookStart`

    /// Fills the random keys. Every board has the same keys; the opening book relies on them.
    Board();

    // --- Setting up: board.cpp; from a FEN: fen.cpp -----------------------------------------

    /// The start position of normal chess, with all rights but in the variant without castling.
    void NewGame();

    /// Writes the standard array and its home squares, without keys and derived counters.
    void setStartPosition();

    /// Sets the position of a FEN or EPD line. A line that fails a check prints "FEN error: ..."
    /// straight to standard output, once for each failed check, and leaves the start position.
    void setPositionFromFen(std::string_view text);

    /// The squares that castling starts from.
    [[nodiscard]] CastlingHomes castlingHomes() const {
        return {whiteRookStart[0], kingStart[0], whiteRookStart[1],
                blackRookStart[0], kingStart[1], blackRookStart[1]};
    }

    /// Rebuilds from `squares` alone: counters, king squares, sets and rotated occupancies.
    void recomputeDerived();

    /// The key that `hashKey` should have, worked out anew.
    [[nodiscard]] std::uint64_t computeHashKey() const;
    /// The key that `pawnKey` should have, worked out anew.
    [[nodiscard]] std::uint64_t computePawnKey() const;

    // --- Making moves: make_move.cpp; null moves and moves of the game: board.cpp -----------

    /// Carries out a pseudo-legal move of this position. The move is trusted.
    void makeMove(Move move);

    /// Takes the last move back; does nothing where no move has been made, at ply 0 or in a
    /// position that was set up further on in a game.
    void unmakeMove();

    /// makeMove() for a move of the game: frees records of the undo stack first when a search
    /// from the new position could run out of them.
    void playGameMove(Move move);

    /// Passes the move. Such positions have keys of their own; the undo record's Move and keys
    /// keep what they held.
    void makeNullMove();
    /// Takes makeNullMove() back.
    void unmakeNullMove();

    /// Gives the move to a side by hand. Nothing else changes, the key included.
    void giveMoveTo(Side side);

    // --- Questions: attacks.cpp, exchange.cpp (see), move_validation.cpp, board.cpp ---------

    /// The squares of all men.
    [[nodiscard]] Bitboard occupied() const { return colourOcc[0] | colourOcc[1]; }
    /// The squares of the men of one side.
    [[nodiscard]] Bitboard occupiedBy(Side side) const { return colourOcc[whiteFirst(side)]; }
    /// The number of men of both sides, kings included.
    [[nodiscard]] int totalMen() const {
        return pawnCount[0] + pawnCount[1] + pieceCount[0] + pieceCount[1];
    }
    /// Half-moves since the start of the game, the dropped ones included.
    [[nodiscard]] std::uint32_t gamePly() const { return ply + droppedPlies; }

    /// Sliding attacks by the present occupancy.
    [[nodiscard]] Bitboard rankAttacksFrom(Square sq) const {
        return rankAttacks[sq][(occupied() >> ((sq & ~7) + 1)) & 63];
    }
    /// The same along the file.
    [[nodiscard]] Bitboard fileAttacksFrom(Square sq) const {
        return fileAttacks[sq][(occRot90 >> ((sq & 7) * 8 + 1)) & 63];
    }
    /// The same along the diagonal that runs north-east.
    [[nodiscard]] Bitboard diagNEAttacksFrom(Square sq) const {
        return diagNEAttacks[sq][(occDiagNE >> diagNEShift[sq]) & diagNEMask[sq]];
    }
    /// The same along the diagonal that runs south-east.
    [[nodiscard]] Bitboard diagSEAttacksFrom(Square sq) const {
        return diagSEAttacks[sq][(occDiagSE >> diagSEShift[sq]) & diagSEMask[sq]];
    }
    /// The same along rank and file.
    [[nodiscard]] Bitboard rookAttacks(Square sq) const {
        return rankAttacksFrom(sq) | fileAttacksFrom(sq);
    }
    /// The same along both diagonals.
    [[nodiscard]] Bitboard bishopAttacks(Square sq) const {
        return diagNEAttacksFrom(sq) | diagSEAttacksFrom(sq);
    }

    /// Men of both colours, kings included, that attack the square. Pins are not looked at.
    [[nodiscard]] Bitboard attackersTo(Square sq) const;

    /// Some man of `attacker`, pinned or not, attacks the square.
    [[nodiscard]] bool isAttacked(Square sq, Side attacker) const;

    /// The king of the side to move is attacked.
    [[nodiscard]] bool inCheck() const;

    /// The king of the side that is not to move is attacked: after makeMove(), the move was
    /// illegal.
    [[nodiscard]] bool moverInCheck() const;

    /// The man of `side` on the square shields its own king from an enemy slider.
    [[nodiscard]] bool isPinned(Square sq, Side side) const;
    /// isPinned() for White.
    [[nodiscard]] bool isPinnedWhite(Square sq) const { return isPinned(sq, White); }
    /// isPinned() for Black.
    [[nodiscard]] bool isPinnedBlack(Square sq) const { return isPinned(sq, Black); }

    /// Static exchange evaluation of the capture or promotion from `from` to `to`, by a swap list:
    /// both sides keep taking on `to` with their cheapest man, and either may stop. Centipawns,
    /// from the mover's view. Pins are ignored; a king enters with its table value; the pawn taken
    /// in passing does not count. `opponent` is the side that answers.
    [[nodiscard]] int see(Side opponent, Square to, Square from, Piece promo) const;

    /// The Move, from whatever source, is a pseudo-legal move of this position with all its
    /// fields as the generators fill them. Checks on the mover's king are not looked at, but for
    /// the squares that a castling king passes.
    [[nodiscard]] bool isMoveValid(Move move) const;

    /// The variant and the home squares of king and rook allow this kind of castling at all. A
    /// right for men off their usual squares has no meaning outside Fischer-random chess.
    [[nodiscard]] bool castlingHomesFit(int kind) const;

    /// Occurrences of the present position: since the root of a search at `searchPly` (in the
    /// tree, the present one included) and at the root or before it (in the game). From outside a
    /// search, with ply 0, all of them count for the game.
    struct Repetitions {
        int inTree;  ///< since the root of the search
        int inGame;  ///< at the root or before it
    };
    /// Counts from the undo stack, back to the last irreversible move.
    [[nodiscard]] Repetitions countRepetitions(int searchPly) const;

    /// Bare kings, or one minor piece against a bare king.
    [[nodiscard]] bool isInsufficientMaterial() const {
        const int men = totalMen();
        if (men > 3) return false;
        const Bitboard minors =
            pieces[WhiteKnight] | pieces[BlackKnight] | pieces[WhiteBishop] | pieces[BlackBishop];
        return men == 2 || (men == 3 && minors != 0 && (minors & (minors - 1)) == 0);
    }

    // --- Learning tables of the search: here and board.cpp ----------------------------------

    /// Adds depth / 16 to the counter of a quiet move that is not on the board at the moment. The
    /// limit, which only absurdly deep searches reach, keeps sums with it within an int.
    void updateHistory(Move move, int depth) {
        int& counter = history[squares[moveFrom(move)]][moveTo(move)];
        counter = std::min(counter + depth / 16, HistoryLimit);
    }
    /// The highest counter of updateHistory().
    static constexpr int HistoryLimit = 1'000'000'000;

    /// Makes the move the first killer of the ply; what was the first becomes the second.
    void storeKiller(Move move, int searchPly) {
        if (move == killer1[searchPly]) return;
        killer2[searchPly] = killer1[searchPly];
        killer1[searchPly] = move;
    }

    /// `move` followed by the line of the next ply becomes the line of this ply.
    void updatePv(int searchPly, Move move);

#ifndef NDEBUG
    /// Compares everything incremental with a full recomputation and aborts on a difference. Runs
    /// after each make and unmake of a debug build.
    void verify() const;
    /// The position was set up with one king a side. With more the counts are not exact, once one
    /// of them is taken.
    bool verifiable = false;
    /// What null moves on the stack have made of the keys, beyond the position's own.
    std::uint64_t nullHashDelta = 0;
    std::uint64_t nullPawnDelta = 0;  ///< of `pawnKey`
#endif

private:
    template <Side S>
    void makeFor(Move move);
    template <Side S>
    void unmakeFor(Move move);
    /// Writes the state before a move into the next undo record.
    void keepForUnmake(Move move);

    // Parts of a move. Each returns what it changes in `hashKey`.
    template <Side S>
    std::uint64_t castleFor(Move move);
    template <Side S>
    std::uint64_t takeFor(Piece taken, Square to);
    template <Side S>
    std::uint64_t movePawnFor(Move move);

    template <Side S>
    [[nodiscard]] bool kingAttacked() const;
    template <Side S>
    [[nodiscard]] bool attackedBy(Square sq) const;
    /// `attackers` with the slider that stands next behind `sq` on its line from `to`, if any.
    [[nodiscard]] Bitboard addXray(Bitboard attackers, Square sq, Square to) const;
};

/// The one position of the engine.
extern Board theBoard;

}  // namespace brivok
