#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "book/opening_book.h"
#include "files.h"
#include "interrupt.h"

namespace brivok {

/// Games that have reached the position.
[[nodiscard]] constexpr std::uint64_t gamesOf(const BookRecord& record) {
    return std::uint64_t{record.whiteWins} + record.blackWins + record.draws;
}

/// Adds to a count of games, which stays at its greatest value once it is there.
constexpr void addGames(std::uint32_t& count, std::uint32_t games) {
    count = games > ~count ? ~std::uint32_t{0} : count + games;
}

/// Writes a book file under a temporary name in the same folder. Only commit() gives it its own
/// name, and until then a book of that name stays as it was; without it nothing is left.
class BookWriter {
public:
    /// Throws BookError when `name` is something else than a file or its folder takes none.
    explicit BookWriter(const std::string& name);
    BookWriter(const BookWriter&) = delete;
    BookWriter& operator=(const BookWriter&) = delete;
    ~BookWriter();

    /// Appends a record, whose key must be above that of the one before. Throws BookError when the
    /// disk is full and Interrupted when the user gives up.
    void add(const BookRecord& record);

    void commit();

    [[nodiscard]] std::uint64_t recordCount() const { return records; }

private:
    InterruptWatch interrupt;
    std::filesystem::path target;
    FreshFile fresh;
    std::uint64_t records = 0;
};

/// The file that a book written to `name` will be: links are followed. Throws BookError when it is
/// there and no plain file.
[[nodiscard]] std::filesystem::path bookTarget(const std::string& name);

/// Reads a book file from start to end and holds it against what a book must be.
class BookReader {
public:
    explicit BookReader(const std::string& name);

    /// The next record; false at the end. Throws BookError, with the place, at a record that is cut
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
