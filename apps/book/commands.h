#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "game_counter.h"

namespace brivok {

/// The commands of brivok-book, without command line parsing. If a command fails it throws AppError
/// and leaves no file behind.

struct BuildOptions {
    std::vector<std::string> inputs;  ///< PGN files; "-" is standard input
    std::string output;
    CountOptions count;
    std::uint32_t minGames = 1;  ///< games a position needs for a record
    double minScore = 0;         ///< percent, for the side that moved to the position
    std::size_t memoryMB = 256;
};
/// Builds a book from games and prints what became of them.
void buildBook(const BuildOptions& options);

struct ShowOptions {
    std::string book;
    std::string fen;    ///< position to start from; empty for the start of a game
    std::string moves;  ///< moves from there, in any notation that readSan() accepts
};
/// Prints the book's moves for a position, weighted as the engine weights them.
void showBook(const ShowOptions& options);

/// Prints one line for each FEN or EPD line on standard input: key, White's wins, Black's wins,
/// draws and annotation ("-" for none). Without a record all counts are 0.
void lookUpPositions(const std::string& book);

/// Validates a book and prints its size; with `walk`, which is slow for a large book, also how many
/// of its records games can reach.
void checkBook(const std::string& book, bool walk);

/// Writes a book with the summed counts of others. If their annotations of a position differ, the
/// one backed by most games wins.
void mergeBooks(const std::vector<std::string>& inputs, const std::string& output);

}  // namespace brivok
