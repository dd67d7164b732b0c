#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// The numbers of a DATACOMP file (`.emd`) that its reader and its writer share. A header is
///   80 bytes of fixed fields, big-endian;
///   8 bytes of checksums for each block, of its decoded and of its compressed bytes;
///   the block table, from the most significant bit on: fields of `blockLog` bits for the
///     compressed size of each block, the decoded size of the last one, and the distances;
///   from the next whole byte on, the code lengths of the symbols in bits;
///   the checksum of all before it, 4 bytes,
/// and the blocks follow. A size of 0 stands for the full block.
namespace brivok::datacomp {

/// An array, not a view: of a literal in a header, each file may have a copy of its own, and its
/// two ends need not come from the same one.
inline constexpr auto Signature =
    std::to_array("Compressed by DATACOMP v 1.0 (c) 1991--1998 Tomasz Velbrin\r\n\0\0\0");
static_assert(Signature.size() == 64);

inline constexpr std::size_t HeaderSizeOffset = 64;  ///< 32 bits, the checksum at the end included
inline constexpr std::size_t BlockLogOffset = 70;    ///< a byte, log2 of the block size
inline constexpr std::size_t DistanceCountOffset = 71;  ///< a byte, 24
inline constexpr std::size_t BlockCountOffset = 72;     ///< 32 bits
inline constexpr std::size_t VariantOffset = 76;        ///< 32 bits, `Variant`
inline constexpr std::size_t BlockSumsOffset = 80;      ///< the end of the fixed fields
inline constexpr std::size_t BlockSumsSize = 8;         ///< bytes for each block
inline constexpr std::size_t ChecksumSize = 4;          ///< bytes at the end of the header

/// Bytes, of a file without blocks.
inline constexpr std::uint32_t SmallestHeader = BlockSumsOffset + ChecksumSize;
inline constexpr std::uint32_t Variant = 0x004001F5;  ///< of the format, the only one
inline constexpr int LargestBlockLog = 16;            ///< a block has at most 2^16 bytes

inline constexpr int DistanceCount = 24;    ///< distances of matches
inline constexpr int FirstMatch = 256;      ///< symbols below are bytes
inline constexpr int LengthCodes = 32;      ///< for each distance
inline constexpr int PlainLengths = 15;     ///< the first of them say a length of 1 .. 15
inline constexpr unsigned LooseMatch = 16;  ///< a match up to this length may pass the block's end
/// Bytes and matches together.
inline constexpr int SymbolCount = FirstMatch + DistanceCount * LengthCodes;

/// The checksum over `bytes`: a CRC-32 (reversed polynomial) that divides on clear bits, begins at
/// 0 and is not inverted at the end.
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

/// The number in the four bytes at `bytes`.
[[nodiscard]] constexpr std::uint32_t bigEndian32(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
           std::uint32_t{bytes[2]} << 8U | std::uint32_t{bytes[3]};
}

}  // namespace brivok::datacomp
