#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "board/bitboard.h"
#include "converted_worths.h"
#include "layout.h"
#include "leaving_worths.h"
#include "material.h"
#include "moves.h"
#include "outcome.h"
#include "row_bytes.h"
#include "table_reader.h"
#include "table_store.h"

namespace brivok::tables {

/// A table that is to be checked: its entries in the numbering of a Layout, those with an en
/// passant square in file order, and the results of its captures and promotions.
class CheckedTable {
public:
    CheckedTable(int id, const Material& itsMaterial, TableStore& store, unsigned threads);

    /// What a move into the position is worth to the side that makes it, by the entry.
    [[nodiscard]] Worth leaving(const Position& position) const;

    /// The same, by the entries of the position's successors, for a legal position.
    [[nodiscard]] Worth leavingBySuccessors(const Position& position) const;

    Material material;
    Layout layout;
    std::array<std::span<const std::uint8_t>, 2> entries;  ///< of the file, by side to move
    std::array<LeavingWorths, 2> plain;                    ///< by side to move
    ConvertedWorths conversions;
    EntryFinder finder;
};

/// What a side that has this best move leaves to its opponent's last move; NoWorth as well for a
/// loss in 127 moves, which no byte stands for. `best` is NoWorth if there are no moves.
[[nodiscard]] constexpr Worth leavingIfBestIs(Worth best, bool inCheck) {
    if (best == NoWorth) return inCheck ? winWorth(1) : DrawnWorth;
    if (best == lossWorth(LongestByteLoss + 1)) return NoWorth;
    return static_cast<Worth>(best >= DrawnWorth ? -best : ~best);
}

/// Computes what the entries of a block should be, by moving forward to their successors: rows of
/// 64 positions move at once. Positions are the same but for the square of the last man, and a move
/// of another man leads to another such row; the last man moves within its row.
///
/// Whether a move leaves the king in check need not be asked: the entry behind it is then broken.
class ForwardRows {
public:
    ForwardRows(const CheckedTable& itsTable, unsigned itsPair, unsigned itsMover);

    /// What a move into the positions of a row of the block is worth to the side that makes it.
    /// False if the row need not be looked at, since exchanging like men makes it another row.
    [[nodiscard]] bool expect(std::size_t number, RowBytes& expected);

    /// Of the last expected row, the legal positions that are lost in 127 moves.
    [[nodiscard]] Bitboard tooLong() const { return lostTooFarAway; }

private:
    struct KingStep {
        std::uint8_t to = 0;
        std::uint8_t symmetry = 0;
        std::uint16_t pair = 0;
    };

    [[nodiscard]] Bitboard placeMen(std::size_t number);
    [[nodiscard]] Bitboard attackedBy(unsigned side) const;
    void leaveBest(Bitboard legal, RowBytes& expected);
    void moveKing();
    void move(std::size_t man);
    void moveSlider(std::size_t man);
    void push(std::size_t pawn);
    void pushTwice(std::size_t pawn);
    void capture(std::size_t captor);
    void captureLast(std::size_t captor, Bitboard squaresOfLast);
    void captureWith(std::size_t captor, std::size_t victim);
    void moveLast();
    void pushLast();
    void captureWithLast(std::size_t victim);
    void raiseAt(Square ofLast, Worth worth);
    [[nodiscard]] const Worth* rowAfter(std::size_t man, Square to) const;
    [[nodiscard]] Worth afterDoubleStep(std::size_t pawn, Square to, Square ofLast) const;
    [[nodiscard]] std::size_t promotedOn(std::size_t man, Square to) const;
    [[nodiscard]] Bitboard pawnsOfOther() const;

    const CheckedTable& table;
    const Material& material;
    unsigned pair;
    unsigned mover;
    std::size_t last;     ///< index of the last man
    const Worth* others;  ///< the block with the other side to move
    std::vector<KingStep> kingSteps;

    // Of the row:
    std::size_t row = 0;
    Squares squares{};      ///< of all men but the last
    Bitboard occupied = 0;  ///< by all men but the last
    RowBytes best;
    Bitboard lostTooFarAway = 0;
};

}  // namespace brivok::tables
