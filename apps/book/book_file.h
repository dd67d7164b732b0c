#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "../common/files.h"
#include "book/opening_book.h"

namespace brivok {

/// Number of games that reached the position.
[[nodiscard]] constexpr std::uint64_t gamesOf(const BookRecord& record) {
    return std::uint64_t{record.whiteWins} + record.blackWins + record.draws;
}

/// Adds to a count of games, saturating at its maximum.
constexpr void addGames(std::uint32_t& count, std::uint32_t games) {
    count = games > ~count ? ~std::uint32_t{0} : count + games;
}

/// Opens a book for reading. Throws AppError as openForReading() does, and for a book in the format
/// of other programs.
[[nodiscard]] FileHandle openBookFile(const std::string& name);

/// The file that will hold a book written to `name`: links are followed. Throws AppError if it
/// exists and is not a plain file.
[[nodiscard]] std::filesystem::path bookTarget(const std::string& name);

/// Writes a book file, which appears when it is committed. Fails as NewFile does.
class BookWriter {
public:
    /// Throws AppError also if `name` exists and is not a file.
    explicit BookWriter(const std::string& name) : file(bookTarget(name)) {}

    /// Appends a record. Its key must be greater than the previous one.
    void add(const BookRecord& record);

    void commit() { file.finish(); }

    [[nodiscard]] std::uint64_t recordCount() const { return records; }

private:
    NewFile file;
    std::uint64_t records = 0;
};

/// Reads a book file from start to end and validates it.
class BookReader {
public:
    /// Opens the book as openBookFile() does.
    explicit BookReader(const std::string& name);

    /// Reads the next record; false at the end. Throws AppError, with the position in the file, for
    /// a record that is truncated, out of order, duplicate, without games or with an unknown
    /// annotation.
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
