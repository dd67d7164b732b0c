#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "board/board.h"

namespace brivok {

/// What a book knows of a position: how the games that reached it have ended, and a judgement of
/// the move that led there. In the file, 24 bytes of little-endian words in this order, sorted by
/// rising key.
struct BookRecord {
    std::uint64_t key = 0;         ///< Board::hashKey of the position after the move
    std::uint32_t whiteWins = 0;   ///< games that White has won
    std::uint32_t blackWins = 0;   ///< games that Black has won
    std::uint32_t draws = 0;       ///< games drawn
    std::uint32_t annotation = 0;  ///< value of one of the Annotations, or NoAnnotation

    static constexpr std::size_t Bytes = 24;  ///< in the file
};

/// The record that stands in these bytes.
[[nodiscard]] BookRecord recordFromBytes(std::span<const unsigned char, BookRecord::Bytes> bytes);

/// "!!" and the like; empty for a value that is no annotation.
[[nodiscard]] std::string_view AnnotationText(std::uint32_t annotation);

/// The weight of a move that `mover` has made into the position of the record: games won less games
/// lost and half of the draws, scaled by the annotation.
[[nodiscard]] std::int64_t bookScore(const BookRecord& record, Side mover);

/// A move that the book knows.
struct BookCandidate {
    Move move = NoMove;      ///< a legal one
    std::int64_t score = 0;  ///< see bookScore()
    BookRecord record{};     ///< of the position after the move
};

/// The random numbers of a choice: 0 to MaxBookRandom, all equally likely.
inline constexpr int MaxBookRandom = 32767;
using BookRandom = std::function<int()>;  ///< gives the next random number

/// Picks one of the candidates at random, better scores more often. One with no more than a
/// fifteenth of the best score counts as 0; the others are lifted by up to 1.2 times the best, with
/// a number of their own each, and the highest wins, the first among equals. 0 when there are none.
[[nodiscard]] Move chooseBookMove(std::span<const BookCandidate> candidates,
                                  const BookRandom& random);

/// A book file, read by binary search. Whatever the file holds, nothing but a legal move comes of
/// it.
class OpeningBook {
public:
    /// Opens nothing.
    explicit OpeningBook(std::string fileName) : name(std::move(fileName)) {}

    /// Opens the file, anew if it was open. False when that fails.
    [[nodiscard]] bool Open();

    /// The record of the position on the board. False when the book does not know it or is closed;
    /// what `record` then holds means nothing.
    [[nodiscard]] bool Find(const Board& board, BookRecord& record);

    /// Opens the book and adds up what it knows of the positions after each legal move, without
    /// those that would occur for the third time. Returns the number of games.
    std::uint32_t CountBookMoves(Board& board, int& moveCount, std::uint32_t& sumWhite,
                                 std::uint32_t& sumBlack, std::uint32_t& sumDraws);

    /// A move for the side to move, chosen at random among those of the book; 0 when there is none.
    /// Closes the book for the rest of the game, by Board::bookGate, when a legal move would bring
    /// a position for the third time. Notes in the log what the book knows.
    [[nodiscard]] Move SelectMove(Board& board);

private:
    [[nodiscard]] bool openOrReport();

    std::string name;
    std::ifstream file;
};

/// The moves of the position that the book, which is open, knows, in the order of generation.
/// `thirdOccurrence` tells that a legal move would repeat a position for the third time; the list
/// then ends there.
[[nodiscard]] std::vector<BookCandidate> findBookCandidates(Board& board, OpeningBook& book,
                                                            bool& thirdOccurrence);

}  // namespace brivok
