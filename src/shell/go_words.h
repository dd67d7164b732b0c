#pragma once

#include <cstdint>
#include <string>

#include "board/types.h"
#include "search/search_request.h"
#include "shell/command_table.h"

namespace brivok {

/// Builds a search request from the words of "go". Clocks are assigned by the side to move.
class GoWords {
public:
    /// The request must have a clock and outlive this.
    GoWords(SearchRequest& toFill, Side side) : request(toFill), us(side) {}

    /// Takes a keyword with its value; false if the keyword takes none.
    [[nodiscard]] bool take(const std::string& word, const std::string& value);

    /// Call after the last word. Moves to go make the clock a conventional one.
    void finish();

    /// The keywords that take a value.
    [[nodiscard]] static CommandTable<GoWords, std::string> keywords();

private:
    TimeControl& clock() { return *request.clock; }
    void setClock(Side side, const std::string& value);
    void setIncrement(Side side, const std::string& value);

    SearchRequest& request;
    Side us;
    std::uint32_t movesToGo = 0;
};

}  // namespace brivok
