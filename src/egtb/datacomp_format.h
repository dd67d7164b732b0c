#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// Constants of a DATACOMP file (`.emd`) that reader and writer share. A header has
///   80 bytes of fixed fields, big-endian;
///   8 bytes per block: checksums of its decoded and of its compressed bytes;
///   the block table, most significant bit first: fields of `blockLog` bits for the
///     compressed size of each block, the decoded size of the last one, and the distances;
///   from the next whole byte on, the code lengths of the symbols in bits;
///   a checksum of everything before it, 4 bytes.
/// The blocks follow. A size of 0 stands for the full block.
namespace brivok::datacomp {

/// An array rather than a view: each translation unit may have its own copy of a literal, so the
/// two ends of a view need not come from the same one.
inline constexpr auto Signature =
    std::to_array("Compressed by DATACOMP v 1.0 (c) 1991--1998 Tomasz Velbrin\r\n\0\0\0");
static_assert(Signature.size() == 64);

inline constexpr std::size_t HeaderSizeOffset = 64;     ///< 32 bits, includes the final checksum
inline constexpr std::size_t BlockLogOffset = 70;       ///< 1 byte, log2 of the block size
inline constexpr std::size_t DistanceCountOffset = 71;  ///< 1 byte, always 24
inline constexpr std::size_t BlockCountOffset = 72;     ///< 32 bits
inline constexpr std::size_t VariantOffset = 76;        ///< 32 bits, always `Variant`
inline constexpr std::size_t BlockSumsOffset = 80;      ///< end of the fixed fields
inline constexpr std::size_t BlockSumsSize = 8;         ///< bytes per block
inline constexpr std::size_t ChecksumSize = 4;          ///< bytes, at the end of the header

/// Bytes, for a file without blocks.
inline constexpr std::uint32_t SmallestHeader = BlockSumsOffset + ChecksumSize;
inline constexpr std::uint32_t Variant = 0x004001F5;  ///< the only one
inline constexpr int LargestBlockLog = 16;            ///< log2 of the largest block

inline constexpr int DistanceCount = 24;  ///< number of match distances
inline constexpr int FirstMatch = 256;    ///< lower symbols are bytes
inline constexpr int LengthCodes = 32;    ///< per distance
inline constexpr int PlainLengths = 15;   ///< the first of these are the lengths 1 to 15
/// A match up to this length may extend past the end of the block.
inline constexpr unsigned LooseMatch = 16;
/// Bytes and matches.
inline constexpr int SymbolCount = FirstMatch + DistanceCount * LengthCodes;

/// A CRC-32 (reversed polynomial) that divides on clear bits, starts at 0 and is not inverted at
/// the end.
[[nodiscard]] constexpr std::uint32_t checksum(std::span<const std::uint8_t> bytes) {
    constexpr auto table = [] {
        std::array<std::uint32_t, 256> entries{};
        for (std::uint32_t i = 0; i < entries.size(); ++i) {
            std::uint32_t entry = i;
            for (int step = 0; step < 8; ++step) {
                entry = (entry >> 1U) ^ ((entry & 1U) == 0 ? 0xEDB88320U : 0U);
            }
            entries[i] = entry;
        }
        return entries;
    }();
    std::uint32_t crc = 0;
    for (const std::uint8_t byte : bytes) crc = (crc >> 8U) ^ table[(crc ^ byte) & 0xFFU];
    return crc;
}

[[nodiscard]] constexpr std::uint32_t bigEndian32(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
           std::uint32_t{bytes[2]} << 8U | std::uint32_t{bytes[3]};
}

}  // namespace brivok::datacomp
