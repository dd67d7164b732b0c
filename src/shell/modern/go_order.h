#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "board/board.h"
#include "search/search_request.h"

namespace brivok {

/// What a "go" line asks for.
struct GoOrder {
    SearchRequest request;            ///< without the moves of "searchmoves"
    std::vector<Move> searchMoves;    ///< legal moves, each once; empty for all
    std::vector<std::string> faults;  ///< what was not understood, for people
};

/// Reads the words of "go" for the position on the board. All words count, in any order. A word
/// that is not understood is told and has no effect; a value that is not a number counts as 0.
/// "ponder" is an ordinary search unless `mayPonder`.
[[nodiscard]] GoOrder readGo(Board& board, const std::vector<std::string>& words, bool mayPonder);

/// All words that "go" understands.
[[nodiscard]] std::vector<std::string_view> modernGoWords();

}  // namespace brivok
