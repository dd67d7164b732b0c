#pragma once

#include <cstdint>

namespace brivok::tables {

/// What it takes to make a table, and to keep it. Time and the packed size are estimates from
/// tables that were measured; the processor and the mates in a table make a factor of two of
/// difference. Memory and the plain size follow from the tables' sizes.
struct TableCosts {
    double seconds = 0;         ///< of processor time to make it
    double packSeconds = 0;     ///< of processor time to pack it
    double adoptSeconds = 0;    ///< of processor time to sample and record it
    double checkSeconds = 0;    ///< of processor time to compare it with its sums
    std::uint64_t memory = 0;   ///< bytes, at the peak, the tables below it included
    std::uint64_t scratch = 0;  ///< bytes of disk while it is made, besides its files
    std::uint64_t plain = 0;    ///< bytes of its files
    std::uint64_t packed = 0;   ///< bytes of its packed files
};

/// The costs of a table; those below it must exist.
[[nodiscard]] TableCosts costsOf(int id);

/// The same with as little memory as possible: distances are kept on disk.
[[nodiscard]] TableCosts costsWithScratch(int id);

/// Bytes of memory that packing a file takes, whatever its size.
inline constexpr std::uint64_t PackingMemory = 128'000'000;

}  // namespace brivok::tables
