#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "game_counter.h"

namespace brivok {

/// The commands of brivok-book, without their command lines. Each throws AppError when it cannot
/// do what it should, and leaves no file behind then.

struct BuildOptions {
    std::vector<std::string> inputs;  ///< PGN files; "-" is standard input
    std::string output;
    CountOptions count;
    std::uint32_t minGames = 1;  ///< of a position that gets a record
    double minScore = 0;         ///< percent, for the side that moved to the position
    std::size_t memoryMB = 256;
};
/// Builds a book from games and prints what has become of them.
void buildBook(const BuildOptions& options);

struct ShowOptions {
    std::string book;
    std::string fen;    ///< of the position to begin with; empty for the start of a game
    std::string moves;  ///< moves from there, in any notation that readSan() takes
};
/// Prints the moves that a book has for a position, as the engine would weigh them.
void showBook(const ShowOptions& options);

/// Prints the record of each position that standard input names by a FEN or EPD line: key, wins of
/// White, wins of Black, draws and annotation, "-" for none; all counts are 0 without a record.
void lookUpPositions(const std::string& book);

/// Holds a book against what a book must be and prints how much there is in it; with the walk,
/// which takes its time in a large book, also how much of it games can come to.
void checkBook(const std::string& book, bool walk);

/// Writes a book with the added-up counts of others. Where their annotations of a position differ,
/// the one that most games stand behind stays.
void mergeBooks(const std::vector<std::string>& inputs, const std::string& output);

}  // namespace brivok
