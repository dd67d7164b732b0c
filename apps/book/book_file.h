#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "../common/files.h"
#include "book/opening_book.h"

namespace brivok {

/// Games that have reached the position.
[[nodiscard]] constexpr std::uint64_t gamesOf(const BookRecord& record) {
    return std::uint64_t{record.whiteWins} + record.blackWins + record.draws;
}

/// Adds to a count of games, which stays at its greatest value once it is there.
constexpr void addGames(std::uint32_t& count, std::uint32_t games) {
    count = games > ~count ? ~std::uint32_t{0} : count + games;
}

/// The file that a book written to `name` will be: links are followed. Throws AppError when it is
/// there and no plain file.
[[nodiscard]] std::filesystem::path bookTarget(const std::string& name);

/// Writes a book file, which is there when it is committed; errors are those of a NewFile.
class BookWriter {
public:
    /// Throws AppError also when `name` is something else than a file.
    explicit BookWriter(const std::string& name) : file(bookTarget(name)) {}

    /// Appends a record, whose key must be above that of the one before.
    void add(const BookRecord& record);

    void commit() { file.finish(); }

    [[nodiscard]] std::uint64_t recordCount() const { return records; }

private:
    NewFile file;
    std::uint64_t records = 0;
};

/// Reads a book file from start to end and holds it against what a book must be.
class BookReader {
public:
    explicit BookReader(const std::string& name);

    /// The next record; false at the end. Throws AppError, with the place, at a record that is cut
    /// off, out of order, doubled, without games or with an unknown annotation.
    [[nodiscard]] bool next(BookRecord& record);

    [[nodiscard]] const std::string& name() const { return fileName; }
    [[nodiscard]] std::uint64_t recordCount() const { return records; }

private:
    [[noreturn]] void fault(const std::string& text) const;

    std::string fileName;
    FileHandle file;
    std::uint64_t records = 0;
    std::uint64_t lastKey = 0;
};

}  // namespace brivok
