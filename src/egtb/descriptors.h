#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace brivok {

/// Bits of TablebaseDescriptor::flags.
inline constexpr std::uint32_t SameForBoth = 1;  ///< one file, for side 0, serves both sides
inline constexpr std::uint32_t TwoByte = 2;      ///< 16-bit entries on the wide scale
inline constexpr std::uint32_t Split = 4;        ///< in files of 2^31 bytes each

/// A Nalimov table: its name, its size and the form of its files. The table need not be installed.
struct TablebaseDescriptor {
    std::int32_t id = 0;                  ///< index in tablebaseDescriptors
    std::uint32_t flags = 0;              ///< SameForBoth, TwoByte, Split
    std::array<char, 8> name{};           ///< signature such as "kqkr", zero-filled
    std::array<std::uint64_t, 2> size{};  ///< entries, by side to move

    /// The name without its zero padding.
    [[nodiscard]] constexpr std::string_view signature() const { return name.data(); }
};

/// Ids start at 1; entry 0 is the table of bare kings, which has no files.
inline constexpr int TableCount = 441;
extern const std::array<TablebaseDescriptor, TableCount> tablebaseDescriptors;  ///< by id

/// The table of an id, 0 to 440.
[[nodiscard]] inline const TablebaseDescriptor& descriptorOf(int id) {
    return tablebaseDescriptors[static_cast<std::size_t>(id)];
}

}  // namespace brivok
