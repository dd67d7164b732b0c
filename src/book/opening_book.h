#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "board/board.h"

namespace brivok {

/// What a book knows about a position: how the games that reached it ended, and an annotation of
/// the move that led to it. In the file: 24 bytes of little-endian words in this order, sorted by
/// rising key.
struct BookRecord {
    std::uint64_t key = 0;  ///< Board::hashKey of the position after the move
    std::uint32_t whiteWins = 0;
    std::uint32_t blackWins = 0;
    std::uint32_t draws = 0;
    std::uint32_t annotation = 0;  ///< the value of one of the Annotations, or NoAnnotation

    static constexpr std::size_t Bytes = 24;  ///< in the file
};

[[nodiscard]] BookRecord recordFromBytes(std::span<const unsigned char, BookRecord::Bytes> bytes);

/// "!!" and the like; empty if the value is not an annotation.
[[nodiscard]] std::string_view AnnotationText(std::uint32_t annotation);

/// The weight of a move by `mover` that led to the position of the record: wins minus losses plus
/// half the draws, scaled by the annotation.
[[nodiscard]] std::int64_t bookScore(const BookRecord& record, Side mover);

struct BookCandidate {
    Move move = NoMove;      ///< legal
    std::int64_t score = 0;  ///< see bookScore()
    BookRecord record{};     ///< of the position after the move
};

/// Random numbers for the choice of a move: 0 to MaxBookRandom, all equally likely.
inline constexpr int MaxBookRandom = 32767;
using BookRandom = std::function<int()>;

/// Picks one of the candidates at random, favouring better scores. A score of at most a fifteenth
/// of the best counts as 0. Every other score is raised by a random amount of up to 1.2 times the
/// best; the highest sum wins, the first among equals. NoMove if there are no candidates.
[[nodiscard]] Move chooseBookMove(std::span<const BookCandidate> candidates,
                                  const BookRandom& random);

/// A book file, read by binary search. It yields only legal moves, whatever the file contains.
class OpeningBook {
public:
    /// Does not open the file.
    explicit OpeningBook(std::string fileName) : name(std::move(fileName)) {}

    /// Opens the file, or reopens it. False on failure.
    [[nodiscard]] bool Open();

    /// Reads the record of the position on the board. False if the book does not have it or is
    /// closed; `record` is then meaningless.
    [[nodiscard]] bool Find(const Board& board, BookRecord& record);

    /// Opens the book and adds up its records for the positions after each legal move, except those
    /// that would be a third occurrence. Returns the number of games.
    std::uint32_t CountBookMoves(Board& board, int& moveCount, std::uint32_t& sumWhite,
                                 std::uint32_t& sumBlack, std::uint32_t& sumDraws);

    /// Picks a book move for the side to move at random; NoMove if there is none. If a legal move
    /// would repeat a position for the third time, closes the book for the rest of the game,
    /// through Board::bookGate. Logs what the book knows.
    [[nodiscard]] Move SelectMove(Board& board);

private:
    [[nodiscard]] bool openOrReport();

    /// Null if the file has no such record. Valid until the next call.
    [[nodiscard]] const BookRecord* recordAt(std::int64_t index);

    std::string name;
    std::ifstream file;
    /// By index, those read lately, none from before the book was opened. The searches for the
    /// moves of a position begin alike, and each move is looked up twice: to count the games, and
    /// as a candidate.
    std::unordered_map<std::int64_t, BookRecord> seen;
};

/// The moves that the book, which must be open, knows in this position, in the order of generation.
/// Sets `thirdOccurrence` and ends the list early if a legal move would repeat a position for the
/// third time.
[[nodiscard]] std::vector<BookCandidate> findBookCandidates(Board& board, OpeningBook& book,
                                                            bool& thirdOccurrence);

}  // namespace brivok
