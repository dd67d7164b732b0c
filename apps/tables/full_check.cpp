#include "full_check.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "geometry.h"
#include "parallel.h"
#include "table_entry.h"

namespace brivok::tables {
namespace {

/// The outcome for the side to move that leaves the other one this worth.
Outcome outcomeThatLeaves(Worth worth) {
    if (worth == NoWorth) return NoValue;
    if (worth == DrawnWorth) return Draw;
    return worth > DrawnWorth ? lossIn(movesIn(worth) - 1) : winIn(movesIn(worth));
}

}  // namespace

FullCheck::FullCheck(int itsId, TableStore& store, unsigned itsThreads)
    : id(itsId),
      threads(itsThreads),
      table(id, materialOf(descriptorOf(id).signature()), store, threads) {}

std::optional<EntryFault> FullCheck::firstFault(unsigned side) {
    first = table.entries[side].size();
    inParallel(
        threads, table.layout.pairs(),
        [&](std::uint64_t begin, std::uint64_t end) {
            for (std::uint64_t pair = begin; pair < end; ++pair) {
                checkBlock(static_cast<unsigned>(pair), side);
            }
        },
        1);
    if (numberingsDiffer) throw std::logic_error("the numbering of positions contradicts itself");
    if (table.plain[side].strayValues() != 0) checkStrays(side);
    checkPassing(side);
    if (first == table.entries[side].size()) return std::nullopt;
    return EntryFault{first, outcomeOf(table.entries[side][first]), expectedAt(first, side)};
}

void FullCheck::checkBlock(unsigned pair, unsigned side) {
    ForwardRows rows(table, pair, side);
    RowBytes expected;
    for (std::size_t row = 0; row < table.layout.rowsPerPair(); ++row) {
        if (!rows.expect(row, expected)) continue;
        const std::uint64_t start = (std::uint64_t{pair} * table.layout.rowsPerPair() + row) << 6;
        const Worth* const stored = table.plain[side].block(pair) + (row << 6);
        if (std::memcmp(stored, expected.at.data(), 64) != 0) {
            for (std::size_t i = 0; i < 64; ++i) {
                if (stored[i] != expected.at[i]) noteNumber(start + i, side);
            }
        }
        checkLookedUp(start + (row * 29 + pair) % 64, side);
        for (Bitboard rest = rows.tooLong(); rest != 0;) {
            const auto square = static_cast<unsigned>(takeNext<White>(rest));
            const std::lock_guard lock(guard);
            tooLong.push_back(
                {table.layout.squares(start + square), static_cast<std::uint8_t>(side)});
        }
    }
}

/// The numbering of rows, and the walk that fills them, must agree with the index of the position.
void FullCheck::checkLookedUp(std::uint64_t number, unsigned side) {
    const Worth stored = table.plain[side][number];
    // With both kings on the diagonal the index may be that of the reflection.
    if (stored == NoWorth || table.layout.isMirrored(table.layout.pairOf(number))) return;
    const std::uint64_t index =
        table.finder.find(table.layout.squares(number), side, NoEnPassant).index;
    const auto& file = table.entries[side];
    if (index >= file.size() || worthOfLeaving(outcomeOf(file[index])) != stored) {
        numberingsDiffer = true;
    }
}

/// Finds the first entry with a value but no position.
void FullCheck::checkStrays(unsigned side) {
    const std::uint64_t count = table.plain[side].entryCount();
    for (std::uint64_t index = 0; index < count && index < first; ++index) {
        TablePosition position;
        if (table.entries[side][index] != BrokenByte && !tablePosition(id, side, index, position)) {
            first = index;
        }
    }
}

/// Checks the entries with an en passant square.
void FullCheck::checkPassing(unsigned side) {
    const std::uint64_t start = table.plain[side].entryCount();
    inParallel(threads, table.entries[side].size() - start,
               [&](std::uint64_t begin, std::uint64_t end) {
                   for (std::uint64_t index = start + begin; index < start + end; ++index) {
                       note(index, side);
                   }
               });
}

/// Notes the entry if it is the first that contradicts its successors.
void FullCheck::note(std::uint64_t index, unsigned side) {
    std::uint64_t known = first;
    if (index >= known || byteOf(expectedAt(index, side)) == table.entries[side][index]) return;
    while (index < known && !first.compare_exchange_weak(known, index)) {
    }
}

/// Notes the entry of a position by its number. If both kings stand on the diagonal that may be the
/// entry of its reflection.
void FullCheck::noteNumber(std::uint64_t number, unsigned side) {
    Squares squares = table.layout.squares(number);
    note(table.finder.find(squares, side, NoEnPassant).index, side);
    for (auto& square : squares) square = static_cast<std::uint8_t>(mirrored(square));
    if (!table.material.hasPawns()) note(table.finder.find(squares, side, NoEnPassant).index, side);
}

Outcome FullCheck::expectedAt(std::uint64_t index, unsigned side) const {
    Position position;
    if (!legalPosition(id, table.material, side, index, position)) return NoValue;
    return outcomeThatLeaves(table.leavingBySuccessors(position));
}

std::optional<Position> FullCheck::winTooLong() const {
    for (const Position& lost : tooLong) {
        const unsigned winner = lost.mover ^ 1U;
        for (std::size_t man = 0; man < table.material.count; ++man) {
            if (table.material.side[man] != winner) continue;
            for (std::uint8_t from = 0; from < 64; ++from) {
                Position before{lost.squares, static_cast<std::uint8_t>(winner)};
                before.squares[man] = from;
                if (!isLegal(table.material, before)) continue;
                const LegalMoves moves(table.material, before);
                const Square to = lost.squares[man];
                if ((moves.quiet(man) & bit[to]) == 0) continue;
                if (positionAfter(table.material, before, man, to).ep != lost.ep) continue;
                if (!isWin(outcomeThatLeaves(table.leaving(before)))) return before;
            }
        }
    }
    return std::nullopt;
}

}  // namespace brivok::tables
