#include "row_bytes.h"

#include <algorithm>
#include <utility>

#include "geometry.h"
#include "layout.h"

namespace brivok::tables {
namespace {

std::uint64_t maxOfBytes(std::uint64_t a, std::uint64_t b) {
    auto bytes = std::bit_cast<std::array<std::uint8_t, 8>>(a);
    const auto others = std::bit_cast<std::array<std::uint8_t, 8>>(b);
    for (std::size_t i = 0; i < 8; ++i) bytes[i] = greater(bytes[i], others[i]);
    return std::bit_cast<std::uint64_t>(bytes);
}

/// Each byte of a rank from the square so many files to its right; 0 from beyond the edge.
template <int Files>
std::uint64_t shifted(std::uint64_t rank) {
    constexpr bool LowestFirst = std::endian::native == std::endian::little;
    constexpr int Bits = LowestFirst ? 8 * Files : -8 * Files;
    if constexpr (Bits >= 0) return rank >> Bits;
    if constexpr (Bits < 0) return rank << -Bits;
}

/// Raises by the bytes a fixed number of files and ranks away.
template <int Files, int Ranks>
void raiseByStep(RankWords& best, const RankWords& row) {
    constexpr auto Up = static_cast<std::size_t>(Ranks > 0 ? Ranks : 0);
    constexpr auto Down = static_cast<std::size_t>(Ranks < 0 ? -Ranks : 0);
    for (std::size_t rank = Down; rank < 8 - Up; ++rank) {
        best[rank] = maxOfBytes(best[rank], shifted<Files>(row[rank + Up - Down]));
    }
}

/// Raises by the bytes along a line, up to the first square that is not empty.
template <int Files, int Ranks>
void raiseByLine(RankWords& best, const RankWords& row, const RankWords& empty) {
    if constexpr (Ranks == 0) {
        RankWords reach{};
        for (int step = 1; step < 8; ++step) {
            for (std::size_t rank = 0; rank < 8; ++rank) {
                reach[rank] = shifted<Files>(maxOfBytes(row[rank], reach[rank]) & empty[rank]);
            }
        }
        for (std::size_t rank = 0; rank < 8; ++rank)
            best[rank] = maxOfBytes(best[rank], reach[rank]);
    } else {
        std::uint64_t reach = 0;
        for (std::size_t step = 1; step < 8; ++step) {
            const std::size_t rank = Ranks > 0 ? 8 - step : step - 1;  // where the line comes from
            const std::size_t next = Ranks > 0 ? rank - 1 : rank + 1;
            reach = shifted<Files>(maxOfBytes(row[rank], reach) & empty[rank]);
            best[next] = maxOfBytes(best[next], reach);
        }
    }
}

void raiseByDiagonals(RankWords& best, const RankWords& row, const RankWords& empty) {
    raiseByLine<1, 1>(best, row, empty);
    raiseByLine<-1, 1>(best, row, empty);
    raiseByLine<1, -1>(best, row, empty);
    raiseByLine<-1, -1>(best, row, empty);
}

void raiseByFilesAndRanks(RankWords& best, const RankWords& row, const RankWords& empty) {
    raiseByLine<1, 0>(best, row, empty);
    raiseByLine<-1, 0>(best, row, empty);
    raiseByLine<0, 1>(best, row, empty);
    raiseByLine<0, -1>(best, row, empty);
}

void raiseByKnight(RankWords& best, const RankWords& row) {
    raiseByStep<1, 2>(best, row);
    raiseByStep<2, 1>(best, row);
    raiseByStep<2, -1>(best, row);
    raiseByStep<1, -2>(best, row);
    raiseByStep<-1, -2>(best, row);
    raiseByStep<-2, -1>(best, row);
    raiseByStep<-2, 1>(best, row);
    raiseByStep<-1, 2>(best, row);
}

/// Exchanges the squares that differ in one bit of the file with those that differ in the same bit
/// of the rank.
template <std::size_t Distance>
void transposeBit(RowBytes& row) {
    for (std::size_t rank = 0; rank < 8; ++rank) {
        if ((rank & Distance) != 0) continue;
        for (std::size_t file = 0; file < 8; ++file) {
            if ((file & Distance) == 0) continue;
            std::swap(row.at[8 * rank + file], row.at[8 * (rank + Distance) + file - Distance]);
        }
    }
}

}  // namespace

RowBytes permuted(const std::uint8_t* row, unsigned symmetry) {
    RowBytes result;
    std::memcpy(result.at.data(), row, 64);
    if ((symmetry & Layout::Transpose) != 0) {
        transposeBit<1>(result);
        transposeBit<2>(result);
        transposeBit<4>(result);
    }
    RankWords ranks = ranksOf(result.at.data());
    if ((symmetry & Layout::FlipRanks) != 0) std::reverse(ranks.begin(), ranks.end());
    if ((symmetry & Layout::FlipFiles) != 0) {
        for (std::uint64_t& rank : ranks) rank = __builtin_bswap64(rank);
    }
    std::memcpy(result.at.data(), ranks.data(), 64);
    return result;
}

void raiseByMovesWithin(RowBytes& best, const std::uint8_t* row, Kind man, unsigned side,
                        Bitboard occupied) {
    const RankWords from = ranksOf(row);
    RankWords to = ranksOf(best.at.data());
    const RankWords empty = ranksOf(maskOf(~occupied).at.data());
    switch (man) {
        case Kind::Knight: raiseByKnight(to, from); break;
        case Kind::Bishop: raiseByDiagonals(to, from, empty); break;
        case Kind::Rook: raiseByFilesAndRanks(to, from, empty); break;
        case Kind::Queen:
            raiseByDiagonals(to, from, empty);
            raiseByFilesAndRanks(to, from, empty);
            break;
        default:
            if (side == 0) {
                raiseByStep<0, 1>(to, from);
            } else {
                raiseByStep<0, -1>(to, from);
            }
    }
    std::memcpy(best.at.data(), to.data(), 64);
}

}  // namespace brivok::tables
