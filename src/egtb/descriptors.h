#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace brivok {

/// Bits of TablebaseDescriptor::flags.
inline constexpr std::uint32_t SameForBoth = 1;  ///< one file, side 0, serves both sides
inline constexpr std::uint32_t TwoByte = 2;      ///< 16-bit entries on the wide scale
inline constexpr std::uint32_t Split = 4;        ///< parts of 2^31 bytes, each a file

/// One Nalimov table that can exist: what its name, its size and the form of its files are.
struct TablebaseDescriptor {
    std::int32_t id = 0;                  ///< its place in the array
    std::uint32_t flags = 0;              ///< of the bits above
    std::array<char, 8> name{};           ///< signature such as "kqkr", zero-filled
    std::array<std::uint64_t, 2> size{};  ///< entries in the file by side to move

    /// The name without its padding.
    [[nodiscard]] constexpr std::string_view signature() const { return name.data(); }
};

/// Ids run from 1; entry 0 is the table of the bare kings, which has no files.
inline constexpr int TableCount = 441;
extern const std::array<TablebaseDescriptor, TableCount> tablebaseDescriptors;  ///< by id

}  // namespace brivok
