#include "shell/modern/go_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "shell/base/words.h"
#include "shell/go_words.h"
#include "shell/modern/interface_moves.h"

namespace brivok {

namespace {

constexpr std::string_view InfiniteWord = "infinite";
constexpr std::string_view PonderWord = "ponder";
constexpr std::string_view SearchMovesWord = "searchmoves";
constexpr std::string_view MateWord = "mate";

/// A search never sees a longer mate.
constexpr std::int64_t LongestMate = 1000;

template <class Range, class Value>
bool contains(const Range& range, const Value& value) {
    return std::ranges::find(range, value) != std::ranges::end(range);
}

/// Digits with an optional sign and fraction.
bool isNumber(std::string_view text) {
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
    const std::size_t point = std::min(text.find('.'), text.size());
    const auto isDigits = [](std::string_view part) {
        return part.find_first_not_of("0123456789") == part.npos;
    };
    return point > 0 && isDigits(text.substr(0, point)) &&
           (point == text.size() || isDigits(text.substr(point + 1)));
}

/// Walks over the words of one line.
class GoReader {
public:
    GoReader(Board& position, const std::vector<std::string>& line, bool mayPonder)
        : board(position),
          words(line),
          ponderMode(mayPonder ? SearchMode::Pondering : SearchMode::Thinking) {
        order.request.clock = TimeControl{};
    }

    GoOrder read() {
        while (at < words.size()) takeWord(words[at++]);
        limits.finish();
        limitMateSearch();
        return std::move(order);
    }

private:
    void takeWord(const std::string& word) {
        if (word == InfiniteWord) {
            order.request.mode = SearchMode::Analysing;
        } else if (word == PonderWord) {
            order.request.mode = ponderMode;
        } else if (word == SearchMovesWord) {
            takeSearchMoves();
        } else if (contains(keywords, word)) {
            takeValue(word);
        } else {
            order.faults.push_back("'" + word + "' is no word of go");
        }
    }

    [[nodiscard]] bool isBeforeKeyword() const {
        return at == words.size() || contains(keywords, words[at]);
    }

    void takeSearchMoves() {
        for (; !isBeforeKeyword(); ++at) {
            const Move move = readMove(board, words[at]);
            if (move == NoMove) {
                order.faults.push_back("'" + words[at] + "' is not a legal move");
            } else if (!contains(order.searchMoves, move)) {
                order.searchMoves.push_back(move);
            }
        }
    }

    void takeValue(const std::string& word) {
        if (isBeforeKeyword()) {
            order.faults.push_back("'" + word + "' needs a number");
            return;
        }
        const std::string& value = words[at++];
        if (!isNumber(value)) {
            order.faults.push_back("'" + value + "' after '" + word + "' is not a number");
        }
        if (word == MateWord) {
            const std::int64_t moves =
                std::clamp<std::int64_t>(parseInteger(value), 0, LongestMate);
            order.request.mateIn = static_cast<int>(moves);
        } else {
            (void)limits.take(word, value);
        }
    }

    /// Without another depth, a mate is looked for as deep as it can lie.
    void limitMateSearch() {
        SearchRequest& request = order.request;
        if (request.mateIn != 0 && request.maxIteration == NoFixedDepth) {
            request.maxIteration = 2 * request.mateIn;
        }
    }

    Board& board;
    const std::vector<std::string>& words;
    const SearchMode ponderMode;
    const std::vector<std::string_view> keywords = modernGoWords();
    std::size_t at = 1;  ///< next word
    GoOrder order;
    GoWords limits{order.request, board.sideToMove};
};

}  // namespace

GoOrder readGo(Board& board, const std::vector<std::string>& words, bool mayPonder) {
    return GoReader(board, words, mayPonder).read();
}

std::vector<std::string_view> modernGoWords() {
    std::vector<std::string_view> words = wordsOf(GoWords::keywords());
    words.insert(words.end(), {InfiniteWord, PonderWord, SearchMovesWord, MateWord});
    return words;
}

}  // namespace brivok
