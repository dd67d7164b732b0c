#include "egtb/tablebase_probe.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

#include "egtb/block_cache.h"
#include "egtb/material_lookup.h"
#include "egtb/table_files.h"
#include "egtb/table_index.h"

namespace brivok {

namespace {

PieceCounts countMen(const Board& board) {
    const auto countOf = [&board](Kind kind, Side side) {
        return static_cast<std::uint8_t>(popCount(board.pieces[pieceOf(kind, side)]));
    };
    PieceCounts counts{};
    for (std::size_t i = 0; i < CountedKinds; ++i) {
        counts[i] = countOf(TableKinds[i], White);
        counts[CountedKinds + i] = countOf(TableKinds[i], Black);
    }
    return counts;
}

/// The men of one side, which must have at most three of each kind.
PieceList listMen(const Board& board, Side side) {
    PieceList list{};
    for (std::size_t i = 0; i < CountedKinds; ++i) {
        std::size_t slot = i * SlotsPerType;
        for (Bitboard set = board.pieces[pieceOf(TableKinds[i], side)]; set != 0; set &= set - 1) {
            list[slot++] = mirrorSquare[firstBit(set)];
        }
    }
    list[KingSlot] = mirrorSquare[board.kingSquare[whiteFirst(side)]];
    return list;
}

bool hasFile(const TablebaseDescriptor& table, unsigned side) {
    const unsigned s = fileSide(table, side);
    const TableSide* const files = tableSide(table.id, s).get();
    if (files == nullptr) return false;
    const auto parts = std::span(files->parts).first(partCount(table, s));
    return std::any_of(parts.begin(), parts.end(),
                       [](const TablePart& part) { return !part.fileName.empty(); });
}

/// The `kppkp` files in circulation have wrong values at these indices of side 1.
constexpr int KppkpId = 36;
constexpr std::array<std::uint64_t, 7> FaultyKppkp = {56802428, 56811076, 56849992, 56858640,
                                                      59592489, 67775659, 71071628};
constexpr std::int32_t FaultyKppkpValue = -32639;

bool isFaulty(int tableId, unsigned side, std::uint64_t index) {
    return tableId == KppkpId && side == 1 &&
           std::find(FaultyKppkp.begin(), FaultyKppkp.end(), index) != FaultyKppkp.end();
}

/// Offset from a byte's mate value to the wide scale. Mates that a byte cannot hold have no value,
/// except for the two just beyond either end.
constexpr std::int32_t WideShift = 32640;

std::int32_t widened(std::int32_t stored) {
    switch (stored) {
        case 0: return 0;
        case 127: return NoValue;
        case -127: return -WideShift;
        case -128: return WideShift;
        default: return stored > 0 ? stored + WideShift : stored - WideShift;
    }
}

std::int32_t scoreOf(std::int32_t value, std::int32_t ply) {
    if (value > 0) return 2 * (value - WideShift) + 32514 - ply;
    if (value < 0) return 2 * (value + WideShift) - 32515 + ply;
    return 0;
}

}  // namespace

bool TablebaseProbe(const Board& board, std::int32_t ply, std::int32_t& score) {
    ++tablebases.tbProbes;

    // The table, and which of its sides is White. A position set up by hand can have more than two
    // kings.
    const PieceCounts counts = countMen(board);
    int id = TableIdFromCounts(counts);
    if (id == 0) return false;
    if (popCount(board.occupied()) != std::accumulate(counts.begin(), counts.end(), 2) ||
        board.squares[board.kingSquare[0]] != WhiteKing ||
        board.squares[board.kingSquare[1]] != BlackKing) {
        return false;
    }
    const bool whiteFirstSide = id > 0;
    if (!whiteFirstSide) id = -id;
    const Side firstSide = whiteFirstSide ? White : Black;
    const unsigned side = board.sideToMove == firstSide ? 0 : 1;
    if (!hasFile(descriptorOf(id), side)) return false;

    // The index
    const int ep =
        board.epSquare == NoSquare ? NoEnPassant : static_cast<int>(mirrorSquare[board.epSquare]);
    const std::uint64_t index =
        tableIndex(id, side, listMen(board, firstSide), listMen(board, opposite(firstSide)), ep,
                   whiteFirstSide ? 0 : 1);
    const std::int32_t value = ProbeTableValue(id, side, index);
    if (value == NoValue) return false;

    ++tablebases.tbHits;
    score = scoreOf(value, ply);
    return true;
}

std::int32_t ProbeTableValue(int tableId, unsigned side, std::uint64_t index) {
    const TablebaseDescriptor& table = descriptorOf(tableId);
    // NoIndex exceeds every size. There are no entries after the last legal position.
    if (index >= table.size[side]) return NoValue;
    if (isFaulty(tableId, side, index)) return FaultyKppkpValue;

    const unsigned s = fileSide(table, side);
    const bool wide = (table.flags & TwoByte) != 0;
    const std::uint64_t at = wide ? index * 2 : index;
    const auto chunk = static_cast<std::uint32_t>(at / ChunkBytes);
    const auto offset = static_cast<std::uint32_t>(at % ChunkBytes);
    const std::int32_t low = blockCache.ReadCacheByte(tableId, s, chunk, offset);
    if (low == NoValue) return NoValue;
    if (!wide) return widened(low);
    const std::int32_t high = blockCache.ReadCacheByte(tableId, s, chunk, offset + 1);
    if (high == NoValue) return NoValue;
    return high * 256 + (low & 0xFF);
}

}  // namespace brivok
