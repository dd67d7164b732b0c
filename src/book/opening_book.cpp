#include "book/opening_book.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <random>
#include <utility>

#include "board/coordinate.h"
#include "book/annotation.h"
#include "movegen/legal_moves.h"
#include "shell/base/report.h"

namespace brivok {

namespace {

const Annotation* findAnnotation(std::uint32_t value) {
    const auto* found = std::ranges::find(Annotations, value, &Annotation::value);
    return found == Annotations.end() ? nullptr : found;
}

/// Initial value in the search for the highest score.
constexpr std::int64_t LeastScore = -32767;
/// A move is considered if its score times this exceeds the best score.
constexpr std::int64_t LeastShare = 15;
/// The random part of a score is at most the best score times this.
constexpr double RandomPart = 1.2;

/// If a legal move repeats a position this often, the choice is left to the search.
constexpr int ThirdOccurrence = 3;

/// A position takes up to a few thousand records. One book may serve any number of positions.
constexpr std::size_t MostSeen = 1 << 14;

std::uint64_t littleEndian(std::span<const unsigned char> bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;) value = value << 8U | bytes[i];
    return value;
}

std::uint32_t word(std::span<const unsigned char, BookRecord::Bytes> bytes, std::size_t offset) {
    return static_cast<std::uint32_t>(littleEndian(bytes.subspan(offset, 4)));
}

/// Visits the legal moves in the order of the general generators, even in check. Those generators
/// also produce castling out of check, which is illegal.
template <typename Visit>
void forEachBookMove(Board& board, Visit visit) {
    MoveList moves;
    const bool inCheck = board.inCheck();
    generateMoves(board, moves);
    forEachLegalOf(board, generated(board, moves), visit,
                   [inCheck](Move move) { return !inCheck || moveCastle(move) == NoCastling; });
}

bool isThirdOccurrence(const Board& board) {
    return board.countRepetitions(0).inGame >= ThirdOccurrence;
}

}  // namespace

BookRecord recordFromBytes(std::span<const unsigned char, BookRecord::Bytes> bytes) {
    return {.key = littleEndian(bytes.first(8)),
            .whiteWins = word(bytes, 8),
            .blackWins = word(bytes, 12),
            .draws = word(bytes, 16),
            .annotation = word(bytes, 20)};
}

std::string_view AnnotationText(std::uint32_t annotation) {
    const Annotation* known = findAnnotation(annotation);
    return known == nullptr ? std::string_view() : known->glyph;
}

std::int64_t bookScore(const BookRecord& record, Side mover) {
    const std::int64_t balance = std::int64_t{record.whiteWins} - record.blackWins;
    const std::int64_t score = record.draws / 2 + (mover == White ? balance : -balance);
    const Annotation* known = findAnnotation(record.annotation);
    return known == nullptr ? score : score * known->factor / known->divisor;
}

Move chooseBookMove(std::span<const BookCandidate> candidates, const BookRandom& random) {
    std::int64_t best = LeastScore;
    for (const BookCandidate& candidate : candidates) best = std::max(best, candidate.score);

    Move chosen = NoMove;
    std::int64_t highest = LeastScore;
    for (const BookCandidate& candidate : candidates) {
        std::int64_t score = 0;
        if (LeastShare * candidate.score > best) {
            const double part = static_cast<double>(random()) / MaxBookRandom;
            score = candidate.score +
                    static_cast<std::int64_t>(part * static_cast<double>(best) * RandomPart);
        }
        if (score > highest) {
            highest = score;
            chosen = candidate.move;
        }
    }
    return chosen;
}

bool OpeningBook::Open() {
    if (file.is_open()) file.close();
    file.clear();
    seen.clear();
    file.rdbuf()->pubsetbuf(nullptr, 0);  // a search jumps about: it would use little of a buffer
    file.open(name, std::ios::binary);
    file.seekg(0);
    return file.is_open();
}

bool OpeningBook::openOrReport() {
    if (Open()) return true;
    Note("I can't open file %s!\n", name.c_str());
    return false;
}

bool OpeningBook::Find(const Board& board, BookRecord& record) {
    if (!file.is_open()) return false;
    file.clear();
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    std::int64_t low = 0;
    std::int64_t high = size / static_cast<std::streamoff>(BookRecord::Bytes);
    while (low <= high) {
        const std::int64_t mid = (low + high) / 2;
        // Past the last record there is none, and `record` is unchanged.
        if (const BookRecord* const read = recordAt(mid)) record = *read;
        if (record.key == board.hashKey) return true;
        if (record.key < board.hashKey) {
            low = mid + 1;
        } else {
            high = mid - 1;
        }
    }
    return false;
}

const BookRecord* OpeningBook::recordAt(std::int64_t index) {
    const auto known = seen.find(index);
    if (known != seen.end()) return &known->second;
    std::array<unsigned char, BookRecord::Bytes> bytes;
    file.seekg(index * static_cast<std::streamoff>(BookRecord::Bytes));
    if (!file.read(reinterpret_cast<char*>(bytes.data()), bytes.size())) return nullptr;
    if (seen.size() == MostSeen) seen.clear();
    return &seen.emplace(index, recordFromBytes(bytes)).first->second;
}

std::uint32_t OpeningBook::CountBookMoves(Board& board, int& moveCount, std::uint32_t& sumWhite,
                                          std::uint32_t& sumBlack, std::uint32_t& sumDraws) {
    moveCount = 0;
    sumWhite = sumBlack = sumDraws = 0;
    if (!openOrReport()) return 0;
    BookRecord record;
    forEachBookMove(board, [&](Move) {
        if (!isThirdOccurrence(board) && Find(board, record)) {
            ++moveCount;
            sumWhite += record.whiteWins;
            sumBlack += record.blackWins;
            sumDraws += record.draws;
        }
        return true;
    });
    return sumWhite + sumBlack + sumDraws;
}

std::vector<BookCandidate> findBookCandidates(Board& board, OpeningBook& book,
                                              bool& thirdOccurrence) {
    std::vector<BookCandidate> candidates;
    BookRecord record;
    const Side mover = board.sideToMove;
    thirdOccurrence = false;
    forEachBookMove(board, [&](Move move) {
        thirdOccurrence = isThirdOccurrence(board);
        if (thirdOccurrence) return false;
        if (book.Find(board, record))
            candidates.push_back({move, bookScore(record, mover), record});
        return true;
    });
    return candidates;
}

Move OpeningBook::SelectMove(Board& board) {
    if (!openOrReport()) return NoMove;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    std::mt19937 generator(
        static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::seconds>(now).count()));
    std::uniform_int_distribution<int> distribution(0, MaxBookRandom);

    int moveCount = 0;
    std::uint32_t sumWhite = 0;
    std::uint32_t sumBlack = 0;
    std::uint32_t sumDraws = 0;
    const std::uint32_t total = CountBookMoves(board, moveCount, sumWhite, sumBlack, sumDraws);
    if (moveCount == 0) {
        Note("This position don't have moves in the book\n");
        return NoMove;
    }
    Note("This position has been played %lu times\n", static_cast<unsigned long>(total));
    Note("and there are %d possible moves in the book\n", moveCount);

    bool thirdOccurrence = false;
    const std::vector<BookCandidate> candidates = findBookCandidates(board, *this, thirdOccurrence);
    for (const BookCandidate& candidate : candidates) {
        const BookRecord& record = candidate.record;
        Note("(%s%s) + %5u - %5u = %5u score %5ld\n", moveToCoordinate(candidate.move).c_str(),
             std::string(AnnotationText(record.annotation)).c_str(), record.whiteWins,
             record.blackWins, record.draws, static_cast<long>(candidate.score));
    }
    if (thirdOccurrence) {
        board.bookGate = FullBookGate;
        return NoMove;
    }
    return chooseBookMove(candidates, [&] { return distribution(generator); });
}

}  // namespace brivok
