#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace brivok {

/// A directory of table files. Names are compared without regard to the case of A to Z; an exact
/// match comes first. The directory is listed once, and others only to look for a path that does
/// not exist as it is written.
class TableDirectory {
public:
    /// An empty name means the current directory.
    explicit TableDirectory(std::string_view name);

    /// False if it does not exist or no name in it can be that of a table.
    [[nodiscard]] bool mayHoldTables() const { return found && !(listed && entries.empty()); }

    /// The path of a table's file, given its name in lower case; empty if there is no such entry.
    [[nodiscard]] std::string pathOf(const std::string& fileName) const;

private:
    bool found = false;
    std::string prefix;   ///< of all paths, with its slash
    bool listed = false;  ///< an existing directory may refuse to be listed
    std::unordered_map<std::string, std::string> entries;  ///< by name in lower case
};

}  // namespace brivok
